// Planar Bitmaps and palette files, selected and shown from the main window,
// and a bitmap saved as what the pane shows.
#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/PlanarBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "fixtures/Judges.h"
#include "shell/frmMain.h"

using fixtures::WriteFile;

namespace {

class GamePicturePreview : public ::testing::Test {
protected:
    void SetUp() override {
        fixtures::BtmSpec recipe;
        recipe.Width = 6;
        recipe.Height = 4;
        recipe.Palette = fixtures::RainbowPalette();
        recipe.Pixels = fixtures::PlanarPixels(6, 4, 1, [](int32_t x, int32_t y) { return x * 40 + y; });
        WriteFile(dir / "six.btm", fixtures::BuildBtm(recipe));
        WriteFile(dir / "rainbow.plt", fixtures::PaletteFile(recipe.Palette));
        form.oDir.SetPath(dir.Path());
    }
    uint32_t Shown(int32_t index) const { return fixtures::RainbowPalette()[index][2] & 0xFFFFFF; }

    fixtures::TempDir dir;
    frmMain form;
};

TEST_F(GamePicturePreview, SelectionNamesThePictureAndPreviewPaintsIt) {
    ASSERT_TRUE(form.oFile.Select("six.btm"));
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "PPlanarBitmap : 6x4 (1 Bytes/Pixel)");
    form.oFile_DblClick();
    EXPECT_EQ(form.oPicture.Bounds().Width, 6);
    EXPECT_EQ(form.oPicture.Bounds().Height, 4);
    for (auto [x, y] : {std::pair{0, 0}, {5, 0}, {0, 3}, {5, 3}})
        EXPECT_EQ(static_cast<uint32_t>(form.oPicture.Point(x, y)), Shown(x * 40 + y)) << x << "," << y;

    ASSERT_TRUE(form.oFile.Select("rainbow.plt"));
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "Planar Bitmap Palette");
    form.oFile_DblClick();
    EXPECT_EQ(form.oPicture.Bounds().Width, 256);
    EXPECT_EQ(form.oPicture.Bounds().Height, 3);
    EXPECT_EQ(static_cast<uint32_t>(form.oPicture.Point(200, 2)), Shown(200));
}

TEST_F(GamePicturePreview, SaveWritesThePaneAsABmpOfTheFilesName) {
    REQUIRE_IMAGEMAGICK();
    ASSERT_TRUE(form.oFile.Select("six.btm"));
    form.oFile_DblClick();
    fixtures::ScriptedFileDialogs dialogs;
    const std::string out = dir / "out.bmp";
    dialogs.Choose(out);
    form.SaveCommand();
    ASSERT_EQ(dialogs.Requests.size(), 1u);
    EXPECT_EQ(dialogs.Requests[0].fileName, "six.bmp");
    EXPECT_EQ(check::Identify(out), "BMP3 6 4");
    const std::vector<uint8_t> rgb = check::DecodeRgb(out);
    const uint32_t corner = Shown(5 * 40 + 3);
    EXPECT_EQ((std::vector<uint8_t>(rgb.end() - 3, rgb.end())),
              (std::vector<uint8_t>{uint8_t(corner), uint8_t(corner >> 8), uint8_t(corner >> 16)}));
}

}  // namespace
