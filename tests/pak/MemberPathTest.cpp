#include <gtest/gtest.h>

#include <sstream>

#include "fixtures/ByteWriter.h"
#include "pak/MemberPath.h"
#include "pak/ZipReader.h"

namespace {

TEST(MemberPath, NamesBelowTheFolderArePaths) {
    EXPECT_EQ(MemberPath("/d/", "a.txt"), "/d/a.txt");
    EXPECT_EQ(MemberPath("/d/", "data\\maps\\a.map"), "/d/data/maps/a.map");
    EXPECT_EQ(MemberPath("/d/", "data/a"), "/d/data/a");
    EXPECT_EQ(MemberPath("/d/", "..a\\b..c\\...txt"), "/d/..a/b..c/...txt");
    EXPECT_EQ(MemberPath("/d/", "sub\\.\\a"), "/d/sub/./a");
    // Only a letter before the colon makes a drive.
    EXPECT_EQ(MemberPath("", "':bin"), "':bin");
    EXPECT_EQ(MemberPath("", "1:x"), "1:x");
    EXPECT_EQ(MemberPath("", "ab:c"), "ab:c");
}

TEST(MemberPath, NamesThatLeaveTheFolderAreRefused) {
    for (const std::string& name : std::vector<std::string>{"", ".", "..", "../a", "..\\a", "a\\..\\..\\b", "a/..", "/etc/passwd", "\\a", "c:", "c:a", "Z:\\a",
          "a\\", "a/", "a\\.", std::string("a\0b", 3)}) {
        EXPECT_FALSE(IsSafeMemberName(name)) << name;
        EXPECT_EQ(MemberPath("/d/", name), "") << name;
    }
}

// An archive whose only entry is named "':bin" is not a drive path: found by
// fuzzing, where the harness first took every second-place colon for one.
TEST(MemberPath, FuzzedNameWithAColonIsExtractedBelowTheFolder) {
    fixtures::TempDir tmp;
    fixtures::ByteWriter zip;
    zip.U32(0x04034B50).U16(20).U16(0).U16(0).U16(0).U16(0).U32(0).U32(1).U32(1).U16(5).U16(0).Bytes("':bin").Bytes("x");
    zip.U32(0x02014B50).U16(20).U16(20).U16(0).U16(0).U16(0).U16(0).U32(0).U32(1).U32(1);
    zip.U16(5).U16(0).U16(0).U16(0).U16(0).U32(0).U32(0).Bytes("':bin");
    zip.U32(0x06054B50).U16(0).U16(0).U16(1).U16(1).U32(51).U32(36).U16(0);
    fixtures::WriteFile(tmp / "f.zip", zip.Data());
    std::ostringstream out, err;
    EXPECT_TRUE(ExtractZipToFolder(tmp / "f.zip", tmp.Path(), out, err)) << err.str();
    EXPECT_EQ(fixtures::ReadFile(tmp / "':bin"), "x");
}

}  // namespace

TEST(MemberPath, LineEndsInANameAreRefusedSoTheCommandFileKeepsItsLines) {
    EXPECT_FALSE(IsSafeMemberName("x\r\nDel \"victim"));
    EXPECT_FALSE(IsSafeMemberName("a\nb"));
    EXPECT_FALSE(IsSafeMemberName("a\rb"));
    EXPECT_EQ(MemberPath("/d/", "a\nb"), "");
}
