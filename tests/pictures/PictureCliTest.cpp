// quarrin-cli picture, run as a program; ImageMagick judges what it writes.
#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"
#include "fixtures/PlanarBuilder.h"
#include "fixtures/Programs.h"
#include "fixtures/Judges.h"
#include "platform/Files.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

class PictureCli : public ::testing::Test {
protected:
    void SetUp() override {
        REQUIRE_IMAGEMAGICK();
        WriteFile(dir / "grad.btm", fixtures::GradientBtm(13, 5));
        fixtures::BtmSpec shortData;
        shortData.Width = 4;
        shortData.Height = 4;
        shortData.Pixels = std::string(10, '\x01');
        shortData.DataSize = 16;  // the file ends 6 bytes into the pixel data
        shortData.Shape = fixtures::PaletteShape::Missing;
        WriteFile(dir / "short.btm", fixtures::BuildBtm(shortData));
        WriteFile(dir / "strip.plt", fixtures::PaletteFile(fixtures::RainbowPalette()));
        WriteFile(dir / "grad.gif", fixtures::BuildGif(fixtures::Quantise332(fixtures::GradientImage(9, 6))));
        WriteFile(dir / "grad.tga", fixtures::BuildTga(fixtures::GradientImage(7, 3)));
        fixtures::JpegOptions extended;
        extended.FrameMarker = 0xC1;
        WriteFile(dir / "nomark.jpg", fixtures::BuildJpeg(fixtures::GradientImage(8, 8), extended));
        std::string damaged = fixtures::BuildJpeg(fixtures::GradientImage(8, 8));
        WriteFile(dir / "damaged.jpg", damaged.substr(0, damaged.find(std::string("\xFF\xC0", 2)) + 20));
        WriteFile(dir / "notes.txt", "text");
    }
    fixtures::ProgramResult Cli(std::vector<std::string> args) {
        args.insert(args.begin(), {std::string(QUARRIN_TOOLS_DIR) + "/quarrin-cli", "picture"});
        return fixtures::RunAndCapture(args);
    }
    TempDir dir;
};

}  // namespace

TEST_F(PictureCli, WritesWhatThePaneShows) {
    struct Case {
        std::vector<std::string> args;
        const char* identify;
        int pngColourType;  // -1 for a BMP
    } cases[] = {
        {{"grad.gif", "gif.bmp"}, "BMP3 9 6", -1},
        {{"grad.tga", "tga.bmp"}, "BMP3 7 3", -1},
        {{"grad.btm", "btm.bmp"}, "BMP3 13 5", -1},
        {{"grad.btm", "indexed.png"}, "PNG 13 5", 3},
        {{"grad.btm", "inverted.png", "--invert"}, "PNG 13 5", 2},
        {{"grad.gif", "gif.png"}, "PNG 9 6", 2},
        {{"strip.plt", "plt.bmp"}, "BMP3 256 3", -1},
    };
    for (Case& c : cases) {
        c.args[0] = dir / c.args[0];
        c.args[1] = dir / c.args[1];
        const auto r = Cli(c.args);
        ASSERT_EQ(r.Status, 0) << c.args[1] << r.Errors;
        EXPECT_EQ(check::Identify(c.args[1]), c.identify);
        if (c.pngColourType >= 0) {
            EXPECT_EQ(fixtures::ReadFile(c.args[1])[25], c.pngColourType) << c.args[1];
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
}

TEST_F(PictureCli, RefusesWithOneLineAndWritesNothing) {
    struct Case {
        std::vector<std::string> args;
        const char* says;
    } cases[] = {
        {{"notes.txt"}, "not a picture"},
        {{"short.btm"}, "short or damaged"},
        {{"nomark.jpg"}, "frame marker"},
        {{"damaged.jpg"}, "Invalid picture"},
        {{"grad.gif", "--gray"}, "refused"},
        {{"grad.btm", "--fade", "256"}, "0 to 255"},
    };
    for (Case& c : cases) {
        c.args[0] = dir / c.args[0];
        c.args.insert(c.args.begin() + 1, dir / "out.bmp");
        const auto r = Cli(c.args);
        EXPECT_EQ(r.Status, 1) << c.args[0];
        EXPECT_NE(r.Errors.find(c.says), std::string::npos) << r.Errors;
        EXPECT_EQ(std::count(r.Errors.begin(), r.Errors.end(), '\n'), 1) << r.Errors;
        EXPECT_FALSE(PathExists(dir / "out.bmp")) << c.args[0];
    }
}
