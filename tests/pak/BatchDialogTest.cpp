#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
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

}  // namespace
