#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/frmOpt.h"

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
    fixtures::TempDir dir;
    fixtures::ScriptedMessageBoxes boxes;
    frmOpt form;
};

TEST_F(OptionsDialog, OkStoresTrimmedValuesAndAFolderWithItsSeparator) {
    EXPECT_EQ(form.tPath.Text() + form.tPak.Text() + form.tShortcut.Text(), "/old/pkzip/old/unpak/old/short/");
    EXPECT_TRUE(form.optOS[1].Value());
    form.tPath.SetText("  /usr/bin/quarrin-pkzip ");
    form.tPak.SetText(" /tmp/u ");
    form.tShortcut.SetText("  " + (dir / "short cut") + " ");
    form.optOS[0].SetValue(true);
    form.cmdValidate_Click(1);
    EXPECT_TRUE(form.IsUnloaded());
    EXPECT_EQ(g_sPkzipPath, "/usr/bin/quarrin-pkzip");
    EXPECT_EQ(g_sUnpakPath, "/tmp/u");
    EXPECT_EQ(g_sShortCutPath, dir / "short cut/");
    EXPECT_FALSE(g_bWin9x);  // the platform decides, not the option
    for (const std::string& line : std::vector<std::string>{"[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]", "\"PkzipPath\"=\"/usr/bin/quarrin-pkzip\"",
                                   "\"UnpakPath\"=\"/tmp/u\"", "\"Win9x\"=\"True\"",
                                   "\"ShortCutPath\"=\"" + dir / "short cut/" + "\""})
        EXPECT_NE(Stored().find(line), std::string::npos) << line;
}

TEST_F(OptionsDialog, AnEmptyShortcutKeepsTheOldOne) {
    form.tShortcut.SetText("   ");
    form.cmdValidate_Click(1);
    EXPECT_EQ(g_sShortCutPath, "/old/short/");
    EXPECT_NE(Stored().find("\"ShortCutPath\"=\"/old/short/\""), std::string::npos);
}

TEST_F(OptionsDialog, AMissingShortcutFolderOrCancelStoresNothing) {
    form.tShortcut.SetText(dir / "nowhere");
    form.tPath.SetText("/new");
    form.cmdValidate_Click(1);
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, dir / "nowhere/" + " doesn't exist!");
    EXPECT_EQ(boxes.Calls[0].title, "Custom Shortcut Error");
    EXPECT_FALSE(form.IsUnloaded());
    form.cmdValidate_Click(0);
    EXPECT_TRUE(form.IsUnloaded());
    EXPECT_EQ(g_sPkzipPath, "/old/pkzip");
    EXPECT_FALSE(std::filesystem::exists(home.UserFile()));
}

}  // namespace
