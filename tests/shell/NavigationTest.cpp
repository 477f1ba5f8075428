#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "identify/modGlobal.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"

namespace {

class Navigation : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* folder : {"game/sv", "prog", "short"}) std::filesystem::create_directories(dir / folder);
        fixtures::WriteFile(dir / "prog/quarrin", "");
        fixtures::WriteFile(dir / "prog/n.txt", "x");
        App::SetExecutable(dir / "prog", "quarrin");
        form.Form_Load();
    }
    void TearDown() override {
        g_sGameFolder.clear();
        g_sShortCutPath.clear();
    }
    // A name inside the test's folder, the folder itself for "", or an absolute path.
    std::string At(const std::string& p) { return p.empty() ? dir.Path() : p[0] == '/' ? p : dir / p; }
    fixtures::TempDir dir;
    frmMain form;
};

}  // namespace

TEST_F(Navigation, StartsInTheProgramsFolderAndTheButtonsGoWhereTheirSettingsSay) {
    EXPECT_EQ(form.oDir.Path(), dir / "prog");
    ASSERT_TRUE(form.oFile.Select("n.txt"));
    struct Row {
        const char* from;  // none: where the row before left it
        int32_t button;
        const char *game, *shortcut, *to;
    };
    const Row rows[] = {
        {nullptr, 1, "", "", "prog"},  // no game folder: nothing happens
        {nullptr, 1, "game", "", "game"},
        {nullptr, 3, "", "", "prog"},  // no short cut: the program's folder
        {nullptr, 3, "", "short/", "short"},
        {nullptr, 4, "", "", "short"},
        {nullptr, 5, "", "", ""},
        {nullptr, 1, "missing", "", ""},
        {"/", 5, "", "", "/"},  // the root has no parent
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.button);
        if (row.from) form.oDir.SetPath(row.from);
        g_sGameFolder = *row.game ? At(row.game) : "";
        g_sShortCutPath = *row.shortcut ? At(row.shortcut) : "";
        form.oFolderTbar_ButtonClick(row.button);
        EXPECT_EQ(form.oDir.Path(), At(row.to));
        EXPECT_EQ(form.oFile.Path(), form.oDir.Path());
    }
    // A folder change selects nothing: the last selection's state stays.
    EXPECT_EQ(form.m_lFileKind, fkText);
    EXPECT_TRUE(form.ShowOffered());
}

TEST_F(Navigation, EnterOpensTheHighlightedFolderAndAnUnreadableDriveFallsBack) {
    form.oDir.SetPath(dir / "game");
    for (int32_t i = 0; i < form.oDir.ListCount(); ++i)
        if (form.oDir.List(i) == dir / "game/sv") form.oDir.ListIndex = i;
    int16_t key = 'x';
    form.oDir_KeyPress(key);  // other keys are the control's
    EXPECT_EQ(form.oDir.Path(), dir / "game");
    key = vbKeyReturn;
    form.oDir_KeyPress(key);
    EXPECT_EQ(form.oDir.Path(), dir / "game/sv");
    form.oDrive.SetDrive(dir / "no-medium");
    EXPECT_EQ(form.oDrive.Drive(), "/");
    EXPECT_EQ(form.oDir.Path(), "/");
}
