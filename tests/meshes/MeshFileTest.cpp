#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/MeshBuilder.h"
#include "identify/IFileHost.h"
#include "meshes/CMeshFile.h"

using fixtures::BuildMesh;
using fixtures::LayoutOf;
using fixtures::MeshKind;
using fixtures::MeshSpec;
using fixtures::MeshTexture;
using namespace std::string_literals;

namespace {

const std::string kOutOfMemory =
    "xof 0302txt 0032\r\nHeader {\r\n 1;\r\n 0;\r\n 1;\r\n}\r\nOut of memory !!!\r\n}\r\n";

// The four lines of a report without texture records.
std::string Counts(int32_t nv, int32_t np, int32_t ni) {
    return "Objects:\t1\r\nVertexes:\t" + std::to_string(nv) + "\r\nPolygons:\t" + std::to_string(np) +
           "\r\nTexture(s) information(s):" + std::to_string(ni) + "\r\n";
}

MeshSpec Triangle(const std::function<void(MeshSpec&)>& change = {}) {
    MeshSpec m;
    m.Vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1.5f, 0}};
    m.Polygons = {{0, 1, 2}};
    if (change) change(m);
    return m;
}

MeshSpec Cube(MeshKind kind, const std::function<void(MeshSpec&)>& change) {
    MeshSpec m = fixtures::CubeMesh(kind);
    change(m);
    return m;
}

MeshTexture Texture(std::string a, int32_t length = -1) {
    MeshTexture t;
    t.Texts = {std::move(a), "", "", ""};
    if (length >= 0) t.LengthOverride[0] = length;
    return t;
}

// A mesh whose vertex table is too large for the file layer's read buffer, so
// that every read of the body goes to the disk.
MeshSpec LargeMesh(float sign, int32_t textures) {
    MeshSpec recipe;
    for (int i = 0; i < 5000; ++i) recipe.Vertices.push_back({sign * static_cast<float>(i), 0, 0});
    recipe.TextureCount = textures;
    return recipe;
}

class MeshFile : public ::testing::Test {
protected:
    std::string Write(const std::string& bytes) {
        fixtures::WriteFile(dir / "m.msh", bytes);
        return dir / "m.msh";
    }
    fixtures::TempDir dir;
    FileHost form;
};

}  // namespace

TEST_F(MeshFile, AcceptsOnlyBothHeadersWholeWithKindsThatGoTogether) {
    const std::string bytes = BuildMesh(Triangle());
    // An inner header so near the end that its last byte is cut.
    std::string cut = bytes + bytes.substr(28, 27);
    cut.replace(20, 4, fixtures::ByteWriter().I32(static_cast<int32_t>(bytes.size())).Data());
    const std::pair<std::string, bool> cases[] = {
        {BuildMesh(fixtures::CubeMesh(MeshKind::Msh)), true},
        {BuildMesh(Cube(MeshKind::Amh, [](MeshSpec& m) { m.InnerGap = 40; })), true},
        {BuildMesh(Triangle([](MeshSpec& m) { m.KindId = fixtures::kAmhKindId; })), false},
        {BuildMesh(Triangle([](MeshSpec& m) { m.Kind = MeshKind::Amh, m.KindId = fixtures::kMshKindId; })), false},
        {BuildMesh(Triangle([](MeshSpec& m) { m.OuterSignature = 0x16E71; })), false},
        {BuildMesh(Triangle([](MeshSpec& m) { m.InnerSignature = 0x6E72; })), false},
        {bytes.substr(0, 56), true},  // two whole headers and no body
        {bytes.substr(0, 55), false},
        {cut, false},
    };
    for (const auto& [file, accepted] : cases) {
        SCOPED_TRACE(&file - &cases[0].first);
        CMeshFile mesh{form};
        EXPECT_EQ(mesh.Initialize(Write(file), 0, &form.oListView), accepted);
        EXPECT_EQ(mesh.Information(), accepted ? "Mesh File" : "");
        EXPECT_FALSE(mesh.Loaded()) << "Initialize reads only the headers";
    }
}

// What Show puts in the pane and keeps of the tables, for whole files and for
// damaged ones.
TEST_F(MeshFile, ShowReportsWhatTheFileHolds) {
    const std::string empty4 = " a) \r\n b) \r\n c) \r\n d) \r\n";
    const std::string q300(300, 'q');
    struct Case {
        const char* what;
        MeshSpec recipe;
        bool accepted, loaded;
        std::string report;
        size_t capacity = 4u * 1024u * 1024u;
        std::function<void(const CMeshFile&)> check = {};
    };
    const std::vector<Case> cases = {
        {"texture records numbered from zero",
         Cube(MeshKind::Amh, [](MeshSpec& m) { m.Textures.push_back(Texture("a\0b"s)); }), true, true,
         Counts(8, 12, 3) + "Info# 0\r\n a) stone.btm\r\n b) stone.plt\r\n c) walls\r\n d) granite\r\n"
                            "Info# 1\r\n a) wood.btm\r\n b) \r\n c) lid\r\n d) oak\r\n"
                            "Info# 2\r\n a) a\0b\r\n b) \r\n c) \r\n d) \r\n"s,
         4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             // The tables between are read and kept, each with one index more
             // than its count.
             EXPECT_EQ(mesh.Triples()(1).a[2], 5);
             EXPECT_EQ(mesh.VectorsA()(1).v[1], 1.0f);
             EXPECT_EQ(mesh.VectorsB()(0).v[0], 1.0f);
             EXPECT_EQ(mesh.TextureInfos()(0).abTail[11], 12);
             EXPECT_EQ(mesh.Vertices()(7).x, -1.0f);
             EXPECT_EQ(mesh.Polygons()(11).iVertex2, 3);
             EXPECT_EQ(mesh.Vertices()(8).x, 0.0f);
             EXPECT_THROW(mesh.Vertices()(9), RuntimeError);
         }},
        {"a refused file is still read",
         Cube(MeshKind::Msh, [](MeshSpec& m) { m.FormatId = fixtures::kIdAMesh, m.Textures.clear(); }), false, true,
         Counts(8, 12, 0)},
        {"a negative count stops the body", Cube(MeshKind::Msh, [](MeshSpec& m) { m.TripleCount = -1; }), true, false,
         Counts(8, 12, 0), 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             EXPECT_EQ(mesh.Polygons()(5).iVertex1, 5);
             EXPECT_FALSE(mesh.Triples().Allocated());
         }},
        // 0x08000000 vertices of 16 bytes are 2^31 bytes; one fewer still fits.
        {"a count whose byte size overflows", Triangle([](MeshSpec& m) { m.VertexCount = 0x08000000; }), true, false,
         Counts(0x08000000, 0, 0)},
        {"the largest count that fits", Triangle([](MeshSpec& m) { m.VertexCount = 0x07FFFFFF; }), true, true,
         Counts(0x07FFFFFF, 0, 0), 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             // No more records are taken than the bytes behind the count can fill.
             const fixtures::MeshLayout layout = LayoutOf(Triangle());
             EXPECT_EQ(mesh.Vertices().StoredCount(), (layout.End - layout.Body - 4 + 15) / 16);
             EXPECT_EQ(mesh.Vertices()(1).x, 1.0f);
             EXPECT_EQ(mesh.Vertices()(0x07FFFFFF).x, 0.0f);
         }},
        {"a file that ends inside a table reads the rest as zeros",
         Cube(MeshKind::Msh, [](MeshSpec& m) { m.Truncate = LayoutOf(m).Body + 4 + 16 * 3 + 6; }), true, true,
         Counts(8, 0, 0), 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             EXPECT_EQ(mesh.Vertices()(3).x, -1.0f);
             EXPECT_EQ(mesh.Vertices()(3).y, 0.0f);
         }},
        // Two of the four bytes of the polygon count: 01 00.
        {"a count cut by the end keeps the bytes it had",
         Triangle([](MeshSpec& m) { m.Truncate = LayoutOf(m).PolygonCount + 2; }), true, true, Counts(3, 1, 0)},
        {"texture records behind the end read as empty",
         Triangle([](MeshSpec& m) { m.Textures = {Texture("abc")}, m.TextureCount = 3; }), true, true,
         Counts(3, 1, 3) + "Info# 0\r\n a) abc\r\n b) \r\n c) \r\n d) \r\n" + "Info# 1\r\n" + empty4 + "Info# 2\r\n" +
             empty4,
         4u * 1024u * 1024u, [](const CMeshFile& mesh) { EXPECT_LE(mesh.TextureInfos().StoredCount(), 2u); }},
        {"a text that runs past the end is padded with zeros",
         Triangle([](MeshSpec& m) {
             m.Textures = {Texture("abcdef", 9)};
             m.Truncate = LayoutOf(m).TextLengths[0][0] + 4 + 6;
         }),
         true, true, Counts(3, 1, 1) + "Info# 0\r\n a) abcdef\0\0\0\r\n b) \r\n c) \r\n d) \r\n"s},
        {"a huge text length", Triangle([](MeshSpec& m) { m.Textures = {Texture("abc", 0x7FFFFFFF)}; }), true, true,
         kOutOfMemory, 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             // Only what the file had is held: the text, three lengths and the tail.
             EXPECT_EQ(mesh.TextureInfos()(0).aText[0].sText.size(), 3u + 12 + 12);
         }},
        {"a texture table that can't be allocated", Triangle([](MeshSpec& m) { m.TextureCount = 0x7FFFFFFF; }), true,
         false, kOutOfMemory},
        {"a report longer than the pane", Triangle([&](MeshSpec& m) { m.Textures = {Texture(q300)}; }), true, true,
         kOutOfMemory, 200},
        // A million empty records behind the end of a small file fill no memory,
        // and their report is too long for the pane of 4 MiB.
        {"a million empty records", Triangle([](MeshSpec& m) { m.TextureCount = 1000000; }), true, true,
         kOutOfMemory, 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) { EXPECT_LE(mesh.TextureInfos().StoredCount(), 2u); }},
        {"a pane too small for the failure text keeps what it had",
         Triangle([&](MeshSpec& m) { m.Textures = {Texture(q300)}; }), true, true, "old", 20},
        {"an inner offset outside the file gives a quiet report",
         Triangle([](MeshSpec& m) { m.InnerOffset = 0x7FFFFFF0; }), false, false, Counts(0, 0, 0)},
        {"a body that starts at the last 32-bit position is read as empty",
         Triangle([](MeshSpec& m) { m.InnerOffset = INT32_MAX - 28; }), false, true, Counts(0, 0, 0)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        CMeshFile mesh{form};
        EXPECT_EQ(mesh.Initialize(Write(BuildMesh(c.recipe)), 0, &form.oListView), c.accepted);
        form.tReport.SetCapacity(c.capacity);
        form.tReport.SetText("old");
        EXPECT_FALSE(mesh.Show(0));
        EXPECT_EQ(form.tReport.Text(), c.report);
        EXPECT_EQ(mesh.Loaded(), c.loaded);
        if (c.check) c.check(mesh);
    }
}

// A body read whole is read once; one that failed is read again by the next
// Show. The file changes behind the object's back in between.
TEST_F(MeshFile, ReadsTheBodyAgainOnlyWhenItFailed) {
    for (int32_t textures : {0, -1}) {
        SCOPED_TRACE(textures);
        CMeshFile mesh{form};
        ASSERT_TRUE(mesh.Initialize(Write(BuildMesh(LargeMesh(1, textures))), 0, nullptr));
        mesh.Show(0);
        EXPECT_EQ(form.tReport.Text(), Counts(5000, 0, textures));
        Write(BuildMesh(LargeMesh(-1, textures)));
        mesh.Show(0);
        EXPECT_EQ(mesh.Vertices()(4999).x, textures == 0 ? 4999.0f : -4999.0f);
    }
}
