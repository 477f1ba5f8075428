// Files of the wrong kind and an unlucky disk, down the whole road: nothing
// the program reads is changed or lost, nothing hangs, and a write that
// fails is reported as one.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "fixtures/ByteWriter.h"
#include "fixtures/PakBuilder.h"
#include "fixtures/RegistryHome.h"
#include "PakTestSupport.h"

namespace {

namespace fs = std::filesystem;
using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;

struct Outcome {
    int status = -1;  // -2: still running when the watchdog stopped it
    std::string output;
};

// Runs a tool with a limit on the size of the files it writes (a full disk)
// and a watchdog that stops it if it hangs.
Outcome RunTool(const std::vector<std::string>& args, const std::string& folder, rlim_t fileSizeLimit = RLIM_INFINITY) {
    char outTemplate[] = "/tmp/quarrin-hostile-output-XXXXXX";
    int outFd = mkstemp(outTemplate);
    unlink(outTemplate);
    std::vector<std::string> argv = args;
    argv[0] = paktest::ToolPath(argv[0]);
    std::vector<char*> cargs;
    for (auto& a : argv) cargs.push_back(a.data());
    cargs.push_back(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        struct rlimit limit {fileSizeLimit, fileSizeLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
        signal(SIGXFSZ, SIG_IGN);
        dup2(outFd, 1);
        dup2(outFd, 2);
        if (chdir(folder.c_str()) != 0) _exit(126);
        execv(cargs[0], cargs.data());
        _exit(127);
    }
    Outcome o;
    int status = 0;
    for (int waited = 0;; waited += 10) {
        pid_t r = waitpid(pid, &status, WNOHANG);
        if (r == pid) {
            o.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            break;
        }
        if (waited > 10000) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            o.status = -2;
            break;
        }
        usleep(10000);
    }
    lseek(outFd, 0, SEEK_SET);
    char buf[4096];
    ssize_t n;
    while ((n = read(outFd, buf, sizeof buf)) > 0) o.output.append(buf, static_cast<size_t>(n));
    close(outFd);
    return o;
}

// Temporary files that a failed write could have left.
std::vector<std::string> Leftovers(const std::string& folder) {
    std::vector<std::string> found;
    for (const auto& e : fs::recursive_directory_iterator(folder))
        if (e.path().filename().string().rfind(".quarrin-", 0) == 0) found.push_back(e.path().string());
    return found;
}

struct HostileInput {
    const char* what;
    // Builds the inputs in `dir`, runs the road and checks its bound.
    std::function<void(TempDir& dir)> road;
};

const std::string kOld = "the user's older file, which must survive";

std::vector<HostileInput> Rows() {
    return {
        {"a full disk while a stored member is written",
         [](TempDir& dir) {
             fs::create_directory(dir / "dest");
             WriteFile(dir / "dest/big.bin", kOld);
             WriteFile(dir / "game.pak", fixtures::PakBuilder().Stored("big.bin", std::string(300000, 'b')).Build());
             Outcome o = RunTool({"quarrin-cli", "pak", "unpak", dir / "game.pak", dir / "dest"}, "/", 100 * 1024);
             EXPECT_EQ(o.status, 1) << o.output;
             EXPECT_NE(o.output.find("big.bin: not written"), std::string::npos) << o.output;
             EXPECT_EQ(ReadFile(dir / "dest/big.bin"), kOld);
             EXPECT_TRUE(Leftovers(dir.Path()).empty());
         }},
        {"a damaged compressed member",
         [](TempDir& dir) {
             fs::create_directory(dir / "dest");
             WriteFile(dir / "dest/x.bin", kOld);
             std::string stream = fixtures::ImplodeMember(std::string(5000, 'x'));
             stream.resize(stream.size() / 2);
             WriteFile(dir / "game.pak",
                       fixtures::PakBuilder().Raw("x.bin", stream, 5000).Stored("y.txt", "fine").Build());
             Outcome o = RunTool({"quarrin-cli", "pak", "unpak", dir / "game.pak", dir / "dest", "--run"}, "/");
             EXPECT_EQ(o.status, 1) << o.output;
             EXPECT_EQ(ReadFile(dir / "dest/x.bin"), kOld) << o.output;
             EXPECT_EQ(ReadFile(dir / "dest/y.txt"), "fine");
             EXPECT_TRUE(Leftovers(dir.Path()).empty());
         }},
        {"a destination whose name holds a line end",
         [](TempDir& dir) {
             const std::string dest = dir / "a\r\nDel \"victim.zip\"\r\ncd \"";
             fs::create_directory(dest);
             WriteFile(dir / "game.pak", fixtures::PakBuilder().Imploded("m.bin", "member").Build());
             Outcome o = RunTool({"quarrin-cli", "pak", "unpak", dir / "game.pak", dest, "--run"}, "/");
             EXPECT_EQ(o.status, 1) << o.output;
             EXPECT_NE(o.output.find("line end"), std::string::npos) << o.output;
             EXPECT_TRUE(fs::is_empty(dest));
         }},
        {"a named pipe in place of every input",
         [](TempDir& dir) {
             const std::string pipe = dir / "pipe.pak";
             ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
             for (std::vector<std::string> args :
                  {std::vector<std::string>{"quarrin-cli", "select", pipe}, {"quarrin-cli", "preview", pipe},
                   {"quarrin-cli", "hex", pipe}, {"quarrin-cli", "pak", "list", pipe},
                   {"quarrin-cli", "pak", "unpak", pipe, dir.Path()}, {"quarrin-cli", "mesh", "report", pipe},
                   {"quarrin-runbat", pipe}, {"quarrin-pkzip", "-Extract", "pipe.pak"}}) {
                 Outcome o = RunTool(args, dir.Path());
                 EXPECT_NE(o.status, -2) << args[1] << " hangs on a named pipe";
                 EXPECT_NE(o.status, 0) << args[1] << ": " << o.output;
             }
         }},
    };
}

TEST(Road, HostileInputs) {
    if (!paktest::ToolBuilt("quarrin-cli") || !paktest::ToolBuilt("quarrin-runbat"))
        FAIL() << "the tools must be built in " << QUARRIN_TOOLS_DIR;
    fixtures::RegistryHome home;
    for (const HostileInput& row : Rows()) {
        SCOPED_TRACE(row.what);
        TempDir dir;
        row.road(dir);
    }
}

}  // namespace
