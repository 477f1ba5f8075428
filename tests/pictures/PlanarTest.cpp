// The game's planar bitmaps and palettes, and the palette engine behind them.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "samples/PlanarBuilder.h"
#include "identify/IFileHost.h"
#include "pictures/CBtm.h"
#include "pictures/CPLTFile.h"
#include "platform/Files.h"
#include "platform/Picture.h"
#include "platform/Runtime.h"

using fixtures::BtmSpec;
using fixtures::PaletteShape;

namespace {

// A bitmap of 3 x 2 pixels, changed as a case needs.
std::string Btm(const std::function<void(BtmSpec&)>& change = {}) {
    BtmSpec s{.Width = 3, .Height = 2, .Pixels = "ABCDEF"};
    if (change) change(s);
    return fixtures::BuildBtm(s);
}

// A bitmap read from a file, or made in memory with its first colours set.
struct Bitmap {
    FileHost host;
    fixtures::TempDir dir;
    CBtm btm{host};

    Bitmap() = default;
    Bitmap(int32_t width, int32_t height, std::vector<uint32_t> colours = {}) {
        EXPECT_TRUE(btm.Create(width, height));
        for (size_t i = 0; i < colours.size(); ++i) btm.SetColor(static_cast<int32_t>(i), colours[i]);
    }
    bool Open(const std::string& bytes) {
        fixtures::WriteFile(dir / "picture.btm", bytes);
        return btm.Initialize(dir / "picture.btm", 0, &host.oListView);
    }
    // The section's memory, rows bottom-up with their spare bytes.
    std::vector<uint8_t> Bits() const {
        const size_t size = static_cast<size_t>(btm.BytesPerScanLine()) * static_cast<size_t>(btm.DibHeight());
        return {btm.DIBSectionBitsPtr(), btm.DIBSectionBitsPtr() + size};
    }
    std::vector<int32_t> Colors(int32_t n) const {
        std::vector<int32_t> out;
        for (int32_t i = 0; i < n; ++i) out.push_back(btm.Color(i));
        return out;
    }
};

}  // namespace

// The file's first row ends at the top of the bottom-up section, each row
// padded to four bytes; what can't be decoded is refused at once, refused by
// Show, or shown blank.
TEST(CBtm, DecodesRowsIntoTheBottomUpSectionOrRefuses) {
    enum Outcome { InitFalse, ShowFalse, Shown };
    const std::string good = Btm();
    const std::vector<uint8_t> blank(8, 0), def = {'D', 'E', 'F', 0, 'A', 'B', 'C', 0};
    struct Case {
        std::string bytes;
        Outcome outcome;
        std::vector<uint8_t> bits = {};
    } cases[] = {
        {good, Shown, def},
        // Only the first byte of a pixel reaches the section.
        {Btm([](BtmSpec& s) { s.BytesPerPixel = 2, s.Pixels = "AaBbCcDdEeFf"; }), Shown, def},
        {Btm([](BtmSpec& s) { s.Width = 2, s.Height = 1, s.BytesPerPixel = 4, s.Pixels = "A123B456"; }), Shown,
         {'A', 'B', 0, 0}},
        // The data has one byte more than its size, which stays 0.
        {Btm([](BtmSpec& s) { s.Pixels = "ABCDE"; }), Shown, {'D', 'E', 0, 0, 'A', 'B', 'C', 0}},
        {Btm([](BtmSpec& s) { s.Width = 5, s.Height = 1, s.Pixels = "12345"; }), Shown,
         {'1', '2', '3', '4', '5', 0, 0, 0}},
        // No bytes per pixel: every pixel is the first byte.
        {Btm([](BtmSpec& s) { s.Width = s.Height = 2, s.BytesPerPixel = 0, s.Pixels = "Q!"; }), Shown,
         {'Q', 'Q', 0, 0, 'Q', 'Q', 0, 0}},
        {good.substr(0, 55), InitFalse},
        {std::string("\x72") + good.substr(1), InitFalse},
        {fixtures::PlanarHeader(fixtures::kIdPlanarPalette, 3, 2, 1, 6, 0), InitFalse},
        {good.substr(0, 56 + 5), ShowFalse},
        {Btm([](BtmSpec& s) { s.DataSize = 0x7FFFFFF0; }), ShowFalse},
        {Btm([](BtmSpec& s) { s.DataSize = -1; }), ShowFalse},
        {Btm([](BtmSpec& s) { s.Width = 0; }), ShowFalse},
        {Btm([](BtmSpec& s) { s.Height = -2; }), ShowFalse},
        {Btm([](BtmSpec& s) { s.Width = s.Height = 0x10000; }), ShowFalse},
        // Too little data for the size: the colour table is set, no pixel.
        {Btm([](BtmSpec& s) { s.DataSize = 4; }), Shown, blank},
        {Btm([](BtmSpec& s) { s.BytesPerPixel = 2, s.Pixels = "AaBbCcDdEeF", s.DataSize = 10; }), Shown, blank},
        {Btm([](BtmSpec& s) { s.BytesPerPixel = -1; }), Shown, blank},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        Bitmap b;
        EXPECT_EQ(b.Open(c.bytes), c.outcome != InitFalse);
        if (c.outcome == InitFalse) continue;
        EXPECT_EQ(b.btm.Show(0), c.outcome == Shown);
        EXPECT_EQ(b.btm.Loaded(), c.outcome == Shown);
        if (c.outcome == Shown) {
            EXPECT_EQ(b.Bits(), c.bits);
        }
    }
}

TEST(CBtm, TakesItsPaletteOrAGreyRampAndThePaneShowsThePicture) {
    const fixtures::PlanarPalette palette = fixtures::RainbowPalette();
    for (PaletteShape shape : {PaletteShape::Full, PaletteShape::Missing, PaletteShape::Short, PaletteShape::WrongId}) {
        SCOPED_TRACE(static_cast<int>(shape));
        Bitmap b;
        ASSERT_TRUE(b.Open(fixtures::BuildBtm(
            {.Width = 2, .Height = 1, .Pixels = std::string("\x00\xFF", 2), .Palette = palette, .Shape = shape})));
        b.host.oPicture.Move(0, 0, 2, 1);
        ASSERT_TRUE(b.btm.Show(b.host.oPicture.hDC));
        const bool full = shape == PaletteShape::Full;
        EXPECT_EQ(b.btm.HasPalette(), full);
        for (int32_t i = 0; i < 256; ++i)
            ASSERT_EQ(b.btm.Color(i), static_cast<int32_t>(full ? palette[i][2] & 0xFFFFFF : i * 0x010101u)) << i;
        EXPECT_EQ(b.host.oPicture.Point(0, 0), b.btm.Color(0));
        EXPECT_EQ(b.host.oPicture.Point(1, 0), b.btm.Color(255));
    }
}

TEST(CBtm, DecodesOnceAndRetriesAfterAShortRead) {
    const std::string whole = Btm();
    Bitmap b;
    ASSERT_TRUE(b.Open(whole.substr(0, 60)));
    EXPECT_FALSE(b.btm.Show(0));
    // The same file grown to its whole length: the next Show reads it.
    fixtures::WriteFile(b.dir / "picture.btm", whole);
    ASSERT_TRUE(b.btm.Show(0));
    // Later Shows read nothing: a changed file paints the first picture.
    fixtures::WriteFile(b.dir / "picture.btm", Btm([](BtmSpec& s) { s.Pixels = "zzzzzz"; }));
    b.host.oPicture.Move(0, 0, 3, 2);
    ASSERT_TRUE(b.btm.Show(b.host.oPicture.hDC));
    EXPECT_EQ(b.host.oPicture.Point(0, 0), 'A' * 0x010101);
    EXPECT_EQ(b.host.oPicture.Point(2, 1), 'F' * 0x010101);
}

TEST(CPLTFile, DrawsEachEntryAsAColumnOfItsThreeColours) {
    const fixtures::PlanarPalette palette = fixtures::RainbowPalette();
    const std::string whole = fixtures::PaletteFile(palette, 3);
    // Each colour is the file's word, little-endian, twelve bytes to an entry
    // from byte 56; bytes that did not arrive are 0, also inside a cut word.
    for (const size_t length : {whole.size(), size_t{8}, size_t{176}, size_t{182}}) {
        SCOPED_TRACE(length);
        const std::string bytes = whole.substr(0, length);
        FileHost host;
        fixtures::TempDir dir;
        fixtures::WriteFile(dir / "p.plt", bytes);
        CPLTFile plt(host);
        ASSERT_TRUE(plt.Initialize(dir / "p.plt", 0, nullptr));
        host.oPicture.Move(0, 0, plt.Width(), plt.Height());
        host.oPicture.BackColor = 0x123456;
        for (int pass = 0; pass < 2; ++pass) {
            host.oPicture.Cls();
            EXPECT_FALSE(plt.Show(0));
            for (size_t i = 0; i < 256 * 3; ++i) {
                int32_t colour = 0;
                for (size_t b = 0; b < 3; ++b)
                    if (56 + 4 * i + b < bytes.size()) colour |= static_cast<uint8_t>(bytes[56 + 4 * i + b]) << (8 * b);
                ASSERT_EQ(host.oPicture.Point(static_cast<float>(i / 3), static_cast<float>(i % 3)), colour) << i;
            }
        }
        EXPECT_TRUE(plt.Loaded());
        // Another file is read anew, in place of the first.
        fixtures::WriteFile(dir / "q.plt", whole);
        const int32_t handles = OpenHandleCount();
        ASSERT_TRUE(plt.Initialize(dir / "q.plt", 0, nullptr));
        EXPECT_FALSE(plt.Loaded());
        EXPECT_EQ(OpenHandleCount(), handles);
    }
}

// Each colour goes to lightness, saturation and a hue in sixths (red first,
// ties to the earlier channel) and back.
TEST(DibEngine, ConvertsBetweenRgbAndHls) {
    struct Case {
        int32_t r, g, b;
        float h, s, l;
    } cases[] = {{128, 128, 128, 0, 0, 128 / 255.0f}, {255, 0, 0, 0, 1, 0.5f},   {0, 255, 0, 2, 1, 0.5f},
                 {0, 0, 255, 4, 1, 0.5f},  {255, 0, 128, -128 / 255.0f, 1, 0.5f}, {255, 255, 0, 1, 1, 0.5f},
                 {0, 0, 0, 0, 0, 0},       {255, 255, 255, 0, 0, 1}};
    for (const Case& c : cases) {
        float h = 9, s = 9, l = 9;
        CBtm::RGBToHLS(c.r, c.g, c.b, h, s, l);
        EXPECT_NEAR(std::fabs(h - c.h) + std::fabs(s - c.s) + std::fabs(l - c.l), 0, 1e-5) << c.r << "," << c.g << "," << c.b;
        int32_t r = -1, g = -1, b = -1;
        CBtm::HLSToRGB(h, s, l, r, g, b);
        EXPECT_EQ((std::array<int32_t, 3>{r, g, b}), (std::array<int32_t, 3>{c.r, c.g, c.b}));
    }
}

TEST(DibEngine, PaletteOperationsChangeTheTableAlone) {
    struct Case {
        void (*op)(CBtm&);
        std::vector<int32_t> expected;
    } cases[] = {
        {[](CBtm& d) { d.Fade(255); }, {0xFFFFFF, 0x804020, 0x000000}},
        {[](CBtm& d) { d.Fade(128); }, {0x808080, 0x402010, 0}},
        // 222 x 32 + 707 x 64 + 71 x 128 = 61,400: 61.4 rounds to 61.
        {[](CBtm& d) { d.GrayScale(); }, {0xFFFFFF, 0x3D3D3D, 0x000000}},
        {[](CBtm& d) { d.AdjustLightness(200); }, {0xFFFFFF, 0xD98D67, 0x000000}},
        {[](CBtm& d) { d.AdjustLightness(50); }, {0x808080, 0x402010, 0x000000}},
    };
    for (const Case& c : cases) {
        Bitmap e(4, 2, {0xFFFFFF, 0x804020, 0x000000});
        e.btm.DIBSectionBitsPtr()[0] = 1;
        c.op(e.btm);
        EXPECT_EQ(e.Colors(3), c.expected) << &c - cases;
        EXPECT_EQ(e.btm.DIBSectionBitsPtr()[0], 1);
    }
    Bitmap e(4, 2);
    EXPECT_EQ(e.btm.Color(256) + e.btm.Color(-1), -2);
    EXPECT_THROW(e.btm.Fade(300), RuntimeError);
    e.btm.ClearUp();
    EXPECT_EQ(e.btm.Color(0), -1);
    e.btm.GrayScale();  // no table: nothing happens
}

TEST(DibEngine, SectionsCopyAndLoad) {
    Bitmap source(3, 2, {0x000000, 0x0000FF, 0x00FF00});
    uint8_t* bits = source.btm.DIBSectionBitsPtr();
    bits[0] = 1, bits[1] = 2, bits[4] = 2;  // bottom row 1 2 0, top row 2 0 0
    Bitmap copy(3, 2);
    copy.btm.CopyPalette(source.btm);
    EXPECT_EQ(copy.Colors(3), (std::vector<int32_t>{0, 0xFF, 0xFF00}));
    Bitmap loaded(3, 2);
    loaded.btm.LoadPictureBlt(source.btm.hdc(), 1, 0);
    EXPECT_EQ(loaded.btm.DIBSectionBitsPtr()[1], 0);  // (2, 1) of the source lies at (1, 1)
    EXPECT_EQ(loaded.btm.DIBSectionBitsPtr()[0], 2);
    EXPECT_EQ(loaded.Colors(3), (std::vector<int32_t>{0, 0xFF, 0xFF00}));
    // A picture of 32 bits has no table: its colours take the nearest grey.
    Bitmap fromPicture(1, 1);
    fromPicture.btm.CreateFromPicture(PictureFromPixels(2, 1, {0xFFFFFFFF, 0xFF000000}));
    EXPECT_EQ(fromPicture.btm.DibWidth(), 2);
    EXPECT_EQ(fromPicture.btm.DIBSectionBitsPtr()[0], 255);
    EXPECT_EQ(fromPicture.btm.DIBSectionBitsPtr()[1], 0);
    EXPECT_THROW(fromPicture.btm.CreateFromPicture(nullptr), RuntimeError);
}
