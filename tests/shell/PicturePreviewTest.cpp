#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"
#include "fixtures/PlanarBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "fixtures/Judges.h"
#include "platform/Picture.h"
#include "shell/frmMain.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

// The front end's picture decoder, played by the test: every file decodes to
// a 12 x 7 pattern of 0x00RRGGBB values, or fails.
class PatternLoader : public IPictureLoader {
public:
    PatternLoader() : previous_(GetPictureLoader()) { SetPictureLoader(this); }
    ~PatternLoader() override { SetPictureLoader(previous_); }
    bool Load(const std::string&, int32_t& width, int32_t& height, std::vector<uint32_t>& pixels) override {
        width = 12;
        height = 7;
        for (int32_t i = 0; i < 84; ++i) pixels.push_back(Colour(i % 12, i / 12));
        return Decodes;
    }
    static uint32_t Colour(int32_t x, int32_t y) { return uint32_t(x * 20) << 16 | uint32_t(y * 30) << 8 | 0x40; }
    bool Decodes = true;

private:
    IPictureLoader* previous_;
};

class PicturePreview : public ::testing::Test {
protected:
    void SetUp() override {
        const fixtures::RgbImage image = fixtures::GradientImage(12, 7);
        WriteFile(dir / "bars.bmp", fixtures::BuildBmp24(image));
        WriteFile(dir / "grad.gif", fixtures::BuildGif(fixtures::Quantise332(image)));
        WriteFile(dir / "grad.tga", fixtures::BuildTga(image));
        WriteFile(dir / "photo.jpg", fixtures::BuildJpeg(image));
        fixtures::JpegOptions extended;
        extended.FrameMarker = 0xC1;
        WriteFile(dir / "nomark.jpg", fixtures::BuildJpeg(image, extended));
        form.oDir.SetPath(dir.Path());
    }
    TempDir dir;
    PatternLoader loader;
    frmMain form;
};

}  // namespace

TEST_F(PicturePreview, SelectionNamesThePictureAndPreviewDrawsIt) {
    struct Case {
        const char* name;
        const char* panel1;
        bool show, saveAfter;
    } cases[] = {
        {"bars.bmp", "BMP Picture 12x7", true, false},
        {"grad.gif", "GIF Picture 12x7", true, true},
        {"photo.jpg", "JPG Picture 12x7", true, true},
        {"grad.tga", "TGA Bitmap : 12x7 (24 Bits/Pixel)", true, true},
        {"nomark.jpg", "JPG Picture ", false, false},
    };
    const fixtures::RgbImage gradient = fixtures::GradientImage(12, 7);
    const uint8_t* tga = gradient.At(11, 6);
    const uint32_t v = PatternLoader::Colour(11, 6);
    for (const Case& c : cases) {
        const std::string name = c.name;
        ASSERT_TRUE(form.oFile.Select(name));
        EXPECT_EQ(form.m_lFileKind, fkPicture) << name;
        EXPECT_EQ(form.oStatusBar.Panels(1).Text, c.panel1) << name;
        EXPECT_EQ(form.oStatusBar.Panels(2).Text, name.substr(name.size() - 3)) << name;
        EXPECT_EQ(form.ShowOffered(), c.show) << name;
        EXPECT_FALSE(form.SaveOffered()) << name;
        form.oFile_DblClick();
        EXPECT_EQ(form.SaveOffered(), c.saveAfter) << name;
        if (!c.show) continue;
        EXPECT_TRUE(form.oPicture.Visible() && !form.oListView.Visible());
        EXPECT_EQ(form.oPicture.Bounds().Width, 12) << name;
        // The pane's corner holds the picture's: the TGA's own pixel, or the loader's.
        EXPECT_EQ(static_cast<uint32_t>(form.oPicture.Point(11, 6)),
                  name == "grad.tga" ? fixtures::ColorWord(tga[0], tga[1], tga[2])
                                     : fixtures::ColorWord(v >> 16, (v >> 8) & 0xFF, v & 0xFF))
            << name;
    }
}

TEST_F(PicturePreview, SaveOffersABmpOfTheNameAndAsksBeforeReplacing) {
    REQUIRE_IMAGEMAGICK();
    ASSERT_TRUE(form.oFile.Select("grad.gif"));
    form.oFile_DblClick();
    fixtures::ScriptedFileDialogs dialogs;
    fixtures::ScriptedMessageBoxes boxes;
    const std::string out = dir / "out.bmp";
    dialogs.Choose(out).Choose(out).Choose(out);
    form.SaveCommand();
    ASSERT_EQ(dialogs.Requests.size(), 1u);
    EXPECT_EQ(dialogs.Requests[0].fileName, "grad.bmp");
    EXPECT_EQ(dialogs.Requests[0].filters.at(0).first, "Bitmap 24 bits (*.bmp)");
    const auto written = check::DecodeRgb(out);
    ASSERT_EQ(written.size(), 12u * 7 * 3);
    EXPECT_EQ(written[0], 0);
    EXPECT_EQ(written[written.size() - 3], 220);  // red at the last pixel: 11 x 20
    // No keeps the file, Yes replaces it.
    WriteFile(out, "old");
    boxes.Answer(vbNo).Answer(vbYes);
    form.SaveCommand();
    EXPECT_EQ(fixtures::ReadFile(out), "old");
    EXPECT_EQ(boxes.Calls.at(0).prompt, out + " already exist.\r\nDo you want to replace it?");
    form.SaveCommand();
    EXPECT_EQ(check::Identify(out), "BMP3 12 7");
}

TEST_F(PicturePreview, APictureThatFailsToDecodeSaysSoAndABmpOffersNoSave) {
    ASSERT_TRUE(form.oFile.Select("photo.jpg"));
    loader.Decodes = false;
    form.oFile_DblClick();
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "Invalid picture");
    EXPECT_EQ(form.oPicture.Bounds().Width, 12);  // sized from the header before the decode
    EXPECT_EQ(form.screen.MousePointer(), 0);
    fixtures::ScriptedFileDialogs dialogs;
    ASSERT_TRUE(form.oFile.Select("bars.bmp"));
    form.oFile_DblClick();
    form.SaveCommand();
    EXPECT_TRUE(dialogs.Requests.empty());
}
