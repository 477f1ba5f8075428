#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/GameFiles.h"
#include "fixtures/PakBuilder.h"
#include "identify/CNerhaltFiles.h"
#include "shell/frmMain.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

class PakPreview : public ::testing::Test {
protected:
    void SetUp() override {
        fixtures::PakBuilder pak;
        pak.Stored("b.txt", "hello").Imploded("a\\c.bin", std::string(4000, 'z')).Stored("n", "");
        WriteFile(dir / "data.pak", pak.Build());
        WriteFile(dir / "tile.ftl", fixtures::GameFile(0x0289FCF5));
        form.oDir.SetPath(dir.Path());
    }
    TempDir dir;
    frmMain form;
};

}  // namespace

TEST_F(PakPreview, APakOffersShowAndThenListsItsMembersWithSaveAndExtract) {
    ASSERT_TRUE(form.oFile.Select("data.pak"));
    EXPECT_EQ(form.m_lFileKind, fkGame);
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "DCL Imploding Packed File");
    EXPECT_EQ(form.oStatusBar.Panels(2).Text, "pak");
    EXPECT_TRUE(form.ShowOffered());
    EXPECT_FALSE(form.SaveOffered());
    EXPECT_FALSE(form.ExtractOffered());
    EXPECT_FALSE(form.oListView.Visible());

    form.oToolbar_ButtonClick(4);
    EXPECT_TRUE(form.oListView.Visible());
    EXPECT_FALSE(form.oPicture.Visible());
    EXPECT_FALSE(form.oImg.Visible());
    EXPECT_TRUE(form.SaveOffered());
    EXPECT_TRUE(form.ExtractOffered());
    EXPECT_TRUE(form.oVScroll.Visible());
    ASSERT_EQ(form.oListView.Count(), 3);
    EXPECT_EQ(form.oListView.Item(1).Text, "a\\c.bin");  // sorted by name
    EXPECT_EQ(form.oListView.Item(1).SubItems(2), "            4000");
    EXPECT_EQ(form.oListView.Item(1).SubItems(3), "bin");
    EXPECT_EQ(form.screen.MousePointer(), 0);
}

TEST_F(PakPreview, ANewSelectionLeavesTheOldMembersButTakesTheOffers) {
    ASSERT_TRUE(form.oFile.Select("data.pak"));
    form.oFile_DblClick();
    ASSERT_TRUE(form.oFile.Select("tile.ftl"));
    EXPECT_TRUE(form.oListView.Visible());
    EXPECT_EQ(form.oListView.Count(), 3);
    EXPECT_FALSE(form.SaveOffered());
    EXPECT_FALSE(form.ExtractOffered());
    // Save is off, so a double click on a member does nothing.
    form.oListView.SelectOnly(1);
    form.oListView_DblClick();
    form.oFile_DblClick();
    EXPECT_FALSE(form.oListView.Visible());
    EXPECT_TRUE(form.oPicture.Visible());
}
