#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures_check/CheckSupport.h"
#include "pictures/BmpWriter.h"
#include "pictures/SavePicture.h"
#include "platform/Gdi.h"
#include "platform/Runtime.h"
#include "platform/Files.h"

using fixtures::TempDir;

namespace {

// Every pixel its own colour, so that a flipped, mirrored or shifted row shows.
void PatternRow(int32_t width, int32_t y, uint8_t* bgr) {
    for (int32_t x = 0; x < width; ++x, bgr += 3) {
        bgr[0] = static_cast<uint8_t>(7 * x + 3);
        bgr[1] = static_cast<uint8_t>(40 * y + 1);
        bgr[2] = static_cast<uint8_t>(x * y + 200);
    }
}

std::vector<uint8_t> PatternRgb(int32_t width, int32_t height) {
    std::vector<uint8_t> out;
    std::vector<uint8_t> row(static_cast<size_t>(width) * 3);
    for (int32_t y = 0; y < height; ++y) {
        PatternRow(width, y, row.data());
        for (int32_t x = 0; x < width; ++x) out.insert(out.end(), {row[x * 3 + 2], row[x * 3 + 1], row[x * 3]});
    }
    return out;
}

// The rows of the pattern in the file's order.
BmpRowSource PatternRows(int32_t width, int32_t height) {
    return [=](int32_t first, int32_t rows, uint8_t* out) {
        for (int32_t r = 0; r < rows; ++r) PatternRow(width, height - 1 - (first + r), out + r * Bmp24Stride(width));
        return true;
    };
}

}  // namespace

TEST(BmpWriter, ImageMagickReadsEveryWidthPaddingBack) {
    REQUIRE_IMAGEMAGICK();
    TempDir dir;
    for (auto [w, h] : {std::pair{1, 1}, {3, 2}, {4, 3}, {5, 4}, {6, 1}}) {
        const std::string path = dir / (std::to_string(w) + "x" + std::to_string(h) + ".bmp");
        ASSERT_TRUE(WriteBmp24(path, w, h, PatternRows(w, h)));
        const std::string bytes = fixtures::ReadFile(path);
        const int64_t stride = (w * 3 + 3) / 4 * 4;
        ASSERT_EQ(bytes.size(), static_cast<size_t>(54 + stride * h)) << path;
        EXPECT_EQ(check::U16At(bytes, 28), 24u);
        EXPECT_EQ(check::U32At(bytes, 10), 54u);
        // The bottom row comes first, its spare bytes zero; BMP3 is the form
        // with the 40-byte info header.
        EXPECT_EQ(static_cast<uint8_t>(bytes[55]), static_cast<uint8_t>(40 * (h - 1) + 1));
        for (int64_t pad = w * 3; pad < stride; ++pad) EXPECT_EQ(bytes[54 + pad], 0) << path;
        EXPECT_EQ(check::Identify(path), "BMP3 " + std::to_string(w) + " " + std::to_string(h)) << path;
        EXPECT_EQ(check::DecodeRgb(path), PatternRgb(w, h)) << path;
    }
}

TEST(BmpWriter, AFailedWriteLeavesTheOldFileAndNoTemporary) {
    TempDir dir;
    const std::string path = dir / "old.bmp";
    fixtures::WriteFile(path, "old bytes");
    const BmpRowSource row = PatternRows(2, 2);
    const BmpRowSource failing = [](int32_t, int32_t, uint8_t*) { return false; };
    EXPECT_FALSE(WriteBmp24(path, 0, 2, row));
    EXPECT_FALSE(WriteBmp24(path, 2, -1, row));
    EXPECT_FALSE(WriteBmp24(path, 70000, 70000, row));  // beyond 4 GiB
    EXPECT_FALSE(WriteBmp24(path, 2, 2, failing));
    EXPECT_FALSE(WriteBmp24(dir / "missing/new.bmp", 2, 2, row));
    EXPECT_EQ(fixtures::ReadFile(path), "old bytes");
    std::vector<DirEntry> entries;
    ASSERT_TRUE(ListDirectory(dir.Path(), entries));
    EXPECT_EQ(entries.size(), 1u);
}

TEST(SavePicture, WritesBitmapsOfEveryDepthAndRowOrder) {
    REQUIRE_IMAGEMAGICK();
    TempDir dir;
    const int32_t w = 5, h = 3;
    // Pixel (x, y) from the top left takes the level v = 40 y + 3 x: the
    // colours v, v + 1, v + 2 (red, green, blue), or index v of a table that
    // holds those colours.
    std::vector<uint8_t> expected;
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) expected.insert(expected.end(), {uint8_t(40 * y + 3 * x), uint8_t(40 * y + 3 * x + 1), uint8_t(40 * y + 3 * x + 2)});
    for (uint16_t depth : {8, 24, 32})
        for (bool bottomUp : {true, false}) {
            BITMAPINFO info{};
            info.bmiHeader.biSize = 40;
            info.bmiHeader.biWidth = w;
            info.bmiHeader.biHeight = bottomUp ? h : -h;
            info.bmiHeader.biPlanes = 1;
            info.bmiHeader.biBitCount = depth;
            for (int i = 0; i < 256; ++i) info.bmiColors[i] = {uint8_t(i + 2), uint8_t(i + 1), uint8_t(i), 0};
            void* bits = nullptr;
            const HBITMAP hbm = CreateDIBSection(0, &info, DIB_RGB_COLORS, &bits);
            ASSERT_NE(hbm, 0);
            const size_t stride = (static_cast<size_t>(w) * depth / 8 + 3) & ~size_t{3};
            for (int32_t y = 0; y < h; ++y)
                for (int32_t x = 0; x < w; ++x) {
                    uint8_t* px = static_cast<uint8_t*>(bits) + stride * static_cast<size_t>(bottomUp ? h - 1 - y : y) +
                                  static_cast<size_t>(x) * depth / 8;
                    const auto v = uint8_t(40 * y + 3 * x);
                    if (depth == 8) {
                        px[0] = v;
                    } else {
                        px[0] = uint8_t(v + 2), px[1] = uint8_t(v + 1), px[2] = v;
                    }
                }
            const std::string path = dir / (std::to_string(depth) + (bottomUp ? "up.bmp" : "down.bmp"));
            SavePicture(std::make_shared<StdPicture>(hbm, true), path);
            EXPECT_EQ(check::DecodeRgb(path), expected) << path;
        }
    EXPECT_THROW(SavePicture(nullptr, dir / "none.bmp"), RuntimeError);
    EXPECT_FALSE(PathExists(dir / "none.bmp"));
}
