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
    auto open = [](const std::string& path, const std::string& shortcut) {
        g_sPkzipPath = "/old/pkzip";
        g_sUnpakPath = "/old/unpak";
        g_sShortCutPath = "/old/short/";
        g_bWin9x = false;
        auto form = std::make_unique<frmOpt>();
        form->Form_Load();
        EXPECT_EQ(form->tPath.Text() + form->tPak.Text() + form->tShortcut.Text(), "/old/pkzip/old/unpak/old/short/");
        EXPECT_TRUE(form->optOS[1].Value());
        form->tPath.SetText(path);
        form->tShortcut.SetText(shortcut);
        return form;
    };
    // A missing shortcut folder is told and keeps the dialog open; cancel then stores nothing.
    auto form = open("/new", dir / "nowhere");
    form->cmdValidate_Click(1);
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, dir / "nowhere/" + " doesn't exist!");
    EXPECT_FALSE(form->IsUnloaded());
    form->cmdValidate_Click(0);
    EXPECT_TRUE(form->IsUnloaded());
    EXPECT_EQ(g_sPkzipPath, "/old/pkzip");
    EXPECT_FALSE(std::filesystem::exists(home.UserFile()));

    form = open("  /usr/bin/quarrin-pkzip ", "  " + (dir / "short cut") + " ");
    form->tPak.SetText(" /tmp/u ");
    form->optOS[0].SetValue(true);
    form->cmdValidate_Click(1);
    EXPECT_TRUE(form->IsUnloaded());
    EXPECT_EQ(g_sPkzipPath + "|" + g_sUnpakPath + "|" + g_sShortCutPath, "/usr/bin/quarrin-pkzip|/tmp/u|" + dir / "short cut/");
    EXPECT_FALSE(g_bWin9x);  // the platform decides, not the option
    for (const std::string& line : std::vector<std::string>{"[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]",
                                                             "\"PkzipPath\"=\"/usr/bin/quarrin-pkzip\"", "\"UnpakPath\"=\"/tmp/u\"",
                                                             "\"Win9x\"=\"True\"", "\"ShortCutPath\"=\"" + dir / "short cut/" + "\""})
        EXPECT_NE(fixtures::ReadFile(home.UserFile()).find(line), std::string::npos) << line;

    // An empty shortcut keeps the old one.
    form = open("/p", "   ");
    form->cmdValidate_Click(1);
    EXPECT_EQ(g_sShortCutPath, "/old/short/");
    EXPECT_NE(fixtures::ReadFile(home.UserFile()).find("\"ShortCutPath\"=\"/old/short/\""), std::string::npos);
    g_sPkzipPath.clear();
    g_sUnpakPath.clear();
    g_sShortCutPath.clear();
}

}  // namespace
