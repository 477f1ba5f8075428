// Reading a large mesh and writing it as a DirectX text model: a mesh of one
// million vertices and one million polygons.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "fixtures/ByteWriter.h"
#include "samples/MeshBuilder.h"
#include "meshes/CMeshFile.h"
#include "platform/Files.h"

namespace {

constexpr int32_t kCount = 1000000;

// Coordinates of every magnitude the general format meets, from a fixed
// sequence so that each run writes the same text.
std::string LargeMeshBytes() {
    fixtures::MeshSpec recipe;
    uint32_t seed = 12345;
    auto next = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return seed;
    };
    recipe.Vertices.reserve(kCount);
    recipe.Polygons.reserve(kCount);
    for (int32_t i = 0; i < kCount; ++i) {
        float x = static_cast<float>(static_cast<int32_t>(next() % 2000000) - 1000000) / 1000.0f;
        float y = static_cast<float>(next() % 100000) / 7.0f;
        float z = static_cast<float>(i % 64) * 0.25f;
        recipe.Vertices.push_back({x, y, z});
    }
    for (int32_t i = 0; i < kCount; ++i)
        recipe.Polygons.push_back({static_cast<int16_t>(next() % 32768), static_cast<int16_t>(next() % 32768),
                                 static_cast<int16_t>(i % 32768)});
    return fixtures::BuildMesh(recipe);
}

// The file is written once for all the benchmarks of the run.
const std::string& LargeMeshPath() {
    static fixtures::TempDir dir;
    static const std::string path = [] {
        std::string p = dir / "large.msh";
        fixtures::WriteFile(p, LargeMeshBytes());
        return p;
    }();
    return path;
}

FileHost& Host() {
    static FileHost host;
    return host;
}

std::unique_ptr<CMeshFile> LoadedMesh() {
    auto mesh = std::make_unique<CMeshFile>(Host());
    mesh->Initialize(LargeMeshPath(), 0, nullptr);
    mesh->LoadBody();
    return mesh;
}

void BM_ReadMesh(benchmark::State& state) {
    const std::string& path = LargeMeshPath();
    const int64_t size = FileLen(path);
    for (auto _ : state) {
        CMeshFile mesh{Host()};
        mesh.Initialize(path, 0, nullptr);
        if (!mesh.LoadBody() || mesh.VertexCount() != kCount) state.SkipWithError("the mesh was not read");
        benchmark::DoNotOptimize(mesh.Polygons()(kCount - 1));
    }
    state.SetBytesProcessed(state.iterations() * size);
}
BENCHMARK(BM_ReadMesh)->Unit(benchmark::kMillisecond);

// The text alone, handed to a sink that only counts it.
void BM_ExportText(benchmark::State& state) {
    auto mesh = LoadedMesh();
    int64_t bytes = 0;
    for (auto _ : state) {
        WriteDirectXModel(mesh->Geometry(), [&bytes](std::string_view piece) { bytes += piece.size(); });
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_ExportText)->Unit(benchmark::kMillisecond);

// The text written to a file, as the export writes it.
void BM_ExportFile(benchmark::State& state) {
    auto mesh = LoadedMesh();
    fixtures::TempDir dir;
    const std::string out = dir / "large.x";
    int64_t bytes = 0;
    for (auto _ : state) {
        int16_t number = FreeFile();
        VbOpen(number, out, VbOpenMode::Output);
        WriteDirectXModel(mesh->Geometry(), [number, &bytes](std::string_view piece) {
            VbPut(number, std::string(piece));
            bytes += piece.size();
        });
        VbClose(number);
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_ExportFile)->Unit(benchmark::kMillisecond);

}  // namespace
