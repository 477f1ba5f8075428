// A whole session over every kind of file, whole and cut short: selecting,
// previewing, saving and unpacking read the files and never change them.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "samples/SampleSet.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/ZipWrapper.h"
#include "pak/frmScript.h"
#include "platform/Shell.h"
#include "shell/frmMain.h"

namespace {

namespace fs = std::filesystem;

// Each file's bytes and modification time.
std::map<std::string, std::string> Snapshot(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& e : fs::recursive_directory_iterator(folder)) {
        struct stat st {};
        if (::lstat(e.path().c_str(), &st) != 0 || !S_ISREG(st.st_mode)) continue;
        files[e.path().string()] = fixtures::ReadFile(e.path().string()) + "@" + std::to_string(st.st_mtim.tv_sec) +
                                   "." + std::to_string(st.st_mtim.tv_nsec);
    }
    return files;
}

TEST(Session, EveryInputStaysAsItWas) {
    fixtures::RegistryHome home;
    fixtures::TempDir dir;
    const std::string in = dir / "in", out = dir / "out";
    fixtures::WriteSamples(in);
    fs::create_directories(out);
    // Every sample also cut in half and cut to its first eight bytes.
    for (const auto& sample : fixtures::SampleFiles()) {
        fixtures::WriteFile(in + "/half-" + sample.Name, sample.Bytes.substr(0, sample.Bytes.size() / 2));
        fixtures::WriteFile(in + "/head-" + sample.Name, sample.Bytes.substr(0, 8));
    }
    const auto before = Snapshot(in);
    ASSERT_GT(before.size(), 10u);

    fixtures::ScriptedFileDialogs dialogs;
    fixtures::ScriptedMessageBoxes boxes;
    frmMain main;
    FillZipTemplates();
    g_sPkzipPath = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-pkzip";
    main.oDir.SetPath(in);
    int saves = 0, unpacks = 0;
    for (const auto& [path, unused] : before) {
        const std::string name = fs::path(path).filename().string();
        ASSERT_TRUE(main.oFile.Select(name)) << name;
        main.oFile_DblClick();
        main.oFile_DblClick();
        if (main.ExtractOffered() && main.oListView.Count() > 0) {
            main.oListView.SelectOnly(1);
            dialogs.Choose(out + "/member-" + name);
            main.oListView_DblClick();
            frmScript form(main);
            form.StartCommandFile = [&](const std::string& script, const std::string& folder) {
                std::string error;
                RunProgram({std::string(QUARRIN_TOOLS_DIR) + "/quarrin-runbat", script}, folder, error);
            };
            form.Form_Load();
            form.Form_Activate();
            form.oDirFld.SetPath(out);
            form.OptSel[0].SetValue(true);
            form.cmdValidate_Click(1);
            ++unpacks;
        }
        if (main.SaveOffered()) {
            dialogs.Choose(out + "/saved-" + name);
            main.SaveCommand();
            ++saves;
        }
    }
    g_sPkzipPath.clear();
    g_sShortCutPath.clear();
    EXPECT_GT(saves, 0);
    EXPECT_GT(unpacks, 0);
    EXPECT_EQ(Snapshot(in), before);
}

}  // namespace
