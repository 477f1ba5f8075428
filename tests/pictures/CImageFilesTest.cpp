#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"
#include "identify/IFileHost.h"
#include "pictures/CImageFiles.h"
#include "platform/Files.h"

using fixtures::TempDir;

namespace {

std::string Jpeg(const std::string& body) { return std::string("\xFF\xD8", 2) + body; }

// A baseline frame segment: length 17, precision 8, height, width (high byte first).
std::string SofSegment(uint16_t height, uint16_t width) {
    return std::string("\xFF\xC0\x00\x11\x08", 5) + char(height >> 8) + char(height & 0xFF) + char(width >> 8) +
           char(width & 0xFF) + std::string(12, '\x01');
}

}  // namespace

TEST(CImageFiles, NamesEachKindFromItsHeadAlone) {
    TempDir dir;
    FileHost host;
    fixtures::JpegOptions thumbnail;
    thumbnail.Thumbnail = fixtures::GradientImage(8, 4);
    fixtures::JpegOptions extended;
    extended.FrameMarker = 0xC1;
    struct Case {
        const char* name;
        std::string bytes;
        bool valid;
        const char* info;
        const char* ext;
        bool show, save;
    } cases[] = {
        {"a.bmp", fixtures::BuildBmp24(fixtures::GradientImage(5, 3)), true, "BMP Picture 5x3", "bmp", true, false},
        {"bm", "BM", true, "BMP Picture 0x0", "bmp", true, false},
        {"b.gif", fixtures::BuildGif(fixtures::Quantise332(fixtures::GradientImage(7, 2))), true, "GIF Picture 7x2",
         "gif", true, true},
        // "GIF" is enough, and its sizes are signed.
        {"c.gif", std::string("GIF\0\0\0\x2C\x01\xFE\xFF", 10), true, "GIF Picture 300x-2", "gif", true, true},
        {"gix", "GIX89a\x01\x00\x01\x00", false, nullptr, nullptr, false, false},
        {"d.jpg", fixtures::BuildJpeg(fixtures::GradientImage(33, 17)), true, "JPG Picture 33x17", "jpg", true, true},
        // The thumbnail's frame comes first, so its size is the one given.
        {"thumb.jpg", fixtures::BuildJpeg(fixtures::GradientImage(40, 30), thumbnail), true, "JPG Picture 8x4", "jpg",
         true, true},
        {"ext.jpg", fixtures::BuildJpeg(fixtures::GradientImage(40, 30), extended), true, "JPG Picture ", "jpg", false,
         false},
        // In 0xFF 0xFF 0xC0 the second 0xFF is taken as the marker's second
        // byte; a third 0xFF in front puts the pair back in step.
        {"ffff.jpg", Jpeg("\xFF" + SofSegment(16, 32)), true, "JPG Picture ", "jpg", false, false},
        {"ffffff.jpg", Jpeg("\xFF\xFF" + SofSegment(16, 32)), true, "JPG Picture 32x16", "jpg", true, true},
        // A marker whose 0xC0 ends the file is not seen; one byte more and it is,
        // with the sizes beyond the end read as 0.
        {"end.jpg", Jpeg("\x12\xFF\xC0"), true, "JPG Picture ", "jpg", false, false},
        {"end1.jpg", Jpeg(std::string("\x12\xFF\xC0\x00", 4)), true, "JPG Picture 0x0", "jpg", true, true},
        {"soi.jpg", Jpeg(""), true, "JPG Picture ", "jpg", false, false},
        {"ff00", std::string("\xFF\x00\xFF\xC0", 4), false, nullptr, nullptr, false, false},
        {"e.tga", fixtures::BuildTga(fixtures::GradientImage(6, 4)), true, "TGA Bitmap : 6x4 (24 Bits/Pixel)", "tga",
         true, true},
        {"empty", "", false, nullptr, nullptr, false, false},
    };
    for (const Case& c : cases) {
        fixtures::WriteFile(dir / c.name, c.bytes);
        CImageFiles images(host);
        const int32_t handles = OpenHandleCount();
        EXPECT_EQ(images.Initialize(dir / c.name), c.valid) << c.name;
        // Only the TGA reader, tried on any other first byte, keeps its file open.
        const bool tgaTried = c.bytes.empty() || std::string("BG\xFF").find(c.bytes[0]) == std::string::npos;
        EXPECT_EQ(OpenHandleCount(), handles + (tgaTried ? 1 : 0)) << c.name;
        if (c.valid) {
            EXPECT_EQ(images.Information(), c.info) << c.name;
            EXPECT_EQ(images.Extension(), c.ext) << c.name;
        }
        EXPECT_EQ(images.IsAble2Show(), c.show) << c.name;
        EXPECT_EQ(images.IsAble2Save(), c.save) << c.name;
    }
}

TEST(CImageFiles, TheSamePathGivesTheEarlierAnswerWithoutReading) {
    TempDir dir;
    FileHost host;
    CImageFiles images(host);
    fixtures::WriteFile(dir / "a.gif", std::string("GIF89a\x02\x00\x03\x00", 10));
    EXPECT_FALSE(images.Initialize(dir / "none"));
    ASSERT_TRUE(images.Initialize(dir / "a.gif"));
    fixtures::WriteFile(dir / "a.gif", "not a picture");
    EXPECT_TRUE(images.Initialize(dir / "a.gif"));
    EXPECT_EQ(images.Information(), "GIF Picture 2x3");
    // Another path that nothing recognises keeps the last name and size.
    EXPECT_FALSE(images.Initialize(dir / "none"));
    EXPECT_EQ(images.Information(), "GIF Picture 2x3");
    EXPECT_EQ(images.Width(), 2);
}
