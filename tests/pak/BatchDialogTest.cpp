#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/frmScript.h"
#include "platform/Runtime.h"
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

TEST_F(BatchDialog, WithoutAPakTheDialogAsksForAScriptAndTheOptionsFollowThePattern) {
    form.Form_Load();
    EXPECT_FALSE(form.m_bPak);
    EXPECT_EQ(form.lPath2.Caption(), "Script:");
    EXPECT_FALSE(form.cbPath.Visible());
    EXPECT_TRUE(form.tScript.Visible());
    EXPECT_FALSE(form.OptSel[1].Enabled());
    EXPECT_EQ(form.cbPath.Text(), dir.Path() + "/");
    EXPECT_TRUE(form.OptSel[0].Value());
    form.tSel.SetText("*.bin");
    EXPECT_TRUE(form.OptSel[2].Value());
    EXPECT_FALSE(form.OptSel[0].Value());
    form.tSel.SetText("");
    EXPECT_TRUE(form.OptSel[0].Value());
    form.tSel.SetText("*.*");
    form.tSel.LostFocus.Raise();
    EXPECT_TRUE(form.OptSel[0].Value());
    EXPECT_FALSE(form.OptSel[2].Value());
}

TEST_F(BatchDialog, AMissingArchiverIsToldAndClosesTheDialog) {
    g_sPkzipPath.clear();
    form.Form_Load();
    form.Form_Activate();
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].buttons & vbCritical, vbCritical);
    EXPECT_TRUE(form.IsUnloaded());
}

TEST_F(BatchDialog, ValidationMessagesKeepTheDialogOpen) {
    form.Form_Load();
    const std::string none = dir / "none.pak";
    const struct {
        std::function<void()> set;
        std::string prompt;
    } steps[] = {
        {[] {}, "Empty Pak not allowed!"},
        {[&] { form.tPak.SetText(none); }, "Empty Script not allowed!"},
        {[&] { form.tScript.SetText(dir / "x.bat"); }, none + " doesn't exist!"},
    };
    for (const auto& step : steps) {
        step.set();
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
