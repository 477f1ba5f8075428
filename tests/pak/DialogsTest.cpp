// The Unpak and Options dialogs: what each takes from its boxes, what it
// refuses, and what it stores.
#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/frmOpt.h"
#include "pak/frmScript.h"
#include "shell/frmMain.h"

namespace {

class BatchDialog : public ::testing::Test {
protected:
    void SetUp() override { g_sShortCutPath = dir.Path() + "/"; }
    void TearDown() override { g_sShortCutPath.clear(); }
    fixtures::TempDir dir;
    fixtures::ScriptedMessageBoxes boxes;
    frmMain main;
    frmScript form{main};
};

TEST_F(BatchDialog, PatternsArePrefixAndTailWithoutQuestionMarks) {
    const struct {
        const char* pattern;
        const char* name;
        bool match;
    } rows[] = {
        {"*.pic", "a.PIC", true}, {"*.pic", "a.epic", true}, {"*.pic", "a.pi", false}, {"ab*", "ABC.txt", true},
        {"ab*", "xab", false}, {"ab*.pic", "abz.pic", true}, {"ab*.pic", "abz.txt", false},
        {"a*b", "axxx", true},  // no "." in the pattern: the prefix alone
        {" Name.TXT ", "name.txt  ", true}, {"n?me.txt", "name.txt", false},
        {"\xE9t\xE9*.pic", "\xC9T\xC9.PIC", true}, {"*.\x9Cuf", "x.\x8CUF", true}, {"stra\xDF" "e", "STRASSE", false},
        {"*.*", "anything", true}, {"   ", "x", false},
        {"*.txt", "dir/a.txt", true},  // the tail is tested on the file name
    };
    for (const auto& row : rows) {
        form.tSel.SetText(row.pattern);
        form.m_lMode = 2;
        EXPECT_EQ(form.MatchMember(row.name, false), row.match) << row.pattern << " " << row.name;
    }
}

// Without the archiver the dialog says so and closes at once; without a PAK
// or a script it says what is missing and stays open.
TEST_F(BatchDialog, ValidationMessagesKeepTheDialogOpen) {
    g_sPkzipPath.clear();
    frmScript missing{main};
    missing.Form_Load();
    missing.Form_Activate();
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].title, "Missing Utility");
    EXPECT_EQ(boxes.Calls[0].buttons & vbCritical, vbCritical);
    EXPECT_TRUE(missing.IsUnloaded());
    form.Form_Load();
    const std::string none = dir / "none.pak";
    const struct {
        std::string pak, script, prompt;
    } steps[] = {{"", "", "Empty Pak not allowed!"},
                 {none, "", "Empty Script not allowed!"},
                 {none, dir / "x.bat", none + " doesn't exist!"}};
    for (const auto& step : steps) {
        form.tPak.SetText(step.pak);
        form.tScript.SetText(step.script);
        form.cmdValidate_Click(1);
        EXPECT_EQ(boxes.Calls.back().prompt, step.prompt);
        EXPECT_EQ(boxes.Calls.back().title, "Unpak Error");
        EXPECT_FALSE(form.IsUnloaded());
    }
    fixtures::WriteFile(dir / "a.pak", "x");
    form.tPak.SetText(dir / "a.pak");
    form.cmdValidate_Click(1);
    EXPECT_TRUE(form.IsUnloaded());
}

TEST(OptionsDialog, OkStoresTrimmedValuesAndAMissingFolderOrCancelStoresNothing) {
    fixtures::RegistryHome home;
    fixtures::TempDir dir;
    fixtures::ScriptedMessageBoxes boxes;
    std::filesystem::create_directories(dir / "short cut");
    g_sPkzipPath = "/old/pkzip";
    g_sShortCutPath = "/old/short/";
    g_bWin9x = false;
    // The dialog shows the settings; then these texts are typed, the first
    // system is chosen and the button pressed (1 Ok, 0 Cancel). True when
    // the dialog closed.
    auto press = [](const std::string& path, const std::string& shortcut, int32_t button = 1) {
        frmOpt form;
        form.Form_Load();
        EXPECT_EQ(form.tPath.Text() + "|" + form.tShortcut.Text(), g_sPkzipPath + "|" + g_sShortCutPath);
        EXPECT_EQ(form.optOS[1].Value(), !g_bWin9x);
        form.tPath.SetText(path);
        form.tPak.SetText(" /tmp/u ");
        form.tShortcut.SetText(shortcut);
        form.optOS[0].SetValue(true);
        form.cmdValidate_Click(button);
        return form.IsUnloaded();
    };
    // A missing shortcut folder is told and keeps the dialog open; Cancel
    // stores nothing.
    EXPECT_FALSE(press("/new", dir / "nowhere"));
    EXPECT_TRUE(press("/new", dir / "short cut", 0));
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, dir / "nowhere/" + " doesn't exist!");
    EXPECT_EQ(g_sPkzipPath, "/old/pkzip");
    EXPECT_FALSE(std::filesystem::exists(home.UserFile()));

    EXPECT_TRUE(press("  /usr/bin/quarrin-pkzip ", "  " + (dir / "short cut") + " "));
    EXPECT_EQ(g_sPkzipPath + "|" + g_sUnpakPath + "|" + g_sShortCutPath, "/usr/bin/quarrin-pkzip|/tmp/u|" + dir / "short cut/");
    EXPECT_FALSE(g_bWin9x);  // the platform decides, not the option
    for (const std::string& line : std::vector<std::string>{"[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]",
                                                             "\"PkzipPath\"=\"/usr/bin/quarrin-pkzip\"", "\"UnpakPath\"=\"/tmp/u\"",
                                                             "\"Win9x\"=\"True\"", "\"ShortCutPath\"=\"" + dir / "short cut/" + "\""})
        EXPECT_NE(fixtures::ReadFile(home.UserFile()).find(line), std::string::npos) << line;

    // An empty shortcut keeps the old one.
    g_sShortCutPath = "/old/short/";
    EXPECT_TRUE(press("/p", "   "));
    EXPECT_EQ(g_sShortCutPath, "/old/short/");
    EXPECT_NE(fixtures::ReadFile(home.UserFile()).find("\"ShortCutPath\"=\"/old/short/\""), std::string::npos);
    g_sPkzipPath.clear();
    g_sUnpakPath.clear();
    g_sShortCutPath.clear();
}

}  // namespace
