#include <gtest/gtest.h>

#include <algorithm>

#include "fixtures/ByteWriter.h"
#include "hexview/CBINFile.h"
#include "hexview/HexPage.h"
#include "identify/IFileHost.h"
#include "platform/Runtime.h"

using fixtures::WriteFile;

// Lines of 49 blanks, each behind a line end: positions behind the file's end.
static std::string EmptyLines(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "\r\n" + std::string(49, ' ');
    return text;
}

TEST(HexPageFormat, ShowsBytesAndCharactersAndPadsBehindTheEnd) {
    const unsigned char page[256] = {0x4D, 0x5A, 0x50, 0x00, 0x41, 0x42, 0x20, 0x7E, 0x2E, 0x21, 0x30,
                                     0x0A, 0x0D, 0x09, 0x1F, 0x7A, 0x20, 0x21, 0x7F, 0xE9, 0xFF};
    EXPECT_EQ(FormatHexPage(page, 0, 21), "4D 5A 50 00 41 42 20 7E 2E 21 30 0A 0D 09 1F 7A  MZP.AB.~.!0....z\r\n"
                                          "20 21 7F E9 FF" + std::string(34, ' ') + " .!\x7F\xE9\xFF" + EmptyLines(14));
    for (auto [length, last] : {std::pair<int64_t, int32_t>{0, 0}, {256, 0}, {257, 1}, {int64_t{1} << 40, 32256}})
        EXPECT_EQ(HexLastPage(length), last) << length;
}

class BinFile : public ::testing::Test {
protected:
    fixtures::TempDir dir;
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
    form.oVScroll.SetValue(2);  // the change event repaints
    EXPECT_EQ(form.tReport.Text(), "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F  ................\r\n"
                                   "10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F  ................\r\n"
                                   "20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F  .!\"#$%&'()*+,-./\r\n"
                                   "30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F  0123456789:;<=>?\r\n"
                                   "40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F  @ABCDEFGHIJKLMNO\r\n"
                                   "50 51 52 53 54 55 56 57" + std::string(26, ' ') + "PQRSTUVW" + EmptyLines(10));
}

TEST_F(BinFile, ANewFileGoesBackToTheFirstPageAndTheSamePathChangesNothing) {
    WriteFile(dir / "a", std::string(1000, 'a'));
    WriteFile(dir / "b", std::string(10, 'b'));
    ASSERT_TRUE(bin.Initialize(dir / "a", 0, nullptr));
    bin.Show(0);
    form.oVScroll.SetValue(3);
    ASSERT_TRUE(bin.Initialize(dir / "a", 0, nullptr));
    EXPECT_EQ(form.oVScroll.Value(), 3);
    ASSERT_TRUE(bin.Initialize(dir / "b", 0, nullptr));
    EXPECT_FALSE(bin.Show(0));  // a short page
    EXPECT_EQ(form.oVScroll.Value(), 0);
    EXPECT_EQ(form.tReport.Text().substr(0, 3), "62 ");
}

TEST_F(BinFile, AScrollDuringARepaintEndsOnThePageTheBarStandsOn) {
    WriteFile(dir / "f", std::string(256, 'a') + std::string(256, 'b'));
    ASSERT_TRUE(bin.Initialize(dir / "f", 0, nullptr));
    bool moved = false;
    int depth = 0, deepest = 0;
    SetDoEventsHook([&] {
        deepest = std::max(deepest, ++depth);
        if (!moved) form.oVScroll.SetValue(1);
        moved = true;
        --depth;
    });
    bin.Show(0);
    SetDoEventsHook({});
    EXPECT_EQ(form.tReport.Text().substr(0, 3), "62 ");
    EXPECT_EQ(deepest, 1);  // the second page waited for the first: no repaint inside a repaint
}

TEST_F(BinFile, ReadsWholeFilesAsTextOrGivesTheErrorNumber) {
    const std::string bytes("line\r\n\0\xFF", 8);
    WriteFile(dir / "t.txt", bytes);
    std::string path = dir / "t.txt", missing = dir / "none.txt";
    EXPECT_EQ(bin.ReadAll(path), bytes);
    EXPECT_EQ(bin.ReadAll(path, 4), "line");
    EXPECT_EQ(bin.ReadAll(missing), "53");
}
