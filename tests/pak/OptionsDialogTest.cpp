#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/frmOpt.h"

namespace {

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
