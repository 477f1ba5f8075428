// The common picture files, named from their heads, and the TGA reader.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"
#include "identify/IFileHost.h"
#include "pictures/CImageFiles.h"
#include "pictures/CTGAFile.h"
#include "platform/Files.h"

using fixtures::TgaOptions;

namespace {

std::string Jpeg(const std::string& body) { return std::string("\xFF\xD8", 2) + body; }

// A baseline frame segment: length 17, precision 8, height 16, width 32.
const std::string kSof16x32 = std::string("\xFF\xC0\x00\x11\x08\x00\x10\x00\x20", 9) + std::string(12, '\x01');

// Two rows of one pixel: dark blue (0, 0, 127) above cyan (0, 255, 255), grey
// levels 14 and 178.
std::string Tga(TgaOptions options) { return fixtures::BuildTga(fixtures::GradientImage(1, 2), options); }

}  // namespace

TEST(CImageFiles, NamesEachKindFromItsHeadAlone) {
    fixtures::TempDir dir;
    FileHost host;
    struct Case {
        std::string bytes;
        const char* info;  // nullptr for a file that is refused
        const char* ext;
        bool show, save;
    } cases[] = {
        {"BM", "BMP Picture 0x0", "bmp", true, false},
        // "GIF" is enough, and its sizes are signed.
        {std::string("GIF\0\0\0\x2C\x01\xFE\xFF", 10), "GIF Picture 300x-2", "gif", true, true},
        {"GIX89a\x01\x00\x01\x00", nullptr, nullptr, false, false},
        // The thumbnail's frame comes first, so its size is the one given.
        {fixtures::BuildJpeg(fixtures::GradientImage(40, 30), {.Thumbnail = fixtures::GradientImage(8, 4)}),
         "JPG Picture 8x4", "jpg", true, true},
        // In 0xFF 0xFF 0xC0 the second 0xFF is taken as the marker's second
        // byte; a third 0xFF in front puts the pair back in step.
        {Jpeg("\xFF" + kSof16x32), "JPG Picture ", "jpg", false, false},
        {Jpeg("\xFF\xFF" + kSof16x32), "JPG Picture 32x16", "jpg", true, true},
        // A marker whose 0xC0 ends the file is not seen; one byte more and it is,
        // with the sizes beyond the end read as 0.
        {Jpeg("\x12\xFF\xC0"), "JPG Picture ", "jpg", false, false},
        {Jpeg(std::string("\x12\xFF\xC0\x00", 4)), "JPG Picture 0x0", "jpg", true, true},
        {std::string("\xFF\x00\xFF\xC0", 4), nullptr, nullptr, false, false},
        {"", nullptr, nullptr, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        fixtures::WriteFile(dir / "picture", c.bytes);
        CImageFiles images(host);
        const int32_t handles = OpenHandleCount();
        EXPECT_EQ(images.Initialize(dir / "picture"), c.info != nullptr);
        // Only the TGA reader, tried on any other first byte, keeps its file open.
        const bool tgaTried = c.bytes.empty() || std::string("BG\xFF").find(c.bytes[0]) == std::string::npos;
        EXPECT_EQ(OpenHandleCount(), handles + (tgaTried ? 1 : 0));
        if (c.info != nullptr) {
            EXPECT_EQ(images.Information() + "|" + images.Extension(), c.info + std::string("|") + c.ext);
        }
        EXPECT_EQ(images.IsAble2Show(), c.show);
        EXPECT_EQ(images.IsAble2Save(), c.save);
    }
    // The same path gives the earlier answer without reading; another that
    // nothing recognises keeps the last name and size.
    CImageFiles images(host);
    EXPECT_FALSE(images.IsAble2Show()) << "without a file";
    fixtures::WriteFile(dir / "a.gif", std::string("GIF89a\x02\x00\x03\x00", 10));
    ASSERT_TRUE(images.Initialize(dir / "a.gif"));
    fixtures::WriteFile(dir / "a.gif", "not a picture");
    EXPECT_TRUE(images.Initialize(dir / "a.gif"));
    EXPECT_FALSE(images.Initialize(dir / "none"));
    EXPECT_EQ(images.Information(), "GIF Picture 2x3");
}

// What the descriptor says decides the row order and the colours; what the
// reader can't decode is refused, or taken and not shown.
TEST(CTGAFile, DecodesWhatTheDescriptorSaysAndRefusesTheRest) {
    std::string wide = Tga({}), zero = Tga({});
    wide[12] = '\x00', wide[13] = '\x80';  // a width of 32768 reads as negative
    zero[14] = zero[15] = 0;
    const std::string mapped = Tga({.ColorMapEntries = 1});
    struct Case {
        std::string bytes;
        bool taken;
        std::vector<uint8_t> bits;  // bottom row first, blue green red, stride 4; none when not shown
    } cases[] = {
        {Tga({.TopDown = true}), true, {0xFF, 0xFF, 0, 0, 0x7F, 0, 0, 0}},
        // Grey levels become three equal bytes; the type does not decide.
        {Tga({.ImageType = 3, .PixelDepth = 8}), true, {178, 178, 178, 0, 14, 14, 14, 0}},
        {Tga({.ImageType = 2, .PixelDepth = 8, .TopDown = true}), true, {178, 178, 178, 0, 14, 14, 14, 0}},
        // A colour map is not skipped: its bytes are taken for the first row.
        {mapped, true, {uint8_t(mapped[18]), uint8_t(mapped[19]), uint8_t(mapped[20]), 0, 0xFF, 0xFF, 0, 0}},
        // Refused by Initialize: compressed, mapped, of other depths, with an id, cut in the header.
        {Tga({.ImageType = 10}), false, {}}, {Tga({.ImageType = 1}), false, {}}, {Tga({.PixelDepth = 16}), false, {}},
        {Tga({.PixelDepth = 32}), false, {}}, {Tga({.IdLength = 3}), false, {}}, {Tga({.Truncate = 17}), false, {}},
        // Taken, and not shown.
        {Tga({.Truncate = 20}), true, {}}, {wide, true, {}}, {zero, true, {}},
    };
    fixtures::TempDir dir;
    const int32_t handles = OpenHandleCount();
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        fixtures::WriteFile(dir / "p.tga", c.bytes);
        CTGAFile tga;
        FileHost host;
        host.oPicture.Move(0, 0, 1, 2);
        EXPECT_EQ(tga.Initialize(dir / "p.tga"), c.taken);
        EXPECT_EQ(c.taken && tga.Show(host.oPicture.hDC), !c.bits.empty());
        EXPECT_EQ(tga.Loaded(), !c.bits.empty());
        if (c.bits.empty()) continue;
        EXPECT_EQ(tga.Information(), "TGA Bitmap : 1x2 (" + std::to_string(uint8_t(c.bytes[16])) + " Bits/Pixel)");
        EXPECT_EQ(std::vector<uint8_t>(tga.DIBBitsPtr(), tga.DIBBitsPtr() + 8), c.bits);
        EXPECT_EQ(host.oPicture.Point(0, 1), c.bits[0] << 16 | c.bits[1] << 8 | c.bits[2]);
        EXPECT_TRUE(tga.Show(host.oPicture.hDC));
    }
    EXPECT_EQ(OpenHandleCount(), handles);
    CTGAFile tga;
    ASSERT_TRUE(tga.Initialize(dir / "p.tga"));
    EXPECT_FALSE(tga.Initialize(dir / "missing.tga"));
    EXPECT_FALSE(tga.Show(0));
    EXPECT_FALSE(tga.SaveAs());
}
