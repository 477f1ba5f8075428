#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/MeshBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "shell/frmMain.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

class MeshPreview : public ::testing::Test {
protected:
    void SetUp() override {
        WriteFile(dir / "cube.msh", fixtures::BuildMesh(fixtures::CubeMesh(fixtures::MeshKind::Msh)));
        WriteFile(dir / "cube.amh", fixtures::BuildMesh(fixtures::CubeMesh(fixtures::MeshKind::Amh)));
        fixtures::MeshSpec mixed = fixtures::CubeMesh(fixtures::MeshKind::Msh);
        mixed.KindId = 0x6838;
        WriteFile(dir / "mixed.msh", fixtures::BuildMesh(mixed));
        form.oDir.SetPath(dir.Path());
    }
    TempDir dir;
    frmMain form;
};

}  // namespace

TEST_F(MeshPreview, AMeshOffersSaveAtOnceAndReportsOnPreview) {
    for (const char* name : {"cube.msh", "cube.amh"}) {
        ASSERT_TRUE(form.oFile.Select(name));
        EXPECT_EQ(form.m_lFileKind, fkNone);
        EXPECT_EQ(form.oStatusBar.Panels(1).Text, "Mesh File");
        EXPECT_EQ(form.oStatusBar.Panels(2).Text, std::string(name).substr(5));
        EXPECT_TRUE(form.SaveOffered());
        EXPECT_TRUE(form.ShowOffered());
        EXPECT_FALSE(form.ExtractOffered());
        EXPECT_EQ(form.tReport.Text().substr(0, 12), "71 6E 00 00 ");
        form.oFile_DblClick();
        EXPECT_EQ(form.tReport.Text().substr(0, 11), "Objects:\t1\r");
        EXPECT_FALSE(form.oVScroll.Visible());
    }
}

TEST_F(MeshPreview, SaveWritesTheModelWhereTheUserChooses) {
    ASSERT_TRUE(form.oFile.Select("cube.msh"));
    fixtures::ScriptedFileDialogs dialogs;
    dialogs.Choose(dir / "out.x");
    form.SaveCommand();
    ASSERT_EQ(dialogs.Requests.size(), 1u);
    EXPECT_EQ(fixtures::ReadFile(dir / "out.x").substr(0, 18), "xof 0302txt 0032\r\n");
}

TEST_F(MeshPreview, AMeshWhoseHeadersDisagreeIsRefused) {
    ASSERT_TRUE(form.oFile.Select("mixed.msh"));
    EXPECT_EQ(form.m_lFileKind, fkNone);
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "");
    EXPECT_FALSE(form.SaveOffered());
}
