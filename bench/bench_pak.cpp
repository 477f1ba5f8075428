// PAK archives: listing a large directory and cutting members out into ZIP
// wrappers or plain files. The archiver's explode road is measured in
// bench_archiver.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "controls/ListView.h"
#include "fixtures/ByteWriter.h"
#include "samples/PakBuilder.h"
#include "pak/CPAKFile.h"
#include "pak/ZipWrapper.h"

extern char** environ;

namespace {

const fixtures::TempDir& Dir() {
    static fixtures::TempDir dir;
    return dir;
}

// Text-like data that implodes about as well as the game's files do.
std::string Sample(size_t size) {
    std::string s(size, '\0');
    uint32_t x = 12345;
    for (size_t i = 0; i < size; ++i) {
        x = x * 1103515245 + 12345;
        s[i] = static_cast<char>("etaoin shrdlu\r\n0123"[(x >> 16) % 19]);
    }
    return s;
}

const std::string& BigPak() {
    static std::string path;
    if (path.empty()) {
        fixtures::PakBuilder pak;
        for (int i = 0; i < 100000; ++i) {
            std::string n = std::to_string(i);
            pak.Raw("world\\tiles\\t" + std::string(6 - n.size(), '0') + n + ".btm", "abcd", 40);
        }
        path = Dir() / "big.pak";
        fixtures::WriteFile(path, pak.Build());
    }
    return path;
}

void ListPak100000Members(benchmark::State& state) {
    const std::string& path = BigPak();
    for (auto _ : state) {
        ListView lv{"oListView"};
        FileHost host;
        CPAKFile pak{host};
        pak.Initialize(path, 0, &lv);
        pak.Show(0);
        if (lv.Count() != 100000) state.SkipWithError("the listing is not whole");
    }
    state.SetItemsProcessed(state.iterations() * 100000);
}
BENCHMARK(ListPak100000Members)->Unit(benchmark::kMillisecond);

// quarrin-cli is built into the folder of this program.
std::string CliPath() {
    char self[4096];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0) return {};
    std::string path(self, static_cast<size_t>(n));
    return path.substr(0, path.rfind('/') + 1) + "quarrin-cli";
}

// `quarrin-cli pak list` as a whole: start, listing and the lines written to
// a file, as a script reads them.
void PakListCommand100000Members(benchmark::State& state) {
    const std::string& path = BigPak();
    const std::string cli = CliPath();
    if (access(cli.c_str(), X_OK) != 0) {
        state.SkipWithError("quarrin-cli is not built beside the benchmark");
        return;
    }
    std::vector<char*> argv = {const_cast<char*>(cli.c_str()), const_cast<char*>("pak"), const_cast<char*>("list"),
                               const_cast<char*>(path.c_str()), nullptr};
    for (auto _ : state) {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        pid_t pid = 0;
        int status = 0;
        if (posix_spawn(&pid, cli.c_str(), &actions, nullptr, argv.data(), environ) != 0 ||
            waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
            state.SkipWithError("pak list failed");
        posix_spawn_file_actions_destroy(&actions);
    }
    state.SetItemsProcessed(state.iterations() * 100000);
}
BENCHMARK(PakListCommand100000Members)->Unit(benchmark::kMillisecond)->UseRealTime();

// A PAK of one member of state.range(0) bytes, compressed or stored.
struct OneMember {
    std::string path;
    int32_t packed = 0, original = 0, offset = 0;
};
OneMember MakeOneMember(size_t size, bool compressed) {
    OneMember m;
    m.path = Dir() / (std::string(compressed ? "c" : "s") + std::to_string(size) + ".pak");
    fixtures::PakBuilder pak;
    if (compressed) {
        pak.Raw("member.bin", Sample(size), static_cast<int32_t>(size) * 3);
    } else {
        pak.Stored("member.bin", Sample(size));
    }
    fixtures::WriteFile(m.path, pak.Build());
    auto e = pak.Entries()[0];
    m.packed = e.PackedSize;
    m.original = e.OriginalSize;
    m.offset = e.Offset;
    return m;
}

void UnpakMemberSpeed(benchmark::State& state, bool compressed) {
    FillZipTemplates();
    OneMember m = MakeOneMember(static_cast<size_t>(state.range(0)), compressed);
    const std::string dest = Dir().Path() + "/dest/";
    std::filesystem::create_directories(dest);
    for (auto _ : state) {
        if (!UnpakMember(dest, m.path, "member.bin", m.packed, m.original, m.offset))
            state.SkipWithError("UnpakMember failed");
    }
    state.SetBytesProcessed(state.iterations() * m.packed);
}
void UnpakToWrapper(benchmark::State& state) { UnpakMemberSpeed(state, true); }
void UnpakStored(benchmark::State& state) { UnpakMemberSpeed(state, false); }
BENCHMARK(UnpakToWrapper)->Arg(64 << 10)->Arg(4 << 20)->Arg(32 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK(UnpakStored)->Arg(64 << 10)->Arg(4 << 20)->Arg(32 << 20)->Unit(benchmark::kMillisecond);

}  // namespace
