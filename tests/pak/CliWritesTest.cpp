// quarrin-cli's writers and listing run as programs: a write that fails or is
// refused, the memory of a listing, and names from files on a terminal.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "CliRun.h"
#include "PakTestSupport.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/MeshBuilder.h"
#include "fixtures/PakBuilder.h"
#include "pak/ZipWrapper.h"

namespace {

using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;

std::vector<std::string> FolderNames(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(folder)) names.push_back(e.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

class CliWrites : public ::testing::Test {
protected:
    void SetUp() override {
        if (!paktest::ToolBuilt("quarrin-cli")) GTEST_FAIL() << "quarrin-cli is not built in " << QUARRIN_TOOLS_DIR;
    }
    clirun::Result Cli(std::vector<std::string> args, clirun::Options options = {}) {
        args.insert(args.begin(), paktest::ToolPath("quarrin-cli"));
        if (options.folder.empty()) options.folder = tmp.Path();
        return clirun::Run(args, options);
    }
    TempDir tmp;
};

// Each writer, stopped by a file size limit standing in for a full disk or
// refused by the user, leaves an older file as it was and no temporary file.
TEST_F(CliWrites, AFailedOrRefusedWriteLeavesTheOldFileWholeAndNoTemporary) {
    const std::string big(300 * 1024, 'b');
    fixtures::PakBuilder pak;
    pak.Raw("big.map", big, 900000).Stored("big.txt", big);
    WriteFile(tmp / "t.pak", pak.Build());
    fixtures::MeshSpec huge;
    huge.VertexCount = 30000000;  // zero records far past the end: about 270 MB of text
    WriteFile(tmp / "huge.msh", fixtures::BuildMesh(huge));
    constexpr rlim_t kLimit = 100 * 1024;
    const rlim_t kNone = RLIM_INFINITY;

    struct Case {
        std::vector<std::string> args;
        std::string target;
        rlim_t limit;
        std::string message;  // what the error text must hold besides the target
    };
    const std::vector<Case> cases = {
        {{"pak", "save", "t.pak", "1", "out.zip"}, "out.zip", kLimit, "could not be written whole"},
        {{"pak", "save", "t.pak", "1", "out.dcl", "--bare"}, "out.dcl", kLimit, "could not be written whole"},
        {{"pak", "save", "t.pak", "2", "out.txt"}, "out.txt", kLimit, "could not be written whole"},
        {{"mesh", "export", "huge.msh", "out.x", "--force"}, "out.x", kLimit, "could not be written whole"},
        {{"mesh", "export", "huge.msh", "out.x"}, "huge.msh", kNone, "271 MB"},
    };
    for (const Case& c : cases) {
        const std::string what = c.args[0] + " " + c.args[1] + " " + c.args.back();
        const std::string older = "older contents of " + c.args.back();
        for (const char* name : {"out.zip", "out.dcl", "out.txt", "out.x"}) WriteFile(tmp / name, older);
        const auto before = FolderNames(tmp.Path());
        clirun::Result r = Cli(c.args, {.fileSizeLimit = c.limit});
        EXPECT_EQ(r.status, 1) << what << ": " << r.errors;
        EXPECT_NE(r.errors.find(c.target + ":"), std::string::npos) << what << ": " << r.errors;
        EXPECT_NE(r.errors.find(c.message), std::string::npos) << what << ": " << r.errors;
        EXPECT_EQ(r.output, "") << what;
        for (const char* name : {"out.zip", "out.dcl", "out.txt", "out.x"})
            EXPECT_EQ(ReadFile(tmp / name), older) << what << ": " << name;
        EXPECT_EQ(FolderNames(tmp.Path()), before) << what;
    }

    // Without the limit the same writers replace the older files whole.
    for (const Case& c : cases) {
        std::vector<std::string> args = c.args;
        if (args[0] == "mesh") continue;
        ASSERT_EQ(Cli(args).status, 0) << args.back();
    }
    EXPECT_EQ(ReadFile(tmp / "out.dcl"), big);
    EXPECT_EQ(ReadFile(tmp / "out.txt"), big);
    EXPECT_EQ(std::filesystem::file_size(tmp / "out.zip"), ZipWrapperLength(7, big.size()));
}

// A PAK of `count` records whose names have `nameLength` bytes. A directory of
// empty names is all zeros, so that file is made sparse.
std::string WriteDirectoryPak(const std::string& path, int32_t count, size_t nameLength) {
    fixtures::ByteWriter head;
    head.U32(0x6E71).U32(0x097DD4D3).U32(0).U32(0).I32(count);
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(write(fd, head.Data().data(), head.Data().size()), 20);
    if (nameLength == 0) {
        EXPECT_EQ(ftruncate(fd, 20 + 16 * static_cast<off_t>(count)), 0);
    } else {
        std::string block;
        for (int32_t i = 0; i < count; ++i) {
            std::string name = std::to_string(i);
            name.insert(0, nameLength - name.size(), 'n');
            fixtures::ByteWriter record;
            record.I32(static_cast<int32_t>(nameLength)).Bytes(name).I32(i).I32(i % 977).I32(i);
            block += record.Data();
            if (block.size() > (1 << 20) || i + 1 == count) {
                EXPECT_EQ(write(fd, block.data(), block.size()), static_cast<ssize_t>(block.size()));
                block.clear();
            }
        }
    }
    close(fd);
    return path;
}

// The whole directory is held as list items, and they take no more than four
// times the PAK's size, whatever the records hold.
TEST_F(CliWrites, PakListTakesMemoryInProportionToTheFile) {
    // The lines go nowhere: the measure is the listing's.
    const clirun::Options discard{.discardOutput = true};
    const clirun::Result empty = Cli({"pak", "list", WriteDirectoryPak(tmp / "one.pak", 1, 0)}, discard);
    ASSERT_EQ(empty.status, 0) << empty.errors;
    struct Case {
        int32_t count;
        size_t nameLength;
    };
    for (const Case& c : {Case{1000000, 0}, Case{200000, 40}}) {
        const std::string path = WriteDirectoryPak(tmp / "big.pak", c.count, c.nameLength);
        const auto size = static_cast<long>(std::filesystem::file_size(path));
        clirun::Result r = Cli({"pak", "list", path}, discard);
        ASSERT_EQ(r.status, 0) << r.errors;
        EXPECT_EQ(r.errors, "") << "the listing is whole";
        // Up to a few megabytes of the program's own beside the items.
        const long allowedKiB = 4 * size / 1024 + 8 * 1024;
        EXPECT_LE(r.peakKiB - empty.peakKiB, allowedKiB)
            << c.count << " records, names of " << c.nameLength << " bytes, file of " << size / 1024 << " KiB";
        std::filesystem::remove(path);
    }
}

// Names read from files reach a terminal and error texts with their control
// bytes as \xNN; a pipe gets their bytes as they stand.
TEST_F(CliWrites, NamesFromFilesAreEscapedOnATerminalAndInErrors) {
    const std::string hostile = "evil\x1b]0;owned\x07\x1b[2J.t\x1bxt";
    fixtures::PakBuilder pak;
    pak.Stored(hostile, "abc").Stored("b\xE9ton.bin", "x").Stored("far", "defg").Offset(2, 0x7FFF0000);
    WriteFile(tmp / "h.pak", pak.Build());
    fixtures::MeshSpec mesh = fixtures::CubeMesh();
    mesh.Textures[0].Texts[0] = hostile;
    WriteFile(tmp / "h.msh", fixtures::BuildMesh(mesh));
    const std::string shown = "evil\\x1B]0;owned\\x07\\x1B[2J.t\\x1Bxt";

    struct Case {
        std::vector<std::string> args;
        bool terminal;
        std::string expected;  // in the output, or for a failure in the error text
    };
    const std::vector<Case> cases = {
        {{"pak", "list", "h.pak"}, true, shown + "\t               3\t               3\tt\\x1Bxt\t"},
        {{"pak", "list", "h.pak"}, true, "b\\xE9ton.bin\t"},
        {{"pak", "list", "h.pak"}, false, hostile + "\t               3\t               3\tt\x1bxt\t"},
        {{"mesh", "report", "h.msh"}, true, " a) " + shown + "\r\n"},
        {{"mesh", "report", "h.msh"}, false, " a) " + hostile + "\r\n"},
    };
    for (const Case& c : cases) {
        const std::string what = c.args[0] + " " + c.args[1] + (c.terminal ? " on a terminal" : " into a pipe");
        clirun::Result r = Cli(c.args, {.terminal = c.terminal});
        const std::string& text = r.status == 0 ? r.output : r.errors;
        EXPECT_NE(text.find(c.expected), std::string::npos) << what << ":\n" << text;
        if (c.terminal) {
            EXPECT_EQ(r.output.find('\x1b'), std::string::npos) << what;
            EXPECT_EQ(r.output.find('\x07'), std::string::npos) << what;
        }
        EXPECT_EQ(r.errors.find('\x1b'), std::string::npos) << what;
    }
    // An error text escapes a name whatever standard output is.
    fixtures::PakBuilder far;
    far.Stored(hostile, "abc").Offset(0, 0x7FFF0000);
    WriteFile(tmp / "far.pak", far.Build());
    clirun::Result r = Cli({"pak", "save", "far.pak", "1", "out"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.errors.find("member 1 (" + shown + ")"), std::string::npos) << r.errors;
}

}  // namespace
