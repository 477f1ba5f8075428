#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/MeshBuilder.h"
#include "meshes/CMeshFile.h"
#include "identify/IFileHost.h"

using fixtures::BuildMesh;
using fixtures::LayoutOf;
using fixtures::MeshKind;
using fixtures::MeshSpec;
using fixtures::MeshTexture;
using fixtures::TempDir;
using fixtures::WriteFile;
using namespace std::string_literals;

namespace {

const std::string kOutOfMemory =
    "xof 0302txt 0032\r\nHeader {\r\n 1;\r\n 0;\r\n 1;\r\n}\r\nOut of memory !!!\r\n}\r\n";

// The four lines of a report without texture records.
std::string Counts(int32_t nv, int32_t np, int32_t ni) {
    return "Objects:\t1\r\nVertexes:\t" + std::to_string(nv) + "\r\nPolygons:\t" + std::to_string(np) +
           "\r\nTexture(s) information(s):" + std::to_string(ni) + "\r\n";
}

MeshSpec Triangle() {
    MeshSpec m;
    m.Vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1.5f, 0}};
    m.Polygons = {{0, 1, 2}};
    return m;
}

MeshTexture Texture(int32_t head, std::array<std::string, 4> texts) {
    MeshTexture t;
    t.Head = head;
    t.Texts = std::move(texts);
    return t;
}

// A mesh whose vertex table is too large for the file layer's read buffer, so
// that every read of the body goes to the disk.
MeshSpec LargeMesh(float sign) {
    MeshSpec recipe;
    for (int i = 0; i < 5000; ++i) recipe.Vertices.push_back({sign * static_cast<float>(i), 0, 0});
    recipe.Polygons = {{0, 1, 2}};
    return recipe;
}

class MeshFile : public ::testing::Test {
protected:
    std::string Write(const std::string& name, const MeshSpec& recipe) {
        std::string path = dir / name;
        WriteFile(path, BuildMesh(recipe));
        return path;
    }
    std::string Write(const std::string& name, const std::string& bytes) {
        std::string path = dir / name;
        WriteFile(path, bytes);
        return path;
    }
    TempDir dir;
    FileHost form;
};

}  // namespace

TEST_F(MeshFile, AcceptsBothKindsWithTheSameInformation) {
    for (MeshKind kind : {MeshKind::Msh, MeshKind::Amh}) {
        MeshSpec recipe = fixtures::CubeMesh(kind);
        recipe.InnerGap = kind == MeshKind::Amh ? 40 : 0;
        CMeshFile mesh{form};
        EXPECT_TRUE(mesh.Initialize(Write("m", recipe), 0, &form.oListView));
        EXPECT_EQ(mesh.Information(), "Mesh File");
        EXPECT_EQ(mesh.Width(), -1);
        EXPECT_EQ(mesh.Height(), -1);
        EXPECT_EQ(mesh.InnerHeader().lFormatId, kind == MeshKind::Msh ? kMeshKindId : kAMeshKindId);
        // Initialize touches only the headers.
        EXPECT_FALSE(mesh.Loaded());
        EXPECT_EQ(mesh.VertexCount(), 0);
    }
}

TEST_F(MeshFile, RefusesMixedKindsAndWrongSignatures) {
    MeshSpec mixed[4] = {Triangle(), Triangle(), Triangle(), Triangle()};
    mixed[0].KindId = fixtures::kAmhKindId;
    mixed[1].Kind = MeshKind::Amh;
    mixed[1].KindId = fixtures::kMshKindId;
    mixed[2].OuterSignature = 0x16E71;
    mixed[3].InnerSignature = 0x6E72;
    for (const MeshSpec& recipe : mixed) {
        CMeshFile mesh{form};
        EXPECT_FALSE(mesh.Initialize(Write("mix", recipe), 0, nullptr));
        EXPECT_EQ(mesh.Information(), "");
        EXPECT_EQ(mesh.Width(), -1);
        EXPECT_EQ(mesh.Height(), -1);
    }
}

TEST_F(MeshFile, NeedsBothHeadersWhole) {
    MeshSpec recipe = Triangle();
    CMeshFile exact{form}, short55{form}, cutInner{form}, missing{form};
    // 56 bytes are two whole headers and no body.
    recipe.Truncate = 56;
    EXPECT_TRUE(exact.Initialize(Write("56", recipe), 0, nullptr));
    recipe.Truncate = 55;
    EXPECT_FALSE(short55.Initialize(Write("55", recipe), 0, nullptr));
    // An inner header so near the end that it is cut: its signature and kind
    // are there, its last byte is not.
    std::string bytes = BuildMesh(Triangle());
    std::string cut = bytes + bytes.substr(28, 27);
    cut.replace(20, 4, fixtures::ByteWriter().I32(static_cast<int32_t>(bytes.size())).Data());
    EXPECT_FALSE(cutInner.Initialize(Write("cut", cut), 0, nullptr));
    EXPECT_FALSE(missing.Initialize(dir / "none.msh", 0, nullptr));
}

TEST_F(MeshFile, ASecondInitializeWithTheSamePathChangesNothing) {
    MeshSpec mixed = Triangle();
    mixed.KindId = fixtures::kAmhKindId;
    std::string path = Write("same.msh", mixed);
    CMeshFile mesh{form};
    EXPECT_FALSE(mesh.Initialize(path, 0, nullptr));
    Write("same.msh", Triangle());
    EXPECT_TRUE(mesh.Initialize(path, 0, nullptr));
    EXPECT_FALSE(mesh.Valid());
    EXPECT_EQ(mesh.Information(), "");
}

// What Show puts in the pane and keeps of the tables, for whole files and for
// damaged ones.
TEST_F(MeshFile, ShowReportsWhatTheFileHolds) {
    const auto with = [](MeshSpec recipe, const std::function<void(MeshSpec&)>& change) {
        change(recipe);
        return recipe;
    };
    const std::string empty4 = " a) \r\n b) \r\n c) \r\n d) \r\n";
    struct Case {
        const char* what;
        MeshSpec recipe;
        bool accepted;  // by Initialize
        bool loaded;
        std::string report;
        size_t capacity = 4u * 1024u * 1024u;
        std::function<void(const CMeshFile&)> check = {};
    };
    const std::vector<Case> cases = {
        {"no texture information: four lines", Triangle(), true, true, Counts(3, 1, 0)},
        {"texture records numbered from zero",
         with(fixtures::CubeMesh(MeshKind::Amh),
              [](MeshSpec& m) { m.Textures.push_back(Texture(0, {"", "b", "", ""})); }),
         true, true,
         Counts(8, 12, 3) + "Info# 0\r\n a) stone.btm\r\n b) stone.plt\r\n c) walls\r\n d) granite\r\n"
                            "Info# 1\r\n a) wood.btm\r\n b) \r\n c) lid\r\n d) oak\r\n"
                            "Info# 2\r\n a) \r\n b) b\r\n c) \r\n d) \r\n",
         4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             // The tables between are read and kept.
             EXPECT_EQ(mesh.TripleCount(), 2);
             EXPECT_EQ(mesh.Triples()(1).a[2], 5);
             EXPECT_EQ(mesh.VectorCountA(), 2);
             EXPECT_EQ(mesh.VectorsA()(1).v[1], 1.0f);
             EXPECT_EQ(mesh.VectorCountB(), 1);
             EXPECT_EQ(mesh.VectorsB()(0).v[0], 1.0f);
             EXPECT_EQ(mesh.BlockCount(), 1);
             EXPECT_EQ(mesh.TextureInfos()(0).lHead, 1);
             EXPECT_EQ(mesh.TextureInfos()(0).abTail[11], 12);
             EXPECT_EQ(mesh.TextureInfos()(0).aText[3].lLength, 7);
             EXPECT_EQ(mesh.Vertices()(6).x, 1.0f);
             EXPECT_EQ(mesh.Vertices()(7).x, -1.0f);
             EXPECT_EQ(mesh.Polygons()(11).iVertex2, 3);
             // Each table holds one index more than its count.
             EXPECT_EQ(mesh.Vertices().UpperBound(), 8);
             EXPECT_EQ(mesh.Vertices()(8).x, 0.0f);
             EXPECT_THROW(mesh.Vertices()(9), RuntimeError);
         }},
        {"a text keeps its zero bytes",
         with(Triangle(), [](MeshSpec& m) { m.Textures = {Texture(0, {"a\0b"s, "", "", ""})}; }), true, true,
         Counts(3, 1, 1) + "Info# 0\r\n a) a\0b\r\n b) \r\n c) \r\n d) \r\n"s},
        {"a refused file is still read",
         with(fixtures::CubeMesh(), [](MeshSpec& m) {
             m.FormatId = fixtures::kIdAMesh;  // with the inner kind of a msh
             m.Textures.clear();
         }),
         false, true, Counts(8, 12, 0)},
        {"a negative count stops the body", with(fixtures::CubeMesh(), [](MeshSpec& m) { m.TripleCount = -1; }), true,
         false, Counts(8, 12, 0), 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             // Tables read so far stay; later counts keep 0.
             EXPECT_EQ(mesh.Polygons()(5).iVertex1, 5);
             EXPECT_EQ(mesh.TripleCount(), -1);
             EXPECT_FALSE(mesh.Triples().Allocated());
             EXPECT_EQ(mesh.VectorCountA(), 0);
             EXPECT_EQ(mesh.TextureInfoCount(), 0);
         }},
        // 0x08000000 vertices of 16 bytes are 2^31 bytes; one fewer still fits.
        {"a count whose byte size overflows", with(Triangle(), [](MeshSpec& m) { m.VertexCount = 0x08000000; }), true,
         false, Counts(0x08000000, 0, 0)},
        {"the largest count that fits", with(Triangle(), [](MeshSpec& m) { m.VertexCount = 0x07FFFFFF; }), true, true,
         Counts(0x07FFFFFF, 0, 0), 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             // No more records are taken than the bytes behind the count can fill.
             MeshSpec recipe = Triangle();
             recipe.VertexCount = 0x07FFFFFF;
             const fixtures::MeshLayout layout = LayoutOf(recipe);
             EXPECT_EQ(mesh.Vertices().StoredCount(), (layout.End - layout.Body - 4 + 15) / 16);
             EXPECT_EQ(mesh.Vertices()(1).x, 1.0f);
             EXPECT_EQ(mesh.Vertices()(0x07FFFFFE).x, 0.0f);
             EXPECT_EQ(mesh.Vertices()(0x07FFFFFF).x, 0.0f);
         }},
        {"a file that ends inside a table reads the rest as zeros",
         // Cut in the middle of vertex 3's y.
         with(fixtures::CubeMesh(), [](MeshSpec& m) { m.Truncate = LayoutOf(m).Body + 4 + 16 * 3 + 6; }), true, true,
         Counts(8, 0, 0), 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             EXPECT_EQ(mesh.Vertices()(2).y, 1.0f);
             EXPECT_EQ(mesh.Vertices()(3).x, -1.0f);
             EXPECT_EQ(mesh.Vertices()(3).y, 0.0f);
             EXPECT_EQ(mesh.Vertices()(7).z, 0.0f);
         }},
        {"a count cut by the end keeps the bytes it had",
         // Two of the four bytes of the polygon count: 01 00.
         with(Triangle(), [](MeshSpec& m) { m.Truncate = LayoutOf(m).PolygonCount + 2; }), true, true, Counts(3, 1, 0),
         4u * 1024u * 1024u, [](const CMeshFile& mesh) { EXPECT_EQ(mesh.Polygons()(0).iVertex2, 0); }},
        {"texture records behind the end read as empty",
         with(Triangle(), [](MeshSpec& m) {
             m.Textures = {Texture(1, {"abc", "", "", ""})};
             m.TextureCount = 3;
         }),
         true, true, Counts(3, 1, 3) + "Info# 0\r\n a) abc\r\n b) \r\n c) \r\n d) \r\n" + "Info# 1\r\n" + empty4 +
                         "Info# 2\r\n" + empty4,
         4u * 1024u * 1024u, [](const CMeshFile& mesh) { EXPECT_LE(mesh.TextureInfos().StoredCount(), 2u); }},
        {"a text that runs past the end is padded with zeros",
         with(Triangle(), [](MeshSpec& m) {
             m.Textures = {Texture(0, {"abcdef", "", "", ""})};
             m.Textures[0].LengthOverride[0] = 9;
             m.Truncate = LayoutOf(m).TextLengths[0][0] + 4 + 6;
         }),
         true, true, Counts(3, 1, 1) + "Info# 0\r\n a) abcdef\0\0\0\r\n b) \r\n c) \r\n d) \r\n"s, 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) { EXPECT_EQ(mesh.TextureInfos()(0).aText[0].sText, "abcdef"); }},
        {"a huge text length",
         with(Triangle(), [](MeshSpec& m) {
             m.Textures = {Texture(0, {"abc", "", "", ""})};
             m.Textures[0].LengthOverride[0] = 0x7FFFFFFF;
         }),
         true, true, kOutOfMemory, 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) {
             EXPECT_EQ(mesh.TextureInfos()(0).aText[0].lLength, 0x7FFFFFFF);
             // Only what the file had is held: the text, three lengths and the tail.
             EXPECT_EQ(mesh.TextureInfos()(0).aText[0].sText.size(), 3u + 12 + 12);
         }},
        {"a texture table that can't be allocated", with(Triangle(), [](MeshSpec& m) { m.TextureCount = 0x7FFFFFFF; }),
         true, false, kOutOfMemory, 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) { EXPECT_EQ(mesh.TextureInfoCount(), 0x7FFFFFFF); }},
        {"a report longer than the pane",
         with(Triangle(), [](MeshSpec& m) { m.Textures = {Texture(0, {std::string(300, 'q'), "", "", ""})}; }), true,
         true, kOutOfMemory, 200},
        // A million empty records behind the end of a small file fill no memory,
        // and their report is too long for the pane of 4 MiB.
        {"a million empty records", with(Triangle(), [](MeshSpec& m) { m.TextureCount = 1000000; }), true, true,
         kOutOfMemory, 4u * 1024u * 1024u,
         [](const CMeshFile& mesh) { EXPECT_LE(mesh.TextureInfos().StoredCount(), 2u); }},
        {"a pane too small for the failure text keeps what it had",
         with(Triangle(), [](MeshSpec& m) { m.Textures = {Texture(0, {std::string(300, 'q'), "", "", ""})}; }), true,
         true, "old", 20},
        {"an inner offset outside the file gives a quiet report",
         with(Triangle(), [](MeshSpec& m) { m.InnerOffset = 0x7FFFFFF0; }), false, false, Counts(0, 0, 0)},
        {"a body that starts at the last 32-bit position is read as empty",
         with(Triangle(), [](MeshSpec& m) { m.InnerOffset = INT32_MAX - 28; }), false, true, Counts(0, 0, 0)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        CMeshFile mesh{form};
        EXPECT_EQ(mesh.Initialize(Write("r.msh", c.recipe), 0, &form.oListView), c.accepted);
        form.tReport.SetCapacity(c.capacity);
        form.tReport.SetText("old");
        EXPECT_FALSE(mesh.Show(0)) << "Show answers false on every path";
        EXPECT_EQ(form.tReport.Text(), c.report);
        EXPECT_EQ(mesh.Loaded(), c.loaded);
        if (c.check) c.check(mesh);
    }
}

TEST_F(MeshFile, ShowingTwiceReadsTheFileOnce) {
    std::string path = Write("twice.msh", LargeMesh(1));
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(path, 0, nullptr));
    mesh.Show(0);
    std::string first = form.tReport.Text();
    EXPECT_EQ(first, Counts(5000, 1, 0));
    // The file changes behind the object's back; a second read would see it.
    Write("twice.msh", LargeMesh(-1));
    form.tReport.SetText({});
    mesh.Show(0);
    EXPECT_EQ(form.tReport.Text(), first);
    EXPECT_EQ(mesh.Vertices()(4999).x, 4999.0f);
}

TEST_F(MeshFile, ShowWithoutAFileLeavesThePane) {
    CMeshFile mesh{form};
    form.tReport.SetText("kept");
    EXPECT_FALSE(mesh.Show(0));
    EXPECT_EQ(form.tReport.Text(), "kept");
}

TEST_F(MeshFile, ABodyThatFailedIsReadAgainByTheNextShow) {
    MeshSpec recipe = LargeMesh(1);
    recipe.TextureCount = -1;
    std::string path = Write("again.msh", recipe);
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(path, 0, nullptr));
    mesh.Show(0);
    EXPECT_FALSE(mesh.Loaded());
    EXPECT_EQ(mesh.Vertices()(4999).x, 4999.0f);
    recipe = LargeMesh(-1);
    recipe.TextureCount = -1;
    Write("again.msh", recipe);
    mesh.Show(0);
    EXPECT_EQ(mesh.Vertices()(4999).x, -4999.0f);
}
