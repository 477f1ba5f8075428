#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/RegistryHome.h"
#include "identify/modGlobal.h"
#include "pak/ZipWrapper.h"
#include "platform/Registry.h"
#include "shell/frmMain.h"
#include "winsupport/cRegistry.h"

namespace {

bool UserKeyExists(const std::string& key) {
    cRegistry r;
    r.SetClassKey(HKEY_CURRENT_USER);
    r.SetSectionKey(key);
    return r.KeyExists();
}

}  // namespace

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
