#pragma once
// Mesh files of both kinds (msh and amh) built in code: the outer header, the
// inner header at the offset that the outer one names, and the body of
// counted tables and texture information records.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "samples/GameFiles.h"

namespace samples {

constexpr uint32_t kMshKindId = 0x7498;
constexpr uint32_t kAmhKindId = 0x6838;

enum class MeshKind { Msh, Amh };

struct MeshTexture {
    int32_t Head = 0;
    std::array<std::string, 4> Texts;
    // Replaces the length written in front of a text; the text's bytes are
    // still written as they are.
    std::array<std::optional<int32_t>, 4> LengthOverride;
    std::array<uint8_t, 12> Tail{};
};

struct MeshSpec {
    MeshKind Kind = MeshKind::Msh;
    // Replace the ids that the kind gives, to build a file of mixed kinds.
    std::optional<uint32_t> FormatId;
    std::optional<uint32_t> KindId;
    uint32_t OuterSignature = 0x6E71;
    uint32_t InnerSignature = 0x6E71;
    // Bytes (0xEE) between the outer header and the inner one.
    size_t InnerGap = 0;
    // Replaces the inner offset written in the outer header.
    std::optional<int32_t> InnerOffset;

    std::vector<std::array<float, 3>> Vertices;
    std::vector<std::array<int16_t, 3>> Polygons;
    std::vector<std::array<int16_t, 3>> Triples;
    std::vector<std::array<float, 3>> VectorsA;
    std::vector<std::array<float, 3>> VectorsB;
    size_t Blocks = 0;  // 24-byte blocks, each filled with its number
    std::vector<MeshTexture> Textures;

    // Replace the counts written in front of the tables; the tables are still
    // written as they are.
    std::optional<int32_t> VertexCount, PolygonCount, TripleCount, VectorCountA, VectorCountB, BlockCount,
        TextureCount;
    // Cuts the built file to this many bytes when it is longer.
    std::optional<size_t> Truncate;
};

// Where the parts of a built mesh stand in the file (before any cut).
struct MeshLayout {
    size_t Inner = 0;  // inner header
    size_t Body = 0;   // vertex count
    size_t PolygonCount = 0;
    size_t TripleCount = 0;
    size_t VectorCountA = 0;
    size_t VectorCountB = 0;
    size_t BlockCount = 0;
    size_t TextureCount = 0;
    // Per texture record: the offset of the record and of each text's length.
    std::vector<size_t> TextureRecords;
    std::vector<std::array<size_t, 4>> TextLengths;
    size_t End = 0;
};

std::string BuildMesh(const MeshSpec& recipe);
MeshLayout LayoutOf(const MeshSpec& recipe);

// A cube of 8 corners and 12 triangles, with two texture records.
MeshSpec CubeMesh(MeshKind kind = MeshKind::Msh);

}  // namespace samples
