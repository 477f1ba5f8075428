#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "identify/modGlobal.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

class Navigation : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(dir / "game/sv");
        std::filesystem::create_directories(dir / "prog");
        std::filesystem::create_directories(dir / "short");
        WriteFile(dir / "prog/quarrin", "");
        WriteFile(dir / "short/x.txt", "x");
        App::SetExecutable(dir / "prog", "quarrin");
        g_sGameFolder.clear();
        g_sShortCutPath.clear();
        form.Form_Load();
    }
    void TearDown() override {
        g_sGameFolder.clear();
        g_sShortCutPath.clear();
    }
    TempDir dir;
    frmMain form;
};

}  // namespace

TEST_F(Navigation, StartsInTheProgramsFolder) {
    EXPECT_EQ(form.oDir.Path(), dir / "prog");
    EXPECT_EQ(form.oFile.Path(), dir / "prog");
    EXPECT_EQ(form.lInfo.Caption().substr(form.lInfo.Caption().find("\r\n") + 2), "Version 0.97");
    EXPECT_EQ(form.m_lSortColumn, 1);
    EXPECT_EQ(form.m_lFileKind, fkNone);
}

TEST_F(Navigation, FolderButtonsGoWhereTheirSettingsSay) {
    form.oFolderTbar_ButtonClick(1);  // no game folder: nothing happens
    EXPECT_EQ(form.oDir.Path(), dir / "prog");
    g_sGameFolder = dir / "game";
    form.oFolderTbar_ButtonClick(1);
    EXPECT_EQ(form.oDir.Path(), dir / "game");
    form.oFolderTbar_ButtonClick(3);  // no short cut: the program's folder
    EXPECT_EQ(form.oDir.Path(), dir / "prog");
    g_sShortCutPath = dir / "short/";
    form.oFolderTbar_ButtonClick(3);
    EXPECT_EQ(form.oDir.Path(), dir / "short");
    EXPECT_EQ(form.oFile.ListCount(), 1);
    form.oFolderTbar_ButtonClick(4);
    EXPECT_EQ(form.oDir.Path(), dir / "short");
    form.oFolderTbar_ButtonClick(5);
    EXPECT_EQ(form.oDir.Path(), dir.Path());
    g_sGameFolder = dir / "missing";
    form.oFolderTbar_ButtonClick(1);
    EXPECT_EQ(form.oDir.Path(), dir.Path());
}

TEST_F(Navigation, TheParentButtonStopsAtTheRoot) {
    form.oDir.SetPath("/");
    form.oFolderTbar_ButtonClick(5);
    EXPECT_EQ(form.oDir.Path(), "/");
}

TEST_F(Navigation, EnterInTheFolderListOpensTheHighlightedFolder) {
    form.oDir.SetPath(dir / "game");
    int32_t sv = -1;
    for (int32_t i = 0; i < form.oDir.ListCount(); ++i)
        if (form.oDir.List(i) == dir / "game/sv") sv = i;
    ASSERT_GE(sv, 0);
    form.oDir.ListIndex = sv;
    int16_t key = 'x';
    form.oDir_KeyPress(key);
    EXPECT_EQ(form.oDir.Path(), dir / "game");
    key = vbKeyReturn;
    form.oDir_KeyPress(key);
    EXPECT_EQ(form.oDir.Path(), dir / "game/sv");
}

TEST_F(Navigation, ADriveThatCannotBeReadFallsBackToTheSystemDrive) {
    form.oDrive.SetDrive(dir / "no-medium");
    EXPECT_EQ(form.oDrive.Drive(), "/");
    EXPECT_EQ(form.oDir.Path(), "/");
}

TEST_F(Navigation, AFolderChangeKeepsTheLastSelectionsState) {
    WriteFile(dir / "prog/n.txt", "x");
    form.oFile.Refresh();
    ASSERT_TRUE(form.oFile.Select("n.txt"));
    form.oFolderTbar_ButtonClick(5);
    EXPECT_EQ(form.m_lFileKind, fkText);
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "ASCII Formated File");
    EXPECT_TRUE(form.ShowOffered());
}
