// Hostile member names and hostile PAK archives down the whole road: each
// member cut out, the command file carried out by the runner, and the
// archiver called on every wrapper.
#include <gtest/gtest.h>

#include <filesystem>

#include "controls/ListView.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/PakBuilder.h"
#include "fixtures/ZipBuilder.h"
#include "identify/modGlobal.h"
#include "pak/BatchScript.h"
#include "identify/IFileHost.h"
#include "pak/CPAKFile.h"
#include "pak/MemberPath.h"
#include "pak/ZipWrapper.h"
#include "PakTestSupport.h"
#include "platform/Runtime.h"

namespace {

using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;

std::string Pattern(size_t size, int seed) {
    std::string s(size, '\0');
    for (size_t i = 0; i < size; ++i) s[i] = static_cast<char>("ABCDEFGH  \r\n"[(i / (seed + 3) + i * seed) % 12]);
    return s;
}


// Every hostile name down the whole road: whatever UnpakMember, the runner
// and the archiver make of it, nothing lands outside the destination.
TEST(Road, HostileNamesNeverLeaveTheDestination) {
    if (!paktest::ToolBuilt("quarrin-runbat") || !paktest::ToolBuilt("quarrin-pkzip"))
        FAIL() << "quarrin-runbat and quarrin-pkzip must be built in " << QUARRIN_TOOLS_DIR;
    FillZipTemplates();
    const std::string data = Pattern(5000, 6);
    for (const std::string& name : fixtures::HostileNames()) {
        for (bool imploded : {false, true}) {
            TempDir sandbox;
            std::filesystem::create_directories(sandbox / "dest/data");
            const std::string dest = sandbox.Path() + "/dest/";
            fixtures::PakBuilder builder;
            if (imploded)
                builder.Imploded(name, data);
            else
                builder.Stored(name, data);
            const std::string pakPath = sandbox / "game.pak";
            WriteFile(pakPath, builder.Build());
            const fixtures::PakEntry e = builder.Entries()[0];
            const bool written = UnpakMember(dest, pakPath, name, e.PackedSize, e.OriginalSize, e.Offset);
            EXPECT_EQ(written, IsSafeMemberName(name) && name.find('\\') == std::string::npos)
                << "name '" << PrintableLine(name) << "'";
            std::string script = BatchCdLine(dest) + "\r\n";
            script += BatchExtractLine(false, paktest::ToolPath("quarrin-pkzip"), name) + "\r\n";
            script += BatchDelLine(name) + "\r\n";
            WriteFile(dest + "_unpak_.bat", script);
            std::string output;
            paktest::RunCapture({paktest::ToolPath("quarrin-runbat"), dest + "_unpak_.bat"}, dest, output);

            for (const auto& entry : std::filesystem::recursive_directory_iterator(sandbox.Path())) {
                const std::string p = entry.path().string();
                EXPECT_TRUE(p == pakPath || p.rfind(sandbox.Path() + "/dest", 0) == 0)
                    << PrintableLine(p) << " from '" << PrintableLine(name) << "'";
            }
            // A line end inside a name splits its command lines, which the
            // runner then doesn't understand: that wrapper stays as it is.
            if (written && !(imploded && name.find("\r\n") != std::string::npos)) {
                EXPECT_EQ(ReadFile(MemberPath(dest, name)), data) << PrintableLine(name) << "\n" << output;
                EXPECT_FALSE(std::filesystem::exists(MemberPath(dest, name) + ".zip"));
            }
        }
    }
}

}  // namespace

// ---- Hostile PAK archives, down the whole road ------------------------------

#include <sys/stat.h>

#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "pak/frmScript.h"
#include "platform/Shell.h"
#include "shell/frmMain.h"

namespace {

namespace fs = std::filesystem;

// A sandbox with the game folder, the destination, and an outside folder that
// every attack aims at.
struct Sandbox {
    TempDir tmp;
    std::string game, dest, outside;
    Sandbox() {
        fs::create_directories(tmp / "game");
        fs::create_directories(tmp / "dest");
        fs::create_directories(tmp / "outside");
        game = tmp.Path() + "/game/";
        dest = tmp.Path() + "/dest/";
        outside = tmp.Path() + "/outside/";
        WriteFile(outside + "victim.txt", "the user's file");
        WriteFile(outside + "victim.zip", "the user's archive");
    }
    // Every file outside the destination with its bytes and modification time.
    std::map<std::string, std::string> Outside() const {
        std::map<std::string, std::string> files;
        for (auto it = fs::recursive_directory_iterator(tmp.Path()); it != fs::recursive_directory_iterator(); ++it) {
            const std::string p = it->path().string();
            if (p.rfind(dest, 0) == 0 || p + "/" == dest) {
                if (it->is_directory() && !it->is_symlink()) it.disable_recursion_pending();
                if (p + "/" != dest) continue;
            }
            struct stat st {};
            if (::lstat(p.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) {
                files[p] = "(not a file)";
                continue;
            }
            files[p] = ReadFile(p) + "@" + std::to_string(st.st_mtim.tv_sec) + "." + std::to_string(st.st_mtim.tv_nsec);
        }
        return files;
    }
};

// A command file as an attacker writes it: out of the folder, another
// program, a delete outside, and a line of a fourth kind.
std::string HostileScript(const Sandbox& s) {
    return BatchCdLine(s.outside) + "\r\n" +
           "cmd /c \"bash\" -Extract \"touch " + s.tmp.Path() + "/pwned;#.zip\"\r\n" +
           BatchExtractLine(false, FindProgram("touch"), s.tmp.Path() + "/pwned") + "\r\n" +
           BatchDelLine(s.outside + "victim") + "\r\n" + BatchDelLine("../outside/victim") + "\r\n" +
           "rm \"" + s.outside + "victim.txt\"\r\n" + BatchCdLine(s.dest) + "\r\n" + BatchDelLine("..\\outside\\victim") +
           "\r\n";
}

struct HostileRow {
    const char* attack;
    // Adds the attacking members (or plants files) before the honest ones.
    std::function<void(Sandbox&, fixtures::PakBuilder&)> plant;
    // Unpacks into the PAK's own folder.
    bool intoGameFolder = false;
    // The attacking members come behind the honest ones.
    bool behind = false;
};

const std::string kHonestStored = "an honest stored member\r\n";
const std::string kHonestImploded = Pattern(9000, 7);

std::vector<HostileRow> HostileRows() {
    std::vector<HostileRow> rows;
    for (const char* name : {"_unpak_.bat", ".\\_unpak_.bat", "./_unpak_.bat", "pkfixed.zip", "pkfixed"}) {
        for (bool imploded : {false, true}) {
            rows.push_back({name, [name, imploded](Sandbox& s, fixtures::PakBuilder& b) {
                                if (imploded)
                                    b.Imploded(name, HostileScript(s));
                                else
                                    b.Stored(name, HostileScript(s));
                            }});
        }
    }
    rows.push_back({"linked folder and file in the destination", [](Sandbox& s, fixtures::PakBuilder& b) {
                        fs::create_directory_symlink(s.outside, s.dest + "sub");
                        fs::create_symlink(s.outside + "victim.txt", s.dest + "victim.txt");
                        fs::create_symlink(s.outside + "victim.zip", s.dest + "packed.bin.zip");
                        b.Stored("sub\\evil.txt", "written through a link").Imploded("sub\\evil.bin", Pattern(500, 2));
                        b.Stored("victim.txt", "replaces the link, not its target");
                        b.Imploded("packed.bin", Pattern(700, 3));
                    }});
    rows.push_back({"a member with the PAK's own name", [](Sandbox& s, fixtures::PakBuilder& b) {
                        b.Stored("game.pak", "overwrites the archive being read");
                    }, true});
    rows.push_back({"a compressed member with the PAK's own name", [](Sandbox& s, fixtures::PakBuilder& b) {
                        b.Imploded("game.pak", Pattern(600, 4));
                    }, true});
    rows.push_back({"a stored member in place of an earlier member's wrapper", [](Sandbox& s, fixtures::PakBuilder& b) {
                        b.Stored("honest.bin.zip",
                                 fixtures::BuildZip({fixtures::ImplodedEntry("honest.bin", "planted content")}));
                        b.Imploded("honest.bin", "a second member of the same name");
                    }, false, true});
    return rows;
}

enum class Road { Cli, Dialog };

void RunRoad(Road road, Sandbox& s, const std::string& pakPath, const std::string& dest, std::string& report) {
    if (road == Road::Cli) {
        paktest::RunCapture({paktest::ToolPath("quarrin-cli"), "pak", "unpak", pakPath, dest, "--run"}, "/", report);
        return;
    }
    fixtures::ScriptedMessageBoxes boxes;
    frmMain main;
    FillZipTemplates();
    g_sPkzipPath = paktest::ToolPath("quarrin-pkzip");
    main.oDir.SetPath(GetFolderName(pakPath));
    ASSERT_TRUE(main.oFile.Select(GetFileName(pakPath)));
    main.oFile_DblClick();
    frmScript form(main);
    form.StartCommandFile = [&](const std::string& script, const std::string& folder) {
        std::string output;
        paktest::RunCapture({paktest::ToolPath("quarrin-runbat"), script}, folder, output);
        report += output;
    };
    form.Form_Load();
    form.Form_Activate();
    form.oDirFld.SetPath(dest);
    form.OptSel[0].SetValue(true);
    form.cmdValidate_Click(1);
    g_sPkzipPath.clear();
    g_sShortCutPath.clear();
}

TEST(Road, HostilePak) {
    if (!paktest::ToolBuilt("quarrin-runbat") || !paktest::ToolBuilt("quarrin-pkzip") ||
        !paktest::ToolBuilt("quarrin-cli"))
        FAIL() << "the tools must be built in " << QUARRIN_TOOLS_DIR;
    fixtures::RegistryHome home;
    for (const HostileRow& row : HostileRows()) {
        for (Road road : {Road::Cli, Road::Dialog}) {
            const std::string what = std::string(row.attack) + (road == Road::Cli ? " (quarrin-cli)" : " (dialog)");
            Sandbox s;
            fixtures::PakBuilder builder;
            if (!row.behind) row.plant(s, builder);
            builder.Stored("honest.txt", kHonestStored).Imploded("honest.bin", kHonestImploded);
            if (row.behind) row.plant(s, builder);
            const std::string pakPath = s.game + "game.pak";
            const std::string pakBytes = builder.Build();
            WriteFile(pakPath, pakBytes);
            const std::string dest = row.intoGameFolder ? s.game : s.dest;
            const auto before = s.Outside();

            std::string report;
            RunRoad(road, s, pakPath, dest, report);

            // Every honest member is out, whatever came before it.
            EXPECT_EQ(ReadFile(dest + "honest.txt"), kHonestStored) << what << "\n" << report;
            EXPECT_EQ(ReadFile(dest + "honest.bin"), kHonestImploded) << what << "\n" << report;
            // The command file is the program's own.
            EXPECT_EQ(ReadFile(dest + "_unpak_.bat").rfind(BatchCdLine(dest) + "\r\n", 0), 0u) << what;
            // No program but the archiver ran, and nothing outside changed.
            EXPECT_FALSE(fs::exists(s.tmp / "pwned")) << what;
            if (row.intoGameFolder) {
                EXPECT_EQ(ReadFile(pakPath), pakBytes) << what;
            } else {
                EXPECT_EQ(s.Outside(), before) << what << "\n" << report;
            }
        }
    }

    // A command file written by hand and carried out by the runner: every
    // line of it is refused, and nothing outside changes.
    Sandbox s;
    WriteFile(s.dest + "_unpak_.bat", HostileScript(s));
    const auto before = s.Outside();
    std::string report;
    EXPECT_EQ(paktest::RunCapture({paktest::ToolPath("quarrin-runbat"), s.dest + "_unpak_.bat"}, s.dest, report), 1);
    EXPECT_FALSE(fs::exists(s.tmp / "pwned"));
    EXPECT_EQ(s.Outside(), before) << report;
    for (int line : {1, 2, 3, 4, 5, 6, 8})
        EXPECT_NE(report.find("line " + std::to_string(line) + " refused"), std::string::npos) << line << report;
}

}  // namespace
