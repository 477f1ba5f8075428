#include <gtest/gtest.h>

#include <set>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/ErrorOf.h"
#include "platform/Files.h"
#include "platform/LittleEndian.h"
#include "platform/Picture.h"
#include "platform/Runtime.h"

using fixtures::TempDir;
using fixtures::WriteFile;

TEST(FileCalls, BufferedReadsAndSeeksGiveTheFileWhateverTheSizes) {
    TempDir dir;
    std::string bytes(300000, '\0');
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>((i * 131) >> 3);
    WriteFile(dir / "f", bytes);
    HFILE h = _lopen(dir / "f", OF_READ);
    ASSERT_GT(h, 0);
    std::string got;
    const size_t sizes[] = {1, 3, 4096, 7, 70000, 1, 100000, 13};
    std::vector<char> buf(100000);
    for (size_t i = 0; got.size() < bytes.size(); ++i) {
        const int32_t n = _lread(h, buf.data(), static_cast<int32_t>(sizes[i % 8]));
        ASSERT_GT(n, 0);
        got.append(buf.data(), static_cast<size_t>(n));
    }
    EXPECT_EQ(got, bytes);
    EXPECT_EQ(_lread(h, buf.data(), 1), 0);
    EXPECT_EQ(_llseek(h, -1, FILE_BEGIN), HFILE_ERROR);
    EXPECT_EQ(_llseek(h, -10, FILE_END), 299990);
    EXPECT_EQ(_lread(h, buf.data(), 16), 10);
    EXPECT_EQ(_lclose(h), 0);
    EXPECT_EQ(_lread(h, buf.data(), 1), HFILE_ERROR);
}

TEST(FileCalls, FoldersMissingFilesAndBadHandlesAreRefused) {
    TempDir dir;
    const int32_t before = OpenHandleCount();
    for (const std::string& bad : {dir.Path(), dir / "missing", std::string()})
        EXPECT_EQ(_lopen(bad, OF_READ), HFILE_ERROR) << bad;
    EXPECT_EQ(OpenHandleCount(), before);
    EXPECT_FALSE(DeleteFileA(dir.Path()));
    EXPECT_FALSE(DeleteFileA(dir / "missing"));
}

TEST(FileCalls, AttributesLengthsAndTheDirectoryScan) {
    TempDir dir;
    WriteFile(dir / "a.txt", "12345");
    std::filesystem::create_directory(dir / "sub");
    EXPECT_TRUE(GetAttr(dir / "a.txt") & vbArchive);
    EXPECT_TRUE(GetAttr(dir / "sub") & vbDirectory);
    EXPECT_THROW(GetAttr(dir / "none"), RuntimeError);
    EXPECT_EQ(Dir(dir / "su*"), "");
    EXPECT_EQ(Dir(dir / "su*", vbDirectory), "sub");
    // A pattern gives each match once, in the folder's own order, and then
    // an empty text; a path without wildcards gives its own name alone.
    WriteFile(dir / "b.txt", "");
    WriteFile(dir / ".hidden.txt", "");
    WriteFile(dir / "c.dat", "");
    std::multiset<std::string> found;
    for (std::string name = Dir(dir / "*.txt"); !name.empty(); name = Dir()) found.insert(name);
    EXPECT_EQ(found, (std::multiset<std::string>{"a.txt", "b.txt"}));
    EXPECT_EQ(Dir(dir / "c.dat"), "c.dat");
    EXPECT_EQ(Dir(dir / ".hidden.txt"), "");
    // The lists of the file controls show hidden files too.
    std::vector<DirEntry> entries;
    ASSERT_TRUE(ListDirectory(dir.Path(), entries));
    EXPECT_EQ(entries.at(0).name, ".hidden.txt");
}

TEST(NumberedFiles, OpenCloseAndReportTheRuntimesErrors) {
    TempDir dir;
    int16_t n = FreeFile();
    VbOpen(n, dir / "out.txt", VbOpenMode::Output);
    EXPECT_NE(FreeFile(), n);
    VbClose(n);
    EXPECT_EQ(fixtures::ErrorOf([&] { VbClose(n); }).Number, 52);
    const RuntimeError missing = fixtures::ErrorOf([&] { VbOpen(n, dir / "missing.txt", VbOpenMode::Input); });
    EXPECT_EQ(missing.Number, 53);
    EXPECT_EQ(missing.Description, "File not found");
    EXPECT_EQ(fixtures::ErrorOf([&] { LoadPicture(dir / "missing.bmp"); }).Number, 53);
}

TEST(RuntimeArithmetic, OverflowsLikeTheRuntimesIntegers) {
    EXPECT_EQ(VbAdd16(32721, 46), 32767);
    const RuntimeError overflow = fixtures::ErrorOf([] { VbAdd16(32722, 46); });
    EXPECT_EQ(overflow.Number, 6);
    EXPECT_EQ(overflow.Description, "Overflow");
    EXPECT_THROW(VbAdd32(INT32_MAX, 1), RuntimeError);
    EXPECT_EQ(VbIntDiv(-7, 2), -3);
    EXPECT_THROW(VbIntDiv(INT32_MIN, -1), RuntimeError);
    const RuntimeError byZero = fixtures::ErrorOf([] { VbIntDiv(1, 0); });
    EXPECT_EQ(byZero.Number, 11);
    EXPECT_EQ(byZero.Description, "Division by zero");
    EXPECT_EQ(VbCLng("            1234"), 1234);
    EXPECT_EQ(VbCLng("-7"), -7);
    EXPECT_THROW(VbCLng("99999999999"), RuntimeError);
    EXPECT_THROW(VbCLng("abc"), RuntimeError);
}

TEST(Runtime, CaseFoldsTheLettersOfTheAnsiCodePage) {
    const std::string lower = "az\xE0\xE9\xF6\xF8\xFE\xFF\x9A\x9C\x9E", upper = "AZ\xC0\xC9\xD6\xD8\xDE\x9F\x8A\x8C\x8E";
    // Signs, sharp s, micro and the bytes around the ranges have no other case.
    const std::string neither = "\xF7\xD7\xDF\xB5\xBF\x9B\x9D\x8B\x8D\x8F\x40\x5B\x60\x7B";
    EXPECT_EQ(VbUCase(lower + neither), upper + neither);
    EXPECT_EQ(VbLCase(upper + neither), lower + neither);
}

TEST(LittleEndian, FieldsReadWhatIsThereAndKeepTheRest) {
    TempDir dir;
    WriteFile(dir / "f", std::string("\x04\x05\x06", 3));
    HFILE h = _lopen(dir / "f", OF_READ);
    ASSERT_GT(h, 0);
    int16_t w = 0x1234;
    int32_t l = static_cast<int32_t>(0xAAAAAAAA);
    // Three bytes are there: the field's top byte stays.
    EXPECT_EQ(ReadLong(h, l), 3);
    EXPECT_EQ(static_cast<uint32_t>(l), 0xAA060504u);
    EXPECT_EQ(ReadWord(h, w), 0);
    EXPECT_EQ(w, 0x1234);
    _lclose(h);
    EXPECT_EQ(ReadLong(h, l), 0);

    const uint8_t bytes[] = {0x01, 0x02, 0x03, 0x04, 0x05};
    const ByteCursor c(bytes, sizeof bytes);
    EXPECT_EQ(c.LongAt(1), 0x05040302u);
    EXPECT_EQ(c.LongAt(2), 0u);
    EXPECT_EQ(c.ByteAt(5), 0u);
    EXPECT_EQ(c.WordAt(SIZE_MAX), 0u);
    EXPECT_EQ(c.Sub(1, 4).LongAt(0), 0x05040302u);
    EXPECT_EQ(c.Sub(2, 4).Size(), 0u);
    EXPECT_TRUE(c.Holds(5, 0));
    EXPECT_FALSE(c.Holds(6, 0));
}
