#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/PlanarBuilder.h"
#include "identify/IFileHost.h"
#include "pictures/CBtm.h"

using fixtures::BtmSpec;
using fixtures::PaletteShape;

namespace {

struct Bitmap {
    FileHost host;
    fixtures::TempDir dir;
    CBtm btm{host};

    bool Open(const std::string& bytes) {
        fixtures::WriteFile(dir / "picture.btm", bytes);
        return btm.Initialize(dir / "picture.btm", 0, &host.oListView);
    }
    // The section's memory, rows bottom-up with their spare bytes.
    std::vector<uint8_t> Bits() const {
        const size_t size = static_cast<size_t>(btm.BytesPerScanLine()) * static_cast<size_t>(btm.DibHeight());
        return {btm.DIBSectionBitsPtr(), btm.DIBSectionBitsPtr() + size};
    }
};

TEST(CBtm, DecodesRowsIntoTheBottomUpSection) {
    struct Case {
        int32_t width, height, bytesPerPixel;
        std::string pixels;
        std::vector<uint8_t> bits;
    } cases[] = {
        // The file's first row ends at the top: D E F 0 A B C 0.
        {3, 2, 1, "ABCDEF", {'D', 'E', 'F', 0, 'A', 'B', 'C', 0}},
        // Only the first byte of a pixel reaches the section.
        {3, 2, 2, "AaBbCcDdEeFf", {'D', 'E', 'F', 0, 'A', 'B', 'C', 0}},
        {2, 1, 4, "A123B456", {'A', 'B', 0, 0}},
        {1, 3, 1, "xyz", {'z', 0, 0, 0, 'y', 0, 0, 0, 'x', 0, 0, 0}},
        // The data has one byte more than its size, which stays 0.
        {3, 2, 1, "ABCDE", {'D', 'E', 0, 0, 'A', 'B', 'C', 0}},
        {5, 1, 1, "12345", {'1', '2', '3', '4', '5', 0, 0, 0}},
        {4, 1, 1, "abcd", {'a', 'b', 'c', 'd'}},
        // No bytes per pixel: every pixel is the first byte.
        {2, 2, 0, "Q!", {'Q', 'Q', 0, 0, 'Q', 'Q', 0, 0}},
    };
    for (const Case& c : cases) {
        Bitmap b;
        BtmSpec recipe;
        recipe.Width = c.width;
        recipe.Height = c.height;
        recipe.BytesPerPixel = c.bytesPerPixel;
        recipe.Pixels = c.pixels;
        ASSERT_TRUE(b.Open(fixtures::BuildBtm(recipe)));
        EXPECT_EQ(b.btm.Information(), "PPlanarBitmap : " + std::to_string(c.width) + "x" + std::to_string(c.height) +
                                           " (" + std::to_string(c.bytesPerPixel) + " Bytes/Pixel)");
        ASSERT_TRUE(b.btm.Show(0)) << c.pixels;
        EXPECT_EQ(b.Bits(), c.bits) << c.pixels;
    }
}

TEST(CBtm, PaletteOrGreyRampAndThePaneShowsThePicture) {
    struct Case {
        PaletteShape shape;
        bool hasPalette;
    } cases[] = {
        {PaletteShape::Full, true},
        {PaletteShape::Missing, false},
        {PaletteShape::Short, false},
        {PaletteShape::WrongId, false},
    };
    for (const Case& c : cases) {
        Bitmap b;
        BtmSpec recipe;
        recipe.Width = 2;
        recipe.Height = 1;
        recipe.Pixels = std::string("\x00\xFF", 2);
        recipe.Palette = fixtures::RainbowPalette();
        recipe.Shape = c.shape;
        ASSERT_TRUE(b.Open(fixtures::BuildBtm(recipe)));
        b.host.oPicture.Move(0, 0, 2, 1);
        b.host.oPicture.Cls();
        ASSERT_TRUE(b.btm.Show(b.host.oPicture.hDC));
        EXPECT_EQ(b.btm.HasPalette(), c.hasPalette);
        const uint32_t first = c.hasPalette ? recipe.Palette[0][2] & 0xFFFFFF : 0x000000;
        const uint32_t last = c.hasPalette ? recipe.Palette[255][2] & 0xFFFFFF : 0xFFFFFF;
        EXPECT_EQ(b.btm.Color(0), static_cast<int32_t>(first));
        EXPECT_EQ(b.btm.Color(255), static_cast<int32_t>(last));
        EXPECT_EQ(b.host.oPicture.Point(0, 0), static_cast<int32_t>(first));
        EXPECT_EQ(b.host.oPicture.Point(1, 0), static_cast<int32_t>(last));
    }
}

TEST(CBtm, FailureTable) {
    enum Outcome { InitFalse, ShowFalse, ShowBlank };
    BtmSpec ok;
    ok.Width = 3;
    ok.Height = 2;
    ok.Pixels = "ABCDEF";
    const std::string good = fixtures::BuildBtm(ok);
    auto with = [&](auto change) {
        BtmSpec s = ok;
        change(s);
        return fixtures::BuildBtm(s);
    };
    struct Case {
        const char* name;
        std::string bytes;
        Outcome outcome;
    } cases[] = {
        {"short header", good.substr(0, 55), InitFalse},
        {"wrong signature", std::string("\x72") + good.substr(1), InitFalse},
        {"palette id", fixtures::PlanarHeader(fixtures::kIdPlanarPalette, 3, 2, 1, 6, 0), InitFalse},
        {"data cut", good.substr(0, 56 + 5), ShowFalse},
        {"data beyond the file", with([](BtmSpec& s) { s.DataSize = 0x7FFFFFF0; }), ShowFalse},
        {"negative data size", with([](BtmSpec& s) { s.DataSize = -1; }), ShowFalse},
        {"width 0", with([](BtmSpec& s) { s.Width = 0; }), ShowFalse},
        {"negative height", with([](BtmSpec& s) { s.Height = -2; }), ShowFalse},
        {"too large", with([](BtmSpec& s) { s.Width = s.Height = 0x10000; }), ShowFalse},
        // Too little data for the size: the colour table is set, no pixel.
        {"data too small", with([](BtmSpec& s) { s.DataSize = 4; }), ShowBlank},
        {"second byte missing", with([](BtmSpec& s) { s.BytesPerPixel = 2, s.Pixels = "AaBbCcDdEeF", s.DataSize = 10; }),
         ShowBlank},
        {"negative bytes per pixel", with([](BtmSpec& s) { s.BytesPerPixel = -1; }), ShowBlank},
    };
    for (const Case& c : cases) {
        Bitmap b;
        EXPECT_EQ(b.Open(c.bytes), c.outcome != InitFalse) << c.name;
        if (c.outcome == InitFalse) continue;
        EXPECT_EQ(b.btm.Show(0), c.outcome == ShowBlank) << c.name;
        EXPECT_EQ(b.btm.Loaded(), c.outcome == ShowBlank) << c.name;
        if (c.outcome == ShowBlank) EXPECT_EQ(b.Bits(), std::vector<uint8_t>(b.Bits().size(), 0)) << c.name;
    }
    Bitmap missing;
    EXPECT_FALSE(missing.btm.Initialize(missing.dir / "none.btm", 0, nullptr));
    EXPECT_FALSE(missing.btm.Show(0));
}

TEST(CBtm, DecodesOnceAndRetriesAfterAShortRead) {
    BtmSpec recipe;
    recipe.Width = 3;
    recipe.Height = 2;
    recipe.Pixels = "ABCDEF";
    const std::string whole = fixtures::BuildBtm(recipe);
    Bitmap b;
    ASSERT_TRUE(b.Open(whole.substr(0, 60)));
    EXPECT_FALSE(b.btm.Show(0));
    // The same file grown to its whole length: the next Show reads it.
    fixtures::WriteFile(b.dir / "picture.btm", whole);
    ASSERT_TRUE(b.btm.Show(0));
    // Later Shows read nothing: a changed file paints the first picture.
    recipe.Pixels = "zzzzzz";
    fixtures::WriteFile(b.dir / "picture.btm", fixtures::BuildBtm(recipe));
    b.host.oPicture.Move(0, 0, 3, 2);
    ASSERT_TRUE(b.btm.Show(b.host.oPicture.hDC));
    EXPECT_EQ(b.host.oPicture.Point(0, 0), 'A' * 0x010101);
    EXPECT_EQ(b.host.oPicture.Point(2, 1), 'F' * 0x010101);
}

}  // namespace
