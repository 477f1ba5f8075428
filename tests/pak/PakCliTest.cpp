// quarrin-cli run as a program the way a shell starts it: the pak commands,
// writes stopped by a full disk, the memory of a listing, names from files on
// a terminal, and inputs of the wrong kind.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "samples/MeshBuilder.h"
#include "samples/PakBuilder.h"
#include "fixtures/Programs.h"
#include "fixtures/RegistryHome.h"
#include "pak/ZipWrapper.h"

namespace {

namespace fs = std::filesystem;
using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;

class PakCli : public ::testing::Test {
protected:
    fixtures::ProgramResult Cli(std::vector<std::string> args, fixtures::RunOptions options = {}) {
        args.insert(args.begin(), fixtures::ToolPath("quarrin-cli"));
        if (options.Folder.empty()) options.Folder = tmp.Path();
        return fixtures::Run(args, options);
    }
    std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const auto& e : fs::directory_iterator(tmp.Path())) names.push_back(e.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
    fixtures::RegistryHome home;
    TempDir tmp;
};

// Each writer, stopped by a file size limit standing in for a full disk or
// refused by the user, leaves an older file as it was and no temporary file;
// without the limit it replaces the older file whole.
TEST_F(PakCli, AFailedOrRefusedWriteLeavesTheOldFileWholeAndNoTemporary) {
    const std::string big(300 * 1024, 'b');
    WriteFile(tmp / "t.pak", fixtures::PakBuilder().Raw("big.map", big, 900000).Stored("big.txt", big).Build());
    fixtures::MeshSpec huge;
    huge.VertexCount = 30000000;  // zero records far past the end: about 270 MB of text
    WriteFile(tmp / "huge.msh", fixtures::BuildMesh(huge));
    const struct {
        std::vector<std::string> args;
        std::string target, message, whole;  // whole: the file without the limit
    } cases[] = {
        {{"pak", "save", "t.pak", "1", "out.zip"}, "out.zip", "could not be written whole", ""},
        {{"pak", "save", "t.pak", "1", "out.dcl", "--bare"}, "out.dcl", "could not be written whole", big},
        {{"pak", "save", "t.pak", "2", "out.txt"}, "out.txt", "could not be written whole", big},
        {{"mesh", "export", "huge.msh", "out.x", "--force"}, "out.x", "could not be written whole", ""},
        {{"mesh", "export", "huge.msh", "out.x"}, "huge.msh", "271 MB", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0] + " " + c.args[1] + " " + c.args.back());
        const std::string older = "older contents of " + c.args.back();
        for (const char* name : {"out.zip", "out.dcl", "out.txt", "out.x"}) WriteFile(tmp / name, older);
        const auto before = Names();
        const auto r = Cli(c.args, {.FileSizeLimit = c.message == "271 MB" ? RLIM_INFINITY : 100 * 1024});
        EXPECT_EQ(r.Status, 1) << r.Errors;
        EXPECT_NE(r.Errors.find(c.target + ": "), std::string::npos) << r.Errors;
        EXPECT_NE(r.Errors.find(c.message), std::string::npos) << r.Errors;
        EXPECT_EQ(r.Output, "");
        for (const char* name : {"out.zip", "out.dcl", "out.txt", "out.x"}) EXPECT_EQ(ReadFile(tmp / name), older) << name;
        EXPECT_EQ(Names(), before);
        if (c.args[0] == "mesh") continue;
        ASSERT_EQ(Cli(c.args).Status, 0);
        if (!c.whole.empty()) { EXPECT_TRUE(ReadFile(tmp / c.args[4]) == c.whole); }
        if (c.whole.empty()) { EXPECT_EQ(fs::file_size(tmp / c.args[4]), ZipWrapperLength(7, big.size())); }
    }
}

// The whole directory is held as list items, and they take no more than four
// times the PAK's size, whatever the records hold.
TEST_F(PakCli, PakListTakesMemoryInProportionToTheFile) {
    // A PAK of `count` records whose names have `nameLength` bytes; a
    // directory of empty names is all zeros, so that file is made sparse.
    auto write = [&](int32_t count, size_t nameLength) {
        fixtures::ByteWriter w;
        w.Bytes(fixtures::PakBuilder().MemberCount(count).Build());
        for (int32_t i = 0; nameLength != 0 && i < count; ++i) {
            std::string name = std::to_string(i);
            w.I32(static_cast<int32_t>(nameLength)).Bytes(name.insert(0, nameLength - name.size(), 'n')).I32(i).I32(i % 977).I32(i);
        }
        WriteFile(tmp / "big.pak", w.Data());
        fs::resize_file(tmp / "big.pak", std::max<uintmax_t>(w.Size(), 20 + 16 * static_cast<uintmax_t>(count)));
        return tmp / "big.pak";
    };
    // The lines go nowhere: the measure is the listing's.
    const fixtures::RunOptions measure{.DiscardOutput = true, .Measure = true};
    const auto empty = Cli({"pak", "list", write(1, 0)}, measure);
    ASSERT_EQ(empty.Status, 0) << empty.Errors;
    for (const auto& [count, nameLength] : {std::pair<int32_t, size_t>{1000000, 0}, {200000, 40}}) {
        SCOPED_TRACE(std::to_string(count) + " records, names of " + std::to_string(nameLength) + " bytes");
        const auto size = static_cast<long>(fs::file_size(write(count, nameLength)));
        const auto r = Cli({"pak", "list", tmp / "big.pak"}, measure);
        ASSERT_EQ(r.Status, 0) << r.Errors;
        EXPECT_EQ(r.Errors, "") << "the listing is whole";
        // Up to a few megabytes of the program's own beside the items.
        EXPECT_LE(r.PeakKiB - empty.PeakKiB, 4 * size / 1024 + 8 * 1024) << "file of " << size / 1024 << " KiB";
    }
}

// Names read from files reach a terminal and error texts with their control
// bytes as \xNN; a pipe gets the items in directory order as they stand.
TEST_F(PakCli, NamesFromFilesAreEscapedOnATerminalAndInErrors) {
    const std::string hostile = "evil\x1b]0;owned\x07\x1b[2J.t\x1bxt";
    const std::string shown = "evil\\x1B]0;owned\\x07\\x1B[2J.t\\x1Bxt";
    fixtures::PakBuilder h;
    WriteFile(tmp / "h.pak", h.Stored(hostile, "abc").Raw("b\xE9ton.bin", "x", 40).Build());
    WriteFile(tmp / "far.pak", fixtures::PakBuilder().Stored(hostile, "abc").Offset(0, 0x7FFF0000).Build());
    fixtures::MeshSpec mesh = fixtures::CubeMesh();
    mesh.Textures[0].Texts[0] = hostile;
    WriteFile(tmp / "h.msh", fixtures::BuildMesh(mesh));
    const struct {
        std::vector<std::string> args;
        bool terminal;
        std::string expected;  // in the output, or for a failure in the error text
    } cases[] = {
        {{"pak", "list", "h.pak"}, true,
         shown + "\t               3\t               3\tt\\x1Bxt\t" + std::to_string(h.DataOffset(0)) + "\nb\\xE9ton.bin\t"},
        {{"pak", "list", "h.pak"}, false, hostile + "\t               3\t               3\tt\x1bxt\t" + std::to_string(h.DataOffset(0)) +
                                              "\nb\xE9ton.bin\t               1\t              40\tbin\t" + std::to_string(h.DataOffset(1)) + "\n"},
        {{"mesh", "report", "h.msh"}, true, " a) " + shown + "\r\n"},
        {{"mesh", "report", "h.msh"}, false, " a) " + hostile + "\r\n"},
        // An error text escapes a name whatever standard output is.
        {{"pak", "save", "far.pak", "1", "out"}, false, "member 1 (" + shown + ")"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0] + " " + c.args[1] + (c.terminal ? " on a terminal" : " into a pipe"));
        const auto r = Cli(c.args, {.Terminal = c.terminal});
        const std::string& text = r.Status == 0 ? r.Output : r.Errors;
        EXPECT_NE(text.find(c.expected), std::string::npos) << text;
        if (c.terminal) { EXPECT_EQ(r.Output.find_first_of("\x1b\x07"), std::string::npos); }
        EXPECT_EQ(r.Errors.find('\x1b'), std::string::npos);
    }
}

// Wrong calls, files of the wrong kind and an unlucky disk: each gives a
// message, with any name from a file escaped, and status 1; nothing the
// program reads is changed or lost, nothing hangs, and a failed write is
// reported as one.
TEST_F(PakCli, HostileInputs) {
    const std::string older = "the user's older file, which must survive";
    fs::create_directory(tmp / "dest");
    const std::string lineEnd = tmp / "a\r\nDel \"victim.zip\"\r\ncd \"";
    fs::create_directory(lineEnd);
    std::string cut = fixtures::ImplodeMember(std::string(5000, 'x'));
    cut.resize(cut.size() / 2);
    WriteFile(tmp / "big.pak", fixtures::PakBuilder().Stored("big.bin", std::string(300000, 'b')).Build());
    WriteFile(tmp / "cut.pak", fixtures::PakBuilder().Raw("x.bin", cut, 5000).Stored("y.txt", "fine").Build());
    WriteFile(tmp / "t.pak", fixtures::PakBuilder().Stored("a", "1").Stored("b", "2").Stored("c", "3").Build());
    WriteFile(tmp / "not.pak", "hello there, not a pak at all");
    WriteFile(tmp / "z\x1b[2J.zip", "not an archive at all, but long enough");
    WriteFile(tmp / "far.pak", fixtures::PakBuilder().Stored("a", "abc").Offset(0, 1000000).Build());
    const std::string pipe = tmp / "pipe.pak";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const struct {
        const char* what;
        std::vector<std::string> args;
        rlim_t limit;
        std::string message;
    } rows[] = {
        {"not a PAK", {"quarrin-cli", "pak", "list", "not.pak"}, RLIM_INFINITY, "is not a PAK archive"},
        {"a missing PAK", {"quarrin-cli", "pak", "list", "missing.pak"}, RLIM_INFINITY, "cannot be opened"},
        {"a folder", {"quarrin-cli", "pak", "list", "dest"}, RLIM_INFINITY, "is a folder"},
        {"no PAK", {"quarrin-cli", "pak", "list"}, RLIM_INFINITY, "takes one PATH"},
        {"member 4 of 3", {"quarrin-cli", "pak", "save", "t.pak", "4", "x"}, RLIM_INFINITY, "there is no member 4"},
        {"member 0", {"quarrin-cli", "pak", "save", "t.pak", "0", "x"}, RLIM_INFINITY, "there is no member 0"},
        {"no number", {"quarrin-cli", "pak", "save", "t.pak", "one", "x"}, RLIM_INFINITY, "INDEX must be"},
        {"a missing folder", {"quarrin-cli", "pak", "save", "t.pak", "2", "no/such/x"}, RLIM_INFINITY, "could not be written"},
        {"a member beyond the end", {"quarrin-cli", "pak", "save", "far.pak", "1", "x"}, RLIM_INFINITY, "beyond the end"},
        {"an unknown command", {"quarrin-cli", "pak", "unknown"}, RLIM_INFINITY, "unknown pak command"},
        {"no command", {"quarrin-cli", "pak"}, RLIM_INFINITY, "usage"},
        {"a full disk while a stored member is written", {"quarrin-cli", "pak", "unpak", "big.pak", "dest"}, 100 * 1024,
         "big.bin: not written"},
        {"a damaged compressed member", {"quarrin-cli", "pak", "unpak", "cut.pak", "dest", "--run"}, RLIM_INFINITY, ""},
        {"a destination whose name holds a line end", {"quarrin-cli", "pak", "unpak", "big.pak", lineEnd, "--run"},
         RLIM_INFINITY, "line end"},
        {"a named pipe", {"quarrin-cli", "select", pipe}, RLIM_INFINITY, ""},
        {"a named pipe", {"quarrin-cli", "pak", "list", pipe}, RLIM_INFINITY, ""},
        {"a named pipe", {"quarrin-cli", "pak", "unpak", pipe, "dest"}, RLIM_INFINITY, ""},
        {"a named pipe", {"quarrin-runbat", pipe}, RLIM_INFINITY, ""},
        {"a named pipe", {"quarrin-pkzip", "-Extract", "pipe.pak"}, RLIM_INFINITY, ""},
        {"not an archive", {"quarrin-pkzip", "-Extract", "z\x1b[2J.zip"}, RLIM_INFINITY, "quarrin-pkzip: z\\x1B[2J.zip: not every entry"},
        {"a missing archive", {"quarrin-pkzip", "-Extract", "missing.zip"}, RLIM_INFINITY, "can't be opened"},
    };
    for (auto row : rows) {
        SCOPED_TRACE(std::string(row.what) + ": " + row.args[0] + " " + row.args[1]);
        for (const char* name : {"big.bin", "x.bin"}) WriteFile(tmp / "dest/" + name, older);
        row.args[0] = fixtures::ToolPath(row.args[0]);
        const auto r = fixtures::Run(row.args, {.Folder = tmp.Path(), .FileSizeLimit = row.limit, .TimeoutMs = 10000});
        EXPECT_EQ(r.Status, row.args[0].ends_with("runbat") ? 2 : 1) << r.Output << r.Errors;
        EXPECT_NE(r.Errors.find(row.message), std::string::npos) << r.Errors;
        EXPECT_EQ(r.Errors.find('\x1b'), std::string::npos);
        EXPECT_EQ(ReadFile(tmp / "dest/big.bin") + ReadFile(tmp / "dest/x.bin"), older + older);
        for (const auto& e : fs::recursive_directory_iterator(tmp.Path()))
            EXPECT_NE(e.path().filename().string().rfind(".quarrin-", 0), 0u) << e.path();
    }
    EXPECT_EQ(ReadFile(tmp / "dest/y.txt"), "fine");
    EXPECT_TRUE(fs::is_empty(lineEnd));
    EXPECT_FALSE(fs::exists(tmp / "x"));
}

}  // namespace
