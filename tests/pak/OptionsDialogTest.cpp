#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/frmOpt.h"

namespace {

TEST(OptionsDialog, OkStoresTrimmedValuesAndAMissingFolderStoresNothing) {
    fixtures::RegistryHome home;
    fixtures::TempDir dir;
    fixtures::ScriptedMessageBoxes boxes;
    std::filesystem::create_directories(dir / "short cut");
    g_sPkzipPath = "/old/pkzip";
    g_sShortCutPath = "/old/short/";
    g_bWin9x = false;
    // Ok in the dialog with these texts typed and the first system chosen;
    // true when the dialog closed.
    auto ok = [](const std::string& path, const std::string& shortcut) {
        frmOpt form;
        form.Form_Load();
        form.tPath.SetText(path);
        form.tPak.SetText(" /tmp/u ");
        form.tShortcut.SetText(shortcut);
        form.optOS[0].SetValue(true);
        form.cmdValidate_Click(1);
        return form.IsUnloaded();
    };
    // A missing shortcut folder is told and keeps the dialog open.
    EXPECT_FALSE(ok("/new", dir / "nowhere"));
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, dir / "nowhere/" + " doesn't exist!");
    EXPECT_EQ(g_sPkzipPath, "/old/pkzip");
    EXPECT_FALSE(std::filesystem::exists(home.UserFile()));

    EXPECT_TRUE(ok("  /usr/bin/quarrin-pkzip ", "  " + (dir / "short cut") + " "));
    EXPECT_EQ(g_sPkzipPath + "|" + g_sUnpakPath + "|" + g_sShortCutPath, "/usr/bin/quarrin-pkzip|/tmp/u|" + dir / "short cut/");
    EXPECT_FALSE(g_bWin9x);  // the platform decides, not the option
    for (const std::string& line : std::vector<std::string>{"[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]",
                                                             "\"PkzipPath\"=\"/usr/bin/quarrin-pkzip\"", "\"UnpakPath\"=\"/tmp/u\"",
                                                             "\"Win9x\"=\"True\"", "\"ShortCutPath\"=\"" + dir / "short cut/" + "\""})
        EXPECT_NE(fixtures::ReadFile(home.UserFile()).find(line), std::string::npos) << line;

    // An empty shortcut keeps the old one.
    g_sShortCutPath = "/old/short/";
    EXPECT_TRUE(ok("/p", "   "));
    EXPECT_EQ(g_sShortCutPath, "/old/short/");
    EXPECT_NE(fixtures::ReadFile(home.UserFile()).find("\"ShortCutPath\"=\"/old/short/\""), std::string::npos);
    g_sPkzipPath.clear();
    g_sUnpakPath.clear();
    g_sShortCutPath.clear();
}

}  // namespace
