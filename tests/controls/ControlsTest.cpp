#include <gtest/gtest.h>

#include <filesystem>

#include "controls/Controls.h"
#include "controls/FileControls.h"
#include "controls/ListView.h"
#include "fixtures/ByteWriter.h"
#include "platform/Runtime.h"

TEST(ScrollBarModel, RaisesChangeOnceForANewValueAndKeepsInRange) {
    ScrollBar bar;
    int changes = 0;
    bar.Change.Connect([&] { ++changes; });
    bar.SetMax(10);
    bar.SetValue(4);
    bar.SetValue(4);
    EXPECT_EQ(changes, 1);
    EXPECT_THROW(bar.SetValue(11), RuntimeError);
    EXPECT_EQ(bar.Value(), 4);
    bar.SetMax(2);  // a lower Max pulls the value down, with an event
    EXPECT_EQ(bar.Value(), 2);
    EXPECT_EQ(changes, 2);
    EXPECT_THROW(bar.SetMax(40000), RuntimeError);
}

TEST(TextBoxModel, ATextBeyondItsCapacityRaisesOutOfMemoryAndKeepsTheOld) {
    TextBox box("t", 10);
    int changes = 0;
    box.Change.Connect([&] { ++changes; });
    box.SetText("0123456789");
    try {
        box.SetText("01234567890");
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.Number, 7);
    }
    EXPECT_EQ(box.Text(), "0123456789");
    EXPECT_EQ(changes, 1);
}

TEST(ListViewModel, SortsByTheColumnTextsCaseInsensitivelyAndKeepsTheAddOrder) {
    ListView lv;
    for (const char* n : {"beta", "Alpha", "gamma", "alpha"}) lv.Add(n).SubItems(3) = n;
    EXPECT_EQ(lv.Item(1).Text, "Alpha");
    EXPECT_EQ(lv.Item(2).Text, "alpha");  // equal texts keep their order
    EXPECT_EQ(lv.Item(4).Text, "gamma");
    lv.SetSortOrder(1);
    EXPECT_EQ(lv.Item(1).Text, "gamma");
    lv.Sorted = false;
    lv.Refresh();
    EXPECT_EQ(lv.Item(1).Text, "beta");
    EXPECT_EQ(lv.ItemsInAddOrder()[2]->Text, "gamma");
    EXPECT_EQ(lv.ItemsInAddOrder()[2]->AddIndex, 3);
}

TEST(ListViewModel, SelectedItemFollowsTheFocusAndEmptiesWithTheList) {
    ListView lv;
    for (const char* n : {"a", "b", "c"}) lv.Add(n);
    EXPECT_EQ(lv.SelectedItem(), nullptr);
    lv.SelectOnly(2);
    lv.SetSelected(3, true);
    EXPECT_EQ(lv.SelectedItem()->Text, "c");
    lv.SetFocusItem(2);
    EXPECT_EQ(lv.SelectedItem()->Text, "b");
    lv.SelectOnly(1);
    EXPECT_FALSE(lv.Item(2).Selected);
    lv.Clear();
    EXPECT_EQ(lv.SelectedItem(), nullptr);
    EXPECT_EQ(lv.Count(), 0);
    EXPECT_THROW(lv.Item(1), RuntimeError);
}

TEST(FolderListModel, ListsTheChainAndTheSubFoldersAndRefusesMissingFolders) {
    fixtures::TempDir dir;
    std::filesystem::create_directories(dir / "b");
    std::filesystem::create_directories(dir / "a");
    fixtures::WriteFile(dir / "file", "x");
    DirListBox box;
    int changes = 0;
    box.Change.Connect([&] { ++changes; });
    box.SetPath(dir.Path());
    EXPECT_EQ(box.List(0), "/");
    EXPECT_EQ(box.List(box.CurrentIndex()), dir.Path());
    EXPECT_EQ(box.ListCount(), box.CurrentIndex() + 3);
    EXPECT_EQ(box.List(box.CurrentIndex() + 1), dir / "a");
    box.SetPath("a");
    EXPECT_EQ(box.Path(), dir / "a");
    box.SetPath("..");
    EXPECT_EQ(box.Path(), dir.Path());
    EXPECT_EQ(changes, 3);
    box.SetPath(dir.Path() + "/");
    EXPECT_EQ(changes, 3);
    try {
        box.SetPath(dir / "file");
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.Number, 76);
    }
    EXPECT_EQ(box.Path(), dir.Path());
}

TEST(FileListModel, SelectingRaisesClickAndAFolderChangeForgetsTheSelection) {
    fixtures::TempDir dir;
    fixtures::WriteFile(dir / "x", "");
    fixtures::WriteFile(dir / "y", "");
    std::filesystem::create_directories(dir / "sub");
    FileListBox box;
    int clicks = 0;
    box.Click.Connect([&] { ++clicks; });
    box.SetPath(dir.Path());
    EXPECT_EQ(box.ListCount(), 2);
    EXPECT_EQ(box.FileName(), "");
    EXPECT_TRUE(box.Select("y"));
    EXPECT_TRUE(box.Select("y"));
    EXPECT_EQ(clicks, 2);
    EXPECT_FALSE(box.Select("sub"));
    box.SetPath(dir / "sub");
    EXPECT_EQ(box.FileName(), "");
    EXPECT_THROW(box.SetPath(dir / "none"), RuntimeError);
    EXPECT_EQ(box.Path(), dir / "sub");
}
