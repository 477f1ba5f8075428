// UnpakMember and the wrappers it writes, and the member names that may
// become paths below the destination.
#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/ErrorOf.h"
#include "samples/PakBuilder.h"
#include "fixtures/Programs.h"
#include "fixtures/ZipBuilder.h"
#include "pak/MemberPath.h"
#include "pak/ZipWrapper.h"

namespace {

namespace fs = std::filesystem;
using fixtures::PakBuilder;
using fixtures::ReadFile;
using fixtures::WriteFile;

TEST(MemberPath, NamesBelowTheFolderArePathsAndNoOthers) {
    const std::pair<std::string, std::string> below[] = {
        {"a.txt", "/d/a.txt"}, {"data\\maps\\a.map", "/d/data/maps/a.map"}, {"data/a", "/d/data/a"},
        {"..a\\b..c\\...txt", "/d/..a/b..c/...txt"}, {"sub\\.\\a", "/d/sub/./a"},
        // Only a letter before the colon makes a drive.
        {"':bin", "/d/':bin"}, {"1:x", "/d/1:x"}, {"ab:c", "/d/ab:c"}};
    for (const auto& [name, path] : below) EXPECT_EQ(MemberPath("/d/", name), path) << name;
    // Names that leave the folder, and line ends that would split the command file's lines.
    for (const std::string name : {"", ".", "..", "../a", "..\\a", "a\\..\\..\\b", "a/..", "/etc/passwd", "\\a", "c:", "c:a",
                                   "Z:\\a", "a\\", "a/", "a\\.", "x\r\nDel \"victim", "a\nb", "a\rb"}) {
        EXPECT_FALSE(IsSafeMemberName(name)) << name;
        EXPECT_EQ(MemberPath("/d/", name), "") << name;
    }
    EXPECT_FALSE(IsSafeMemberName(std::string("a\0b", 3)));
}

class ZipWrapperTest : public ::testing::Test {
protected:
    void SetUp() override {
        FillZipTemplates();
        fs::create_directory(dest);
    }
    // Writes the PAK and unpacks member i into dest.
    bool Unpak(const PakBuilder& pak, size_t i) {
        WriteFile(path, pak.Build());
        const auto e = pak.Entries().at(i);
        return UnpakMember(dest, path, e.Name, e.PackedSize, e.OriginalSize, e.Offset);
    }
    fixtures::TempDir tmp;
    std::string dest = tmp / "dest/", path = tmp / "test.pak";
};

// The wrapper replaces an older, longer one whole; the older unpacked file
// stays until the archiver puts a whole new one in its place, so that a
// damaged member doesn't cost the user the old one.
TEST_F(ZipWrapperTest, WorkedFileOfFiveByteName) {
    WriteFile(dest + "a.bin", "an older unpacked file");
    WriteFile(dest + "a.bin.zip", std::string(4000, 'J'));
    ASSERT_TRUE(Unpak(PakBuilder().Raw("a.bin", "\xAA\xBB\xCC", 9), 0));
    // Version 2.0, method 10, 01:11:00 on 1 February 1997, a CRC of 0, the
    // archive attribute: what the ZIP builder writes for such an entry.
    const std::string expected = fixtures::BuildZip({{"a.bin", 10, 0, "\xAA\xBB\xCC", 0, 9}});
    EXPECT_EQ(ReadFile(dest + "a.bin.zip"), expected);
    EXPECT_EQ(ReadFile(dest + "a.bin"), "an older unpacked file");
}

// A member is written only when the PAK holds all of it and its folder
// stands; otherwise nothing is touched. A backslash in a name separates
// folders.
TEST_F(ZipWrapperTest, WritesOnlyWhatThePakHoldsIntoAFolderThatStands) {
    const PakBuilder pak =
        PakBuilder().Stored("data\\a.txt", "plain").Raw("data\\sub\\b.bin", "\x09\x08", 77).Raw("a.bin", "\x01\x02\x03", 10);
    WriteFile(path, pak.Build());
    WriteFile(dest + "a.bin.zip", "keep");
    WriteFile(dest + "a.bin", "keep too");
    const int32_t at = pak.Entries()[2].Offset;
    const struct {
        std::string pak;
        int32_t packed, offset;
    } rows[] = {{path, 4, at}, {path, 3, at + 1}, {path, 3, -1}, {path, -3, at}, {path, 0x7FFFFFFF, at}, {tmp / "none.pak", 3, at}};
    for (const auto& row : rows) EXPECT_FALSE(UnpakMember(dest, row.pak, "a.bin", row.packed, 10, row.offset)) << row.packed;
    EXPECT_EQ(ReadFile(dest + "a.bin.zip") + ReadFile(dest + "a.bin"), "keepkeep too");
    EXPECT_TRUE(UnpakMember(dest, path, "a.bin", 3, 10, at));
    EXPECT_FALSE(Unpak(pak, 0)) << "the folder data doesn't exist yet";
    EXPECT_FALSE(fs::exists(dest + "data"));
    fs::create_directories(dest + "data/sub");
    ASSERT_TRUE(Unpak(pak, 0));
    EXPECT_EQ(ReadFile(dest + "data/a.txt"), "plain");
    ASSERT_TRUE(Unpak(pak, 1));
    // The name in the wrapper keeps the bytes of the directory.
    EXPECT_EQ(ReadFile(dest + "data/sub/b.bin.zip").substr(30, 14), "data\\sub\\b.bin");
}

// L + 46 is a 16-bit sum: a name of 32722 bytes overflows it at the end
// record, after the parts before it have been written.
TEST_F(ZipWrapperTest, NameLengthOverflowsAtTheEndRecord) {
    for (int32_t L : {32721, 32722}) {
        WriteFile(path, "");
        const HFILE h = _lopen(path, OF_WRITE);
        ASSERT_GT(h, 0);
        const uint8_t stream[3] = {1, 2, 3};
        EXPECT_EQ(fixtures::ErrorOf([&] { WriteZipWrapper(h, std::string(static_cast<size_t>(L), 'n'), L, 3, 9, stream); }).Number,
                  L == 32721 ? 0 : 6);
        _lclose(h);
        EXPECT_EQ(ReadFile(path).size(), L == 32721 ? static_cast<size_t>(98 + 2 * L + 3) : static_cast<size_t>(30 + L + 3 + 46 + L + 12));
    }
}

// Real archivers judge the wrappers: each must be listed with its name and size.
TEST_F(ZipWrapperTest, UnzipAnd7zzListEveryWrapper) {
    const PakBuilder pak = PakBuilder().Raw("a.bin", "\xAA\xBB\xCC", 9).Imploded("with blank.txt", std::string(3000, 'w'))
                               .Raw("z.dat", "", 17);
    for (const std::vector<std::string>& command : {std::vector<std::string>{"unzip", "-l"}, {"7zz", "l"}}) {
        ASSERT_FALSE(fixtures::ProgramOnPath(command[0]).empty()) << command[0] << " is part of the test set-up";
        for (size_t i = 0; i < pak.Count(); ++i) {
            const auto e = pak.Entries()[i];
            SCOPED_TRACE(command[0] + " " + e.Name);
            ASSERT_TRUE(Unpak(pak, i));
            std::vector<std::string> argv = command;
            argv.push_back(dest + e.Name + ".zip");
            const auto r = fixtures::RunAndCapture(argv);
            EXPECT_EQ(r.Status, 0) << r.Output << r.Errors;
            EXPECT_NE(r.Output.find(e.Name), std::string::npos) << r.Output;
            EXPECT_NE(r.Output.find(std::to_string(e.OriginalSize)), std::string::npos) << r.Output;
        }
    }
}

}  // namespace
