#include "platform/Shell.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/Runtime.h"

namespace {

// `b` is written in lower case.
bool SameWord(const std::string& a, const char* b) { return VbLCase(a) == b; }

bool IsExecutableFile(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

// The argument vector as the exec calls want it; it points into `argv`.
std::vector<char*> CArgs(const std::vector<std::string>& argv) {
    std::vector<char*> out;
    out.reserve(argv.size() + 1);
    for (const auto& a : argv) out.push_back(const_cast<char*>(a.c_str()));
    out.push_back(nullptr);
    return out;
}

// Between fork and exec only async-signal-safe calls are made, since the
// program may have other threads.
[[noreturn]] void ExecChild(int statusFd, const char* path, char* const* args, const char* folder) {
    int err = 0;
    if (folder != nullptr && ::chdir(folder) != 0) {
        err = errno;
    } else {
        ::execv(path, args);
        err = errno;
    }
    ssize_t ignored = ::write(statusFd, &err, sizeof err);
    (void)ignored;
    ::_exit(127);
}

// Reads the errno that a child sends when its exec failed; 0 when the pipe
// closed without one, which means the exec succeeded.
int ReadExecStatus(int fd) {
    int err = 0;
    ssize_t n;
    do {
        n = ::read(fd, &err, sizeof err);
    } while (n < 0 && errno == EINTR);
    ::close(fd);
    return n == static_cast<ssize_t>(sizeof err) ? err : 0;
}

}  // namespace

std::string FindProgram(const std::string& name) {
    if (name.empty()) return {};
    if (name.find('/') != std::string::npos) return IsExecutableFile(name) ? name : std::string();
    const char* path = std::getenv("PATH");
    std::string dirs = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
    size_t start = 0;
    for (;;) {
        size_t end = dirs.find(':', start);
        std::string dir = dirs.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (!dir.empty()) {
            std::string candidate = dir + "/" + name;
            if (IsExecutableFile(candidate)) return candidate;
        }
        if (end == std::string::npos) return {};
        start = end + 1;
    }
}

int32_t RunProgram(const std::vector<std::string>& argv, const std::string& folder, std::string& error) {
    if (argv.empty() || argv[0].empty()) {
        error = "no program";
        return -1;
    }
    std::vector<char*> args = CArgs(argv);
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) {
        error = std::strerror(errno);
        return -1;
    }
    pid_t pid = ::fork();
    if (pid < 0) {
        error = std::strerror(errno);
        ::close(fds[0]);
        ::close(fds[1]);
        return -1;
    }
    if (pid == 0) {
        ::close(fds[0]);
        ExecChild(fds[1], args[0], args.data(), folder.empty() ? nullptr : folder.c_str());
    }
    ::close(fds[1]);
    int err = ReadExecStatus(fds[0]);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (err != 0) {
        error = std::strerror(err);
        return -1;
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return -1;
}

int StartDetached(const std::vector<std::string>& argv, const std::string& folder) {
    if (argv.empty() || argv[0].empty()) return ENOENT;
    std::vector<char*> args = CArgs(argv);
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) return errno;
    pid_t pid = ::fork();
    if (pid < 0) {
        int err = errno;
        ::close(fds[0]);
        ::close(fds[1]);
        return err;
    }
    if (pid == 0) {
        // The middle process starts a session of its own, forks the program
        // and ends at once, so the program is adopted by init and never
        // becomes a zombie of ours.
        ::close(fds[0]);
        ::setsid();
        pid_t grandchild = ::fork();
        if (grandchild < 0) {
            int err = errno;
            ssize_t ignored = ::write(fds[1], &err, sizeof err);
            (void)ignored;
            ::_exit(1);
        }
        if (grandchild > 0) ::_exit(0);
        int devNull = ::open("/dev/null", O_RDONLY);
        if (devNull >= 0) {
            ::dup2(devNull, 0);
            if (devNull != 0) ::close(devNull);
        }
        ExecChild(fds[1], args[0], args.data(), folder.empty() ? nullptr : folder.c_str());
    }
    ::close(fds[1]);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return ReadExecStatus(fds[0]);
}

std::vector<std::string> ShellCommandArgs(const std::string& lpFile, const std::string& lpParameters,
                                          bool withTerminal, int32_t& result) {
    result = 0;
    if (!SameWord(lpFile, "cmd") && !SameWord(lpFile, "command") && !SameWord(lpFile, "cmd.exe") &&
        !SameWord(lpFile, "command.com")) {
        result = SE_ERR_NOASSOC;
        return {};
    }
    // The one form the program uses: /c "<command file>".
    std::string params = VbTrim(lpParameters);
    if (params.size() < 6 || params[0] != '/' || (params[1] != 'c' && params[1] != 'C') || params[2] != ' ') {
        result = ERROR_BAD_FORMAT;
        return {};
    }
    std::string quoted = VbTrim(params.substr(3));
    if (quoted.size() < 3 || quoted.front() != '"' || quoted.back() != '"') {
        result = ERROR_BAD_FORMAT;
        return {};
    }
    std::string script = quoted.substr(1, quoted.size() - 2);
    std::string runner = App::Path() + "/quarrin-runbat";
    if (!IsExecutableFile(runner)) {
        result = SE_ERR_FNF;
        return {};
    }
    if (withTerminal) {
        std::string terminal = FindProgram("x-terminal-emulator");
        if (!terminal.empty()) return {terminal, "-e", runner, script};
    }
    return {runner, script};
}

int32_t ShellExecuteA(int32_t hwnd, const std::string& lpOperation, const std::string& lpFile,
                      const std::string& lpParameters, const std::string& lpDirectory, int32_t nShowCmd) {
    if (!lpOperation.empty() && !SameWord(lpOperation, "open")) return SE_ERR_NOASSOC;
    auto hasValue = [](const char* name) {
        const char* v = std::getenv(name);
        return v != nullptr && *v != '\0';
    };
    bool withTerminal = nShowCmd != SW_HIDE && (hasValue("DISPLAY") || hasValue("WAYLAND_DISPLAY"));
    int32_t result = 0;
    std::vector<std::string> argv = ShellCommandArgs(lpFile, lpParameters, withTerminal, result);
    if (argv.empty()) return result;
    struct stat st {};
    if (!lpDirectory.empty() && (::stat(lpDirectory.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))) return SE_ERR_PNF;
    switch (StartDetached(argv, lpDirectory)) {
        case 0: return kShellExecuteStarted;
        case ENOENT: return SE_ERR_FNF;
        case ENOTDIR: return SE_ERR_PNF;
        case EACCES:
        case EPERM: return SE_ERR_ACCESSDENIED;
        case ENOMEM: return SE_ERR_OOM;
        default: return SE_ERR_FNF;
    }
}
