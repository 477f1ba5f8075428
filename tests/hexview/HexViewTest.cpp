#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "hexview/CBINFile.h"
#include "hexview/HexPage.h"
#include "identify/IFileHost.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    size_t pos = 0;
    for (;;) {
        size_t end = text.find("\r\n", pos);
        lines.push_back(text.substr(pos, end == std::string::npos ? std::string::npos : end - pos));
        if (end == std::string::npos) break;
        pos = end + 2;
    }
    return lines;
}

std::string PageOf(const std::string& bytes, int64_t offset = 0) {
    unsigned char page[256] = {};
    for (size_t i = 0; i < 256 && offset + static_cast<int64_t>(i) < static_cast<int64_t>(bytes.size()); ++i)
        page[i] = static_cast<unsigned char>(bytes[offset + i]);
    return FormatHexPage(page, offset, static_cast<int64_t>(bytes.size()));
}

}  // namespace

TEST(HexPageFormat, ShowsTheExampleLine) {
    std::string bytes("\x4D\x5A\x50\x00\x41\x42\x20\x7E\x2E\x21\x30\x0A\x0D\x09\x1F\x7A", 16);
    auto lines = Lines(PageOf(bytes));
    ASSERT_EQ(lines.size(), 16u);
    EXPECT_EQ(lines[0], "4D 5A 50 00 41 42 20 7E 2E 21 30 0A 0D 09 1F 7A  MZP.AB.~.!0....z");
}

TEST(HexPageFormat, PadsPositionsBehindTheEndAndEndsWithoutLineEnd) {
    std::string text = PageOf("\x01\x02!ab");
    auto lines = Lines(text);
    ASSERT_EQ(lines.size(), 16u);
    EXPECT_EQ(lines[0], "01 02 21 61 62" + std::string(1 + 33, ' ') + " ..!ab");
    for (size_t i = 1; i < 16; ++i) EXPECT_EQ(lines[i], std::string(49, ' '));
    EXPECT_NE(text.substr(text.size() - 2), "\r\n");
    auto empty = Lines(PageOf(""));
    for (const auto& l : empty) EXPECT_EQ(l, std::string(49, ' '));
}

TEST(HexPageFormat, ReplacesBytesUpToBlankAndKeepsHighBytes) {
    std::string bytes;
    for (int b : {0x20, 0x21, 0x0A, 0x7F, 0xE9, 0xFF, 0x2E}) bytes.push_back(static_cast<char>(b));
    auto line = Lines(PageOf(bytes))[0];
    EXPECT_EQ(line.substr(0, 21), "20 21 0A 7F E9 FF 2E ");
    EXPECT_EQ(line.substr(49), std::string(".!.\x7F\xE9\xFF."));
}

TEST(HexPageFormat, FullPageHasSixteenLinesOfSixtyFiveCharacters) {
    std::string bytes(300, 'A');
    auto lines = Lines(PageOf(bytes, 0));
    for (const auto& l : lines) EXPECT_EQ(l.size(), 65u);
    // The second page holds the 44 bytes left: two full lines and one of 12.
    auto second = Lines(PageOf(bytes, 256));
    EXPECT_EQ(second[1].size(), 65u);
    EXPECT_EQ(second[2].size(), 49u + 12u);
    EXPECT_EQ(second[3], std::string(49, ' '));
}

TEST(HexPageFormat, LastPageReachesTheLastByteUpToTheLimit) {
    EXPECT_EQ(HexLastPage(0), 0);
    EXPECT_EQ(HexLastPage(5), 0);
    EXPECT_EQ(HexLastPage(256), 0);
    EXPECT_EQ(HexLastPage(257), 1);
    EXPECT_EQ(HexLastPage(512), 1);
    EXPECT_EQ(HexLastPage(int64_t{1} << 40), kHexMaxPage);
}

class BinFile : public ::testing::Test {
protected:
    TempDir dir;
    FileHost form;
    CBINFile bin{form};
};

TEST_F(BinFile, PagesThroughTheFileWithTheScrollBar) {
    std::string bytes;
    for (int i = 0; i < 600; ++i) bytes.push_back(static_cast<char>(i & 0xFF));
    WriteFile(dir / "f.bin", bytes);
    ASSERT_TRUE(bin.Initialize(dir / "f.bin", 0, nullptr));
    EXPECT_TRUE(bin.Show(0));
    EXPECT_EQ(form.oVScroll.Max(), 2);
    EXPECT_EQ(form.tReport.Text().substr(0, 6), "00 01 ");
    form.oVScroll.SetValue(2);  // the change event repaints
    std::string page3 = "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F  ................\r\n"
                        "10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F  ................\r\n"
                        "20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F  .!\"#$%&'()*+,-./\r\n"
                        "30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F  0123456789:;<=>?\r\n"
                        "40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F  @ABCDEFGHIJKLMNO\r\n"
                        "50 51 52 53 54 55 56 57" + std::string(26, ' ') + "PQRSTUVW";
    for (int line = 6; line < 16; ++line) page3 += "\r\n" + std::string(49, ' ');
    EXPECT_EQ(form.tReport.Text(), page3);
    EXPECT_EQ(bin.Information(), "bin");
}

TEST_F(BinFile, ANewFileGoesBackToTheFirstPageAndTheSamePathChangesNothing) {
    WriteFile(dir / "a", std::string(1000, 'a'));
    WriteFile(dir / "b", std::string(10, 'b'));
    ASSERT_TRUE(bin.Initialize(dir / "a", 0, nullptr));
    bin.Show(0);
    form.oVScroll.SetValue(3);
    std::string page3 = form.tReport.Text();
    ASSERT_TRUE(bin.Initialize(dir / "a", 0, nullptr));
    EXPECT_EQ(form.oVScroll.Value(), 3);
    EXPECT_EQ(form.tReport.Text(), page3);
    ASSERT_TRUE(bin.Initialize(dir / "b", 0, nullptr));
    EXPECT_FALSE(bin.Show(0));  // a short page
    EXPECT_EQ(form.oVScroll.Value(), 0);
    EXPECT_EQ(Lines(form.tReport.Text())[0].substr(0, 3), "62 ");
}

TEST_F(BinFile, AFileThatCannotBeOpenedLeavesThePaneAlone) {
    form.tReport.SetText("before");
    EXPECT_FALSE(bin.Initialize(dir / "missing", 0, nullptr));
    EXPECT_FALSE(bin.Show(0));
    EXPECT_FALSE(bin.Initialize(dir.Path(), 0, nullptr));
    EXPECT_EQ(form.tReport.Text(), "before");
}

TEST_F(BinFile, ReadsWholeFilesAsTextOrGivesTheErrorNumber) {
    std::string bytes("line\r\n\0\xFF", 8);
    WriteFile(dir / "t.txt", bytes);
    std::string path = dir / "t.txt";
    EXPECT_EQ(bin.ReadAll(path), bytes);
    std::string doubled = dir.Path() + "//t.txt";
    EXPECT_EQ(bin.ReadAll(doubled), bytes);
    EXPECT_EQ(bin.ReadAll(path, 4), "line");
    std::string missing = dir / "none.txt";
    EXPECT_EQ(bin.ReadAll(missing), "53");
}
