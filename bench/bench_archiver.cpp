// The archiver quarrin-pkzip: how fast an imploded entry goes through its
// reader and onto the disk, set against one bare call of StormLib's decoder
// on the same stream, and how unpacking grows with the number of entries.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <ostream>

#include "fixtures/ByteWriter.h"
#include "fixtures/ZipBuilder.h"
#include "pak/ZipReader.h"

// Last, so that StormLib's macros meet no later declaration.
#include <StormLib.h>

namespace {

const fixtures::TempDir& Dir() {
    static fixtures::TempDir dir;
    return dir;
}

// Text-like bytes: words of a small vocabulary in lines, which implode to
// about the ratio of the game's text files.
std::string TextLike(size_t size) {
    static const char* const kWords[] = {"stone ", "quarry ", "wall ", "north ", "tile ", "map ", "gate ",
                                         "river ", "the ", "of ", "and ", "selvane ", "12 ", "400 "};
    std::string s;
    s.reserve(size + 16);
    uint32_t x = 2463534242u;
    while (s.size() < size) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        s += kWords[x % 14];
        if (x % 11 == 0) s += "\r\n";
    }
    s.resize(size);
    return s;
}

struct ImplodedSample {
    std::string Original, Stream, Zip, ZipPath;
};

// 16 MiB of text imploded with SCompImplode, alone and as a one-entry ZIP.
const ImplodedSample& Sample() {
    static const ImplodedSample s = [] {
        ImplodedSample r;
        r.Original = TextLike(16 << 20);
        r.Stream = fixtures::Implode(r.Original);
        r.Zip = fixtures::BuildZip({{"sample.txt", kZipImploded, 0, r.Stream, fixtures::Crc32(r.Original),
                                     static_cast<uint32_t>(r.Original.size())}});
        r.ZipPath = Dir() / "sample.zip";
        fixtures::WriteFile(r.ZipPath, r.Zip);
        return r;
    }();
    return s;
}

void SetCounters(benchmark::State& state, const ImplodedSample& s) {
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(s.Original.size()));
    state.counters["stream_bytes"] = static_cast<double>(s.Stream.size());
}

// StormLib's own call: the whole stream into one buffer of the whole output.
void ExplodeBareStormLib(benchmark::State& state) {
    const ImplodedSample& s = Sample();
    std::string in = s.Stream;
    std::string out(s.Original.size() + 1, '\0');
    for (auto _ : state) {
        int length = static_cast<int>(out.size());
        if (SCompExplode(out.data(), &length, in.data(), static_cast<int>(in.size())) == 0 ||
            length != static_cast<int>(s.Original.size()))
            state.SkipWithError("SCompExplode failed");
        benchmark::DoNotOptimize(out.data());
    }
    SetCounters(state, s);
}
BENCHMARK(ExplodeBareStormLib)->Unit(benchmark::kMillisecond);

// The archiver's reader: the entry decoded piece by piece, with its CRC
// checked, into a sink that keeps nothing.
void ExplodeArchiverReader(benchmark::State& state) {
    const ImplodedSample& s = Sample();
    MemoryZipSource source(s.Zip.data(), s.Zip.size());
    ZipReader reader;
    std::string error;
    if (!reader.Open(source, error)) state.SkipWithError(error.c_str());
    for (auto _ : state) {
        size_t produced = 0;
        if (!reader.Extract(
                reader.Entries()[0], [&](const uint8_t*, size_t n) { produced += n; return true; }, error))
            state.SkipWithError(error.c_str());
        benchmark::DoNotOptimize(produced);
    }
    SetCounters(state, s);
}
BENCHMARK(ExplodeArchiverReader)->Unit(benchmark::kMillisecond);

// What quarrin-pkzip does: from the ZIP file into a file in a folder.
void ExplodeArchiverToFile(benchmark::State& state) {
    const ImplodedSample& s = Sample();
    const std::string folder = Dir() / "one";
    std::filesystem::create_directories(folder);
    std::ostream quiet(nullptr);
    for (auto _ : state) {
        if (!ExtractZipToFolder(s.ZipPath, folder, quiet, quiet)) state.SkipWithError("extraction failed");
    }
    SetCounters(state, s);
}
BENCHMARK(ExplodeArchiverToFile)->Unit(benchmark::kMillisecond);

// An archive of state.range(0) imploded entries of a few hundred bytes each,
// in a few folders, unpacked over and over into the same folder.
void ExtractSmallEntries(benchmark::State& state) {
    const auto count = static_cast<size_t>(state.range(0));
    std::vector<fixtures::ZipEntrySpec> entries;
    entries.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const std::string text = TextLike(200 + i % 300);
        entries.push_back(fixtures::ImplodedEntry("world\\part" + std::to_string(i % 16) + "\\m" + std::to_string(i) + ".txt",
                                                  text, true));
    }
    const std::string zip = Dir() / ("small" + std::to_string(count) + ".zip");
    fixtures::WriteFile(zip, fixtures::BuildZip(entries));
    const std::string folder = Dir() / ("small" + std::to_string(count));
    std::filesystem::create_directories(folder);
    std::ostream quiet(nullptr);
    for (auto _ : state) {
        if (!ExtractZipToFolder(zip, folder, quiet, quiet)) state.SkipWithError("extraction failed");
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(count));
}
BENCHMARK(ExtractSmallEntries)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
