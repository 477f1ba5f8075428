#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "identify/IFileHost.h"
#include "pictures/CBtm.h"
#include "platform/Picture.h"
#include "platform/Runtime.h"

namespace {

TEST(DibEngine, HlsEdgeCases) {
    struct Case {
        int32_t r, g, b;
        float h, s, l;
    } cases[] = {
        {128, 128, 128, 0, 0, 128 / 255.0f},
        {255, 0, 0, 0, 1, 0.5f},
        {0, 255, 0, 2, 1, 0.5f},
        {0, 0, 255, 4, 1, 0.5f},
        {255, 0, 128, -128 / 255.0f, 1, 0.5f},  // red first, more blue than green
        {255, 255, 0, 1, 1, 0.5f},              // a tie of red and green: red decides
        {0, 0, 0, 0, 0, 0},
        {255, 255, 255, 0, 0, 1},
    };
    for (const Case& c : cases) {
        float h = 9, s = 9, l = 9;
        CBtm::RGBToHLS(c.r, c.g, c.b, h, s, l);
        EXPECT_NEAR(h, c.h, 1e-5) << c.r << "," << c.g << "," << c.b;
        EXPECT_NEAR(l, c.l, 1e-5);
        EXPECT_NEAR(s, c.s, 1e-5);
        int32_t r = -1, g = -1, b = -1;
        CBtm::HLSToRGB(h, s, l, r, g, b);
        EXPECT_EQ((std::array<int32_t, 3>{r, g, b}), (std::array<int32_t, 3>{c.r, c.g, c.b}));
    }
    // A lightness run past 1 leaves the byte range; a tie rounds to even.
    float h = 0, s = 0, l = 1.5f;
    int32_t r = 0, g = 0, b = 0;
    CBtm::HLSToRGB(h, s, l, r, g, b);
    EXPECT_EQ(r, 382);  // 382.5
    l = 0.5f / 255.0f;
    CBtm::HLSToRGB(h, s, l, r, g, b);
    EXPECT_EQ(r, 0);
}

struct Engine {
    FileHost host;
    CBtm btm{host};
    explicit Engine(int32_t width = 4, int32_t height = 2) { EXPECT_TRUE(btm.Create(width, height)); }
    void SetColors(std::initializer_list<uint32_t> colours) {
        int32_t i = 0;
        for (uint32_t c : colours) btm.SetColor(i++, c);
    }
    std::vector<int32_t> Colors(int32_t n) const {
        std::vector<int32_t> out;
        for (int32_t i = 0; i < n; ++i) out.push_back(btm.Color(i));
        return out;
    }
};

TEST(DibEngine, PaletteOperationsChangeTheTableAlone) {
    struct Case {
        const char* name;
        void (*op)(CBtm&);
        std::vector<int32_t> expected;
    } cases[] = {
        {"fade 255", [](CBtm& d) { d.Fade(255); }, {0xFFFFFF, 0x804020, 0x000000}},
        {"fade 0", [](CBtm& d) { d.Fade(0); }, {0, 0, 0}},
        {"fade 128", [](CBtm& d) { d.Fade(128); }, {0x808080, 0x402010, 0}},
        {"invert", [](CBtm& d) { d.Invert(); }, {0x000000, 0x7FBFDF, 0xFFFFFF}},
        {"invert twice", [](CBtm& d) { d.Invert(), d.Invert(); }, {0xFFFFFF, 0x804020, 0x000000}},
        // 222 x 32 + 707 x 64 + 71 x 128 = 61,400: 61.4 rounds to 61.
        {"grey", [](CBtm& d) { d.GrayScale(); }, {0xFFFFFF, 0x3D3D3D, 0x000000}},
        {"lightness 100", [](CBtm& d) { d.AdjustLightness(100); }, {0xFFFFFF, 0x804020, 0x000000}},
        {"lightness 200", [](CBtm& d) { d.AdjustLightness(200); }, {0xFFFFFF, 0xD98D67, 0x000000}},
        {"lightness 50", [](CBtm& d) { d.AdjustLightness(50); }, {0x808080, 0x402010, 0x000000}},
    };
    for (const Case& c : cases) {
        Engine e;
        e.SetColors({0xFFFFFF, 0x804020, 0x000000});
        e.btm.DIBSectionBitsPtr()[0] = 1;
        c.op(e.btm);
        EXPECT_EQ(e.Colors(3), c.expected) << c.name;
        EXPECT_EQ(e.btm.DIBSectionBitsPtr()[0], 1) << c.name;
    }
    Engine e;
    e.btm.SetColor(7, 0x00FF0000);
    EXPECT_EQ(e.btm.Color(7), 0x00FF0000);
    EXPECT_EQ(e.btm.Color(256), -1);
    EXPECT_EQ(e.btm.Color(-1), -1);
    EXPECT_THROW(e.btm.Fade(300), RuntimeError);
    e.btm.ClearUp();
    EXPECT_EQ(e.btm.Color(0), -1);
    e.btm.GrayScale();  // no table: nothing happens
}

TEST(DibEngine, SectionsPaintCopyAndLoad) {
    for (auto [width, stride] : {std::pair{1, 4}, {4, 4}, {5, 8}}) {
        Engine e(width, 1);
        EXPECT_EQ(e.btm.BytesPerScanLine(), stride);
    }
    Engine source(3, 2);
    source.SetColors({0x000000, 0x0000FF, 0x00FF00});
    uint8_t* bits = source.btm.DIBSectionBitsPtr();
    bits[0] = 1, bits[1] = 2, bits[4] = 2;  // bottom row 1 2 0, top row 2 0 0

    FileHost host;
    host.oPicture.Move(0, 0, 3, 2);
    host.oPicture.BackColor = 0xABCDEF;
    host.oPicture.Cls();
    source.btm.PaintPicture(host.oPicture.hDC, 0, 0, 0, 0);
    EXPECT_EQ(host.oPicture.Point(0, 0), 0xABCDEF);
    source.btm.PaintPicture(host.oPicture.hDC);
    EXPECT_EQ(host.oPicture.Point(0, 0), 0x00FF00);
    EXPECT_EQ(host.oPicture.Point(0, 1), 0x0000FF);
    EXPECT_EQ(host.oPicture.Point(1, 1), 0x00FF00);

    Engine copy(3, 2);
    copy.btm.CopyPalette(source.btm);
    EXPECT_EQ(copy.Colors(3), (std::vector<int32_t>{0, 0xFF, 0xFF00}));
    Engine loaded(3, 2);
    loaded.btm.LoadPictureBlt(source.btm.hdc(), 1, 0);
    EXPECT_EQ(loaded.btm.DIBSectionBitsPtr()[1], 0);  // (2, 1) of the source lies at (1, 1)
    EXPECT_EQ(loaded.btm.DIBSectionBitsPtr()[0], 2);
    EXPECT_EQ(loaded.Colors(3), (std::vector<int32_t>{0, 0xFF, 0xFF00}));

    // A picture of 32 bits has no table: its colours take the nearest grey.
    Engine fromPicture(1, 1);
    fromPicture.btm.CreateFromPicture(PictureFromPixels(2, 1, {0xFFFFFFFF, 0xFF000000}));
    EXPECT_EQ(fromPicture.btm.DibWidth(), 2);
    EXPECT_EQ(fromPicture.btm.DIBSectionBitsPtr()[0], 255);
    EXPECT_EQ(fromPicture.btm.DIBSectionBitsPtr()[1], 0);
    // An 8-bit picture brings its indices and its table.
    BITMAPINFO info{};
    info.bmiHeader = BITMAPINFOHEADER{40, 1, 1, 1, 8, BI_RGB, 0, 0, 0, 0, 0};
    info.bmiColors[9] = RGBQUAD{1, 2, 3, 0};
    void* pixels = nullptr;
    auto indexed = std::make_shared<StdPicture>(CreateDIBSection(0, &info, DIB_RGB_COLORS, &pixels), true);
    static_cast<uint8_t*>(pixels)[0] = 9;
    fromPicture.btm.CreateFromPicture(indexed);
    EXPECT_EQ(fromPicture.btm.Color(9), 0x010203);
    EXPECT_EQ(fromPicture.btm.DIBSectionBitsPtr()[0], 9);
    EXPECT_THROW(fromPicture.btm.CreateFromPicture(nullptr), RuntimeError);
}

}  // namespace
