#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "fixtures/ByteWriter.h"
#include "platform/Runtime.h"
#include "platform/Shell.h"

namespace {

using Args = std::vector<std::string>;
using fixtures::TempDir;
using fixtures::WriteFile;

// Poses as a program in the tools folder, where quarrin-runbat lies.
class ShellTest : public ::testing::Test {
protected:
    void SetUp() override {
        savedFolder = App::Path();
        savedName = App::EXEName();
        App::SetExecutable(QUARRIN_TOOLS_DIR, "quarrin");
    }
    void TearDown() override { App::SetExecutable(savedFolder, savedName); }
    std::string savedFolder, savedName, runner = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-runbat";
    TempDir tmp;
};

TEST_F(ShellTest, TheCommandShellStartsTheRunnerOnTheCommandFileAlone) {
    const std::tuple<const char*, const char*, Args, int32_t> rows[] = {
        {"cmd", "/c \"/d/x y/_unpak_.bat\"", {runner, "/d/x y/_unpak_.bat"}, 0},
        {"COMMAND", " /C  \"/d/_unpak_.bat\" ", {runner, "/d/_unpak_.bat"}, 0},
        {"notepad", "/c \"x\"", {}, SE_ERR_NOASSOC},
    };
    for (const auto& [file, params, args, result] : rows) {
        int32_t got = -1;
        EXPECT_EQ(ShellCommandArgs(file, params, false, got), args) << params;
        EXPECT_EQ(got, result) << params;
    }
    for (const char* params : {"/k \"x\"", "\"x\"", "/c x", "/c \"x", "/c \"\"", ""}) {
        int32_t got = 0;
        EXPECT_TRUE(ShellCommandArgs("cmd", params, false, got).empty()) << params;
        EXPECT_EQ(got, ERROR_BAD_FORMAT) << params;
    }
    EXPECT_EQ(ShellExecuteA(0, "open", "cmd", "/c \"x\"", tmp / "missing", 1), SE_ERR_PNF);
    App::SetExecutable(tmp.Path(), "quarrin");
    EXPECT_EQ(ShellExecuteA(0, "open", "cmd", "/c \"x\"", "", 1), SE_ERR_FNF);
}

TEST_F(ShellTest, TerminalWindowWhenTheDesktopHasOne) {
    const std::string fake = tmp / "x-terminal-emulator";
    WriteFile(fake, "#!/bin/sh\nexit 0\n");
    chmod(fake.c_str(), 0755);
    int32_t result = 0;
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", tmp.Path().c_str(), 1);
    EXPECT_EQ(ShellCommandArgs("cmd", "/c \"/d/_unpak_.bat\"", true, result),
              (Args{fake, "-e", runner, "/d/_unpak_.bat"}));
    ::setenv("PATH", "/nonexistent", 1);
    EXPECT_EQ(ShellCommandArgs("cmd", "/c \"/d/_unpak_.bat\"", true, result), (Args{runner, "/d/_unpak_.bat"}));
    ::setenv("PATH", path.c_str(), 1);
}

// The runner goes on by itself, hidden; the test waits for what it leaves behind.
TEST_F(ShellTest, RunsTheCommandFileDetached) {
    const std::string dest = tmp.Path() + "/";
    WriteFile(dest + "m.bin.zip", "wrapper");
    WriteFile(dest + "_unpak_.bat", "cd \"" + dest + "\"\r\nDel \"m.bin.zip\"\r\n");
    EXPECT_GT(ShellExecuteA(0, "open", "cmd", "/c \"" + dest + "_unpak_.bat\"", dest, SW_HIDE), 32);
    for (int i = 0; i < 600 && std::filesystem::exists(dest + "m.bin.zip"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(std::filesystem::exists(dest + "m.bin.zip"));
}

TEST(Processes, ArgumentsReachTheProgramAsBytesAndTheExitStatusComesBack) {
    TempDir tmp;
    // Each argument arrives whole; nothing in it is interpreted.
    const std::string odd = "a b;c&d|e`f`$(g)\"h'";
    std::string error;
    EXPECT_EQ(RunProgram({"/usr/bin/touch", odd}, tmp.Path(), error), 0) << error;
    EXPECT_TRUE(std::filesystem::exists(tmp / odd));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tmp.Path()), {}), 1);
    EXPECT_EQ(RunProgram({"/bin/sh", "-c", "exit 7"}, "", error), 7);
    EXPECT_EQ(RunProgram({"/nonexistent/program"}, "", error), -1);
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(RunProgram({"/bin/true"}, "/nonexistent/folder", error), -1);
    EXPECT_EQ(StartDetached({"/nonexistent/program"}, ""), ENOENT);
}

}  // namespace
