#include <gtest/gtest.h>

#include <string>

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
    // Binds a new object to the mesh, shows it and gives the pane's text.
    std::string ReportOf(const MeshSpec& recipe) {
        CMeshFile mesh{form};
        mesh.Initialize(Write("r.msh", recipe), 0, &form.oListView);
        EXPECT_FALSE(mesh.Show(0)) << "Show answers false on every path";
        return form.tReport.Text();
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

TEST_F(MeshFile, ReportOfAMeshWithoutTextureInformationHasFourLines) {
    EXPECT_EQ(ReportOf(Triangle()), "Objects:\t1\r\nVertexes:\t3\r\nPolygons:\t1\r\nTexture(s) information(s):0\r\n");
}

TEST_F(MeshFile, ReportListsTextureRecordsFromZero) {
    MeshSpec recipe = fixtures::CubeMesh(MeshKind::Amh);
    recipe.Textures.push_back(Texture(0, {"", "b", "", ""}));
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("tex.amh", recipe), 0, nullptr));
    form.tReport.SetText("old");
    EXPECT_FALSE(mesh.Show(0));
    EXPECT_EQ(form.tReport.Text(),
              "Objects:\t1\r\nVertexes:\t8\r\nPolygons:\t12\r\nTexture(s) information(s):3\r\n"
              "Info# 0\r\n a) stone.btm\r\n b) stone.plt\r\n c) walls\r\n d) granite\r\n"
              "Info# 1\r\n a) wood.btm\r\n b) \r\n c) lid\r\n d) oak\r\n"
              "Info# 2\r\n a) \r\n b) b\r\n c) \r\n d) \r\n");
    EXPECT_TRUE(mesh.Loaded());
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
}

TEST_F(MeshFile, ATextKeepsItsZeroBytes) {
    MeshSpec recipe = Triangle();
    recipe.Textures = {Texture(0, {"a\0b"s, "", "", ""})};
    EXPECT_NE(ReportOf(recipe).find(" a) a\0b\r\n b) "s), std::string::npos);
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

TEST_F(MeshFile, ARefusedFileIsStillReadWhenShown) {
    MeshSpec recipe = fixtures::CubeMesh();
    recipe.FormatId = fixtures::kIdAMesh;  // with the inner kind of a msh
    recipe.Textures.clear();
    CMeshFile mesh{form};
    ASSERT_FALSE(mesh.Initialize(Write("refused", recipe), 0, nullptr));
    mesh.Show(0);
    EXPECT_EQ(form.tReport.Text(), Counts(8, 12, 0));
}

// ---- Damaged files ---------------------------------------------------------

TEST_F(MeshFile, ANegativeCountStopsTheBody) {
    MeshSpec recipe = fixtures::CubeMesh();
    recipe.TripleCount = -1;
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("neg.msh", recipe), 0, nullptr));
    mesh.Show(0);
    EXPECT_FALSE(mesh.Loaded());
    // Tables read so far stay; later counts keep 0.
    EXPECT_EQ(mesh.PolygonCount(), 12);
    EXPECT_EQ(mesh.Polygons()(5).iVertex1, 5);
    EXPECT_EQ(mesh.TripleCount(), -1);
    EXPECT_FALSE(mesh.Triples().Allocated());
    EXPECT_EQ(mesh.VectorCountA(), 0);
    EXPECT_EQ(mesh.TextureInfoCount(), 0);
    EXPECT_EQ(form.tReport.Text(), Counts(8, 12, 0));
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

TEST_F(MeshFile, ACountWhoseByteSizeOverflowsStopsTheBodyButNotTheReport) {
    // 0x08000000 vertices of 16 bytes are 2^31 bytes; one fewer still fits.
    MeshSpec recipe = Triangle();
    recipe.VertexCount = 0x08000000;
    CMeshFile over{form};
    ASSERT_TRUE(over.Initialize(Write("o.msh", recipe), 0, nullptr));
    over.Show(0);
    EXPECT_FALSE(over.Loaded());
    EXPECT_EQ(form.tReport.Text(), Counts(0x08000000, 0, 0));

    recipe.VertexCount = 0x07FFFFFF;
    CMeshFile fits{form};
    ASSERT_TRUE(fits.Initialize(Write("f.msh", recipe), 0, nullptr));
    fits.Show(0);
    EXPECT_TRUE(fits.Loaded());
    EXPECT_EQ(fits.VertexCount(), 0x07FFFFFF);
    // No more records are taken than the bytes behind the count can fill.
    const fixtures::MeshLayout layout = LayoutOf(recipe);
    EXPECT_EQ(fits.Vertices().StoredCount(), (layout.End - layout.Body - 4 + 15) / 16);
    EXPECT_EQ(fits.Vertices()(1).x, 1.0f);
    EXPECT_EQ(fits.Vertices()(0x07FFFFFE).x, 0.0f);
    EXPECT_EQ(fits.Vertices()(0x07FFFFFF).x, 0.0f);
    EXPECT_EQ(fits.PolygonCount(), 0);
    EXPECT_EQ(form.tReport.Text(), Counts(0x07FFFFFF, 0, 0));
}

TEST_F(MeshFile, AFileThatEndsInsideATableReadsTheRestAsZeros) {
    MeshSpec recipe = fixtures::CubeMesh();
    // Cut in the middle of vertex 3's y.
    recipe.Truncate = LayoutOf(recipe).Body + 4 + 16 * 3 + 6;
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("cut.msh", recipe), 0, nullptr));
    mesh.Show(0);
    EXPECT_TRUE(mesh.Loaded());
    EXPECT_EQ(mesh.VertexCount(), 8);
    EXPECT_EQ(mesh.Vertices()(2).y, 1.0f);
    EXPECT_EQ(mesh.Vertices()(3).x, -1.0f);
    EXPECT_EQ(mesh.Vertices()(3).y, 0.0f);
    EXPECT_EQ(mesh.Vertices()(7).z, 0.0f);
    EXPECT_EQ(mesh.PolygonCount(), 0);
    EXPECT_EQ(form.tReport.Text(), Counts(8, 0, 0));
}

TEST_F(MeshFile, ACountCutByTheEndKeepsTheBytesItHad) {
    MeshSpec recipe = Triangle();
    // Two of the four bytes of the polygon count: 01 00.
    recipe.Truncate = LayoutOf(recipe).PolygonCount + 2;
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("c.msh", recipe), 0, nullptr));
    mesh.Show(0);
    EXPECT_TRUE(mesh.Loaded());
    EXPECT_EQ(mesh.PolygonCount(), 1);
    EXPECT_EQ(mesh.Polygons()(0).iVertex2, 0);
}

TEST_F(MeshFile, TextureRecordsBehindTheEndReadAsEmpty) {
    MeshSpec recipe = Triangle();
    recipe.Textures = {Texture(1, {"abc", "", "", ""})};
    recipe.TextureCount = 3;
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("t.msh", recipe), 0, nullptr));
    mesh.Show(0);
    EXPECT_TRUE(mesh.Loaded());
    EXPECT_EQ(form.tReport.Text(), Counts(3, 1, 3) +
                                       "Info# 0\r\n a) abc\r\n b) \r\n c) \r\n d) \r\n"
                                       "Info# 1\r\n a) \r\n b) \r\n c) \r\n d) \r\n"
                                       "Info# 2\r\n a) \r\n b) \r\n c) \r\n d) \r\n");
    EXPECT_LE(mesh.TextureInfos().StoredCount(), 2u);
}

TEST_F(MeshFile, ATextThatRunsPastTheEndIsPaddedWithZeros) {
    MeshSpec recipe = Triangle();
    recipe.Textures = {Texture(0, {"abcdef", "", "", ""})};
    recipe.Textures[0].LengthOverride[0] = 9;
    recipe.Truncate = LayoutOf(recipe).TextLengths[0][0] + 4 + 6;
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("p.msh", recipe), 0, nullptr));
    mesh.Show(0);
    EXPECT_EQ(mesh.TextureInfos()(0).aText[0].sText, "abcdef");
    EXPECT_EQ(form.tReport.Text(), Counts(3, 1, 1) + "Info# 0\r\n a) abcdef\0\0\0\r\n b) \r\n c) \r\n d) \r\n"s);
}

TEST_F(MeshFile, AHugeTextLengthEndsInTheOutOfMemoryText) {
    MeshSpec recipe = Triangle();
    recipe.Textures = {Texture(0, {"abc", "", "", ""})};
    recipe.Textures[0].LengthOverride[0] = 0x7FFFFFFF;
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("h.msh", recipe), 0, nullptr));
    mesh.Show(0);
    EXPECT_TRUE(mesh.Loaded());
    EXPECT_EQ(mesh.TextureInfos()(0).aText[0].lLength, 0x7FFFFFFF);
    // Only what the file had is held: the text, three lengths and the tail.
    EXPECT_EQ(mesh.TextureInfos()(0).aText[0].sText.size(), 3u + 12 + 12);
    EXPECT_EQ(form.tReport.Text(), kOutOfMemory);
}

TEST_F(MeshFile, TextureTableThatCantBeAllocatedEndsInTheOutOfMemoryText) {
    MeshSpec recipe = Triangle();
    recipe.TextureCount = 0x7FFFFFFF;
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("n.msh", recipe), 0, nullptr));
    form.tReport.SetText("old");
    mesh.Show(0);
    EXPECT_FALSE(mesh.Loaded());
    EXPECT_EQ(mesh.TextureInfoCount(), 0x7FFFFFFF);
    EXPECT_EQ(form.tReport.Text(), kOutOfMemory);
}

TEST_F(MeshFile, AReportLongerThanThePaneEndsInTheOutOfMemoryText) {
    MeshSpec recipe = Triangle();
    recipe.Textures = {Texture(0, {std::string(300, 'q'), "", "", ""})};
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("l.msh", recipe), 0, nullptr));
    form.tReport.SetCapacity(200);
    mesh.Show(0);
    EXPECT_EQ(form.tReport.Text(), kOutOfMemory);
    // A million empty records behind the end of a small file fill no memory,
    // and their report is too long for the pane of 4 MiB.
    form.tReport.SetCapacity(4u * 1024u * 1024u);
    recipe.TextureCount = 1000000;
    CMeshFile many{form};
    ASSERT_TRUE(many.Initialize(Write("m.msh", recipe), 0, nullptr));
    form.tReport.SetText({});
    many.Show(0);
    EXPECT_TRUE(many.Loaded());
    EXPECT_LE(many.TextureInfos().StoredCount(), 2u);
    EXPECT_EQ(form.tReport.Text(), kOutOfMemory);
}

TEST_F(MeshFile, APaneTooSmallForTheFailureTextKeepsWhatItHad) {
    MeshSpec recipe = Triangle();
    recipe.Textures = {Texture(0, {std::string(300, 'q'), "", "", ""})};
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("s.msh", recipe), 0, nullptr));
    form.tReport.SetText("before");
    form.tReport.SetCapacity(20);
    EXPECT_FALSE(mesh.Show(0));
    EXPECT_EQ(form.tReport.Text(), "before");
}

TEST_F(MeshFile, AnInnerOffsetOutsideTheFileGivesAQuietReport) {
    MeshSpec recipe = Triangle();
    recipe.InnerOffset = 0x7FFFFFF0;
    CMeshFile mesh{form};
    EXPECT_FALSE(mesh.Initialize(Write("far.msh", recipe), 0, nullptr));
    mesh.Show(0);
    EXPECT_FALSE(mesh.Loaded());
    EXPECT_EQ(form.tReport.Text(), Counts(0, 0, 0));
}
