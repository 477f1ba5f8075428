#include <gtest/gtest.h>

#include <string>

#include "fixtures/ByteWriter.h"
#include "fixtures/MeshBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "meshes/CMeshFile.h"
#include "platform/Files.h"
#include "shell/frmMain.h"
#include "winsupport/cCommonDialog.h"

using fixtures::BuildMesh;
using fixtures::MeshSpec;
using fixtures::ReadFile;
using fixtures::ScriptedFileDialogs;
using fixtures::ScriptedMessageBoxes;
using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

const std::string kWorkedExample =
    "xof 0302txt 0032\r\nHeader {\r\n 1;\r\n 0;\r\n 1;\r\n}\r\n\r\nMesh  {\r\n3;\r\n"
    "0;0;0;,\r\n1;0;0;,\r\n0;1.5;0;;\r\n\r\n1;\r\n3;0,1,2;;\r\n"
    "MeshMaterialList {\r\n  1;\r\n 1;\r\n  0;\r\nMaterial {\r\n 1.0;1.0;1.0;1.0;;\r\n 50.0;\r\n"
    " 1.0;1.0;1.0;;\r\n 0.0;0.0;0.0;;\r\n }\r\n\r\n}\r\n}\r\n";

MeshSpec Triangle() {
    MeshSpec m;
    m.Vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1.5f, 0}};
    m.Polygons = {{0, 1, 2}};
    return m;
}

class MeshExport_ : public ::testing::Test {
protected:
    void SetUp() override { CommonDialog().SetInitDir({}); }
    std::string Write(const std::string& name, const MeshSpec& recipe) {
        std::string path = dir / name;
        WriteFile(path, BuildMesh(recipe));
        return path;
    }
    TempDir dir;
    frmMain form;
    ScriptedFileDialogs dialogs;
    ScriptedMessageBoxes boxes;
};

}  // namespace

TEST_F(MeshExport_, WritesTheWorkedExampleWhereTheUserChose) {
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("tri.msh", Triangle()), 0, &form.oListView));
    dialogs.Choose(dir / "model.x");
    EXPECT_FALSE(mesh.SaveAs());
    EXPECT_EQ(ReadFile(dir / "model.x"), kWorkedExample);
    EXPECT_TRUE(boxes.Calls.empty());
    // What the dialog was asked.
    ASSERT_EQ(dialogs.Requests.size(), 1u);
    const FileDialogRequest& request = dialogs.Requests[0];
    EXPECT_TRUE(request.save);
    EXPECT_EQ(request.fileName, "tri.msh");
    EXPECT_EQ(request.hwndOwner, form.hWnd());
    ASSERT_EQ(request.filters.size(), 1u);
    EXPECT_EQ(request.filters[0].first, "Direct X Model (*.x)");
    EXPECT_EQ(request.filters[0].second, "*.x");
    EXPECT_EQ(request.filterIndex, 1);
    EXPECT_TRUE(request.pathMustExist);
    EXPECT_FALSE(request.overwritePrompt);
    EXPECT_TRUE(CommonDialog().CancelError());
}

TEST_F(MeshExport_, AcceptingTheProposedNameAppendsTheExtension) {
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("box.amh", fixtures::CubeMesh(fixtures::MeshKind::Amh)), 0, nullptr));
    CommonDialog().SetInitDir(dir.Path());
    dialogs.AcceptProposed();
    EXPECT_EQ(mesh.ExportModel(), MeshExport::Written);
    EXPECT_TRUE(FileExists(dir / "box.amh.x"));
    std::string text = ReadFile(dir / "box.amh.x");
    EXPECT_NE(text.find("Mesh  {\r\n8;\r\n-1;-1;-1;,\r\n"), std::string::npos);
    EXPECT_NE(text.find("\r\n12;\r\n3;0,2,1;,\r\n"), std::string::npos);
}

TEST_F(MeshExport_, ExportingBeforeAnyShowLoadsTheBodyOnce) {
    std::string path = Write("tri.msh", Triangle());
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(path, 0, nullptr));
    ASSERT_FALSE(mesh.Loaded());
    dialogs.Choose(dir / "first.x");
    mesh.SaveAs();
    EXPECT_TRUE(mesh.Loaded());
    EXPECT_EQ(ReadFile(dir / "first.x"), kWorkedExample);
    mesh.Show(0);
    EXPECT_EQ(form.tReport.Text(), "Objects:\t1\r\nVertexes:\t3\r\nPolygons:\t1\r\nTexture(s) information(s):0\r\n");
}

TEST_F(MeshExport_, CancellingWritesNothingAndAsksNothing) {
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("tri.msh", Triangle()), 0, nullptr));
    dialogs.Cancel();
    EXPECT_EQ(mesh.ExportModel(), MeshExport::Cancelled);
    EXPECT_EQ(dialogs.Requests.size(), 1u);
    EXPECT_TRUE(boxes.Calls.empty());
    std::vector<DirEntry> entries;
    ASSERT_TRUE(ListDirectory(dir.Path(), entries));
    EXPECT_EQ(entries.size(), 1u);
}

TEST_F(MeshExport_, AsksBeforeReplacingAndKeepsTheOldFileOnNo) {
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("tri.msh", Triangle()), 0, nullptr));
    std::string target = dir / "old.x";
    WriteFile(target, "old contents");
    dialogs.Choose(target);
    boxes.Answer(vbNo);
    EXPECT_EQ(mesh.ExportModel(), MeshExport::Declined);
    EXPECT_EQ(ReadFile(target), "old contents");
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, target + " already exist.\r\nDo you want to replace it?");
    EXPECT_EQ(boxes.Calls[0].buttons & 7, vbYesNo);

    // On Yes the old file is replaced by a new one, whatever its length was.
    WriteFile(target, std::string(10000, 'z'));
    dialogs.Choose(target);
    boxes.Answer(vbYes);
    EXPECT_EQ(mesh.ExportModel(), MeshExport::Written);
    EXPECT_EQ(ReadFile(target), kWorkedExample);
}

TEST_F(MeshExport_, ATargetThatCantBeWrittenLeavesNoFile) {
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("tri.msh", Triangle()), 0, nullptr));
    dialogs.Choose(dir / "no such folder/model.x");
    EXPECT_EQ(mesh.ExportModel(), MeshExport::OpenFailed);
    EXPECT_FALSE(FileExists(dir / "no such folder/model.x"));
    EXPECT_TRUE(boxes.Calls.empty());
}

TEST_F(MeshExport_, AVertexTableThatWasNeverAllocatedWritesNothing) {
    MeshSpec recipe = Triangle();
    recipe.VertexCount = 0x10000000;
    CMeshFile mesh{form};
    ASSERT_TRUE(mesh.Initialize(Write("huge.msh", recipe), 0, nullptr));
    WriteFile(dir / "cut.x", "older");
    dialogs.Choose(dir / "cut.x");
    boxes.Answer(vbYes);
    // A model cut short at the table never takes the older file's place.
    EXPECT_EQ(mesh.ExportModel(), MeshExport::TableUnreadable);
    EXPECT_FALSE(mesh.Loaded());
    EXPECT_EQ(mesh.ExportSize(), -1);
    EXPECT_EQ(ReadFile(dir / "cut.x"), "older");
    std::vector<DirEntry> entries;
    ASSERT_TRUE(ListDirectory(dir.Path(), entries));
    EXPECT_EQ(entries.size(), 2u);
}

TEST_F(MeshExport_, AnObjectWithoutAFileOpensNoDialog) {
    CMeshFile mesh{form};
    EXPECT_FALSE(mesh.SaveAs());
    EXPECT_EQ(mesh.ExportModel(), MeshExport::NoFile);
    EXPECT_TRUE(dialogs.Requests.empty());
}

TEST_F(MeshExport_, ARefusedFileIsExportedAsRead) {
    MeshSpec recipe = Triangle();
    recipe.KindId = fixtures::kAmhKindId;
    CMeshFile mesh{form};
    ASSERT_FALSE(mesh.Initialize(Write("mixed.msh", recipe), 0, nullptr));
    dialogs.Choose(dir / "mixed.x");
    EXPECT_EQ(mesh.ExportModel(), MeshExport::Written);
    EXPECT_EQ(ReadFile(dir / "mixed.x"), kWorkedExample);
}

// Counts far past the end of a file make gigabytes of zero records. Above
// 256 MB the user is asked first; No ends the export before the dialog.
TEST_F(MeshExport_, AnExportAboveTheLimitAsksFirst) {
    struct Case {
        const char* what;
        int32_t vertexCount;  // zero records: nine bytes of text each
        int32_t answer;       // to the size question, if one is asked
        const char* question; // empty when none is asked
        MeshExport outcome;
    };
    const std::vector<Case> cases = {
        {"above the limit, Yes goes on to the dialog", 28500000, vbYes,
         "This export will write 257 MB. Continue?", MeshExport::Cancelled},
        {"above the limit, No ends the export", 28500000, vbNo, "This export will write 257 MB. Continue?",
         MeshExport::SizeDeclined},
        {"at most 256 MB asks nothing", 28000000, vbNo, "", MeshExport::Cancelled},
        {"a small export asks nothing", 3, vbNo, "", MeshExport::Written},
    };
    for (const Case& c : cases) {
        MeshSpec recipe = Triangle();
        recipe.Vertices.clear();
        recipe.Polygons.clear();
        recipe.VertexCount = c.vertexCount;
        CMeshFile mesh{form};
        ASSERT_TRUE(mesh.Initialize(Write("m.msh", recipe), 0, nullptr));
        WriteFile(dir / "old.x", "older");
        ScriptedFileDialogs scriptedDialogs;
        ScriptedMessageBoxes scriptedBoxes;
        // The big exports end at the dialog, before gigabytes are written.
        if (c.vertexCount > 1000) {
            scriptedDialogs.Cancel();
        } else {
            scriptedDialogs.Choose(dir / "old.x");
        }
        if (*c.question != '\0') scriptedBoxes.Answer(c.answer);
        scriptedBoxes.Answer(vbYes);  // to the replace question
        EXPECT_EQ(mesh.ExportModel(), c.outcome) << c.what;
        const bool asked = *c.question != '\0';
        ASSERT_GE(scriptedBoxes.Calls.size(), asked ? 1u : 0u) << c.what;
        if (asked) {
            EXPECT_EQ(scriptedBoxes.Calls[0].prompt, c.question) << c.what;
            EXPECT_EQ(scriptedBoxes.Calls[0].buttons, vbYesNo | vbQuestion) << c.what;
        } else {
            for (const auto& call : scriptedBoxes.Calls) EXPECT_EQ(call.buttons & vbQuestion, 0) << c.what;
        }
        EXPECT_EQ(scriptedDialogs.Requests.size(), c.outcome == MeshExport::SizeDeclined ? 0u : 1u) << c.what;
        if (c.outcome != MeshExport::Written) EXPECT_EQ(ReadFile(dir / "old.x"), "older") << c.what;
    }
    EXPECT_NE(ReadFile(dir / "old.x"), "older");
}
