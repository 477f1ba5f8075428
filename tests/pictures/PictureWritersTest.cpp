// What the pictures are written as, judged by ImageMagick: BMP files of every
// depth and row order, and quarrin-cli picture, run as a program.
#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/Judges.h"
#include "fixtures/PictureBuilder.h"
#include "samples/PlanarBuilder.h"
#include "fixtures/Programs.h"
#include "pictures/BmpWriter.h"
#include "pictures/SavePicture.h"
#include "platform/Files.h"
#include "platform/Gdi.h"
#include "platform/Runtime.h"

using fixtures::TempDir;
using fixtures::WriteFile;

// Bitmaps 5 pixels wide, so that a BMP row has a spare byte: pixel (x, y) from
// the top left has the level v = 40 y + 3 x and the colours v, v + 1, v + 2
// (red, green, blue), or index v of such a table.
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
            EXPECT_EQ(bytes[54 + 15], 0) << path;  // the spare byte of the bottom row
            EXPECT_EQ(check::Identify(path), "BMP3 5 3");
            EXPECT_EQ(check::DecodeRgb(path), expected) << path;
        }
}

TEST(SavePicture, AFailedWriteLeavesTheOldFileAndNoTemporary) {
    TempDir dir;
    const std::string path = dir / "old.bmp";
    WriteFile(path, "old bytes");
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

// What the command line writes is what the pane shows; what it can't write it
// refuses with one line, writing nothing.
TEST(PictureCli, WritesWhatThePaneShowsAndRefusesTheRest) {
    REQUIRE_IMAGEMAGICK();
    TempDir dir;
    WriteFile(dir / "grad.btm", fixtures::GradientBtm(13, 5));
    // The file ends 6 bytes into the pixel data.
    WriteFile(dir / "short.btm", fixtures::BuildBtm({.Width = 4, .Height = 4, .Pixels = std::string(10, '\x01'),
                                                     .Shape = fixtures::PaletteShape::Missing, .DataSize = 16}));
    WriteFile(dir / "strip.plt", fixtures::PaletteFile(fixtures::RainbowPalette()));
    WriteFile(dir / "grad.gif", fixtures::BuildGif(fixtures::Quantise332(fixtures::GradientImage(9, 6))));
    WriteFile(dir / "grad.tga", fixtures::BuildTga(fixtures::GradientImage(7, 3)));
    WriteFile(dir / "nomark.jpg", fixtures::BuildJpeg(fixtures::GradientImage(8, 8), {.FrameMarker = 0xC1}));
    std::string damaged = fixtures::BuildJpeg(fixtures::GradientImage(8, 8));
    WriteFile(dir / "damaged.jpg", damaged.substr(0, damaged.find(std::string("\xFF\xC0", 2)) + 20));
    WriteFile(dir / "notes.txt", "text");
    const auto cli = [&](std::vector<std::string> args) {
        args[0] = dir / args[0], args[1] = dir / args[1];
        args.insert(args.begin(), {std::string(QUARRIN_TOOLS_DIR) + "/quarrin-cli", "picture"});
        return fixtures::RunAndCapture(args);
    };
    // The identification, and the PNG colour type (-1 for a BMP).
    const std::tuple<std::vector<std::string>, const char*, int> written[] = {
        {{"grad.gif", "gif.bmp"}, "BMP3 9 6", -1},         {{"grad.tga", "tga.bmp"}, "BMP3 7 3", -1},
        {{"grad.btm", "btm.bmp"}, "BMP3 13 5", -1},        {{"grad.btm", "indexed.png"}, "PNG 13 5", 3},
        {{"grad.btm", "inverted.png", "--invert"}, "PNG 13 5", 2}, {{"grad.gif", "gif.png"}, "PNG 9 6", 2},
        {{"strip.plt", "plt.bmp"}, "BMP3 256 3", -1},
    };
    for (const auto& [args, identify, pngColourType] : written) {
        const auto r = cli(args);
        ASSERT_EQ(r.Status, 0) << args[1] << r.Errors;
        EXPECT_EQ(check::Identify(dir / args[1]), identify);
        if (pngColourType >= 0) {
            EXPECT_EQ(fixtures::ReadFile(dir / args[1])[25], pngColourType) << args[1];
        }
    }
    // The sources decode to the same pixels as what was written of them.
    EXPECT_EQ(check::DecodeRgb(dir / "gif.bmp"), check::DecodeRgb(dir / "grad.gif"));
    EXPECT_EQ(check::DecodeRgb(dir / "tga.bmp"), check::DecodeRgb(dir / "grad.tga"));
    const auto plain = check::DecodeRgb(dir / "btm.bmp");
    EXPECT_EQ(check::DecodeRgb(dir / "indexed.png"), plain);
    const auto inverted = check::DecodeRgb(dir / "inverted.png");
    ASSERT_EQ(inverted.size(), plain.size());
    for (size_t i = 0; i < plain.size(); ++i) ASSERT_EQ(inverted[i], 255 - plain[i]) << i;

    const std::pair<std::vector<std::string>, const char*> refused[] = {
        {{"notes.txt", "out.bmp"}, "not a picture"},        {{"short.btm", "out.bmp"}, "short or damaged"},
        {{"nomark.jpg", "out.bmp"}, "frame marker"},        {{"damaged.jpg", "out.bmp"}, "Invalid picture"},
        {{"grad.gif", "out.bmp", "--gray"}, "refused"},     {{"grad.btm", "out.bmp", "--fade", "256"}, "0 to 255"},
    };
    for (const auto& [args, says] : refused) {
        const auto r = cli(args);
        EXPECT_EQ(r.Status, 1) << args[0];
        EXPECT_NE(r.Errors.find(says), std::string::npos) << r.Errors;
        EXPECT_EQ(std::count(r.Errors.begin(), r.Errors.end(), '\n'), 1) << r.Errors;
        EXPECT_FALSE(PathExists(dir / "out.bmp")) << args[0];
    }
}
