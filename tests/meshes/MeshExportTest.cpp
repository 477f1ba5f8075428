#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/MeshBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "meshes/CMeshFile.h"
#include "platform/Files.h"
#include "shell/frmMain.h"
#include "winsupport/cCommonDialog.h"

using fixtures::MeshSpec;
using fixtures::ReadFile;

namespace {

MeshSpec Mesh(int32_t vertexCount = -1, bool sameKinds = true) {
    MeshSpec m;
    m.Vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1.5f, 0}};
    m.Polygons = {{0, 1, 2}};
    if (vertexCount >= 0) m.VertexCount = vertexCount, m.Polygons.clear();
    if (!sameKinds) m.KindId = fixtures::kAmhKindId;
    return m;
}

}  // namespace

// Every way an export ends: what the user is asked, what is answered, and what
// lands on the disk. Counts far past the end of a file make hundreds of
// megabytes of zero records (nine bytes each); above 256 MB the user is asked
// first.
TEST(MeshExport, EndsAsTheUserAndTheDiskDecide) {
    const std::string model =
        "xof 0302txt 0032\r\nHeader {\r\n 1;\r\n 0;\r\n 1;\r\n}\r\n\r\nMesh  {\r\n3;\r\n"
        "0;0;0;,\r\n1;0;0;,\r\n0;1.5;0;;\r\n\r\n1;\r\n3;0,1,2;;\r\n"
        "MeshMaterialList {\r\n  1;\r\n 1;\r\n  0;\r\nMaterial {\r\n 1.0;1.0;1.0;1.0;;\r\n 50.0;\r\n"
        " 1.0;1.0;1.0;;\r\n 0.0;0.0;0.0;;\r\n }\r\n\r\n}\r\n}\r\n";
    const std::string replace = " already exist.\r\nDo you want to replace it?", big = "This export will write 257 MB. Continue?";
    struct Case {
        const char* what;
        MeshSpec recipe;
        const char* target;  // nullptr cancels the dialog
        std::vector<int32_t> answers;
        MeshExport outcome;
        std::vector<std::string> questions;
        std::string written;  // in the target afterwards
    };
    const std::vector<Case> cases = {
        {"a new file", Mesh(), "model.x", {}, MeshExport::Written, {}, model},
        {"cancelled", Mesh(), nullptr, {}, MeshExport::Cancelled, {}, "older"},
        {"No keeps the old file", Mesh(), "old.x", {vbNo}, MeshExport::Declined, {"old.x" + replace}, "older"},
        {"Yes replaces it", Mesh(), "old.x", {vbYes}, MeshExport::Written, {"old.x" + replace}, model},
        {"no such folder", Mesh(), "none/model.x", {}, MeshExport::OpenFailed, {}, ""},
        {"a refused file is exported as read", Mesh(-1, false), "model.x", {}, MeshExport::Written, {}, model},
        // A model cut short at the table never takes the older file's place.
        {"a table never allocated", Mesh(0x10000000), "old.x", {vbYes}, MeshExport::TableUnreadable,
         {"old.x" + replace}, "older"},
        {"above the limit, Yes goes on to the dialog", Mesh(28500000), nullptr, {vbYes}, MeshExport::Cancelled, {big},
         "older"},
        {"above the limit, No ends the export", Mesh(28500000), "old.x", {vbNo}, MeshExport::SizeDeclined, {big},
         "older"},
        {"at most 256 MB asks nothing", Mesh(28000000), nullptr, {}, MeshExport::Cancelled, {}, "older"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        fixtures::TempDir dir;
        frmMain form;
        fixtures::ScriptedFileDialogs dialogs;
        fixtures::ScriptedMessageBoxes boxes;
        fixtures::WriteFile(dir / "tri.msh", fixtures::BuildMesh(c.recipe));
        fixtures::WriteFile(dir / "old.x", "older");
        if (c.target != nullptr) dialogs.Choose(dir / c.target);
        for (int32_t answer : c.answers) boxes.Answer(answer);
        CMeshFile mesh{form};
        mesh.Initialize(dir / "tri.msh", 0, &form.oListView);
        EXPECT_EQ(mesh.ExportModel(), c.outcome);
        std::vector<std::string> asked;
        for (const auto& call : boxes.Calls) {
            asked.push_back(call.prompt.starts_with(dir.Path()) ? call.prompt.substr(dir.Path().size() + 1) : call.prompt);
            EXPECT_EQ(call.buttons, call.prompt == big ? vbYesNo | vbQuestion : vbYesNo);
        }
        EXPECT_EQ(asked, c.questions);
        EXPECT_EQ(dialogs.Requests.size(), c.outcome == MeshExport::SizeDeclined ? 0u : 1u);
        const std::string target = dir / (c.target ? c.target : "old.x");
        EXPECT_EQ(FileExists(target) ? ReadFile(target) : "", c.written);
        std::vector<DirEntry> entries;
        ASSERT_TRUE(ListDirectory(dir.Path(), entries));
        const bool added = c.outcome == MeshExport::Written && std::string(c.target) != "old.x";
        EXPECT_EQ(entries.size(), added ? 3u : 2u);
    }
}

TEST(MeshExport, AsksTheSaveDialogForAModelNamedAfterTheMesh) {
    fixtures::TempDir dir;
    frmMain form;
    fixtures::ScriptedFileDialogs dialogs;
    fixtures::WriteFile(dir / "box.amh", fixtures::BuildMesh(fixtures::CubeMesh(fixtures::MeshKind::Amh)));
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(dir / "box.amh", 0, nullptr));
    CommonDialog().SetInitDir(dir.Path());
    dialogs.AcceptProposed();
    EXPECT_FALSE(mesh.SaveAs());
    CommonDialog().SetInitDir({});
    ASSERT_EQ(dialogs.Requests.size(), 1u);
    const FileDialogRequest& request = dialogs.Requests[0];
    EXPECT_TRUE(request.save && request.pathMustExist && !request.overwritePrompt);
    EXPECT_EQ(request.fileName, "box.amh");
    EXPECT_EQ(request.hwndOwner, form.hWnd());
    EXPECT_EQ(request.filters, (std::vector<std::pair<std::string, std::string>>{{"Direct X Model (*.x)", "*.x"}}));
    // Accepting the proposed name appends the extension.
    EXPECT_NE(ReadFile(dir / "box.amh.x").find("Mesh  {\r\n8;\r\n-1;-1;-1;,\r\n"), std::string::npos);
    EXPECT_EQ(CMeshFile{form}.ExportModel(), MeshExport::NoFile);
    EXPECT_EQ(dialogs.Requests.size(), 1u);
}
