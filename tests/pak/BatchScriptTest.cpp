#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "fixtures/ByteWriter.h"
#include "fixtures/ZipBuilder.h"
#include "pak/BatchScript.h"
#include "platform/Shell.h"
#include "PakTestSupport.h"

namespace {

using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;

// Names with every byte a command shell would act on.
const std::vector<std::string> kAwkwardNames = {
    "plain.bin", "with blank.txt", "q\"uote.bin", "a&b|c.txt", "100%pure%.txt", "semi;colon.txt",
    "back`tick`.txt", "$(touch pwned).txt", "x\" -Extract \"y.txt", "sub\\dir\\file.txt",
};

TEST(BatchLines, WrittenLinesParseBackToTheirParts) {
    for (const auto& name : kAwkwardNames) {
        BatchLine del = ParseBatchLine(BatchDelLine(name));
        EXPECT_EQ(del.Command, BatchCommand::Delete) << name;
        EXPECT_EQ(del.Name, name);
        for (bool win9x : {false, true}) {
            BatchLine x = ParseBatchLine(BatchExtractLine(win9x, "/opt/pk zip/quarrin-pkzip", name));
            EXPECT_EQ(x.Command, BatchCommand::Extract) << name;
            EXPECT_EQ(x.Shell, win9x ? "command" : "cmd");
            EXPECT_EQ(x.Archiver, "/opt/pk zip/quarrin-pkzip");
            EXPECT_EQ(x.Name, name);
        }
        BatchLine cd = ParseBatchLine(BatchCdLine("/data/" + name + "/"));
        EXPECT_EQ(cd.Command, BatchCommand::ChangeFolder);
        EXPECT_EQ(cd.Folder, "/data/" + name + "/");
    }
}

TEST(BatchLines, ExactTextsOfTheThreeForms) {
    EXPECT_EQ(BatchCdLine("/u/dest/"), "cd \"/u/dest/\"");
    EXPECT_EQ(BatchExtractLine(false, "/p/quarrin-pkzip", "a.bin"), "cmd /c \"/p/quarrin-pkzip\" -Extract \"a.bin.zip\"");
    EXPECT_EQ(BatchExtractLine(true, "/p/pk", "a.bin"), "command /c \"/p/pk\" -Extract \"a.bin.zip\"");
    EXPECT_EQ(BatchDelLine("a.bin"), "Del \"a.bin.zip\"");
}

TEST(BatchLines, OtherLinesAreNotUnderstood) {
    for (const char* line : {"", "cd /tmp", "CD \"/tmp\"", "cd \"/tmp", "cd \"", "del \"a.zip\"", "Del \"a.txt\"",
                             "Del a.zip", "Del \"a.zip\" & rm x", "cmd /c \"p\" -extract \"a.zip\"",
                             "cmd /c \"p\" -Extract \"a\"", "cmd /c \"p\" -Extract a.zip", "cmd /k \"p\" -Extract \"a.zip\"",
                             "sh -c \"p\" -Extract \"a.zip\"", "rm -rf /", "@echo off", " cd \"/tmp\"",
                             "cmd /c \"p -Extract \"a.zip\""}) {
        EXPECT_EQ(ParseBatchLine(line).Command, BatchCommand::NotUnderstood) << line;
    }
}

TEST(BatchLines, SplitAtCrLfOnly) {
    auto lines = SplitBatchScript("one\r\ntwo\nstill two\r\n\r\nlast");
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].Text, "one");
    EXPECT_EQ(lines[1].Text, "two\nstill two");
    EXPECT_EQ(lines[2].Text, "");
    EXPECT_TRUE(lines[2].Ended);
    EXPECT_EQ(lines[3].Text, "last");
    EXPECT_FALSE(lines[3].Ended);
    EXPECT_TRUE(SplitBatchScript("").empty());
}

TEST(BatchLines, ReportsCantDriveTheTerminal) {
    EXPECT_EQ(PrintableLine("a\x1B]0;x\x07\r\xE9z"), "a\\x1B]0;x\\x07\\x0D\\xE9z");
}

// The runner with external archivers replaced by a recorder.
class BatchRun : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directory(tmp / "dest");
        dest = tmp.Path() + "/dest/";
        // A configured archiver other than the built-in one: started as a
        // program, here recorded.
        archiver = tmp.Path() + "/pk";
        WriteFile(archiver, "#!/bin/false\n");
        policy.Folder = tmp.Path() + "/dest";
        policy.Archivers = {archiver, paktest::ToolPath("quarrin-pkzip")};
        policy.BuiltInArchiver = paktest::ToolPath("quarrin-pkzip");
    }
    bool Run(const std::vector<std::string>& lines, int32_t status = 0, bool lastEnded = true) {
        std::string text;
        for (const auto& l : lines) text += l + "\r\n";
        if (!lastEnded) text.resize(text.size() - 2);
        std::ostringstream out, err;
        bool ok = RunBatchScript(text, policy, out, err,
                                 [&](const std::vector<std::string>& argv, const std::string& folder, std::string&) {
                                     calls.push_back(argv);
                                     folders.push_back(folder);
                                     return status;
                                 });
        report = out.str();
        errors = err.str();
        return ok;
    }
    TempDir tmp;
    std::string dest, archiver;
    BatchPolicy policy;
    std::vector<std::vector<std::string>> calls;
    std::vector<std::string> folders;
    std::string report, errors;
};

TEST_F(BatchRun, CarriesOutTheThreeForms) {
    WriteFile(dest + "a&b.bin.zip", "wrapper");
    std::filesystem::create_directory(dest + "sub");
    WriteFile(dest + "sub/m.bin.zip", "w");
    EXPECT_TRUE(Run({BatchCdLine(dest), BatchExtractLine(false, archiver, "a&b.bin"), BatchDelLine("a&b.bin"),
                     BatchExtractLine(true, archiver, "sub\\m.bin"), BatchDelLine("sub\\m.bin")}))
        << report << errors;
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0], (std::vector<std::string>{archiver, "-Extract", "a&b.bin.zip"}));
    EXPECT_EQ(calls[1], (std::vector<std::string>{archiver, "-Extract", "sub/m.bin.zip"}));
    EXPECT_EQ(folders[0], tmp.Path() + "/dest");
    EXPECT_FALSE(std::filesystem::exists(dest + "a&b.bin.zip"));
    EXPECT_FALSE(std::filesystem::exists(dest + "sub/m.bin.zip"));
    EXPECT_NE(report.find("[3] Del \"a&b.bin.zip\"\n    ok"), std::string::npos) << report;
    EXPECT_EQ(errors, "");
}

// Every line that the program would not have written is refused, runs
// nothing, is reported on the error stream with its number, and the honest
// lines around it still run.
TEST_F(BatchRun, LinesTheProgramWouldNotWriteAreRefused) {
    std::filesystem::create_directory(tmp / "elsewhere");
    std::filesystem::create_directory_symlink(tmp / "elsewhere", dest + "link");
    WriteFile(tmp / "elsewhere/victim.zip", "keep");
    WriteFile(tmp / "outside.zip", "keep");
    const std::string bash = FindProgram("bash");
    const std::vector<std::string> hostile = {
        BatchCdLine(tmp.Path() + "/"),
        BatchCdLine(dest + "../"),
        BatchCdLine("dest/"),
        BatchCdLine(tmp.Path() + "/elsewhere/"),
        "cmd /c \"bash\" -Extract \"echo PWNED; touch " + tmp.Path() + "/pwned;#.zip\"",
        BatchExtractLine(false, bash, "x"),
        BatchExtractLine(false, "pk", "x"),
        BatchExtractLine(false, archiver, "../outside"),
        BatchExtractLine(false, archiver, tmp.Path() + "/outside"),
        BatchDelLine("../outside"),
        BatchDelLine("..\\outside"),
        BatchDelLine(tmp.Path() + "/outside"),
        BatchDelLine("c:\\outside"),
        BatchDelLine("link/victim"),
        "echo hi > " + tmp.Path() + "/pwned",
        "Del \"x.zip\" & rm -rf /",
        "cd \"" + dest + "\"\r",
    };
    for (size_t i = 0; i < hostile.size(); ++i) {
        WriteFile(dest + "honest.zip", "w");
        calls.clear();
        EXPECT_FALSE(Run({BatchCdLine(dest), hostile[i], BatchDelLine("honest")})) << hostile[i];
        EXPECT_TRUE(calls.empty()) << hostile[i];
        // The link is found only when the delete walks the folders.
        const bool stopped = errors.find("line 2 refused") != std::string::npos ||
                             report.find("[2] Del \"link/victim.zip\"\n    failed") != std::string::npos;
        EXPECT_TRUE(stopped) << hostile[i] << "\n" << report << errors;
        EXPECT_FALSE(std::filesystem::exists(dest + "honest.zip")) << hostile[i] << "\n" << report;
        EXPECT_EQ(ReadFile(tmp / "outside.zip"), "keep");
        EXPECT_EQ(ReadFile(tmp / "elsewhere/victim.zip"), "keep");
        EXPECT_FALSE(std::filesystem::exists(tmp / "pwned"));
    }
    // A last line without its end is refused too.
    WriteFile(dest + "a.zip", "keep");
    EXPECT_FALSE(Run({BatchCdLine(dest), BatchDelLine("a")}, 0, false));
    EXPECT_TRUE(std::filesystem::exists(dest + "a.zip"));
    EXPECT_NE(errors.find("line 2 refused (the line has no end)"), std::string::npos) << errors;
}

// The settings may name the archiver as a bare program name, found through
// PATH, or by a path relative to the command file's folder; either way the
// line must name that very file.
TEST_F(BatchRun, AnArchiverNamedByNameOrRelativePathIsTheSameFile) {
    const std::string oldPath = getenv("PATH") ? getenv("PATH") : "";
    std::filesystem::permissions(archiver, std::filesystem::perms::owner_all);
    setenv("PATH", (tmp.Path() + ":" + oldPath).c_str(), 1);
    WriteFile(dest + "a.zip", "w");
    const bool ok = Run({BatchCdLine(dest), BatchExtractLine(false, "pk", "a"), BatchExtractLine(false, "../pk", "a")});
    setenv("PATH", oldPath.c_str(), 1);
    EXPECT_TRUE(ok) << report << errors;
    ASSERT_EQ(calls.size(), 2u) << errors;
    EXPECT_EQ(calls[0][0], archiver);
    EXPECT_EQ(calls[1][0], dest + "../pk");
}

TEST_F(BatchRun, ArchiverFailureIsReportedAndTheRunGoesOn) {
    WriteFile(dest + "a.zip", "w");
    EXPECT_FALSE(Run({BatchCdLine(dest), BatchExtractLine(true, archiver, "a"), BatchDelLine("a")}, 3));
    EXPECT_NE(report.find("status 3"), std::string::npos) << report;
    EXPECT_FALSE(std::filesystem::exists(dest + "a.zip"));
}

// The built-in archiver runs inside the runner, and gives the same files and
// the same outcome as the archiver program started for the same line, for a
// sound wrapper and a damaged one alike.
TEST_F(BatchRun, TheBuiltInArchiverInProcessMatchesTheProgram) {
    if (!paktest::ToolBuilt("quarrin-pkzip")) FAIL() << "quarrin-pkzip must be built in " << QUARRIN_TOOLS_DIR;
    const std::string pkzip = paktest::ToolPath("quarrin-pkzip");
    const std::string good =
        fixtures::BuildZip({fixtures::ImplodedEntry("a b.txt", std::string(5000, 'z') + "end"),
                            fixtures::ImplodedEntry("sub\\c.bin", "deep content")});
    // Three bytes cut out of the central directory.
    std::string bad = good;
    bad.erase(bad.size() - 120, 3);
    auto road = [&](bool inProcess, std::string& outcome) {
        TempDir where;
        std::filesystem::create_directory(where / "sub");
        WriteFile(where / "good.zip", good);
        WriteFile(where / "bad.zip", bad);
        BatchPolicy p;
        p.Folder = where.Path();
        p.Archivers = {pkzip};
        p.BuiltInArchiver = inProcess ? pkzip : std::string();
        std::ostringstream out, err;
        bool ok = RunBatchScript(BatchCdLine(where.Path() + "/") + "\r\n" + BatchExtractLine(false, pkzip, "good") +
                                     "\r\n" + BatchExtractLine(false, pkzip, "bad") + "\r\n",
                                 p, out, err, RunProgram);
        outcome = std::string(ok ? "ok" : "failed") + (out.str().find("[3]") != std::string::npos ? " 3" : "");
        std::map<std::string, std::string> files;
        for (const auto& e : std::filesystem::recursive_directory_iterator(where.Path()))
            if (e.is_regular_file()) files[e.path().lexically_relative(where.Path()).string()] = ReadFile(e.path());
        return files;
    };
    std::string inOutcome, outOutcome;
    auto inProcess = road(true, inOutcome);
    auto asProgram = road(false, outOutcome);
    EXPECT_EQ(inProcess, asProgram);
    EXPECT_EQ(inOutcome, outOutcome);
    EXPECT_EQ(inProcess["a b.txt"], std::string(5000, 'z') + "end");
    EXPECT_EQ(inProcess["sub/c.bin"], "deep content");
}

// The runner program, with the real archiver.
TEST(RunnerProgram, RunsTheArchiverAndReportsEachLine) {
    if (!paktest::ToolBuilt("quarrin-runbat") || !paktest::ToolBuilt("quarrin-pkzip"))
        FAIL() << "quarrin-runbat and quarrin-pkzip must be built in " << QUARRIN_TOOLS_DIR;
    TempDir tmp;
    const std::string dest = tmp.Path() + "/";
    std::string script;
    for (const auto& name : kAwkwardNames) {
        if (name.find('\\') != std::string::npos) continue;
        WriteFile(dest + name + ".zip", fixtures::BuildZip({fixtures::ImplodedEntry(name, "content of " + name)}));
    }
    script += BatchCdLine(dest) + "\r\n";
    for (const auto& name : kAwkwardNames) {
        if (name.find('\\') != std::string::npos) continue;
        script += BatchExtractLine(false, paktest::ToolPath("quarrin-pkzip"), name) + "\r\n";
        script += BatchDelLine(name) + "\r\n";
    }
    WriteFile(dest + "_unpak_.bat", script);
    std::string output;
    EXPECT_EQ(paktest::RunCapture({paktest::ToolPath("quarrin-runbat"), dest + "_unpak_.bat"}, "/", output), 0)
        << output;
    for (const auto& name : kAwkwardNames) {
        if (name.find('\\') != std::string::npos) continue;
        EXPECT_EQ(ReadFile(dest + name), "content of " + name);
        EXPECT_FALSE(std::filesystem::exists(dest + name + ".zip"));
    }
    EXPECT_FALSE(std::filesystem::exists(dest + "pwned"));
    EXPECT_FALSE(std::filesystem::exists("/pwned"));

    WriteFile(dest + "_unpak_.bat", BatchCdLine(dest) + "\r\necho hello\r\n");
    EXPECT_EQ(paktest::RunCapture({paktest::ToolPath("quarrin-runbat"), dest + "_unpak_.bat"}, "/", output), 1);
    EXPECT_NE(output.find("[2] echo hello\n    refused"), std::string::npos) << output;
    EXPECT_NE(output.find("line 2 refused (not one of the three line forms)"), std::string::npos) << output;
    EXPECT_EQ(output.find("\nhello"), std::string::npos) << output;
}

}  // namespace
