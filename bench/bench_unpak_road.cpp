// The whole road of Extract as a user takes it: `quarrin-cli pak unpak PAK
// DEST --run` lists the PAK, writes the stored members, the wrappers and the
// command file, and the runner unpacks every wrapper and deletes it. Set
// beside `7zz x` of the same files in a deflate ZIP, run the same way.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "fixtures/ByteWriter.h"
#include "samples/PakBuilder.h"
#include "platform/Shell.h"

namespace {

namespace fs = std::filesystem;

const fixtures::TempDir& Dir() {
    static fixtures::TempDir dir;
    return dir;
}

std::string ToolsDir() { return fs::read_symlink("/proc/self/exe").parent_path().string(); }

// Text-like members of about 560 bytes, as the game's text files are.
std::string Text(int i) {
    std::string s;
    uint32_t x = static_cast<uint32_t>(i) * 2654435761u + 1;
    while (s.size() < 560) {
        x = x * 1103515245 + 12345;
        s += "line " + std::to_string(x % 1000) + " of the tale: etaoin shrdlu\r\n";
    }
    return s;
}

std::string MemberName(int i) { return "text" + std::to_string(i) + ".txt"; }

// The PAK of `count` members, imploded or stored, built once per shape.
const std::string& Pak(int count, bool imploded) {
    static std::map<std::pair<int, bool>, std::string> paks;
    std::string& path = paks[{count, imploded}];
    if (path.empty()) {
        fixtures::PakBuilder pak;
        for (int i = 0; i < count; ++i) {
            if (imploded)
                pak.Imploded(MemberName(i), Text(i));
            else
                pak.Stored(MemberName(i), Text(i));
        }
        path = Dir() / ("game-" + std::to_string(count) + (imploded ? "-i" : "-s") + ".pak");
        fixtures::WriteFile(path, pak.Build());
    }
    return path;
}

// The same files as a deflate ZIP, made by 7zz from the unpacked members.
const std::string& DeflateZip(int count) {
    static std::map<int, std::string> zips;
    std::string& path = zips[count];
    if (path.empty()) {
        const std::string src = Dir() / ("zipsrc-" + std::to_string(count));
        fs::create_directories(src);
        for (int i = 0; i < count; ++i) fixtures::WriteFile(src + "/" + MemberName(i), Text(i));
        path = Dir() / ("game-" + std::to_string(count) + ".zip");
        std::string error;
        RunProgram({FindProgram("7zz"), "a", "-tzip", "-mm=Deflate", "-bso0", "-bsp0", path, "."}, src, error);
    }
    return path;
}

int Quiet(const std::vector<std::string>& argv, const std::string& folder) {
    pid_t pid = fork();
    if (pid == 0) {
        freopen("/dev/null", "w", stdout);
        freopen("/dev/null", "w", stderr);
        if (chdir(folder.c_str()) != 0) _exit(126);
        std::vector<char*> args;
        for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// CPU seconds that finished child processes used, user and system together:
// steadier than the wall clock, which the disk's write-back sways.
double ChildCpuSeconds() {
    struct rusage u {};
    getrusage(RUSAGE_CHILDREN, &u);
    return static_cast<double>(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
           static_cast<double>(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

std::string FreshDest() {
    const std::string dest = Dir() / "dest";
    fs::remove_all(dest);
    fs::create_directories(dest);
    return dest;
}

void BM_UnpakRoad(benchmark::State& state, bool imploded) {
    const int count = static_cast<int>(state.range(0));
    const std::string pak = Pak(count, imploded);
    const std::string cli = ToolsDir() + "/quarrin-cli";
    const double cpuBefore = ChildCpuSeconds();
    for (auto _ : state) {
        state.PauseTiming();
        const std::string dest = FreshDest();
        state.ResumeTiming();
        if (Quiet({cli, "pak", "unpak", pak, dest, "--run"}, "/") != 0) state.SkipWithError("pak unpak failed");
    }
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["child_cpu_ms"] = (ChildCpuSeconds() - cpuBefore) * 1000 / static_cast<double>(state.iterations());
}

void BM_UnpakRoadImploded(benchmark::State& state) { BM_UnpakRoad(state, true); }
void BM_UnpakRoadStored(benchmark::State& state) { BM_UnpakRoad(state, false); }

void BM_SevenZipDeflate(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const std::string sevenZip = FindProgram("7zz");
    if (sevenZip.empty()) {
        state.SkipWithError("7zz is not installed");
        return;
    }
    const std::string zip = DeflateZip(count);
    const double cpuBefore = ChildCpuSeconds();
    for (auto _ : state) {
        state.PauseTiming();
        const std::string dest = FreshDest();
        state.ResumeTiming();
        if (Quiet({sevenZip, "x", "-y", "-bso0", "-bsp0", "-o" + dest, zip}, "/") != 0)
            state.SkipWithError("7zz x failed");
    }
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["child_cpu_ms"] = (ChildCpuSeconds() - cpuBefore) * 1000 / static_cast<double>(state.iterations());
}

}  // namespace

BENCHMARK(BM_UnpakRoadImploded)->Arg(1000)->Arg(5000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SevenZipDeflate)->Arg(1000)->Arg(5000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_UnpakRoadStored)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
