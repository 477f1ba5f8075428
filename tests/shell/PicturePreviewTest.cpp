// Pictures selected, shown and saved from the main window.
#include <cstdio>

#include "fixtures/Judges.h"
#include "fixtures/PictureBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "platform/Picture.h"
#include "shell/Browser.h"

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
        for (int32_t i = 0; i < 84; ++i) pixels.push_back(uint32_t(i % 12 * 20) << 16 | uint32_t(i / 12 * 30) << 8 | 0x40);
        return Decodes;
    }
    bool Decodes = true;

private:
    IPictureLoader* previous_;
};

// The pattern's last pixel as a colour word.
constexpr uint32_t kPatternCorner = fixtures::ColorWord(220, 180, 0x40);

class PicturePreview : public Browser {
protected:
    void SetUp() override {
        const fixtures::RgbImage image = fixtures::GradientImage(12, 7);
        Add("bars.bmp", fixtures::BuildBmp24(image));
        Add("grad.gif", fixtures::BuildGif(fixtures::Quantise332(image)));
        Add("grad.tga", fixtures::BuildTga(image));
        Add("photo.jpg", fixtures::BuildJpeg(image));
        fixtures::JpegOptions extended;
        extended.FrameMarker = 0xC1;
        Add("nomark.jpg", fixtures::BuildJpeg(image, extended));
        Add("six.btm", fixtures::GradientBtm(6, 4));
        const uint8_t* last = image.At(11, 6);
        tgaCorner = fixtures::ColorWord(last[0], last[1], last[2]);
    }
    uint32_t tgaCorner = 0;
    PatternLoader loader;
};

}  // namespace

TEST_F(PicturePreview, SelectionNamesThePictureAndPreviewDrawsIt) {
    struct Row {
        const char* name;
        const char* panel1;
        bool show, saveAfter;
    };
    const Row rows[] = {
        {"bars.bmp", "BMP Picture 12x7", true, false},
        {"grad.gif", "GIF Picture 12x7", true, true},
        {"photo.jpg", "JPG Picture 12x7", true, true},
        {"grad.tga", "TGA Bitmap : 12x7 (24 Bits/Pixel)", true, true},
        {"nomark.jpg", "JPG Picture ", false, false},
    };
    for (const Row& row : rows) {
        const std::string name = row.name;
        SCOPED_TRACE(name);
        Select(name);
        EXPECT_EQ(form.m_lFileKind, fkPicture);
        EXPECT_EQ(Panel(1), row.panel1);
        EXPECT_EQ(Panel(2), name.substr(name.size() - 3));
        EXPECT_EQ(form.ShowOffered(), row.show);
        EXPECT_FALSE(form.SaveOffered());
        form.oFile_DblClick();
        EXPECT_EQ(form.SaveOffered(), row.saveAfter);
        if (!row.show) continue;
        EXPECT_TRUE(form.oPicture.Visible() && !form.oListView.Visible());
        EXPECT_EQ(form.oPicture.Bounds().Width, 12);
        // The TGA is our own decoder's; the others are the loader's.
        EXPECT_EQ(static_cast<uint32_t>(form.oPicture.Point(11, 6)), name == "grad.tga" ? tgaCorner : kPatternCorner);
    }
}

TEST_F(PicturePreview, SaveWritesThePaneAsABmpOfTheFilesNameAndAsksBeforeReplacing) {
    REQUIRE_IMAGEMAGICK();
    struct Row {
        const char* name;
        const char* proposed;
        const char* identify;
        uint32_t corner;
    };
    const Row rows[] = {
        {"six.btm", "six.bmp", "BMP3 6 4", Rainbow(255)},
        {"grad.gif", "grad.bmp", "BMP3 12 7", kPatternCorner},
    };
    const std::string out = dir / "out.bmp";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Preview(row.name);
        fixtures::ScriptedFileDialogs dialogs;
        dialogs.Choose(out);
        std::remove(out.c_str());
        form.SaveCommand();
        ASSERT_EQ(dialogs.Requests.size(), 1u);
        EXPECT_EQ(dialogs.Requests[0].fileName, row.proposed);
        EXPECT_EQ(dialogs.Requests[0].filters.at(0).first, "Bitmap 24 bits (*.bmp)");
        EXPECT_EQ(check::Identify(out), row.identify);
        const std::vector<uint8_t> rgb = check::DecodeRgb(out);
        ASSERT_GE(rgb.size(), 3u);
        EXPECT_EQ(std::vector<uint8_t>(rgb.end() - 3, rgb.end()),
                  (std::vector<uint8_t>{uint8_t(row.corner), uint8_t(row.corner >> 8), uint8_t(row.corner >> 16)}));
    }
    // No keeps the file, Yes replaces it.
    fixtures::ScriptedFileDialogs dialogs;
    fixtures::ScriptedMessageBoxes boxes;
    dialogs.Choose(out).Choose(out);
    fixtures::WriteFile(out, "old");
    boxes.Answer(vbNo).Answer(vbYes);
    form.SaveCommand();
    EXPECT_EQ(fixtures::ReadFile(out), "old");
    EXPECT_EQ(boxes.Calls.at(0).prompt, out + " already exist.\r\nDo you want to replace it?");
    form.SaveCommand();
    EXPECT_EQ(check::Identify(out), "BMP3 12 7");
}

TEST_F(PicturePreview, APictureThatFailsToDecodeSaysSoAndABmpOffersNoSave) {
    Select("photo.jpg");
    loader.Decodes = false;
    form.oFile_DblClick();
    EXPECT_EQ(Panel(1), "Invalid picture");
    EXPECT_EQ(form.oPicture.Bounds().Width, 12);  // sized from the header before the decode
    EXPECT_EQ(form.screen.MousePointer(), 0);
    fixtures::ScriptedFileDialogs dialogs;
    Preview("bars.bmp");
    form.SaveCommand();
    EXPECT_TRUE(dialogs.Requests.empty());
}
