#include "platform/Gdi.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

BITMAPINFO Info(int32_t width, int32_t height, uint16_t bitCount, uint32_t compression = BI_RGB) {
    BITMAPINFO bi{};
    bi.bmiHeader = BITMAPINFOHEADER{40, width, height, 1, bitCount, compression};
    for (int i = 0; i < 256; ++i)
        bi.bmiColors[i] = RGBQUAD{static_cast<uint8_t>(i), static_cast<uint8_t>(i), static_cast<uint8_t>(i), 0};
    return bi;
}

// A memory context holding a new section, released with the object.
struct Surface {
    Surface(int32_t width, int32_t height, uint16_t bitCount) {
        BITMAPINFO bi = Info(width, height, bitCount);
        dc = CreateCompatibleDC(0);
        bitmap = CreateDIBSection(dc, &bi, DIB_RGB_COLORS, &bits);
        old = SelectObject(dc, bitmap);
    }
    ~Surface() {
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
    uint8_t* Bytes() { return static_cast<uint8_t*>(bits); }
    HDC dc = 0;
    HBITMAP bitmap = 0;
    HGDIOBJ old = 0;
    void* bits = nullptr;
};

TEST(Gdi, SectionsAreRefusedOutsideTheirLimitsAndStartBlank) {
    struct Case {
        int32_t width, height;
        uint16_t bitCount;
        uint32_t compression;
        bool made;
    } cases[] = {
        {3, 2, 8, BI_RGB, true},      {1, -5, 24, BI_RGB, true},     {0, 4, 8, BI_RGB, false},
        {4, 0, 8, BI_RGB, false},     {-1, 4, 8, BI_RGB, false},     {4, 4, 16, BI_RGB, false},
        {4, 4, 8, 1, false},          {16384, 16384, 8, BI_RGB, true}, {16384, 16385, 8, BI_RGB, false},
        {0x7FFFFFFF, 2, 24, BI_RGB, false}, {2, INT32_MIN, 8, BI_RGB, false},
    };
    size_t before = GdiObjectCount();
    for (const Case& c : cases) {
        BITMAPINFO bi = Info(c.width, c.height, c.bitCount, c.compression);
        void* bits = reinterpret_cast<void*>(1);
        HBITMAP h = CreateDIBSection(0, &bi, DIB_RGB_COLORS, &bits);
        EXPECT_EQ(h != 0, c.made) << c.width << "x" << c.height << "@" << c.bitCount;
        if (h != 0) {
            BITMAP bm;
            ASSERT_EQ(GetObjectA(h, 20, &bm), 20);
            int64_t size = int64_t{bm.bmWidthBytes} * bm.bmHeight;
            EXPECT_EQ(bm.bmWidthBytes % 4, 0);
            const auto* p = static_cast<const uint8_t*>(bits);
            EXPECT_EQ(p[0] + p[size / 2] + p[size - 1], 0);
            EXPECT_TRUE(DeleteObject(h));
        }
    }
    EXPECT_EQ(GdiObjectCount(), before);
}

TEST(Gdi, BlockTransfersConvertAndClip) {
    // A bottom-up 8-bit section, 3 x 2: memory row 0 is the lower row.
    Surface src(3, 2, 8);
    const uint8_t indices[8] = {4, 5, 6, 0, 1, 2, 3, 0};
    std::copy(indices, indices + 8, src.Bytes());
    RGBQUAD colours[7] = {{0, 0, 0, 0}, {0, 0, 0xFF, 0}, {0, 0xFF, 0, 0}, {0xFF, 0, 0, 0},
                          {1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}};
    ASSERT_EQ(SetDIBColorTable(src.dc, 0, 7, colours), 7u);

    struct Case {
        uint16_t bitCount;
        int32_t x, y, cx, cy, sx, sy;
        std::vector<COLORREF> expected;  // 4 x 2 destination, rows from the top
    } cases[] = {
        {32, 0, 0, 9, 9, 0, 0, {0x0000FF, 0x00FF00, 0xFF0000, 0xD0D0D0, 0x010203, 0x040506, 0x070809, 0xD0D0D0}},
        {24, 2, 1, 3, 3, 0, 0, {0xD0D0D0, 0xD0D0D0, 0xD0D0D0, 0xD0D0D0, 0xD0D0D0, 0xD0D0D0, 0x0000FF, 0x00FF00}},
        {32, -1, 0, 2, 1, 1, 1, {0x070809, 0xD0D0D0, 0xD0D0D0, 0xD0D0D0, 0xD0D0D0, 0xD0D0D0, 0xD0D0D0, 0xD0D0D0}},
        // An 8-bit destination takes the nearest grey of its ramp.
        {8, 0, 0, 3, 2, 0, 0, {0x555555, 0x555555, 0x555555, 0xD0D0D0, 0x020202, 0x050505, 0x080808, 0xD0D0D0}},
    };
    for (const Case& c : cases) {
        Surface dst(4, 2, c.bitCount);
        for (int32_t y = 0; y < 2; ++y)
            for (int32_t x = 0; x < 4; ++x) SetPixel(dst.dc, x, y, 0xD0D0D0);
        EXPECT_TRUE(BitBlt(dst.dc, c.x, c.y, c.cx, c.cy, src.dc, c.sx, c.sy, SRCCOPY));
        std::vector<COLORREF> got;
        for (int32_t y = 0; y < 2; ++y)
            for (int32_t x = 0; x < 4; ++x) got.push_back(GetPixel(dst.dc, x, y));
        EXPECT_EQ(got, c.expected) << "case at " << c.x << "," << c.y;
    }
    EXPECT_FALSE(BitBlt(src.dc, 0, 0, 1, 1, src.dc, 0, 0, 0x00F00021));  // a brush operation
    // A selected section belongs to its context: no other takes it, and it is not deleted.
    HDC other = CreateCompatibleDC(0);
    EXPECT_EQ(SelectObject(other, src.bitmap), 0);
    EXPECT_FALSE(DeleteObject(src.bitmap));
    EXPECT_TRUE(DeleteDC(other));
}

}  // namespace
