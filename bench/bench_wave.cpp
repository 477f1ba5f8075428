// The wave player: streaming a large wave file through the null device,
// which consumes each buffer at once, against reading the same file in
// buffers of the same size. The files are sparse, so they take no disk
// space; each ends with its benchmark. The peak resident size is reported
// after each size, to show that it does not follow the file.
#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "fixtures/ByteWriter.h"
#include "samples/WavBuilder.h"
#include "platform/Files.h"
#include "platform/NullAudio.h"
#include "platform/Windows.h"
#include "sound/cWavPlayer.h"

namespace {

// 44.1 kHz 16-bit stereo: 70560 bytes a buffer by the player's arithmetic.
fixtures::WavSpec Stereo44() {
    fixtures::WavSpec recipe;
    recipe.SampleRate = 44100;
    recipe.Channels = 2;
    recipe.Samples = std::string();
    return recipe;
}

// A wave whose data chunk holds `bytes` zero bytes, written as a hole.
class SparseWave {
public:
    explicit SparseWave(int64_t bytes) {
        fixtures::WavSpec recipe = Stereo44();
        recipe.DataSize = static_cast<uint32_t>(bytes);
        recipe.RiffSize = static_cast<uint32_t>(bytes + 36);
        fixtures::WriteFile(path_, fixtures::BuildWav(recipe));
        if (::truncate(path_.c_str(), 44 + bytes) != 0) std::abort();
    }
    ~SparseWave() { std::remove(path_.c_str()); }
    const std::string& Path() const { return path_; }

private:
    fixtures::TempDir dir_;
    std::string path_ = dir_ / "big.wav";
};

long MaxRssKb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void BM_ReadWaveFile(benchmark::State& state) {
    const int64_t bytes = state.range(0) << 20;
    SparseWave wave(bytes);
    std::string buffer(70560, '\0');
    for (auto _ : state) {
        HFILE h = _lopen(wave.Path(), OF_READ);
        int64_t total = 0;
        for (int32_t n; (n = _lread(h, buffer.data(), static_cast<int32_t>(buffer.size()))) > 0;) total += n;
        _lclose(h);
        benchmark::DoNotOptimize(total);
    }
    state.SetBytesProcessed(state.iterations() * bytes);
}

void BM_StreamWaveNullFast(benchmark::State& state) {
    const int64_t bytes = state.range(0) << 20;
    SparseWave wave(bytes);
    NullAudioBackend backend(true);
    SetAudioBackend(&backend);
    PlatformWindow window;
    cWavPlayer player;
    player.Attach(window.hWnd());
    bool complete = false;
    player.Complete.Connect([&] { complete = true; });
    for (auto _ : state) {
        complete = false;
        if (!player.OpenFile(wave.Path()) || !player.Play()) state.SkipWithError("the wave does not play");
        while (!complete) DispatchPostedMessages();
        player.CloseFile();
    }
    state.SetBytesProcessed(state.iterations() * bytes);
    state.counters["played_MiB"] = static_cast<double>(backend.TotalPlayed() / state.iterations()) / (1 << 20);
    state.counters["maxrss_KiB"] = static_cast<double>(MaxRssKb());
    SetAudioBackend(nullptr);
}

}  // namespace

BENCHMARK(BM_ReadWaveFile)->Arg(256)->Arg(1024)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_StreamWaveNullFast)->Arg(256)->Arg(1024)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
