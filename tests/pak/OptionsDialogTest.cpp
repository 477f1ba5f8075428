#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/frmOpt.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"

using fixtures::TempDir;

namespace {

class OptionsDialog : public ::testing::Test {
protected:
    void SetUp() override {
        g_sPkzipPath = "/old/pkzip";
        g_sUnpakPath = "/old/unpak";
        g_sShortCutPath = "/old/short/";
        g_bWin9x = false;
        std::filesystem::create_directories(dir / "short cut");
        form.Form_Load();
    }
    void TearDown() override {
        g_sPkzipPath.clear();
        g_sUnpakPath.clear();
        g_sShortCutPath.clear();
    }
    std::string Stored() { return fixtures::ReadFile(home.UserFile()); }

    fixtures::RegistryHome home;
    TempDir dir;
    fixtures::ScriptedMessageBoxes boxes;
    frmOpt form;
};

}  // namespace

TEST_F(OptionsDialog, LoadsTheGlobals) {
    EXPECT_EQ(form.tPath.Text(), "/old/pkzip");
    EXPECT_EQ(form.tPak.Text(), "/old/unpak");
    EXPECT_EQ(form.tShortcut.Text(), "/old/short/");
    EXPECT_FALSE(form.optOS[0].Value());
    EXPECT_TRUE(form.optOS[1].Value());
}

TEST_F(OptionsDialog, OkStoresTrimmedValuesAndAFolderWithItsSeparator) {
    form.tPath.SetText("  /usr/bin/quarrin-pkzip ");
    form.tPak.SetText(" /tmp/u ");
    form.tShortcut.SetText("  " + (dir / "short cut") + " ");
    form.optOS[0].SetValue(true);
    form.cmdValidate_Click(1);
    EXPECT_TRUE(form.IsUnloaded());
    EXPECT_EQ(g_sPkzipPath, "/usr/bin/quarrin-pkzip");
    EXPECT_EQ(g_sUnpakPath, "/tmp/u");
    EXPECT_EQ(g_sShortCutPath, dir / "short cut/");
    EXPECT_EQ(form.tShortcut.Text(), dir / "short cut/");
    EXPECT_FALSE(g_bWin9x);  // the platform decides, not the option
    std::string reg = Stored();
    EXPECT_NE(reg.find("[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]"), std::string::npos);
    EXPECT_NE(reg.find("\"PkzipPath\"=\"/usr/bin/quarrin-pkzip\""), std::string::npos);
    EXPECT_NE(reg.find("\"UnpakPath\"=\"/tmp/u\""), std::string::npos);
    EXPECT_NE(reg.find("\"Win9x\"=\"True\""), std::string::npos);
}

TEST_F(OptionsDialog, AnEmptyShortcutKeepsTheOldOne) {
    form.tShortcut.SetText("   ");
    form.cmdValidate_Click(1);
    EXPECT_EQ(g_sShortCutPath, "/old/short/");
    EXPECT_NE(Stored().find("\"ShortCutPath\"=\"/old/short/\""), std::string::npos);
}

TEST_F(OptionsDialog, AMissingShortcutFolderStoresNothing) {
    form.tShortcut.SetText(dir / "nowhere");
    form.tPath.SetText("/new");
    form.cmdValidate_Click(1);
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, dir / "nowhere/" + " doesn't exist!");
    EXPECT_EQ(boxes.Calls[0].title, "Custom Shortcut Error");
    EXPECT_FALSE(form.IsUnloaded());
    EXPECT_EQ(g_sPkzipPath, "/old/pkzip");
    EXPECT_FALSE(std::filesystem::exists(home.UserFile()));
}

TEST_F(OptionsDialog, CancelChangesNothing) {
    form.tPath.SetText("/new");
    form.cmdValidate_Click(0);
    EXPECT_TRUE(form.IsUnloaded());
    EXPECT_EQ(g_sPkzipPath, "/old/pkzip");
    EXPECT_FALSE(std::filesystem::exists(home.UserFile()));
}
