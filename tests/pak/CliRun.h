#pragma once
// quarrin-cli run as a child process the way a shell starts it: in a folder,
// under a file size limit (as `ulimit -f` sets it), with standard output on a
// file or on a terminal, and with the child's own peak memory measured.
#include <fcntl.h>
#include <pty.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace clirun {

struct Options {
    std::string folder;                    // working folder; empty keeps ours
    rlim_t fileSizeLimit = RLIM_INFINITY;  // bytes
    bool terminal = false;                 // standard output on a pseudo-terminal
    bool discardOutput = false;            // standard output to /dev/null
};

struct Result {
    int status = -1;      // exit status, 128 + signal, or -1 if it did not start
    std::string output;   // standard output
    std::string errors;   // standard error
    long peakKiB = 0;     // the program's peak resident memory
};

// The peak resident memory of a process, from /proc; 0 when it can't be read.
inline long PeakKiB(pid_t pid) {
    FILE* status = std::fopen(("/proc/" + std::to_string(pid) + "/status").c_str(), "r");
    if (status == nullptr) return 0;
    long peak = 0;
    char line[256];
    while (std::fgets(line, sizeof line, status) != nullptr)
        if (std::sscanf(line, "VmHWM: %ld", &peak) == 1) break;
    std::fclose(status);
    return peak;
}

// Waits for a child that asked to be traced and reads its peak memory as it
// exits. A forked child's own count of its peak starts with the pages of the
// process that forked it, so only the memory map that the program made at its
// start tells its peak; ptrace holds the program at its exit while that map is
// read. Without ptrace, the count that wait4 gives serves.
inline int WaitMeasured(pid_t pid, long& peakKiB) {
    int status = 0;
    rusage usage{};
    bool traced = false;
    for (;;) {
        if (wait4(pid, &status, 0, &usage) != pid) return -1;
        if (!WIFSTOPPED(status)) break;
        int forward = 0;
        if (!traced && WSTOPSIG(status) == SIGTRAP) {
            // Stopped at the start of the program.
            traced = true;
            ptrace(PTRACE_SETOPTIONS, pid, nullptr, reinterpret_cast<void*>(PTRACE_O_TRACEEXIT | PTRACE_O_EXITKILL));
        } else if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8))) {
            peakKiB = PeakKiB(pid);
        } else {
            forward = WSTOPSIG(status);
        }
        ptrace(PTRACE_CONT, pid, nullptr, reinterpret_cast<void*>(static_cast<intptr_t>(forward)));
    }
    if (peakKiB == 0) peakKiB = usage.ru_maxrss;
    return status;
}

inline std::string Drain(int fd) {
    std::string text;
    lseek(fd, 0, SEEK_SET);
    char buffer[4096];
    ssize_t n;
    while ((n = read(fd, buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<size_t>(n));
    return text;
}

inline int TempFd() {
    char name[] = "/tmp/quarrin-clirun-XXXXXX";
    int fd = mkstemp(name);
    if (fd >= 0) unlink(name);
    return fd;
}

inline Result Run(const std::vector<std::string>& argv, const Options& options = {}) {
    Result result;
    std::vector<char*> args;
    for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    const int outFd = TempFd();
    const int errFd = TempFd();
    if (outFd < 0 || errFd < 0) return result;

    // Only async-signal-safe calls between fork and exec.
    auto child = [&] {
        if (!options.folder.empty() && chdir(options.folder.c_str()) != 0) _exit(126);
        rlimit limit{options.fileSizeLimit, options.fileSizeLimit};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(126);
        if (options.discardOutput) {
            int null = open("/dev/null", O_WRONLY);
            if (null < 0) _exit(126);
            dup2(null, 1);
        } else if (!options.terminal) {
            dup2(outFd, 1);
        }
        // Stops at the exec, where the parent starts watching; refused
        // tracing leaves the program running untraced.
        if (!options.terminal) ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        dup2(errFd, 2);
        // LeakSanitizer stops the world through ptrace, which a traced
        // program can't do; the leak checks run in the test programs.
        setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
        execv(args[0], args.data());
        _exit(127);
    };

    pid_t pid = -1;
    int master = -1;
    if (options.terminal) {
        // The terminal passes bytes as written: no CR added in front of LF.
        termios mode{};
        cfmakeraw(&mode);
        pid = forkpty(&master, nullptr, &mode, nullptr);
    } else {
        pid = fork();
    }
    if (pid == 0) child();
    if (pid > 0) {
        if (master >= 0) {
            char buffer[4096];
            for (;;) {
                ssize_t n = read(master, buffer, sizeof buffer);
                if (n > 0) {
                    result.output.append(buffer, static_cast<size_t>(n));
                } else if (n < 0 && errno == EINTR) {
                    continue;
                } else {
                    break;  // EIO once the child has closed its side
                }
            }
        }
        const int status = WaitMeasured(pid, result.peakKiB);
        if (status != -1) result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        if (master < 0) result.output = Drain(outFd);
        result.errors = Drain(errFd);
    }
    if (master >= 0) close(master);
    close(outFd);
    close(errFd);
    return result;
}

}  // namespace clirun
