#include <gtest/gtest.h>

#include "fixtures/ScriptedDialogs.h"
#include "platform/FileDialogs.h"

using fixtures::ScriptedFileDialogs;

namespace {
OPENFILENAME Record(uint32_t size = 260, uint32_t flags = 0) {
    OPENFILENAME r;
    r.lStructSize = kOpenFileNameSize;
    r.lpstrFile = std::string(size, '\0');
    r.nMaxFile = size;
    r.lpstrFileTitle = std::string(size, '\0');
    r.nMaxFileTitle = size;
    // The empty name ends the list: the pair behind it is not offered.
    r.lpstrFilter = std::string("Pak\0*.pak\0Mesh\0*.msh;*.mdl\0\0B\0*.b\0\0", 35);
    r.Flags = flags;
    return r;
}
}  // namespace

TEST(FileDialogCalls, BadRecordsAndSmallBuffersFailWithTheirCodes) {
    ScriptedFileDialogs user;
    user.Choose("/a/very/long/path.pak");
    OPENFILENAME r = Record(0);
    EXPECT_EQ(GetSaveFileNameA(&r), 0);
    EXPECT_EQ(CommDlgExtendedError(), CDERR_INITIALIZATION);
    EXPECT_TRUE(user.Requests.empty());
    // Too small a buffer for the choice tells the size needed.
    r = Record(10);
    EXPECT_EQ(GetSaveFileNameA(&r), 0);
    EXPECT_EQ(CommDlgExtendedError(), FNERR_BUFFERTOOSMALL);
    EXPECT_EQ(static_cast<unsigned char>(r.lpstrFile[0]), 22);
    EXPECT_TRUE(user.Requests.at(0).save);
}

TEST(FileDialogCalls, AChoiceFillsTheBufferAndTheFilterIndex) {
    ScriptedFileDialogs user;
    user.Choose("/games/data/world.msh", 2);
    OPENFILENAME r = Record();
    r.lpstrDefExt = "pak";
    r.nFilterIndex = 7;  // beyond the list: the chooser starts at the first
    ASSERT_EQ(GetOpenFileNameA(&r), 1);
    EXPECT_EQ(user.Requests.at(0).filterIndex, 1);
    EXPECT_EQ(user.Requests[0].filters,
              (std::vector<std::pair<std::string, std::string>>{{"Pak", "*.pak"}, {"Mesh", "*.msh;*.mdl"}}));
    EXPECT_EQ(r.lpstrFile.substr(0, 22), std::string("/games/data/world.msh\0", 22));
    EXPECT_EQ(r.nFilterIndex, 2u);
}

TEST(FileDialogCalls, MultiSelectListsTheFolderThenTheNames) {
    ScriptedFileDialogs user;
    user.ChooseMany({"/d/a.pak", "/d/b.pak", "/elsewhere/c.pak"}).Choose("/d/only.pak");
    OPENFILENAME r = Record(8192, OFN_ALLOWMULTISELECT);
    ASSERT_EQ(GetOpenFileNameA(&r), 1);
    EXPECT_EQ(r.lpstrFile.substr(0, 34), std::string("/d\0a.pak\0b.pak\0/elsewhere/c.pak\0\0", 34));
    r = Record(8192, OFN_ALLOWMULTISELECT);
    ASSERT_EQ(GetOpenFileNameA(&r), 1);
    EXPECT_EQ(r.lpstrFile.substr(0, 13), std::string("/d/only.pak\0\0", 13));
}
