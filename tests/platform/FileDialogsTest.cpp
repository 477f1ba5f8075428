#include <gtest/gtest.h>

#include "fixtures/ScriptedDialogs.h"
#include "platform/FileDialogs.h"

using fixtures::ScriptedFileDialogs;

namespace {
OPENFILENAME Record(const std::string& proposed = {}, uint32_t size = 260) {
    OPENFILENAME r;
    r.lStructSize = kOpenFileNameSize;
    r.lpstrFile = proposed + std::string(size - proposed.size(), '\0');
    r.nMaxFile = size;
    r.lpstrFileTitle = std::string(size, '\0');
    r.nMaxFileTitle = size;
    r.lpstrFilter = std::string("Pak\0*.pak\0Mesh\0*.msh;*.mdl\0\0", 28);
    r.nFilterIndex = 1;
    return r;
}
}  // namespace

TEST(FileDialogCalls, TheRecordIsCheckedBeforeAnythingIsShown) {
    ScriptedFileDialogs user;
    user.Choose("/a/b");
    OPENFILENAME r = Record();
    r.lStructSize = 88;
    EXPECT_EQ(GetOpenFileNameA(&r), 0);
    EXPECT_EQ(CommDlgExtendedError(), CDERR_STRUCTSIZE);
    r = Record();
    r.nMaxFile = 0;
    EXPECT_EQ(GetSaveFileNameA(&r), 0);
    EXPECT_EQ(CommDlgExtendedError(), CDERR_INITIALIZATION);
    EXPECT_EQ(GetOpenFileNameA(nullptr), 0);
    EXPECT_TRUE(user.Requests.empty());
}

TEST(FileDialogCalls, AChoiceFillsTheBuffersAndOffsets) {
    ScriptedFileDialogs user;
    user.Choose("/games/data/world.msh", 2);
    OPENFILENAME r = Record("old.pak");
    r.lpstrDefExt = "pak";
    r.lpstrTitle = "Pick";
    r.nFilterIndex = 7;  // beyond the list: the chooser starts at the first
    ASSERT_EQ(GetOpenFileNameA(&r), 1);
    EXPECT_EQ(CommDlgExtendedError(), 0u);
    const FileDialogRequest& q = user.Requests.at(0);
    EXPECT_EQ(q.fileName, "old.pak");
    EXPECT_EQ(q.filterIndex, 1);
    EXPECT_EQ(q.title, "Pick");
    EXPECT_EQ(q.filters.at(1), (std::pair<std::string, std::string>{"Mesh", "*.msh;*.mdl"}));
    EXPECT_EQ(r.lpstrFile.size(), 260u);
    EXPECT_EQ(r.lpstrFile.substr(0, 22), std::string("/games/data/world.msh\0", 22));
    EXPECT_EQ(r.lpstrFileTitle.substr(0, 10), std::string("world.msh\0", 10));
    EXPECT_EQ(r.nFileOffset, 12);
    EXPECT_EQ(r.nFileExtension, 18);
    EXPECT_EQ(r.nFilterIndex, 2u);
    EXPECT_NE(r.Flags & OFN_EXTENSIONDIFFERENT, 0u);
}

TEST(FileDialogCalls, MultiSelectListsTheFolderThenTheNames) {
    ScriptedFileDialogs user;
    user.ChooseMany({"/d/a.pak", "/d/b.pak", "/elsewhere/c.pak"}).Choose("/d/only.pak");
    OPENFILENAME r = Record({}, 8192);
    r.Flags = OFN_ALLOWMULTISELECT;
    ASSERT_EQ(GetOpenFileNameA(&r), 1);
    EXPECT_EQ(r.lpstrFile.substr(0, 34), std::string("/d\0a.pak\0b.pak\0/elsewhere/c.pak\0\0", 34));
    EXPECT_EQ(r.nFileOffset, 3);
    r = Record({}, 8192);
    r.Flags = OFN_ALLOWMULTISELECT;
    ASSERT_EQ(GetOpenFileNameA(&r), 1);
    EXPECT_EQ(r.lpstrFile.substr(0, 13), std::string("/d/only.pak\0\0", 13));
}

TEST(FileDialogCalls, ABufferTooSmallTellsTheSizeNeeded) {
    ScriptedFileDialogs user;
    user.Choose("/a/very/long/path.pak");
    OPENFILENAME r = Record({}, 10);
    EXPECT_EQ(GetSaveFileNameA(&r), 0);
    EXPECT_EQ(CommDlgExtendedError(), FNERR_BUFFERTOOSMALL);
    EXPECT_EQ(static_cast<unsigned char>(r.lpstrFile[0]), 22);
    EXPECT_EQ(r.lpstrFile[1], '\0');
    EXPECT_TRUE(user.Requests.at(0).save);
}

TEST(FileDialogCalls, FilterPairsStopAtTheEmptyName) {
    EXPECT_EQ(SplitFilterPairs(std::string("A\0*.a\0\0B\0*.b\0\0", 15)).size(), 1u);
    EXPECT_TRUE(SplitFilterPairs("").empty());
    const auto odd = SplitFilterPairs(std::string("A\0*.a\0Lone", 10));
    ASSERT_EQ(odd.size(), 2u);
    EXPECT_EQ(odd[1].first, "Lone");
    EXPECT_EQ(odd[1].second, "");
}
