#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "identify/modGlobal.h"
#include "pak/ZipWrapper.h"
#include "shell/frmMain.h"
#include "platform/Registry.h"
#include "winsupport/cRegistry.h"

namespace {

class Startup : public ::testing::Test {
protected:
    void TearDown() override {
        g_sGameFolder.clear();
        g_sPkzipPath.clear();
        g_sUnpakPath.clear();
        g_sShortCutPath.clear();
    }
    bool UserKeyExists(const std::string& key) {
        cRegistry r;
        r.SetClassKey(HKEY_CURRENT_USER);
        r.SetSectionKey(key);
        return r.KeyExists();
    }
    fixtures::RegistryHome home;
};

}  // namespace

TEST_F(Startup, AFirstRunWithoutSettingsStartsEmptyAndCreatesOnlyTheGamesUserKey) {
    g_sPkzipPath = "stale";
    frmMain form;
    form.Form_Initialize();
    EXPECT_EQ(g_sGameFolder, "");
    EXPECT_EQ(g_sPkzipPath, "");
    EXPECT_EQ(g_sShortCutPath, "");
    EXPECT_FALSE(g_bWin9x);
    EXPECT_TRUE(UserKeyExists("Software\\Selvane\\Directory"));
    EXPECT_FALSE(UserKeyExists("Software\\Corvane\\Quarrin"));
    // The machine's store is only read.
    EXPECT_FALSE(std::filesystem::exists(home.MachineFile()));
}

TEST_F(Startup, ReadsTheSettingsOfBothStoresAndIgnoresTheStoredPlatform) {
    home.WriteMachine("REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Selvane\\Directory]\r\n\"Directory\"=\"/opt/selvane\"\r\n");
    home.WriteUser(
        "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]\r\n"
        "\"PkzipPath\"=\"/usr/bin/quarrin-pkzip\"\r\n\"UnpakPath\"=\"/tmp/u\"\r\n"
        "\"ShortCutPath\"=\"/data/\"\r\n\"Win9x\"=\"True\"\r\n");
    frmMain form;
    form.Form_Initialize();
    EXPECT_EQ(g_sGameFolder, "/opt/selvane");
    EXPECT_EQ(g_sPkzipPath, "/usr/bin/quarrin-pkzip");
    EXPECT_EQ(g_sUnpakPath, "/tmp/u");
    EXPECT_EQ(g_sShortCutPath, "/data/");
    EXPECT_FALSE(g_bWin9x);
}

TEST_F(Startup, FillsTheZipTemplates) {
    g_abZipEndHead.fill(0);
    frmMain form;
    form.Form_Initialize();
    EXPECT_EQ(g_abZipEndHead, (std::array<uint8_t, 12>{0x50, 0x4B, 0x05, 0x06, 0, 0, 0, 0, 1, 0, 1, 0}));
    EXPECT_EQ(g_abZipLocalHead[8], 0x0A);
}
