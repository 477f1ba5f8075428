#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "samples/MeshBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "meshes/CMeshFile.h"
#include "platform/Files.h"
#include "shell/frmMain.h"

using fixtures::BuildMesh;
using fixtures::LayoutOf;
using fixtures::MeshKind;
using fixtures::MeshSpec;
using namespace std::string_literals;

namespace {

const std::string kOutOfMemory =
    "xof 0302txt 0032\r\nHeader {\r\n 1;\r\n 0;\r\n 1;\r\n}\r\nOut of memory !!!\r\n}\r\n";
constexpr size_t k4M = 4u * 1024u * 1024u;

// The four lines of a report without texture records.
std::string Counts(int32_t nv, int32_t np, int32_t ni) {
    return "Objects:\t1\r\nVertexes:\t" + std::to_string(nv) + "\r\nPolygons:\t" + std::to_string(np) +
           "\r\nTexture(s) information(s):" + std::to_string(ni) + "\r\n";
}

// A triangle, or the cube of two texture records, changed as a case needs.
MeshSpec Mesh(const std::function<void(MeshSpec&)>& change = {}, bool cube = false) {
    MeshSpec m = fixtures::CubeMesh(MeshKind::Msh);
    if (!cube) m = MeshSpec{}, m.Vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1.5f, 0}}, m.Polygons = {{0, 1, 2}};
    if (change) change(m);
    return m;
}

fixtures::MeshTexture Texture(std::string a, int32_t length = -1) {
    fixtures::MeshTexture t;
    t.Texts = {std::move(a), "", "", ""};
    if (length >= 0) t.LengthOverride[0] = length;
    return t;
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
    const std::string bytes = BuildMesh(Mesh());
    const std::pair<std::string, bool> cases[] = {
        {BuildMesh(Mesh([](MeshSpec& m) { m.Kind = MeshKind::Amh, m.InnerGap = 40; })), true},
        {BuildMesh(Mesh([](MeshSpec& m) { m.KindId = fixtures::kAmhKindId; })), false},
        {BuildMesh(Mesh([](MeshSpec& m) { m.Kind = MeshKind::Amh, m.KindId = fixtures::kMshKindId; })), false},
        {BuildMesh(Mesh([](MeshSpec& m) { m.OuterSignature = 0x16E71; })), false},
        {BuildMesh(Mesh([](MeshSpec& m) { m.InnerSignature = 0x6E72; })), false},
        {bytes.substr(0, 56), true},  // two whole headers and no body
        {bytes.substr(0, 55), false},
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
// damaged ones; memory follows what the file holds, not the counts it tells.
TEST_F(MeshFile, ShowReportsWhatTheFileHolds) {
    const std::string empty4 = " a) \r\n b) \r\n c) \r\n d) \r\n";
    struct Case {
        const char* what;
        MeshSpec recipe;
        bool accepted, loaded;
        std::string report;
        size_t capacity = k4M;
        std::function<void(const CMeshFile&)> check = {};
    };
    const std::vector<Case> cases = {
        {"a negative count stops the body", Mesh([](MeshSpec& m) { m.TripleCount = -1; }, true), true, false,
         Counts(8, 12, 0), k4M, [](const CMeshFile& mesh) { EXPECT_EQ(mesh.Polygons()(5).iVertex1, 5); }},
        // 0x08000000 vertices of 16 bytes are 2^31 bytes; one fewer still fits.
        {"a count whose byte size overflows", Mesh([](MeshSpec& m) { m.VertexCount = 0x08000000; }), true, false,
         Counts(0x08000000, 0, 0)},
        {"the largest count that fits", Mesh([](MeshSpec& m) { m.VertexCount = 0x07FFFFFF; }), true, true,
         Counts(0x07FFFFFF, 0, 0), k4M,
         [](const CMeshFile& mesh) {
             const fixtures::MeshLayout layout = LayoutOf(Mesh());
             EXPECT_EQ(mesh.Vertices().StoredCount(), (layout.End - layout.Body - 4 + 15) / 16);
             EXPECT_EQ(mesh.Vertices()(1).x, 1.0f);
             EXPECT_EQ(mesh.Vertices()(0x07FFFFFF).x, 0.0f);
         }},
        // Cut in the middle of vertex 3's y.
        {"a file that ends inside a table reads the rest as zeros",
         Mesh([](MeshSpec& m) { m.Truncate = LayoutOf(m).Body + 4 + 16 * 3 + 6; }, true), true, true, Counts(8, 0, 0),
         k4M, [](const CMeshFile& mesh) { EXPECT_EQ(mesh.Vertices()(3).x + mesh.Vertices()(3).y, -1.0f); }},
        // Records are numbered from zero, a text keeps its zero bytes, and a
        // table holds the indices 0 to its count.
        {"texture records behind the end read as empty", Mesh([](MeshSpec& m) {
             m.Textures.push_back(Texture("a\0b"s)), m.TextureCount = 4;
         }, true),
         true, true,
         Counts(8, 12, 4) + "Info# 0\r\n a) stone.btm\r\n b) stone.plt\r\n c) walls\r\n d) granite\r\n"
                            "Info# 1\r\n a) wood.btm\r\n b) \r\n c) lid\r\n d) oak\r\n"
                            "Info# 2\r\n a) a\0b\r\n b) \r\n c) \r\n d) \r\nInfo# 3\r\n"s + empty4,
         k4M,
         [](const CMeshFile& mesh) {
             EXPECT_EQ(mesh.Vertices()(8).x, 0.0f);
             EXPECT_THROW(mesh.Vertices()(9), RuntimeError);
         }},
        {"a text that runs past the end is padded with zeros", Mesh([](MeshSpec& m) {
             m.Textures = {Texture("abcdef", 9)};
             m.Truncate = LayoutOf(m).TextLengths[0][0] + 4 + 6;
         }),
         true, true, Counts(3, 1, 1) + "Info# 0\r\n a) abcdef\0\0\0\r\n b) \r\n c) \r\n d) \r\n"s},
        // Only what the file had is held: the text, three lengths and the tail.
        {"a huge text length", Mesh([](MeshSpec& m) { m.Textures = {Texture("abc", 0x7FFFFFFF)}; }), true, true,
         kOutOfMemory, k4M,
         [](const CMeshFile& mesh) { EXPECT_EQ(mesh.TextureInfos()(0).aText[0].sText.size(), 3u + 12 + 12); }},
        {"a texture table that can't be allocated", Mesh([](MeshSpec& m) { m.TextureCount = 0x7FFFFFFF; }), true,
         false, kOutOfMemory},
        // A million empty records behind the end of a small file fill no memory,
        // and their report is too long for the pane of 4 MiB.
        {"a million empty records", Mesh([](MeshSpec& m) { m.TextureCount = 1000000; }), true, true, kOutOfMemory,
         k4M, [](const CMeshFile& mesh) { EXPECT_LE(mesh.TextureInfos().StoredCount(), 2u); }},
        {"a pane too small for the failure text keeps what it had",
         Mesh([](MeshSpec& m) { m.Textures = {Texture(std::string(300, 'q'))}; }), true, true, "old", 20},
        {"an inner offset outside the file gives a quiet report",
         Mesh([](MeshSpec& m) { m.InnerOffset = 0x7FFFFFF0; }), false, false, Counts(0, 0, 0)},
        {"a body that starts at the last 32-bit position is read as empty",
         Mesh([](MeshSpec& m) { m.InnerOffset = INT32_MAX - 28; }), false, true, Counts(0, 0, 0)},
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
// Show. The file changes behind the object's back in between; its vertex
// table is too large for the file layer's read buffer.
TEST_F(MeshFile, ReadsTheBodyAgainOnlyWhenItFailed) {
    for (int32_t textures : {0, -1}) {
        SCOPED_TRACE(textures);
        const auto large = [textures](float sign) {
            return BuildMesh(Mesh([&](MeshSpec& m) {
                for (int i = 3; i < 5000; ++i) m.Vertices.push_back({sign * static_cast<float>(i), 0, 0});
                m.TextureCount = textures;
            }));
        };
        CMeshFile mesh{form};
        ASSERT_TRUE(mesh.Initialize(Write(large(1)), 0, nullptr));
        mesh.Show(0);
        EXPECT_EQ(form.tReport.Text(), Counts(5000, 1, textures));
        Write(large(-1));
        mesh.Show(0);
        EXPECT_EQ(mesh.Vertices()(4999).x, textures == 0 ? 4999.0f : -4999.0f);
    }
}

// Every way an export ends: what the user is asked, what is answered, and what
// lands on the disk. Counts far past the end of a file make hundreds of
// megabytes of zero records (nine bytes each); above 256 MB the user is asked
// first.
TEST_F(MeshFile, ExportEndsAsTheUserAndTheDiskDecide) {
    // What the model text holds is checked where it is made; here, whether
    // the target holds a model, the older file, or nothing.
    const std::string model = "xof 0";
    const std::string replace = "old.x already exist.\r\nDo you want to replace it?";
    const std::string big = "This export will write 257 MB. Continue?";
    const auto zeros = [](int32_t count) { return Mesh([=](MeshSpec& m) { m.VertexCount = count, m.Polygons = {}; }); };
    struct Case {
        const char* what;
        MeshSpec recipe;
        const char* target;  // nullptr cancels the dialog
        std::vector<int32_t> answers;
        MeshExport outcome;
        std::vector<std::string> questions;
        std::string written;  // the target's first five bytes afterwards
    };
    const std::vector<Case> cases = {
        {"cancelled", Mesh(), nullptr, {}, MeshExport::Cancelled, {}, "older"},
        {"No keeps the old file", Mesh(), "old.x", {vbNo}, MeshExport::Declined, {replace}, "older"},
        {"Yes replaces it", Mesh(), "old.x", {vbYes}, MeshExport::Written, {replace}, model},
        {"no such folder", Mesh(), "none/model.x", {}, MeshExport::OpenFailed, {}, ""},
        {"a refused file is exported as read", Mesh([](MeshSpec& m) { m.KindId = fixtures::kAmhKindId; }), "model.x",
         {}, MeshExport::Written, {}, model},
        // A model cut short at the table never takes the older file's place.
        {"a table never allocated", zeros(0x10000000), "old.x", {vbYes}, MeshExport::TableUnreadable, {replace},
         "older"},
        {"above the limit, Yes goes on to the dialog", zeros(28500000), nullptr, {vbYes}, MeshExport::Cancelled,
         {big}, "older"},
        {"above the limit, No ends the export", zeros(28500000), "old.x", {vbNo}, MeshExport::SizeDeclined, {big},
         "older"},
        {"at most 256 MB asks nothing", zeros(28000000), nullptr, {}, MeshExport::Cancelled, {}, "older"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        frmMain main;
        fixtures::ScriptedFileDialogs dialogs;
        fixtures::ScriptedMessageBoxes boxes;
        fixtures::WriteFile(dir / "old.x", "older");
        if (c.target != nullptr) dialogs.Choose(dir / c.target);
        for (int32_t answer : c.answers) boxes.Answer(answer);
        CMeshFile mesh{main};
        mesh.Initialize(Write(BuildMesh(c.recipe)), 0, &main.oListView);
        EXPECT_EQ(mesh.ExportModel(), c.outcome);
        std::vector<std::string> asked;
        for (const auto& call : boxes.Calls)
            asked.push_back(call.prompt == big ? big : call.prompt.substr(dir.Path().size() + 1));
        EXPECT_EQ(asked, c.questions);
        EXPECT_EQ(dialogs.Requests.size(), c.outcome == MeshExport::SizeDeclined ? 0u : 1u);
        const std::string target = dir / (c.target ? c.target : "old.x");
        EXPECT_EQ(FileExists(target) ? fixtures::ReadFile(target).substr(0, 5) : "", c.written);
        std::vector<DirEntry> entries;
        ASSERT_TRUE(ListDirectory(dir.Path(), entries));
        EXPECT_EQ(entries.size(), 2u + (target == dir / "model.x" && c.written == model));
        std::remove(target.c_str());
    }
    EXPECT_EQ(CMeshFile{form}.ExportModel(), MeshExport::NoFile);
}
