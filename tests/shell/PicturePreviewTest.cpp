#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"
#include "fixtures/PlanarBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "fixtures_check/CheckSupport.h"
#include "platform/Picture.h"
#include "shell/frmMain.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

// The front end's picture decoder, played by the test: every file decodes to
// a pattern of the size set here, or fails.
class PatternLoader : public IPictureLoader {
public:
    PatternLoader() : previous_(GetPictureLoader()) { SetPictureLoader(this); }
    ~PatternLoader() override { SetPictureLoader(previous_); }
    bool Load(const std::string&, int32_t& width, int32_t& height, std::vector<uint32_t>& pixels) override {
        if (!Decodes) return false;
        width = Width;
        height = Height;
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x) pixels.push_back(Colour(x, y));
        return true;
    }
    // 0x00RRGGBB.
    static uint32_t Colour(int32_t x, int32_t y) { return uint32_t(x * 20) << 16 | uint32_t(y * 30) << 8 | 0x40; }
    bool Decodes = true;
    int32_t Width = 12;
    int32_t Height = 7;

private:
    IPictureLoader* previous_;
};

class PicturePreview : public ::testing::Test {
protected:
    void SetUp() override {
        WriteFile(dir / "bars.bmp", fixtures::BuildBmp24(fixtures::ColourBars(12, 7)));
        WriteFile(dir / "grad.tga", fixtures::BuildTga(fixtures::GradientImage(12, 7)));
        WriteFile(dir / "grad.gif", fixtures::BuildGif(fixtures::Quantise332(fixtures::GradientImage(12, 7))));
        WriteFile(dir / "photo.jpg", fixtures::BuildJpeg(fixtures::GradientImage(12, 7)));
        fixtures::JpegOptions extended;
        extended.FrameMarker = 0xC1;
        WriteFile(dir / "nomark.jpg", fixtures::BuildJpeg(fixtures::GradientImage(12, 7), extended));
        form.oDir.SetPath(dir.Path());
    }
    TempDir dir;
    PatternLoader loader;
    frmMain form;
};

}  // namespace

TEST_F(PicturePreview, SelectionNamesThePictureAndPreviewShowsIt) {
    struct Case {
        const char* name;
        const char* panel1;
        const char* panel2;
        bool show, saveAfter;
    } cases[] = {
        {"bars.bmp", "BMP Picture 12x7", "bmp", true, false},
        {"grad.gif", "GIF Picture 12x7", "gif", true, true},
        {"photo.jpg", "JPG Picture 12x7", "jpg", true, true},
        {"grad.tga", "TGA Bitmap : 12x7 (24 Bits/Pixel)", "tga", true, true},
        {"nomark.jpg", "JPG Picture ", "jpg", false, false},
    };
    for (const Case& c : cases) {
        ASSERT_TRUE(form.oFile.Select(c.name));
        EXPECT_EQ(form.m_lFileKind, fkPicture) << c.name;
        EXPECT_EQ(form.oStatusBar.Panels(1).Text, c.panel1) << c.name;
        EXPECT_EQ(form.oStatusBar.Panels(2).Text, c.panel2) << c.name;
        EXPECT_EQ(form.ShowOffered(), c.show) << c.name;
        EXPECT_FALSE(form.SaveOffered()) << c.name;
        EXPECT_FALSE(form.tReport.Text().empty()) << c.name;  // the hex dump
        form.oFile_DblClick();
        EXPECT_EQ(form.SaveOffered(), c.saveAfter) << c.name;
        EXPECT_EQ(form.oStatusBar.Panels(1).Text, c.panel1) << c.name;
        EXPECT_EQ(form.screen.MousePointer(), 0);
        if (!c.show) continue;
        EXPECT_TRUE(form.oPicture.Visible());
        EXPECT_FALSE(form.oListView.Visible());
        const Rect& pane = form.oPicture.Bounds();
        EXPECT_EQ(pane.Left, 0);
        EXPECT_EQ(pane.Width, 12) << c.name;
        // The loader's pattern, or the TGA's own pixels, corner to corner.
        const auto corner = static_cast<uint32_t>(form.oPicture.Point(11, 6));
        const uint32_t v = PatternLoader::Colour(11, 6);
        const fixtures::RgbImage gradient = fixtures::GradientImage(12, 7);
        const uint8_t* tga = gradient.At(11, 6);
        EXPECT_EQ(corner, c.panel2[0] == 't' ? fixtures::ColorWord(tga[0], tga[1], tga[2])
                                             : fixtures::ColorWord(v >> 16, (v >> 8) & 0xFF, v & 0xFF))
            << c.name;
    }
}

TEST_F(PicturePreview, SaveWritesWhatThePaneShowsAfterTheReplaceQuestion) {
    REQUIRE_IMAGEMAGICK();
    ASSERT_TRUE(form.oFile.Select("grad.gif"));
    form.oFile_DblClick();
    fixtures::ScriptedFileDialogs dialogs;
    fixtures::ScriptedMessageBoxes boxes;
    const std::string out = dir / "out.bmp";
    dialogs.Choose(out).Choose(out).Choose(out).Cancel();
    form.SaveCommand();
    ASSERT_EQ(dialogs.Requests.size(), 1u);
    EXPECT_EQ(dialogs.Requests[0].fileName, "grad.bmp");
    ASSERT_EQ(dialogs.Requests[0].filters.size(), 1u);
    EXPECT_EQ(dialogs.Requests[0].filters[0].first, "Bitmap 24 bits (*.bmp)");
    EXPECT_EQ(check::Identify(out), "BMP3 12 7");
    std::vector<uint8_t> expected;
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 12; ++x) {
            const uint32_t v = PatternLoader::Colour(x, y);
            expected.insert(expected.end(), {uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)});
        }
    EXPECT_EQ(check::DecodeRgb(out), expected);
    // No keeps the file, Yes replaces it; the cancelled dialog writes nothing.
    WriteFile(out, "old");
    boxes.Answer(vbNo).Answer(vbYes);
    form.SaveCommand();
    EXPECT_EQ(fixtures::ReadFile(out), "old");
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, out + " already exist.\r\nDo you want to replace it?");
    form.SaveCommand();
    EXPECT_EQ(check::Identify(out), "BMP3 12 7");
    form.SaveCommand();
    EXPECT_EQ(dialogs.Requests.size(), 4u);
}

TEST_F(PicturePreview, APictureThatFailsToDecodeReportsItInTheStatusBar) {
    ASSERT_TRUE(form.oFile.Select("photo.jpg"));
    loader.Decodes = false;
    form.oFile_DblClick();
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "Invalid picture");
    EXPECT_EQ(form.oPicture.Bounds().Width, 12);  // sized from the header before the decode
    EXPECT_EQ(form.screen.MousePointer(), 0);
    // A BMP and a JPEG without a frame marker offer no save and show no dialog.
    fixtures::ScriptedFileDialogs dialogs;
    for (const char* name : {"bars.bmp", "nomark.jpg"}) {
        ASSERT_TRUE(form.oFile.Select(name));
        form.oFile_DblClick();
        form.SaveCommand();
    }
    EXPECT_TRUE(dialogs.Requests.empty());
}
