// The whole road of Extract: the Unpak dialog over a previewed PAK writes the
// stored members, the wrappers and _unpak_.bat; the command-file runner and
// the archiver turn the wrappers into the members' original bytes.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "fixtures/ByteWriter.h"
#include "fixtures/PakBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "pak/ZipWrapper.h"
#include "pak/frmScript.h"
#include "platform/Runtime.h"
#include "platform/Shell.h"
#include "shell/frmMain.h"

namespace fs = std::filesystem;
using fixtures::ReadFile;
using fixtures::TempDir;

namespace {

class ExtractRoad : public ::testing::Test {
protected:
    void SetUp() override {
        members = {{"readme.txt", "Selvane readme\r\n"},
                   {"big.bin", std::string(70000, 'q') + "tail"},
                   {"Map.DAT", std::string(3000, '\x01')},
                   {"notes.txt", std::string(5000, 'n')},
                   {"copy.raw", "stored as is"},
                   {"a&b;c.plt", std::string(768, '&')},
                   {"quote\"d.seq", std::string(3000, '"')},
                   {"empty.bin", ""}};
        fixtures::PakBuilder pak;
        pak.Stored("readme.txt", members["readme.txt"])
            .Imploded("big.bin", members["big.bin"])
            .Imploded("Map.DAT", members["Map.DAT"])
            .Imploded("notes.txt", members["notes.txt"])
            .Stored("copy.raw", members["copy.raw"])
            .Imploded("a&b;c.plt", members["a&b;c.plt"])
            .Imploded("quote\"d.seq", members["quote\"d.seq"])
            .Stored("empty.bin", "");
        fs::create_directories(dir / "game");
        fs::create_directories(dir / "out");
        fixtures::WriteFile(dir / "game/data.pak", pak.Build());
        FillZipTemplates();
        g_sPkzipPath = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-pkzip";
        main.oDir.SetPath(dir / "game");
        ASSERT_TRUE(main.oFile.Select("data.pak"));
        main.oFile_DblClick();
        ASSERT_TRUE(main.ExtractOffered());
    }
    void TearDown() override {
        g_sPkzipPath.clear();
        g_sShortCutPath.clear();
    }

    // Runs the dialog as the user does: the destination, a choice, "&Ok";
    // the command file is carried out and waited for.
    void Run(const std::function<void(frmScript&)>& choose) {
        frmScript form(main);
        form.StartCommandFile = [&](const std::string& script, const std::string& folder) {
            std::string error;
            int32_t status = RunProgram({std::string(QUARRIN_TOOLS_DIR) + "/quarrin-runbat", script}, folder, error);
            EXPECT_EQ(status, 0) << error;
        };
        form.Form_Load();
        form.Form_Activate();
        ASSERT_FALSE(form.IsUnloaded()) << "the archiver was not found";
        form.oDirFld.SetPath(dir / "out");
        choose(form);
        form.cmdValidate_Click(1);
        EXPECT_TRUE(form.IsUnloaded());
        EXPECT_TRUE(boxes.Calls.empty()) << boxes.Calls[0].prompt;
    }

    // What stands in the destination besides the command file: each name with
    // whether its bytes are those of the member.
    std::map<std::string, bool> Out() {
        std::map<std::string, bool> same;
        for (const auto& [name, bytes] : Files()) same[name] = members.count(name) != 0 && members[name] == bytes;
        return same;
    }
    std::map<std::string, bool> Expected(std::initializer_list<const char*> names) {
        std::map<std::string, bool> expected;
        for (const char* n : names) expected[n] = true;
        return expected;
    }
    std::map<std::string, std::string> Files() {
        std::map<std::string, std::string> files;
        for (const auto& e : fs::directory_iterator(dir / "out"))
            if (e.path().filename() != "_unpak_.bat") files[e.path().filename().string()] = ReadFile(e.path().string());
        return files;
    }

    TempDir dir;
    std::map<std::string, std::string> members;
    fixtures::ScriptedMessageBoxes boxes;
    frmMain main;
};

}  // namespace

TEST_F(ExtractRoad, AllFilesLeavesEveryMembersOriginalBytesAndNoWrapper) {
    Run([](frmScript& f) { f.OptSel[0].SetValue(true); });
    EXPECT_EQ(Out(), Expected({"readme.txt", "big.bin", "Map.DAT", "notes.txt", "copy.raw", "a&b;c.plt", "quote\"d.seq",
                               "empty.bin"}));
    std::string script = ReadFile(dir / "out/_unpak_.bat");
    EXPECT_EQ(script.substr(0, script.find("\r\n")), "cd \"" + dir / "out/" + "\"");
    EXPECT_NE(script.find("cmd /c \"" + g_sPkzipPath + "\" -Extract \"big.bin.zip\"\r\nDel \"big.bin.zip\"\r\n"),
              std::string::npos);
    EXPECT_EQ(script.find("readme.txt"), std::string::npos);  // stored members have no lines
    EXPECT_EQ(g_sShortCutPath, dir / "out/");
}

TEST_F(ExtractRoad, SelectedFilesTakesOnlyTheSelection) {
    // Display order is by name: a&b;c.plt, big.bin, copy.raw, empty.bin, Map.DAT,
    // notes.txt, quote"d.seq, readme.txt.
    main.oListView.SelectOnly(2);
    main.oListView.SetSelected(8, true);
    Run([](frmScript& f) { EXPECT_TRUE(f.OptSel[1].Value()); });
    EXPECT_EQ(Out(), Expected({"big.bin", "readme.txt"}));
}

TEST_F(ExtractRoad, APatternTakesTheMembersItMatches) {
    Run([](frmScript& f) { f.tSel.SetText("*.TXT"); });
    EXPECT_EQ(Out(), Expected({"notes.txt", "readme.txt"}));
}
