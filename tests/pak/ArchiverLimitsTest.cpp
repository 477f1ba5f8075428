// The archiver against archives made to hurt: what each may cost in memory,
// in bytes written and in litter, and what reaches the terminal of its names.
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "PakTestSupport.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/ZipBuilder.h"
#include "pak/ZipReader.h"

// StormLib's streaming encoder, which its header doesn't declare.
extern "C" unsigned int implode(unsigned int (*read_buf)(char* buf, unsigned int* size, void* param),
                                void (*write_buf)(char* buf, unsigned int* size, void* param), char* work_buf,
                                void* param, unsigned int* type, unsigned int* dsize);

namespace {

using fixtures::ZipEntrySpec;

constexpr uint32_t kBigSize = 128u << 20;

// The implode stream of kBigSize bytes 'A', made piece by piece: the bytes
// themselves are never held, only the stream of under a megabyte.
const std::string& BigStream() {
    static const std::string stream = [] {
        struct Run {
            uint64_t left = kBigSize;
            std::string out;
        } run;
        auto read = [](char* buf, unsigned int* size, void* param) -> unsigned int {
            auto& r = *static_cast<Run*>(param);
            const auto n = static_cast<unsigned int>(std::min<uint64_t>(*size, r.left));
            std::memset(buf, 'A', n);
            r.left -= n;
            return n;
        };
        auto write = [](char* buf, unsigned int* size, void* param) { static_cast<Run*>(param)->out.append(buf, *size); };
        std::vector<char> work(64 * 1024);
        unsigned int type = 0, dictionary = 4096;
        if (implode(read, write, work.data(), &run, &type, &dictionary) != 0) throw std::runtime_error("implode failed");
        return run.out;
    }();
    return stream;
}

ZipEntrySpec BigEntry(const std::string& name) { return {name, kZipImploded, 0, BigStream(), 0, kBigSize}; }

// The local header, name and data of an entry.
std::string Local(const ZipEntrySpec& e) {
    fixtures::ByteWriter w;
    w.U32(0x04034B50).U16(20).U16(e.Flags).U16(e.Method).U16(0x0960).U16(0x2241);
    w.U32(e.Crc).U32(static_cast<uint32_t>(e.Data.size())).U32(e.UncompressedSize);
    w.U16(static_cast<uint16_t>(e.Name.size())).U16(0).Bytes(e.Name).Bytes(e.Data);
    return w.Data();
}

// `body`, then a directory of the entries, each named at its offset.
std::string WithDirectory(const std::string& body, const std::vector<std::pair<const ZipEntrySpec*, uint32_t>>& records) {
    fixtures::ByteWriter w;
    w.Bytes(body);
    for (const auto& [entry, at] : records) {
        const ZipEntrySpec& e = *entry;
        w.U32(0x02014B50).U16(20).U16(20).U16(e.Flags).U16(e.Method).U16(0x0960).U16(0x2241);
        w.U32(e.Crc).U32(static_cast<uint32_t>(e.Data.size())).U32(e.UncompressedSize);
        w.U16(static_cast<uint16_t>(e.Name.size())).U16(0).U16(0).U16(0).U16(0).U32(0x20).U32(at).Bytes(e.Name);
    }
    const auto count = static_cast<uint16_t>(records.size());
    const auto size = static_cast<uint32_t>(w.Size() - body.size());
    w.U32(0x06054B50).U16(0).U16(0).U16(count).U16(count).U32(size).U32(static_cast<uint32_t>(body.size())).U16(0);
    return w.Data();
}

// One entry, and a directory that names it `times` over.
std::string ListedOver(const ZipEntrySpec& e, size_t times) {
    return WithDirectory(Local(e), std::vector<std::pair<const ZipEntrySpec*, uint32_t>>(times, {&e, 0}));
}

// A stored entry that carries a whole second entry, local header and all,
// and a directory that names both: the second lies inside the first.
std::string EntryInsideAnother() {
    ZipEntrySpec inner = fixtures::StoredEntry("inner.txt", std::string(5000, 'i'));
    ZipEntrySpec outer = fixtures::StoredEntry("outer.bin", Local(inner));
    return WithDirectory(Local(outer), {{&outer, 0}, {&inner, static_cast<uint32_t>(30 + outer.Name.size())}});
}

struct Outcome {
    int Status = -1;  // the exit status, or 128 + the signal that ended it
    long PeakKiB = 0;
    std::string Out, Err;
};

bool HoldsTempFile(const std::string& folder) {
    for (const auto& e : std::filesystem::recursive_directory_iterator(folder))
        if (e.path().extension() == ".part") return true;
    return false;
}

std::string Slurp(int fd) {
    std::string s;
    char buf[4096];
    ssize_t n;
    lseek(fd, 0, SEEK_SET);
    while ((n = read(fd, buf, sizeof buf)) > 0) s.append(buf, static_cast<size_t>(n));
    close(fd);
    return s;
}

long PeakKiB(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
    return 0;
}

// Runs `quarrin-pkzip -Extract zip` in `folder`. The child is traced so that
// its peak memory can be read when it is about to end: the resource use
// that wait4 or getrusage report for a child also counts the memory of the
// process that started it, which a test program has plenty of. With
// `killOnTempFile` it is sent SIGTERM as soon as a temporary file of it
// shows up.
Outcome RunArchiver(const std::string& folder, const std::string& zip, bool killOnTempFile) {
    Outcome o;
    char outName[] = "/tmp/quarrin-limits-out-XXXXXX";
    char errName[] = "/tmp/quarrin-limits-err-XXXXXX";
    const int outFd = mkstemp(outName), errFd = mkstemp(errName);
    unlink(outName);
    unlink(errName);
    const std::string program = paktest::ToolPath("quarrin-pkzip");
    std::vector<std::string> args{program, "-Extract", zip};
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        if (chdir(folder.c_str()) != 0 || dup2(outFd, 1) < 0 || dup2(errFd, 2) < 0 ||
            ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(126);
        // LeakSanitizer stops the world through ptrace, which a traced
        // program can't do; the leak checks run in the test programs.
        setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    bool killed = !killOnTempFile;
    bool started = false;
    while (pid > 0) {
        const pid_t got = waitpid(pid, &status, killed ? 0 : WNOHANG);
        if (got == 0) {
            if (started && HoldsTempFile(folder)) {
                kill(pid, SIGTERM);
                killed = true;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            continue;
        }
        if (got < 0 || !WIFSTOPPED(status)) break;
        int deliver = 0;
        if (!started) {
            // The stop at the exec: from here on, stop once more at the end.
            started = true;
            ptrace(PTRACE_SETOPTIONS, pid, nullptr, PTRACE_O_TRACEEXIT | PTRACE_O_EXITKILL);
        } else if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8))) {
            o.PeakKiB = PeakKiB(pid);
        } else {
            deliver = WSTOPSIG(status);
        }
        ptrace(PTRACE_CONT, pid, nullptr, reinterpret_cast<void*>(static_cast<intptr_t>(deliver)));
    }
    if (pid > 0) o.Status = WIFEXITED(status) ? WEXITSTATUS(status) : WIFSIGNALED(status) ? 128 + WTERMSIG(status) : -1;
    o.Out = Slurp(outFd);
    o.Err = Slurp(errFd);
    return o;
}

// Each file and folder below `folder`, with the size of each file.
std::vector<std::string> Contents(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::recursive_directory_iterator(folder)) {
        std::string n = std::filesystem::relative(e.path(), folder).string();
        names.push_back(e.is_directory() ? n + "/" : n + " " + std::to_string(e.file_size()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

class ArchiverLimits : public ::testing::Test {
protected:
    void SetUp() override {
        if (!paktest::ToolBuilt("quarrin-pkzip")) FAIL() << "quarrin-pkzip is not built in " << QUARRIN_TOOLS_DIR;
    }
};

TEST_F(ArchiverLimits, HostileArchivesStayWithinTheirBounds) {
    const std::string big = std::to_string(kBigSize);
    std::vector<std::string> deep(3000, "d");
    std::string deepName;
    for (const auto& d : deep) deepName += d + "\\";
    deepName += "f.txt";
    ZipEntrySpec badCrc = fixtures::StoredEntry("keep\\new\\newer\\f.bin", std::string(3000, 'x'));
    badCrc.Crc ^= 1;

    struct Row {
        const char* What;
        std::string Zip;
        std::vector<std::string> Before;  // folders that stand in the destination first
        bool KillOnTempFile;
        int Status;
        long MaxPeakKiB;  // 0: not measured
        std::vector<std::string> After;   // the destination afterwards
        const char* Message;
    };
    const std::vector<Row> rows = {
        {"a 128 MiB imploded entry from an archive of under a megabyte", fixtures::BuildZip({BigEntry("big.bin")}), {}, false, 0,
         32 * 1024, {"big.bin " + big}, " extracting: big.bin"},
        {"65535 directory records of one 128 MiB entry",
         ListedOver(BigEntry("big.bin"), 65535), {}, false, 1, 0, {}, "share bytes"},
        {"an entry carried inside another's data", EntryInsideAnother(), {}, false, 1, 0, {}, "share bytes"},
        {"an entry 3000 folders deep", fixtures::BuildZip({fixtures::StoredEntry(deepName, "x")}), {}, false, 1, 0, {},
         "can't make the folder"},
        {"a damaged entry below a folder that was there and two that were not", fixtures::BuildZip({badCrc}), {"keep"},
         false, 1, 0, {"keep/"}, "CRC"},
        {"SIGTERM while 128 MiB entries are written",
         fixtures::BuildZip({BigEntry("b1.bin"), BigEntry("b2.bin"), BigEntry("b3.bin"), BigEntry("b4.bin")}), {}, true,
         128 + SIGTERM, 0, {}, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.What);
        fixtures::TempDir tmp;
        const std::string out = tmp / "out";
        std::filesystem::create_directory(out);
        for (const auto& f : row.Before) std::filesystem::create_directory(out + "/" + f);
        fixtures::WriteFile(tmp / "in.zip", row.Zip);
        Outcome o = RunArchiver(out, "../in.zip", row.KillOnTempFile);
        EXPECT_EQ(o.Status, row.Status) << o.Err;
        if (row.MaxPeakKiB != 0) {
            EXPECT_LE(o.PeakKiB, row.MaxPeakKiB);
        }
        EXPECT_NE((o.Out + o.Err).find(row.Message), std::string::npos) << o.Out << o.Err;
        std::vector<std::string> after = Contents(out);
        if (row.KillOnTempFile) {
            // Entries finished before the signal may stay, whole; nothing else.
            std::erase_if(after, [&](const std::string& s) { return s.ends_with(".bin " + big); });
        }
        EXPECT_EQ(after, row.After);
    }
}

// Names come from the archive, which anyone can make: what reaches the
// terminal shows their control bytes and high bytes as \xNN.
TEST_F(ArchiverLimits, NamesReachTheTerminalEscaped) {
    ZipEntrySpec badCrc = fixtures::StoredEntry("bell\a\x1b.txt", "data");
    badCrc.Crc ^= 1;
    struct Row {
        const char* What;
        std::string ZipName;
        std::string Zip;
        std::vector<std::string> Shown;
    };
    const std::vector<Row> rows = {
        {"written entries and a folder",
         "in.zip",
         fixtures::BuildZip({fixtures::StoredEntry("\x1b[31mred.txt", "r"), fixtures::StoredEntry("caf\xe9\x9b.txt", "c"),
                             fixtures::StoredEntry("dir\x7f\\", "")}),
         {" extracting: \\x1B[31mred.txt", " extracting: caf\\xE9\\x9B.txt", "   creating: dir\\x7F\\"}},
        {"a damaged entry", "in.zip", fixtures::BuildZip({badCrc}), {"in.zip: bell\\x07\\x1B.txt: CRC"}},
        {"a refused name", "in.zip", fixtures::BuildZip({fixtures::StoredEntry("..\\\x1b]0;title\a", "x")}),
         {"..\\\\x1B]0;title\\x07: refused"}},
        {"a file in the way of a folder", "in.zip",
         fixtures::BuildZip({fixtures::StoredEntry("in\x1bway", "x"), fixtures::StoredEntry("in\x1bway\\f.txt", "y")}),
         {"./in\\x1Bway is in the way"}},
        {"overlapping entries", "in.zip",
         ListedOver(fixtures::StoredEntry("one\x1b[2J", "abc"), 2),
         {"(one\\x1B[2J) and 2 (one\\x1B[2J) share bytes"}},
        {"the archive's own name", "z\x1b[2J.zip", "not an archive at all, but long enough",
         {"z\\x1B[2J.zip: damaged archive", "quarrin-pkzip: z\\x1B[2J.zip: not every entry"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.What);
        fixtures::TempDir tmp;
        fixtures::WriteFile(tmp / row.ZipName, row.Zip);
        Outcome o = RunArchiver(tmp.Path(), row.ZipName, false);
        const std::string all = o.Out + o.Err;
        for (const std::string& text : row.Shown) EXPECT_NE(all.find(text), std::string::npos) << all;
        for (unsigned char c : all) {
            EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F)) << "byte " << int(c) << " in:\n" << all;
        }
    }
}

// A caller that unpacks in its own process hears what the program says, and
// keeps its descriptors and signal actions however often it calls.
TEST_F(ArchiverLimits, InProcessCallsMatchTheProgramAndLeaveNothingBehind) {
    ZipEntrySpec badCrc = fixtures::StoredEntry("bad.txt", "data");
    badCrc.Crc ^= 1;
    const std::vector<std::string> zips = {
        fixtures::BuildZip({fixtures::ImplodedEntry("a\\b.txt", std::string(9000, 'q')), badCrc,
                            fixtures::StoredEntry("..\\up", "u"), fixtures::StoredEntry("ok", "fine")}),
        ListedOver(fixtures::StoredEntry("x", "abc"), 3),
        "PK\x05\x06 cut short",
    };
    auto openDescriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    auto actions = [] {
        std::vector<void (*)(int)> a;
        for (int s : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction current {};
            sigaction(s, nullptr, &current);
            a.push_back(current.sa_handler);
        }
        return a;
    };
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    struct sigaction previousHup {};
    sigaction(SIGHUP, &ignore, &previousHup);
    const auto fdsBefore = openDescriptors();
    const auto actionsBefore = actions();
    for (size_t i = 0; i < zips.size(); ++i) {
        SCOPED_TRACE("archive " + std::to_string(i));
        fixtures::TempDir tmp;
        const std::string zip = tmp / "in.zip";
        fixtures::WriteFile(zip, zips[i]);
        std::filesystem::create_directory(tmp / "program");
        std::filesystem::create_directory(tmp / "here");
        Outcome program = RunArchiver(tmp / "program", zip, false);
        for (int round = 0; round < 3; ++round) {
            std::ostringstream out, err;
            const bool ok = ExtractZipToFolder(zip, tmp / "here", out, err);
            EXPECT_EQ(ok ? 0 : 1, program.Status);
            EXPECT_EQ(out.str(), program.Out);
            EXPECT_EQ(err.str(), program.Err);
            EXPECT_EQ(Contents(tmp / "here"), Contents(tmp / "program"));
        }
    }
    EXPECT_EQ(openDescriptors(), fdsBefore);
    EXPECT_EQ(actions(), actionsBefore);
    sigaction(SIGHUP, &previousHup, nullptr);
}

}  // namespace
