#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/ZipWrapper.h"
#include "platform/Registry.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"
#include "winsupport/cRegistry.h"

TEST(Commands, ColumnClicksSortAndTellTheOrderByTheIcon) {
    frmMain form;
    // Sizes padded to 16 characters sort by number.
    const std::pair<const char*, const char*> members[] = {
        {"b.dat", "               1"}, {"a.txt", "               9"}, {"c.bin", "              10"}};
    for (const auto& [name, size] : members) form.oListView.Add(name).SubItems(1) = size;
    struct Row {
        int32_t column;
        const char *icon1, *icon2, *order;
    };
    // The first click on the sorted column turns it round; another column
    // takes the icon and sorts ascending.
    const Row rows[] = {{1, "DESC", "", "cba"}, {1, "ASC", "", "abc"}, {2, "", "ASC", "bac"}, {2, "", "DESC", "cab"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.order);
        form.oListView_ColumnClick(row.column);
        std::string order;
        for (int32_t i = 1; i <= form.oListView.Count(); ++i) order += form.oListView.Item(i).Text[0];
        EXPECT_EQ(order, row.order);
        EXPECT_EQ(form.oListView.Column(1).Icon, row.icon1);
        EXPECT_EQ(form.oListView.Column(2).Icon, row.icon2);
    }
}

TEST(Commands, EntriesDoTheirOneThing) {
    frmMain form;
    std::vector<std::string> opened;  // each form with the mouse pointer it ran under
    form.ShowModalForm = [&](const std::string& name) { opened.push_back(name + std::to_string(form.screen.MousePointer())); };
    bool closed = false;
    form.CloseWindow = [&] { closed = true; };
    // Save without a file object does nothing, wherever it comes from.
    form.mnuSubFile_Click(1);
    form.oToolbar_ButtonClick(3);
    form.oListView.Add("m");
    form.oListView.SelectOnly(1);
    form.oListView_KeyPress(vbKeyReturn);
    form.mnuSubFile_Click(0);
    form.mnuSubTools[2]->Click.Raise();
    form.oToolbar_ButtonClick(2);
    form.mnuSubTools_Click(1);
    EXPECT_EQ(opened, (std::vector<std::string>{"frmOpt0", "frmScript0"}));
    EXPECT_EQ(form.screen.MousePointer(), 0);
    EXPECT_FALSE(closed);
    form.mnuSubFile[4]->Click.Raise();
    EXPECT_TRUE(closed);
}

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

bool UserKeyExists(const std::string& key) {
    cRegistry r;
    r.SetClassKey(HKEY_CURRENT_USER);
    r.SetSectionKey(key);
    return r.KeyExists();
}

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

TEST_F(Navigation, OnlyEnterOpensTheHighlightedFolderAndAnUnreadableDriveFallsBack) {
    form.oDir.SetPath(dir / "game");
    for (int32_t i = 0; i < form.oDir.ListCount(); ++i)
        if (form.oDir.List(i) == dir / "game/sv") form.oDir.ListIndex = i;
    int16_t key = 'x';
    form.oDir_KeyPress(key);  // other keys are the control's
    EXPECT_EQ(form.oDir.Path(), dir / "game");
    form.oDrive.SetDrive(dir / "no-medium");
    EXPECT_EQ(form.oDrive.Drive(), "/");
    EXPECT_EQ(form.oDir.Path(), "/");
}

TEST(Startup, ReadsTheSettingsOfBothStoresAndIgnoresTheStoredPlatform) {
    struct Row {
        const char *machine, *user, *game, *pkzip, *unpak, *shortcut;
    };
    const Row rows[] = {
        {"", "", "", "", "", ""},
        {"[HKEY_LOCAL_MACHINE\\Software\\Selvane\\Directory]\r\n\"Directory\"=\"/opt/selvane\"\r\n",
         "[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]\r\n\"PkzipPath\"=\"/usr/bin/quarrin-pkzip\"\r\n"
         "\"UnpakPath\"=\"/tmp/u\"\r\n\"ShortCutPath\"=\"/data/\"\r\n\"Win9x\"=\"True\"\r\n",
         "/opt/selvane", "/usr/bin/quarrin-pkzip", "/tmp/u", "/data/"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.game);
        fixtures::RegistryHome home;
        if (*row.machine) home.WriteMachine(std::string("REGEDIT4\r\n\r\n") + row.machine);
        if (*row.user) home.WriteUser(std::string("REGEDIT4\r\n\r\n") + row.user);
        g_sPkzipPath = "stale";
        g_abZipLocalHead.fill(0);
        frmMain form;
        form.Form_Initialize();
        EXPECT_EQ(g_sGameFolder, row.game);
        EXPECT_EQ(g_sPkzipPath, row.pkzip);
        EXPECT_EQ(g_sUnpakPath, row.unpak);
        EXPECT_EQ(g_sShortCutPath, row.shortcut);
        EXPECT_FALSE(g_bWin9x);
        EXPECT_EQ(g_abZipLocalHead[8], 0x0A);  // the templates are filled
        // A first run creates the game's key of the user and no other; the
        // machine's store is only read.
        EXPECT_TRUE(UserKeyExists("Software\\Selvane\\Directory"));
        EXPECT_EQ(UserKeyExists("Software\\Corvane\\Quarrin"), *row.user != 0);
        EXPECT_EQ(std::filesystem::exists(home.MachineFile()), *row.machine != 0);
        for (std::string* s : {&g_sGameFolder, &g_sPkzipPath, &g_sUnpakPath, &g_sShortCutPath}) s->clear();
    }
}
