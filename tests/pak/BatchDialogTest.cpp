#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/frmScript.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"

using fixtures::TempDir;

namespace {

class BatchDialog : public ::testing::Test {
protected:
    void SetUp() override {
        g_sShortCutPath = dir.Path() + "/";
        g_sPkzipPath.clear();
    }
    void TearDown() override {
        g_sShortCutPath.clear();
        g_sPkzipPath.clear();
    }
    bool Match(const std::string& pattern, const std::string& name) {
        form.m_lMode = 2;
        form.tSel.SetText(pattern);
        form.m_lMode = 2;
        return form.MatchMember(name, false);
    }
    TempDir dir;
    fixtures::ScriptedMessageBoxes boxes;
    frmMain main;
    frmScript form{main};
};

}  // namespace

TEST_F(BatchDialog, PatternsArePrefixAndTailWithoutQuestionMarks) {
    EXPECT_TRUE(Match("*.pic", "a.PIC"));
    EXPECT_TRUE(Match("*.pic", "a.epic"));
    EXPECT_FALSE(Match("*.pic", "a.pi"));
    EXPECT_TRUE(Match("ab*", "ABC.txt"));
    EXPECT_FALSE(Match("ab*", "xab"));
    EXPECT_TRUE(Match("ab*.pic", "abz.pic"));
    EXPECT_FALSE(Match("ab*.pic", "abz.txt"));
    EXPECT_TRUE(Match("a*b", "axxx"));  // no "." in the pattern: the prefix alone
    EXPECT_TRUE(Match(" Name.TXT ", "name.txt  "));
    EXPECT_FALSE(Match("n?me.txt", "name.txt"));
    EXPECT_TRUE(Match("\xE9t\xE9*.pic", "\xC9T\xC9.PIC"));
    EXPECT_TRUE(Match("*.\x9Cuf", "x.\x8CUF"));
    EXPECT_FALSE(Match("stra\xDF" "e", "STRASSE"));
    EXPECT_TRUE(Match("*.*", "anything"));
    EXPECT_FALSE(Match("   ", "x"));
    // The tail is tested on the file name, behind the last folder separator.
    EXPECT_TRUE(Match("*.txt", "dir/a.txt"));
}

TEST_F(BatchDialog, TheSelectionOptionsFollowThePatternBox) {
    form.Form_Load();
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

TEST_F(BatchDialog, WithoutAPakTheDialogAsksForAScript) {
    form.Form_Load();
    EXPECT_FALSE(form.m_bPak);
    EXPECT_EQ(form.lPath2.Caption(), "Script:");
    EXPECT_FALSE(form.cbPath.Visible());
    EXPECT_TRUE(form.tScript.Visible());
    EXPECT_TRUE(form.Command1.Enabled());
    EXPECT_FALSE(form.OptSel[1].Enabled());
    EXPECT_EQ(form.cbPath.Text(), dir.Path() + "/");
}

TEST_F(BatchDialog, AMissingArchiverIsToldInSevenLines) {
    form.Form_Load();
    form.Form_Activate();
    ASSERT_EQ(boxes.Calls.size(), 1u);
    const auto& box = boxes.Calls[0];
    EXPECT_EQ(box.title, "Missing Utility");
    EXPECT_EQ(box.buttons & vbCritical, vbCritical);
    size_t lines = 1;
    for (size_t p = box.prompt.find("\r\n"); p != std::string::npos; p = box.prompt.find("\r\n", p + 2)) ++lines;
    EXPECT_EQ(lines, 7u);
    EXPECT_EQ(box.prompt.substr(0, 44), "Sorry, but you must download the pkzip25.exe");
    EXPECT_NE(box.prompt.find("quarrin-pkzip)"), std::string::npos);
    EXPECT_TRUE(form.IsUnloaded());
}

TEST_F(BatchDialog, ValidationMessagesKeepTheDialogOpen) {
    form.Form_Load();
    form.cmdValidate_Click(1);
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, "Empty Pak not allowed!");
    EXPECT_EQ(boxes.Calls[0].title, "Unpak Error");
    form.tPak.SetText(dir / "none.pak");
    form.cmdValidate_Click(1);
    EXPECT_EQ(boxes.Calls.back().prompt, "Empty Script not allowed!");
    form.tScript.SetText(dir / "x.bat");
    form.cmdValidate_Click(1);
    EXPECT_EQ(boxes.Calls.back().prompt, dir / "none.pak" + " doesn't exist!");
    EXPECT_FALSE(form.IsUnloaded());
    fixtures::WriteFile(dir / "a.pak", "x");
    form.tPak.SetText(dir / "a.pak");
    form.cmdValidate_Click(1);
    EXPECT_TRUE(form.IsUnloaded());
}
