// The command file's three line forms, and the runner that carries them out
// and refuses every other line.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "fixtures/ByteWriter.h"
#include "fixtures/Programs.h"
#include "pak/BatchScript.h"
#include "platform/Shell.h"

namespace {

namespace fs = std::filesystem;
using fixtures::ReadFile;
using fixtures::TempDir;
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

}  // namespace
