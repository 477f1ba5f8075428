#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "fixtures/ByteWriter.h"
#include "fixtures/MeshBuilder.h"
#include "fixtures/Programs.h"
#include "identify/modGlobal.h"
#include "platform/Files.h"

using fixtures::BuildMesh;
using fixtures::ReadFile;
using fixtures::RunAndCapture;
using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

class MeshCli : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(IsRegularFile(cli)) << cli << " is not built";
        WriteFile(cube, BuildMesh(fixtures::CubeMesh()));
    }
    static bool IsRegularFile(const std::string& path) { return FileExists(path) && !IsDirectory(path); }
    const std::string cli = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-cli";
    TempDir dir;
    const std::string cube = dir / "cube.msh";
};

}  // namespace

TEST_F(MeshCli, PrintsTheReport) {
    fixtures::ProgramResult r = RunAndCapture({cli, "mesh", "report", cube});
    EXPECT_EQ(r.Status, 0) << r.Errors;
    EXPECT_EQ(r.Output,
              "Objects:\t1\r\nVertexes:\t8\r\nPolygons:\t12\r\nTexture(s) information(s):2\r\n"
              "Info# 0\r\n a) stone.btm\r\n b) stone.plt\r\n c) walls\r\n d) granite\r\n"
              "Info# 1\r\n a) wood.btm\r\n b) \r\n c) lid\r\n d) oak\r\n");
}

TEST_F(MeshCli, ExportsWhatAnAssimpReaderAccepts) {
    // An existing target is replaced, as a user answering Yes would have it.
    WriteFile(dir / "cube.x", "old");
    fixtures::ProgramResult r = RunAndCapture({cli, "mesh", "export", cube, dir / "cube.x"});
    ASSERT_EQ(r.Status, 0) << r.Errors;
    std::string text = ReadFile(dir / "cube.x");
    EXPECT_TRUE(text.starts_with("xof 0302txt 0032\r\n"));
    EXPECT_TRUE(text.ends_with(" }\r\n\r\n}\r\n}\r\n"));
    // Without the extension, the dialog's filter adds it.
    r = RunAndCapture({cli, "mesh", "export", cube, dir / "plain"});
    ASSERT_EQ(r.Status, 0) << r.Errors;
    EXPECT_EQ(r.Output, dir / "plain.x" + "\n");
    EXPECT_EQ(ReadFile(dir / "plain.x"), text);

    std::string assimp = fixtures::ProgramOnPath("assimp");
    ASSERT_FALSE(assimp.empty()) << "assimp is part of the test set-up";
    fixtures::ProgramResult info = RunAndCapture({assimp, "info", dir / "cube.x"});
    ASSERT_EQ(info.Status, 0) << info.Output << info.Errors;
    EXPECT_THAT(info.Output, ::testing::ContainsRegex("Vertices: +8\n"));
    EXPECT_THAT(info.Output, ::testing::ContainsRegex("Faces: +12\n"));
}

TEST_F(MeshCli, RefusesWhatIsNoMesh) {
    WriteFile(dir / "text.msh", "just some text, long enough to hold two headers of 28 bytes each");
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"report", dir / "text.msh"}, {"report", dir.Path()}, {"report", dir / "none"},
          {"export", dir / "text.msh", dir / "out.x"}, {"export", cube, dir / "no folder/out.x"}, {"report"},
          {"frobnicate", cube}}) {
        std::vector<std::string> argv = {cli, "mesh"};
        argv.insert(argv.end(), args.begin(), args.end());
        fixtures::ProgramResult r = RunAndCapture(argv);
        EXPECT_EQ(r.Status, 1) << args[0];
        EXPECT_FALSE(r.Errors.empty()) << args[0];
    }
    EXPECT_FALSE(FileExists(dir / "out.x"));
}
