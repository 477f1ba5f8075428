#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "fixtures/ByteWriter.h"
#include "platform/Runtime.h"
#include "platform/Shell.h"

namespace {

using fixtures::TempDir;
using fixtures::WriteFile;

// Sets an environment variable for the life of the object.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name)) {
            had_ = true;
            old_ = old;
        }
        if (value)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    ~ScopedEnv() {
        if (had_)
            setenv(name_.c_str(), old_.c_str(), 1);
        else
            unsetenv(name_.c_str());
    }

private:
    std::string name_, old_;
    bool had_ = false;
};

// Poses as a program in the tools folder, where quarrin-runbat lies.
class ShellTest : public ::testing::Test {
protected:
    void SetUp() override {
        savedFolder = App::Path();
        savedName = App::EXEName();
        App::SetExecutable(QUARRIN_TOOLS_DIR, "quarrin");
        runner = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-runbat";
        if (access(runner.c_str(), X_OK) != 0) GTEST_FAIL() << "quarrin-runbat is not built in " << QUARRIN_TOOLS_DIR;
    }
    void TearDown() override { App::SetExecutable(savedFolder, savedName); }
    std::string savedFolder, savedName, runner;
    TempDir tmp;
};

TEST_F(ShellTest, CommandShellStartsTheRunnerOnTheCommandFile) {
    int32_t result = 0;
    for (const char* shell : {"cmd", "command", "CMD"}) {
        EXPECT_EQ(ShellCommandArgs(shell, "/c \"/d/x y/_unpak_.bat\"", false, result),
                  (std::vector<std::string>{runner, "/d/x y/_unpak_.bat"}));
        EXPECT_EQ(result, 0);
    }
}

TEST_F(ShellTest, TerminalWindowWhenTheDesktopHasOne) {
    const std::string fake = tmp / "x-terminal-emulator";
    WriteFile(fake, "#!/bin/sh\nexit 0\n");
    chmod(fake.c_str(), 0755);
    int32_t result = 0;
    {
        ScopedEnv path("PATH", tmp.Path().c_str());
        EXPECT_EQ(ShellCommandArgs("cmd", "/c \"/d/_unpak_.bat\"", true, result),
                  (std::vector<std::string>{fake, "-e", runner, "/d/_unpak_.bat"}));
    }
    ScopedEnv path("PATH", "/nonexistent");
    EXPECT_EQ(ShellCommandArgs("cmd", "/c \"/d/_unpak_.bat\"", true, result),
              (std::vector<std::string>{runner, "/d/_unpak_.bat"}));
}

TEST_F(ShellTest, OtherRequestsAreRefusedWithAnErrorCode) {
    int32_t result = 0;
    EXPECT_TRUE(ShellCommandArgs("notepad", "/c \"x\"", false, result).empty());
    EXPECT_EQ(result, SE_ERR_NOASSOC);
    for (const char* params : {"/k \"x\"", "\"x\"", "/c x", "/c \"x", "/c \"\"", ""}) {
        EXPECT_TRUE(ShellCommandArgs("cmd", params, false, result).empty()) << params;
        EXPECT_EQ(result, ERROR_BAD_FORMAT) << params;
    }
    EXPECT_EQ(ShellExecuteA(0, "print", "cmd", "/c \"x\"", "", 1), SE_ERR_NOASSOC);
    EXPECT_EQ(ShellExecuteA(0, "open", "cmd", "/c \"x\"", tmp / "missing", 1), SE_ERR_PNF);
    App::SetExecutable(tmp.Path(), "quarrin");
    EXPECT_EQ(ShellExecuteA(0, "open", "cmd", "/c \"x\"", "", 1), SE_ERR_FNF);
}

// The runner goes on by itself; the test waits for what it leaves behind.
TEST_F(ShellTest, RunsTheCommandFileDetached) {
    ScopedEnv display("DISPLAY", nullptr);
    ScopedEnv wayland("WAYLAND_DISPLAY", nullptr);
    const std::string dest = tmp.Path() + "/";
    WriteFile(dest + "m.bin.zip", "wrapper");
    WriteFile(dest + "_unpak_.bat", "cd \"" + dest + "\"\r\nDel \"m.bin.zip\"\r\n");
    EXPECT_GT(ShellExecuteA(0, "open", "cmd", "/c \"" + dest + "_unpak_.bat\"", dest, 1), 32);
    for (int i = 0; i < 600 && std::filesystem::exists(dest + "m.bin.zip"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(std::filesystem::exists(dest + "m.bin.zip"));
}

TEST(Processes, RunProgramGivesTheExitStatus) {
    std::string error;
    EXPECT_EQ(RunProgram({"/bin/sh", "-c", "exit 7"}, "", error), 7);
    EXPECT_EQ(RunProgram({"/bin/pwd"}, "/", error), 0);
    EXPECT_EQ(RunProgram({"/nonexistent/program"}, "", error), -1);
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(RunProgram({"/bin/true"}, "/nonexistent/folder", error), -1);
    EXPECT_EQ(StartDetached({"/nonexistent/program"}, ""), ENOENT);
}

TEST(Processes, ArgumentsReachTheProgramAsBytes) {
    TempDir tmp;
    // Each argument arrives whole; nothing in it is interpreted.
    const std::string odd = "a b;c&d|e`f`$(g)\"h'";
    std::string error;
    EXPECT_EQ(RunProgram({"/usr/bin/touch", odd}, tmp.Path(), error), 0) << error;
    EXPECT_TRUE(std::filesystem::exists(tmp / odd));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tmp.Path()), {}), 1);
}

TEST(Processes, FindProgramSearchesThePath) {
    EXPECT_EQ(FindProgram("sh").empty(), false);
    EXPECT_EQ(FindProgram("/bin/sh"), "/bin/sh");
    EXPECT_EQ(FindProgram("no-such-program-anywhere"), "");
    EXPECT_EQ(FindProgram(""), "");
}

}  // namespace
