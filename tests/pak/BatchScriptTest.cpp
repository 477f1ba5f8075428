#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "fixtures/ByteWriter.h"
#include "fixtures/ZipBuilder.h"
#include "pak/BatchScript.h"
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

// The runner with the archiver replaced by a recorder.
class BatchRun : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directory(tmp / "dest");
        dest = tmp.Path() + "/dest/";
    }
    bool Run(const std::vector<std::string>& lines, int32_t status = 0) {
        std::string text;
        for (const auto& l : lines) text += l + "\r\n";
        std::ostringstream out;
        bool ok = RunBatchScript(text, tmp.Path(), out,
                                 [&](const std::vector<std::string>& argv, const std::string& folder, std::string&) {
                                     calls.push_back(argv);
                                     folders.push_back(folder);
                                     return status;
                                 });
        report = out.str();
        return ok;
    }
    TempDir tmp;
    std::string dest;
    std::vector<std::vector<std::string>> calls;
    std::vector<std::string> folders;
    std::string report;
};

TEST_F(BatchRun, CarriesOutTheThreeForms) {
    WriteFile(dest + "a&b.bin.zip", "wrapper");
    EXPECT_TRUE(Run({BatchCdLine(dest), BatchExtractLine(false, "/opt/pk", "a&b.bin"), BatchDelLine("a&b.bin")}))
        << report;
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0], (std::vector<std::string>{"/opt/pk", "-Extract", "a&b.bin.zip"}));
    EXPECT_EQ(folders[0], tmp.Path() + "/dest");
    EXPECT_FALSE(std::filesystem::exists(dest + "a&b.bin.zip"));
    EXPECT_NE(report.find("[3] Del \"a&b.bin.zip\"\n    ok"), std::string::npos) << report;
}

TEST_F(BatchRun, OtherLinesAreReportedAndNotExecuted) {
    WriteFile(dest + "x.zip", "keep");
    EXPECT_FALSE(Run({BatchCdLine(dest), "del \"x.zip\"", "cmd /c \"/opt/pk\" -Extract \"x\"", BatchDelLine("x")}));
    EXPECT_TRUE(calls.empty());
    EXPECT_FALSE(std::filesystem::exists(dest + "x.zip"));
    EXPECT_NE(report.find("[2] del \"x.zip\"\n    not understood"), std::string::npos) << report;
    EXPECT_NE(report.find("[3] cmd"), std::string::npos) << report;
}

TEST_F(BatchRun, ArchiverFailureIsReportedAndTheRunGoesOn) {
    WriteFile(dest + "a.zip", "w");
    EXPECT_FALSE(Run({BatchCdLine(dest), BatchExtractLine(true, "/opt/pk", "a"), BatchDelLine("a")}, 3));
    EXPECT_NE(report.find("status 3"), std::string::npos) << report;
    EXPECT_FALSE(std::filesystem::exists(dest + "a.zip"));
}

TEST_F(BatchRun, NamesThatLeaveTheFolderAreRefused) {
    WriteFile(tmp / "outside.zip", "keep");
    EXPECT_FALSE(Run({BatchCdLine(dest), BatchDelLine("../outside"), BatchDelLine("..\\outside"),
                      BatchDelLine(tmp.Path() + "/outside"), BatchExtractLine(false, "/opt/pk", "../outside")}));
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(ReadFile(tmp / "outside.zip"), "keep");
}

TEST_F(BatchRun, NothingRunsAfterAFailedFolderChange) {
    WriteFile(tmp / "a.zip", "keep");
    EXPECT_FALSE(Run({BatchCdLine(tmp / "missing/"), BatchExtractLine(false, "/opt/pk", "a"), BatchDelLine("a")}));
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(ReadFile(tmp / "a.zip"), "keep");
    // A later folder change that works lets the lines behind it run.
    WriteFile(dest + "a.zip", "w");
    EXPECT_FALSE(Run({BatchCdLine(tmp / "missing/"), BatchCdLine(dest), BatchDelLine("a")}));
    EXPECT_FALSE(std::filesystem::exists(dest + "a.zip"));
}

TEST_F(BatchRun, BackslashNamesReachIntoSubFolders) {
    std::filesystem::create_directory(dest + "sub");
    WriteFile(dest + "sub/m.bin.zip", "w");
    EXPECT_TRUE(Run({BatchCdLine(dest), BatchExtractLine(false, "/opt/pk", "sub\\m.bin"), BatchDelLine("sub\\m.bin")}))
        << report;
    EXPECT_FALSE(std::filesystem::exists(dest + "sub/m.bin.zip"));
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0], (std::vector<std::string>{"/opt/pk", "-Extract", "sub/m.bin.zip"}));
}

TEST_F(BatchRun, ALastLineWithoutItsEndIsNotExecuted) {
    WriteFile(dest + "a.zip", "keep");
    std::ostringstream out;
    EXPECT_FALSE(RunBatchScript(BatchCdLine(dest) + "\r\n" + BatchDelLine("a"), tmp.Path(), out,
                                [](const auto&, const auto&, auto&) { return 0; }));
    EXPECT_TRUE(std::filesystem::exists(dest + "a.zip"));
    EXPECT_NE(out.str().find("no end"), std::string::npos);
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
    EXPECT_NE(output.find("[2] echo hello\n    not understood"), std::string::npos) << output;
    EXPECT_EQ(output.find("\nhello"), std::string::npos) << output;
}

}  // namespace
