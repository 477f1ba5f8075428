#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/Judges.h"
#include "pictures/BmpWriter.h"
#include "pictures/SavePicture.h"
#include "platform/Files.h"
#include "platform/Gdi.h"
#include "platform/Runtime.h"

using fixtures::TempDir;

// Bitmaps of each depth and row order, 5 pixels wide so that a BMP row has a
// spare byte: pixel (x, y) from the top left has the level v = 40 y + 3 x and
// the colours v, v + 1, v + 2 (red, green, blue), or index v of such a table.
TEST(SavePicture, WritesBitmapsOfEveryDepthAndRowOrderAsImageMagickReadsThem) {
    REQUIRE_IMAGEMAGICK();
    TempDir dir;
    const int32_t w = 5, h = 3;
    std::vector<uint8_t> expected;
    for (int32_t i = 0; i < w * h; ++i) {
        const auto v = uint8_t(40 * (i / w) + 3 * (i % w));
        expected.insert(expected.end(), {v, uint8_t(v + 1), uint8_t(v + 2)});
    }
    for (uint16_t depth : {8, 24, 32})
        for (bool bottomUp : {true, false}) {
            BITMAPINFO info{};
            info.bmiHeader = {40, w, bottomUp ? h : -h, 1, depth};
            for (int i = 0; i < 256; ++i) info.bmiColors[i] = {uint8_t(i + 2), uint8_t(i + 1), uint8_t(i), 0};
            void* bits = nullptr;
            const HBITMAP hbm = CreateDIBSection(0, &info, DIB_RGB_COLORS, &bits);
            ASSERT_NE(hbm, 0);
            const size_t stride = (static_cast<size_t>(w) * depth / 8 + 3) & ~size_t{3};
            for (int32_t i = 0; i < w * h; ++i) {
                const int32_t y = i / w, x = i % w;
                uint8_t* px = static_cast<uint8_t*>(bits) + stride * size_t(bottomUp ? h - 1 - y : y) + size_t(x) * depth / 8;
                const uint8_t* rgb = &expected[size_t(i) * 3];
                if (depth == 8) px[0] = rgb[0];
                else px[0] = rgb[2], px[1] = rgb[1], px[2] = rgb[0];
            }
            const std::string path = dir / (std::to_string(depth) + (bottomUp ? "up.bmp" : "down.bmp"));
            SavePicture(std::make_shared<StdPicture>(hbm, true), path);
            const std::string bytes = fixtures::ReadFile(path);
            ASSERT_EQ(bytes.size(), 54u + 16 * 3) << path;
            EXPECT_EQ(check::U32At(bytes, 10), 54u);
            EXPECT_EQ(check::U16At(bytes, 28), 24u);
            EXPECT_EQ(bytes[54 + 15], 0) << path;  // the spare byte of the bottom row
            EXPECT_EQ(check::Identify(path), "BMP3 5 3");
            EXPECT_EQ(check::DecodeRgb(path), expected) << path;
        }
}

TEST(SavePicture, AFailedWriteLeavesTheOldFileAndNoTemporary) {
    TempDir dir;
    const std::string path = dir / "old.bmp";
    fixtures::WriteFile(path, "old bytes");
    const BmpRowSource rows = [](int32_t, int32_t, uint8_t*) { return true; };
    EXPECT_FALSE(WriteBmp24(path, 0, 2, rows));
    EXPECT_FALSE(WriteBmp24(path, 70000, 70000, rows));  // beyond 4 GiB
    EXPECT_FALSE(WriteBmp24(path, 2, 2, [](int32_t, int32_t, uint8_t*) { return false; }));
    EXPECT_THROW(SavePicture(nullptr, path), RuntimeError);
    EXPECT_FALSE(WriteBmp24(dir / "missing/new.bmp", 2, 2, rows));
    EXPECT_EQ(fixtures::ReadFile(path), "old bytes");
    std::vector<DirEntry> entries;
    ASSERT_TRUE(ListDirectory(dir.Path(), entries));
    EXPECT_EQ(entries.size(), 1u);
}
