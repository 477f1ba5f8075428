#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/ErrorOf.h"
#include "samples/MeshBuilder.h"
#include "fixtures/Programs.h"
#include "meshes/DirectXModel.h"
#include "identify/modGlobal.h"

using fixtures::RunAndCapture;
using fixtures::TempDir;

namespace {

// A table as the reader leaves it: the indices 0 to `upper`, the first rows
// stored.
template <class T>
MeshTable<T> Table(const std::vector<T>& rows, int32_t upper) {
    MeshTable<T> table;
    table.Allocate(upper, rows.size());
    std::copy(rows.begin(), rows.end(), table.Storage());
    return table;
}

}  // namespace

TEST(FormatSingle, WritesTheGeneralFormatRoundedToSevenDigits) {
    const std::pair<float, const char*> cases[] = {
        {0.1f, "0.1"}, {-2.5f, "-2.5"}, {-1.0f, "-1"}, {0.0001f, "0.0001"}, {1.5e-9f, "1.5E-09"},
        {9999999.0f, "9999999"}, {1e7f, "1E+07"}, {12345678.0f, "1.234568E+07"}, {2.0f / 3.0f, "0.6666667"},
        {std::numeric_limits<float>::denorm_min(), "1.401298E-45"}, {-0.0f, "0"}, {1.2345674f, "1.234567"},
        // A carry through every digit takes the next power of ten, and the form
        // follows the rounded value.
        {1.9999999f, "2"}, {9.9999995e-5f, "0.0001"}, {-9999999.5e3f, "-1E+10"}, {-HUGE_VALF, "-inf"},
    };
    for (const auto& [value, text] : cases) EXPECT_EQ(FormatSingle(value), text) << "for " << value;
    // A walk over the bit patterns of all magnitudes.
    for (uint32_t bits = 0; bits < 0x7F800000u; bits += 0x00010101u) {
        float value;
        std::memcpy(&value, &bits, 4);
        const std::string text = FormatSingle(-value);
        ASSERT_LE(text.size(), kFormatSingleMax);
        ASSERT_LE(std::fabs(std::strtod(text.c_str(), nullptr) + value), value * 5e-7) << text;
    }
}

// The part between the header and the material, for tables as the reader
// leaves them: whole, empty, and with zero records behind the stored ones.
TEST(DirectXModel, WritesTheTablesBetweenTheFixedParts) {
    const std::string head = std::string(kDirectXTextHeader) + "\r\nMesh  {\r\n";
    const std::string tail = "Material {\r\n 1.0;1.0;1.0;1.0;;\r\n 50.0;\r\n 1.0;1.0;1.0;;\r\n 0.0;0.0;0.0;;\r\n }"
                             "\r\n\r\n}\r\n}\r\n";
    // The fields the model does not use are set, to be left out.
    const auto three = Table<MeshVertex>({{0.1f, -2.5f, 3, 99}, {4, 5, 6}, {7, 8, 9}}, 3);
    const auto faces = Table<MeshPolygon>({{0, 1, 2, 99}, {2, 1, 0}, {-1, 32767, -32768}}, 3);
    const auto vertices = Table<MeshVertex>({{1, 2, 3}}, 4);
    const auto polygons = Table<MeshPolygon>({}, 2);
    const std::pair<MeshGeometry, std::string> cases[] = {
        // The 16-bit pattern 0xFFFF is the index -1.
        {{3, &three, 3, &faces}, "3;\r\n0.1;-2.5;3;,\r\n4;5;6;,\r\n7;8;9;;\r\n\r\n3;\r\n3;0,1,2;,\r\n3;2,1,0;,\r\n"
                           "3;-1,32767,-32768;;\r\nMeshMaterialList {\r\n  1;\r\n 3;\r\n  0,\r\n  0,\r\n  0;\r\n"},
        {{0, &three, 0, &faces}, "0;\r\n\r\n0;\r\nMeshMaterialList {\r\n  1;\r\n 0;\r\n  0;\r\n"},
        {{-3, &vertices, -8, &polygons}, "-3;\r\n\r\n-8;\r\nMeshMaterialList {\r\n  1;\r\n -8;\r\n  0;\r\n"},
        {{4, &vertices, 2, &polygons}, "4;\r\n1;2;3;,\r\n0;0;0;,\r\n0;0;0;,\r\n0;0;0;;\r\n\r\n2;\r\n3;0,0,0;,\r\n"
                                       "3;0,0,0;;\r\nMeshMaterialList {\r\n  1;\r\n 2;\r\n  0,\r\n  0;\r\n"},
    };
    for (const auto& [mesh, middle] : cases) {
        EXPECT_EQ(DirectXModelText(mesh), head + middle + tail);
        EXPECT_TRUE(DirectXModelComplete(mesh));
        EXPECT_EQ(DirectXModelSize(mesh), static_cast<int64_t>((head + middle + tail).size()));
        EXPECT_GE(DirectXModelSizeBound(mesh), DirectXModelSize(mesh));
    }
    // A table short of its count gives no size; 2^31 - 1 zero polygons are
    // measured without being made.
    MeshTable<MeshPolygon> never, many;
    EXPECT_EQ(DirectXModelSize({0, &vertices, 1, &never}), -1);
    EXPECT_EQ(DirectXModelSize({6, &vertices, 0, &polygons}), -1);
    many.Allocate(INT32_MAX, 0);
    EXPECT_EQ(DirectXModelSize({0, &vertices, INT32_MAX, &many}),
              DirectXModelSize({0, &vertices, 0, &many}) + int64_t{INT32_MAX} * (11 + 6) - 6 + 9 * 2);
}

TEST(DirectXModel, HandsOverLinesInPiecesAndStopsWhenTheWritingFails) {
    const auto vertices = Table(std::vector<MeshVertex>(20000, {1.25f, -3, 0.5f}), 20000);
    const MeshGeometry mesh{20000, &vertices, 0, nullptr};
    std::vector<std::string> pieces;
    EXPECT_EQ(fixtures::ErrorOf([&] {
                  WriteDirectXModel(mesh, [&pieces](std::string_view piece) {
                      pieces.emplace_back(piece);
                      if (pieces.size() == 2) RaiseError(vbErrDiskFull);
                  });
              }).Number, vbErrDiskFull);
    ASSERT_EQ(pieces.size(), 2u);
    EXPECT_TRUE(pieces[0].ends_with("\r\n"));
    EXPECT_EQ(DirectXModelText(mesh).substr(0, pieces[0].size() + pieces[1].size()), pieces[0] + pieces[1]);
}


// The whole road from a mesh file to a model that a real reader takes: a closed
// box with every corner used once, and a face of exponent-form coordinates.
TEST(DirectXModel, IsWrittenByTheCommandLineAndReadByAssimp) {
    const std::string cli = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-cli";
    fixtures::MeshSpec box;
    box.Vertices = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1},
                    {1e8f, 1.5e-9f, -2.5f}, {-1, 1, 1}};
    box.Polygons = {{0, 2, 1}, {0, 3, 2}, {4, 5, 6}, {4, 6, 7}, {0, 1, 5}, {0, 5, 4},
                    {2, 3, 7}, {2, 7, 6}, {1, 2, 6}, {1, 6, 5}, {0, 4, 7}, {0, 7, 3}};
    TempDir dir;
    fixtures::WriteFile(dir / "box.msh", fixtures::BuildMesh(box));
    // An existing target is replaced, as a user answering Yes would have it;
    // without the extension, the dialog's filter adds it.
    fixtures::WriteFile(dir / "box.x", "old");
    ASSERT_EQ(RunAndCapture({cli, "mesh", "export", dir / "box.msh", dir / "box.x"}).Status, 0);
    fixtures::ProgramResult r = RunAndCapture({cli, "mesh", "export", dir / "box.msh", dir / "plain"});
    EXPECT_EQ(r.Output, dir / "plain.x" + "\n");
    EXPECT_EQ(fixtures::ReadFile(dir / "plain.x"), fixtures::ReadFile(dir / "box.x"));
    const std::string assimp = fixtures::ProgramOnPath("assimp");
    ASSERT_FALSE(assimp.empty()) << "assimp is part of the test set-up";
    r = RunAndCapture({assimp, "info", dir / "box.x"});
    ASSERT_EQ(r.Status, 0) << r.Output << r.Errors;
    EXPECT_THAT(r.Output, ::testing::ContainsRegex("Vertices: +8\n"));
    EXPECT_THAT(r.Output, ::testing::ContainsRegex("Faces: +12\n"));
    EXPECT_THAT(r.Output, ::testing::ContainsRegex("Materials: +1\n"));
    // The importer turns the left-handed model right-handed, so z comes back
    // negated.
    EXPECT_THAT(r.Output, ::testing::HasSubstr("Minimum point      (-1.000000 -1.000000 -1.000000)"));
    EXPECT_THAT(r.Output, ::testing::HasSubstr("Maximum point      (100000000.000000 1.000000 2.500000)"));

    fixtures::WriteFile(dir / "text.msh", "just some text, long enough to hold two headers of 28 bytes each");
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"report", dir / "text.msh"}, {"report", dir / "none"}, {"report"},
          {"export", dir / "text.msh", dir / "out.x"}, {"export", dir / "box.msh", dir / "no folder/out.x"}}) {
        std::vector<std::string> argv = {cli, "mesh"};
        argv.insert(argv.end(), args.begin(), args.end());
        r = RunAndCapture(argv);
        EXPECT_EQ(r.Status, 1) << args[0];
        EXPECT_FALSE(r.Errors.empty()) << args[0];
    }
    EXPECT_FALSE(FileExists(dir / "out.x"));
}
