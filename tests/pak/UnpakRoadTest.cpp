// The command file's three line forms and the runner that carries them out
// and refuses every other line; then the whole road of Extract, from the
// window and from quarrin-cli: the members cut out, the wrappers and
// _unpak_.bat written, the command file carried out by the runner and every
// wrapper unpacked by the archiver.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "fixtures/ByteWriter.h"
#include "samples/PakBuilder.h"
#include "fixtures/Programs.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "fixtures/ZipBuilder.h"
#include "identify/modGlobal.h"
#include "pak/BatchScript.h"
#include "pak/MemberPath.h"
#include "pak/ZipWrapper.h"
#include "pak/frmScript.h"
#include "platform/Shell.h"
#include "shell/frmMain.h"

namespace {

namespace fs = std::filesystem;
using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::ToolPath;
using fixtures::WriteFile;

TEST(BatchLines, WrittenLinesParseBackAndNoOtherLineIsUnderstood) {
    EXPECT_EQ(BatchCdLine("/u/dest/"), "cd \"/u/dest/\"");
    EXPECT_EQ(BatchExtractLine(false, "/p/quarrin-pkzip", "a.bin"), "cmd /c \"/p/quarrin-pkzip\" -Extract \"a.bin.zip\"");
    EXPECT_EQ(BatchExtractLine(true, "/p/pk", "a.bin"), "command /c \"/p/pk\" -Extract \"a.bin.zip\"");
    EXPECT_EQ(BatchDelLine("a.bin"), "Del \"a.bin.zip\"");
    // Names with every byte a command shell would act on.
    for (const std::string name : {"with blank.txt", "q\"uote.bin", "a&b|c.txt", "100%pure%.txt", "back`tick`.txt",
                                   "$(touch pwned).txt", "x\" -Extract \"y.txt", "sub\\dir\\file.txt"}) {
        SCOPED_TRACE(name);
        const BatchLine del = ParseBatchLine(BatchDelLine(name));
        const BatchLine x = ParseBatchLine(BatchExtractLine(true, "/opt/pk zip/quarrin-pkzip", name));
        const BatchLine cd = ParseBatchLine(BatchCdLine("/data/" + name + "/"));
        EXPECT_TRUE(del.Command == BatchCommand::Delete && del.Name == name);
        EXPECT_TRUE(x.Command == BatchCommand::Extract && x.Shell == "command" && x.Archiver == "/opt/pk zip/quarrin-pkzip");
        EXPECT_EQ(x.Name, name);
        EXPECT_TRUE(cd.Command == BatchCommand::ChangeFolder && cd.Folder == "/data/" + name + "/");
    }
    for (const char* line : {"", "cd /tmp", "CD \"/tmp\"", "cd \"/tmp", "cd \"", "del \"a.zip\"", "Del \"a.txt\"",
                             "Del a.zip", "Del \"a.zip\" & rm x", "cmd /c \"p\" -extract \"a.zip\"",
                             "cmd /c \"p\" -Extract \"a\"", "cmd /c \"p\" -Extract a.zip", "cmd /k \"p\" -Extract \"a.zip\"",
                             "sh -c \"p\" -Extract \"a.zip\"", "@echo off", " cd \"/tmp\"", "cmd /c \"p -Extract \"a.zip\""})
        EXPECT_EQ(ParseBatchLine(line).Command, BatchCommand::NotUnderstood) << line;
    // Lines end at CR LF only; reports can't drive the terminal.
    const auto lines = SplitBatchScript("one\r\ntwo\nstill two\r\n\r\nlast");
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[1].Text, "two\nstill two");
    EXPECT_TRUE(lines[2].Ended && lines[2].Text.empty());
    EXPECT_FALSE(lines[3].Ended);
    EXPECT_TRUE(SplitBatchScript("").empty());
    EXPECT_EQ(PrintableLine("a\x1B]0;x\x07\r\xE9z"), "a\\x1B]0;x\\x07\\x0D\\xE9z");
}

// The runner with external archivers replaced by a recorder.
class BatchRun : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(tmp / "dest");
        // A configured archiver other than the built-in one: started as a
        // program, here recorded.
        WriteFile(archiver, "#!/bin/false\n");
        policy.Folder = tmp / "dest";
        policy.Archivers = {archiver, fixtures::ToolPath("quarrin-pkzip")};
        policy.BuiltInArchiver = fixtures::ToolPath("quarrin-pkzip");
    }
    bool Run(const std::vector<std::string>& lines, int32_t status = 0, bool lastEnded = true) {
        std::string text;
        for (const auto& l : lines) text += l + "\r\n";
        if (!lastEnded) text.resize(text.size() - 2);
        std::ostringstream out, err;
        calls.clear();
        const bool ok = RunBatchScript(text, policy, out, err, [&](const auto& argv, const std::string& folder, std::string&) {
            calls.push_back(argv);
            calls.back().push_back(folder);
            return status;
        });
        report = out.str() + err.str();
        return ok;
    }
    TempDir tmp;
    std::string dest = tmp / "dest/", archiver = tmp / "pk";
    BatchPolicy policy;
    std::vector<std::vector<std::string>> calls;
    std::string report;
};

// The settings may name the archiver by its path, by a bare program name
// found through PATH, or by a path relative to the command file's folder;
// each way the line must name that very file.
TEST_F(BatchRun, CarriesOutTheThreeFormsAndReportsAFailingArchiver) {
    WriteFile(dest + "a&b.bin.zip", "wrapper");
    fs::create_directory(dest + "sub");
    WriteFile(dest + "sub/m.bin.zip", "w");
    const std::string oldPath = getenv("PATH") ? getenv("PATH") : "";
    fs::permissions(archiver, fs::perms::owner_all);
    setenv("PATH", (tmp.Path() + ":" + oldPath).c_str(), 1);
    const bool ok = Run({BatchCdLine(dest), BatchExtractLine(false, "pk", "a&b.bin"), BatchDelLine("a&b.bin"),
                         BatchExtractLine(true, "../pk", "sub\\m.bin"), BatchDelLine("sub\\m.bin")});
    setenv("PATH", oldPath.c_str(), 1);
    EXPECT_TRUE(ok) << report;
    EXPECT_EQ(calls, (std::vector<std::vector<std::string>>{{archiver, "-Extract", "a&b.bin.zip", tmp / "dest"},
                                                             {dest + "../pk", "-Extract", "sub/m.bin.zip", tmp / "dest"}}));
    EXPECT_FALSE(fs::exists(dest + "a&b.bin.zip") || fs::exists(dest + "sub/m.bin.zip"));
    EXPECT_NE(report.find("[3] Del \"a&b.bin.zip\"\n    ok"), std::string::npos) << report;

    WriteFile(dest + "a.zip", "w");
    EXPECT_FALSE(Run({BatchCdLine(dest), BatchExtractLine(true, archiver, "a"), BatchDelLine("a")}, 3));
    EXPECT_NE(report.find("status 3"), std::string::npos) << report;
    EXPECT_FALSE(fs::exists(dest + "a.zip")) << "the run goes on";
}

// Every line that the program would not have written is refused, runs
// nothing, is reported with its number, and the honest lines around it
// still run.
TEST_F(BatchRun, LinesTheProgramWouldNotWriteAreRefused) {
    fs::create_directory(tmp / "elsewhere");
    fs::create_directory_symlink(tmp / "elsewhere", dest + "link");
    WriteFile(tmp / "elsewhere/victim.zip", "keep");
    WriteFile(tmp / "outside.zip", "keep");
    const std::vector<std::string> hostile = {
        BatchCdLine(tmp.Path() + "/"), BatchCdLine(dest + "../"), BatchCdLine("dest/"),
        BatchCdLine(tmp / "elsewhere/"),
        "cmd /c \"bash\" -Extract \"echo PWNED; touch " + tmp.Path() + "/pwned;#.zip\"",
        BatchExtractLine(false, FindProgram("bash"), "x"), BatchExtractLine(false, "pk", "x"),
        BatchExtractLine(false, archiver, "../outside"), BatchExtractLine(false, archiver, tmp / "outside"),
        BatchDelLine("../outside"), BatchDelLine("..\\outside"), BatchDelLine(tmp / "outside"),
        BatchDelLine("c:\\outside"), BatchDelLine("link/victim"), "echo hi > " + tmp.Path() + "/pwned",
        "Del \"x.zip\" & rm -rf /", "cd \"" + dest + "\"\r",
    };
    for (const std::string& line : hostile) {
        SCOPED_TRACE(line);
        WriteFile(dest + "honest.zip", "w");
        EXPECT_FALSE(Run({BatchCdLine(dest), line, BatchDelLine("honest")}));
        EXPECT_TRUE(calls.empty());
        // The link is found only when the delete walks the folders.
        EXPECT_TRUE(report.find("line 2 refused") != std::string::npos ||
                    report.find("[2] Del \"link/victim.zip\"\n    failed") != std::string::npos) << report;
        EXPECT_FALSE(fs::exists(dest + "honest.zip")) << report;
        EXPECT_EQ(ReadFile(tmp / "outside.zip") + ReadFile(tmp / "elsewhere/victim.zip"), "keepkeep");
        EXPECT_FALSE(fs::exists(tmp / "pwned"));
    }
    // A last line without its end is refused too.
    WriteFile(dest + "a.zip", "keep");
    EXPECT_FALSE(Run({BatchCdLine(dest), BatchDelLine("a")}, 0, false));
    EXPECT_TRUE(fs::exists(dest + "a.zip"));
    EXPECT_NE(report.find("line 2 refused (the line has no end)"), std::string::npos) << report;
}

std::string Pattern(size_t size, int seed) {
    std::string s(size, '\0');
    for (size_t i = 0; i < size; ++i) s[i] = static_cast<char>("ABCDEFGH  \r\n"[(i / (seed + 3) + i * seed) % 12]);
    return s;
}

// The Unpak dialog over the PAK previewed in the window, run as the user
// does: the destination, a choice, "&Ok"; the command file is carried out
// by the runner and waited for. What the runner says goes into `report`.
void RunDialog(const std::string& pakPath, const std::string& dest, const std::function<void(frmMain&)>& select,
               const std::function<void(frmScript&)>& choose, std::string& report, fixtures::ScriptedMessageBoxes& boxes) {
    frmMain main;
    FillZipTemplates();
    g_sPkzipPath = ToolPath("quarrin-pkzip");
    main.oDir.SetPath(GetFolderName(pakPath));
    ASSERT_TRUE(main.oFile.Select(GetFileName(pakPath)));
    main.oFile_DblClick();
    ASSERT_TRUE(main.ExtractOffered());
    select(main);
    frmScript form(main);
    form.StartCommandFile = [&](const std::string& script, const std::string& folder) {
        const auto r = fixtures::RunAndCapture({ToolPath("quarrin-runbat"), script}, folder);
        report += r.Output + r.Errors;
    };
    form.Form_Load();
    form.Form_Activate();
    form.oDirFld.SetPath(dest);
    choose(form);
    form.cmdValidate_Click(1);
    EXPECT_TRUE(form.IsUnloaded()) << (boxes.Calls.empty() ? "" : boxes.Calls[0].prompt);
    g_sPkzipPath.clear();
}

TEST(Road, TheDialogTakesTheChosenMembersOutWhole) {
    TempDir dir;
    // The short members are stored, the others imploded.
    const std::map<std::string, std::string> members = {
        {"readme.txt", "Selvane readme\r\n"}, {"copy.raw", "stored as is"}, {"empty.bin", ""},
        {"big.bin", std::string(70000, 'q') + "tail"}, {"Map.DAT", std::string(3000, '\x01')},
        {"notes.txt", std::string(5000, 'n')}, {"a&b;c.plt", std::string(768, '&')}, {"quote\"d.seq", std::string(3000, '"')}};
    fixtures::PakBuilder pak;
    for (const auto& [name, bytes] : members) {
        if (bytes.size() < 100)
            pak.Stored(name, bytes);
        else
            pak.Imploded(name, bytes);
    }
    fs::create_directories(dir / "game");
    WriteFile(dir / "game/data.pak", pak.Build());
    struct Row {
        const char* what;
        std::function<void(frmMain&)> select;
        std::function<void(frmScript&)> choose;
        std::vector<std::string> out;
    };
    const std::vector<Row> rows = {
        {"all files", [](frmMain&) {}, [](frmScript& f) { f.OptSel[0].SetValue(true); },
         {"Map.DAT", "a&b;c.plt", "big.bin", "copy.raw", "empty.bin", "notes.txt", "quote\"d.seq", "readme.txt"}},
        // Shown by name: a&b;c.plt, big.bin, copy.raw, empty.bin, Map.DAT, notes.txt, quote"d.seq, readme.txt.
        {"the selection", [](frmMain& m) {
             m.oListView.SelectOnly(2);
             m.oListView.SetSelected(8, true);
         }, [](frmScript& f) { EXPECT_TRUE(f.OptSel[1].Value()); }, {"big.bin", "readme.txt"}},
        {"a pattern", [](frmMain&) {}, [](frmScript& f) { f.tSel.SetText("*.TXT"); }, {"notes.txt", "readme.txt"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string dest = dir / row.what + "/";
        fs::create_directories(dest);
        fixtures::ScriptedMessageBoxes boxes;
        std::string report;
        RunDialog(dir / "game/data.pak", dest, row.select, row.choose, report, boxes);
        EXPECT_TRUE(boxes.Calls.empty());
        std::vector<std::string> out;
        for (const auto& e : fs::directory_iterator(dest)) {
            const std::string name = e.path().filename().string();
            if (name == "_unpak_.bat") continue;
            out.push_back(name);
            EXPECT_TRUE(members.count(name) && members.at(name) == ReadFile(e.path())) << name << report;
        }
        std::sort(out.begin(), out.end());
        EXPECT_EQ(out, row.out);
        EXPECT_EQ(g_sShortCutPath, dest);
        const std::string script = ReadFile(dest + "_unpak_.bat");
        EXPECT_EQ(script.rfind(BatchCdLine(dest) + "\r\n", 0), 0u);
        EXPECT_NE(script.find(BatchExtractLine(false, ToolPath("quarrin-pkzip"), out[0]) + "\r\n" +
                              BatchDelLine(out[0]) + "\r\n"), std::string::npos) << script;
        EXPECT_EQ(script.find("readme.txt"), std::string::npos) << "stored members have no lines";
    }
    g_sShortCutPath.clear();
}

// A sandbox with the game folder, the destination, and an outside folder that
// every attack aims at.
struct Sandbox {
    TempDir tmp;
    std::string game = tmp / "game/", dest = tmp / "dest/", outside = tmp / "outside/";
    Sandbox() {
        for (const auto& d : {game, dest, outside}) fs::create_directories(d);
        WriteFile(outside + "victim.txt", "the user's file");
        WriteFile(outside + "victim.zip", "the user's archive");
    }
    // Every file outside the destination with its bytes and modification time.
    std::map<std::string, std::string> Outside() const {
        std::map<std::string, std::string> files;
        for (auto it = fs::recursive_directory_iterator(tmp.Path()); it != fs::recursive_directory_iterator(); ++it) {
            const std::string p = it->path().string();
            if (p + "/" == dest) it.disable_recursion_pending();
            if (p.rfind(dest, 0) == 0 || p + "/" == dest) continue;
            struct stat st {};
            files[p] = ::lstat(p.c_str(), &st) != 0 || !S_ISREG(st.st_mode)
                           ? "(not a file)"
                           : ReadFile(p) + "@" + std::to_string(st.st_mtim.tv_sec) + "." + std::to_string(st.st_mtim.tv_nsec);
        }
        return files;
    }
};

// A command file as an attacker writes it: out of the folder, another
// program, a delete outside, and a line of a fourth kind.
std::string HostileScript(const Sandbox& s) {
    return BatchCdLine(s.outside) + "\r\n" + "cmd /c \"bash\" -Extract \"touch " + s.tmp.Path() + "/pwned;#.zip\"\r\n" +
           BatchExtractLine(false, FindProgram("touch"), s.tmp.Path() + "/pwned") + "\r\n" +
           BatchDelLine(s.outside + "victim") + "\r\n" + BatchDelLine("../outside/victim") + "\r\n" + "rm \"" +
           s.outside + "victim.txt\"\r\n" + BatchCdLine(s.dest) + "\r\n" + BatchDelLine("..\\outside\\victim") + "\r\n";
}

struct HostileRow {
    std::string attack;
    // Adds the attacking members (or plants files) before the honest ones.
    std::function<void(Sandbox&, fixtures::PakBuilder&)> plant;
    bool intoGameFolder = false;  // unpacks into the PAK's own folder
    bool behind = false;          // the attacking members come behind the honest ones
};

// Member names that must never be taken as paths or commands: parent folders,
// absolute and drive paths, leading separators, quotes, wildcards, line
// breaks, an embedded zero byte, bytes above 127, and empty and dot names.
const std::vector<std::string> kHostileNames = {
    "../x",
    "..\\..\\escape.txt",
    "data\\..\\..\\up.txt",
    "/abs",
    "c:\\x",
    "C:relative.txt",
    "\\lead",
    "name\"quote\".txt",
    "line\r\nbreak.txt",
    "lf\nonly.txt",
    std::string("zero\0byte.txt", 13),
    "\xE9t\xE9 \xFF.txt",
    "",
    ".",
    "..",
    "trailing\\",
    "a*?.txt",
};

const std::string kHonestStored = "an honest stored member\r\n";
const std::string kHonestImploded = Pattern(9000, 7);

std::vector<HostileRow> HostileRows() {
    std::vector<HostileRow> rows;
    for (bool imploded : {false, true}) {
        auto add = [imploded](fixtures::PakBuilder& b, const std::string& name, const std::string& data) {
            imploded ? b.Imploded(name, data) : b.Stored(name, data);
        };
        for (const char* name : {"_unpak_.bat", ".\\_unpak_.bat", "./_unpak_.bat", "pkfixed.zip", "pkfixed"})
            rows.push_back({name, [name, add](Sandbox& s, fixtures::PakBuilder& b) { add(b, name, HostileScript(s)); }});
        // Every hostile name: whatever the road makes of it, nothing lands
        // outside the destination, and a name that is safe comes out whole.
        rows.push_back({imploded ? "hostile names, imploded" : "hostile names, stored",
                        [add](Sandbox&, fixtures::PakBuilder& b) {
                            for (const std::string& name : kHostileNames) add(b, name, Pattern(5000, 6));
                        }});
    }
    rows.push_back({"linked folder and file in the destination", [](Sandbox& s, fixtures::PakBuilder& b) {
                        fs::create_directory_symlink(s.outside, s.dest + "sub");
                        fs::create_symlink(s.outside + "victim.txt", s.dest + "victim.txt");
                        fs::create_symlink(s.outside + "victim.zip", s.dest + "packed.bin.zip");
                        b.Stored("sub\\evil.txt", "written through a link").Imploded("sub\\evil.bin", Pattern(500, 2));
                        b.Stored("victim.txt", "replaces the link, not its target");
                        b.Imploded("packed.bin", Pattern(700, 3));
                    }});
    rows.push_back({"a member with the PAK's own name",
                    [](Sandbox&, fixtures::PakBuilder& b) { b.Stored("game.pak", "overwrites the archive being read"); }, true});
    rows.push_back({"a compressed member with the PAK's own name",
                    [](Sandbox&, fixtures::PakBuilder& b) { b.Imploded("game.pak", Pattern(600, 4)); }, true});
    rows.push_back({"a stored member in place of an earlier member's wrapper", [](Sandbox&, fixtures::PakBuilder& b) {
                        b.Stored("honest.bin.zip", fixtures::BuildZip({fixtures::ImplodedEntry("honest.bin", "planted content")}));
                        b.Imploded("honest.bin", "a second member of the same name");
                    }, false, true});
    return rows;
}

TEST(Road, HostilePak) {
    fixtures::RegistryHome home;
    for (const HostileRow& row : HostileRows()) {
        for (bool cli : {true, false}) {
            SCOPED_TRACE(row.attack + (cli ? " (quarrin-cli)" : " (dialog)"));
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
            fixtures::ScriptedMessageBoxes boxes;
            if (cli) {
                const auto r = fixtures::RunAndCapture({ToolPath("quarrin-cli"), "pak", "unpak", pakPath, dest, "--run"}, "/");
                report = r.Output + r.Errors;
            } else {
                RunDialog(pakPath, dest, [](frmMain&) {}, [](frmScript& f) { f.OptSel[0].SetValue(true); }, report, boxes);
                g_sShortCutPath.clear();
            }
            // Every honest member is out, whatever came before it.
            EXPECT_EQ(ReadFile(dest + "honest.txt"), kHonestStored) << report;
            EXPECT_TRUE(ReadFile(dest + "honest.bin") == kHonestImploded) << report;
            for (const auto& e : builder.Entries()) {
                if (!row.attack.starts_with("hostile names") || !IsSafeMemberName(e.Name) || e.Name.starts_with("honest")) continue;
                EXPECT_TRUE(ReadFile(MemberPath(dest, e.Name)) == Pattern(5000, 6)) << PrintableLine(e.Name) << report;
                EXPECT_FALSE(fs::exists(MemberPath(dest, e.Name) + ".zip")) << PrintableLine(e.Name);
            }
            // The command file is the program's own.
            EXPECT_EQ(ReadFile(dest + "_unpak_.bat").rfind(BatchCdLine(dest) + "\r\n", 0), 0u);
            // No program but the archiver ran, and nothing outside changed.
            EXPECT_FALSE(fs::exists(s.tmp / "pwned"));
            if (row.intoGameFolder)
                EXPECT_EQ(ReadFile(pakPath), pakBytes);
            else
                EXPECT_EQ(s.Outside(), before) << report;
        }
    }
}

}  // namespace
