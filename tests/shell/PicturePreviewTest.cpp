// Pictures saved from the main window, and one that fails to decode.
#include <cstdio>

#include "fixtures/Judges.h"
#include "fixtures/ScriptedDialogs.h"
#include "shell/Browser.h"

using PicturePreview = Browser;

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
