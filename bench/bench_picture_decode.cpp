// Decoding and painting large pictures: a Planar Bitmap of 4096 x 4096 pixels
// of one byte each, and a 24-bit TGA of the same size, each against a plain
// copy of its pixel bytes.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"
#include "samples/PlanarBuilder.h"
#include "identify/IFileHost.h"
#include "pictures/CBtm.h"
#include "pictures/CTGAFile.h"

namespace {

constexpr int32_t kSide = 4096;

fixtures::TempDir& Dir() {
    static fixtures::TempDir dir;
    return dir;
}

const std::string& BtmPath() {
    static const std::string path = [] {
        std::string p = Dir() / "large.btm";
        fixtures::WriteFile(p, fixtures::GradientBtm(kSide, kSide));
        return p;
    }();
    return path;
}

const std::string& TgaPath() {
    static const std::string path = [] {
        std::string p = Dir() / "large.tga";
        fixtures::WriteFile(p, fixtures::BuildTga(fixtures::GradientImage(kSide, kSide)));
        return p;
    }();
    return path;
}

// The picture pane, sized to the pictures once.
FileHost& Host() {
    static FileHost host;
    if (host.oPicture.ImageWidth() != kSide) host.oPicture.Move(0, 0, kSide, kSide);
    return host;
}

void CopyBytes(benchmark::State& state, size_t size) {
    std::vector<uint8_t> from(size, 7), to(size);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(size));
}

void BM_MemcpyBtmPixels(benchmark::State& state) { CopyBytes(state, size_t{kSide} * kSide); }
BENCHMARK(BM_MemcpyBtmPixels)->Unit(benchmark::kMillisecond);

// Reading, decoding into the section and painting into the pane (or, with
// argument 0, into no context), as the first preview of a file does.
void BM_BtmDecodeAndPaint(benchmark::State& state) {
    FileHost& host = Host();
    const int32_t hDC = state.range(0) != 0 ? host.oPicture.hDC : 0;
    for (auto _ : state) {
        CBtm btm(host);
        btm.Initialize(BtmPath(), 0, nullptr);
        if (!btm.Show(hDC)) state.SkipWithError("not shown");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kSide * kSide);
}
BENCHMARK(BM_BtmDecodeAndPaint)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// A later preview: one block transfer from the section.
void BM_BtmRepaint(benchmark::State& state) {
    FileHost& host = Host();
    CBtm btm(host);
    btm.Initialize(BtmPath(), 0, nullptr);
    btm.Show(0);
    for (auto _ : state) btm.Show(host.oPicture.hDC);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kSide * kSide);
}
BENCHMARK(BM_BtmRepaint)->Unit(benchmark::kMillisecond);

void BM_MemcpyTgaPixels(benchmark::State& state) { CopyBytes(state, size_t{kSide} * kSide * 3); }
BENCHMARK(BM_MemcpyTgaPixels)->Unit(benchmark::kMillisecond);

void BM_TgaDecodeAndPaint(benchmark::State& state) {
    FileHost& host = Host();
    for (auto _ : state) {
        CTGAFile tga;
        tga.Initialize(TgaPath());
        if (!tga.Show(host.oPicture.hDC)) state.SkipWithError("not shown");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kSide * kSide * 3);
}
BENCHMARK(BM_TgaDecodeAndPaint)->Unit(benchmark::kMillisecond);

}  // namespace
