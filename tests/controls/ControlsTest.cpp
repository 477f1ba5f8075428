#include <gtest/gtest.h>

#include <climits>
#include <filesystem>

#include "controls/Controls.h"
#include "controls/FileControls.h"
#include "controls/ListView.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/ErrorOf.h"
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
    EXPECT_EQ(fixtures::ErrorOf([&] { box.SetText("01234567890"); }).Number, 7);
    EXPECT_EQ(box.Text(), "0123456789");
    EXPECT_EQ(changes, 1);
}

// Sorted, the list follows the key column's texts as the platform's C strings
// (up to a zero byte), case-insensitively; equal texts keep the add order.
TEST(ListViewModel, SortsByTheColumnTextsCaseInsensitivelyAndKeepsTheAddOrder) {
    ListView lv;
    const std::string names[] = {"beta", "Alpha", "gamma", "alpha", std::string("Alpha\0z", 7)};
    const int32_t numbers[] = {10, -5, 2, INT32_MIN, -10};
    for (int i = 0; i < 5; ++i) lv.Add(names[i]).SetSubItemNumber(1, numbers[i]);
    auto order = [&] {
        std::string texts;
        for (int32_t i = 1; i <= lv.Count(); ++i) texts += lv.Item(i).Text.substr(0, 5) + " ";
        return texts;
    };
    EXPECT_EQ(order(), "Alpha alpha Alpha beta gamma ");
    lv.SetSortOrder(1);
    EXPECT_EQ(order(), "gamma beta Alpha alpha Alpha ");
    lv.SetSortKey(1);  // padded numbers, a blank before the sign
    EXPECT_EQ(order(), "alpha Alpha beta Alpha gamma ");
    lv.Sorted = false;
    lv.Refresh();
    EXPECT_EQ(order(), "beta Alpha gamma alpha Alpha ");
}

// Columns kept as numbers and as the extension read, and copy with their
// item, as the texts that they stand for, whatever else is set on the item.
TEST(ListViewModel, CompactColumnsReadAsTheirTexts) {
    auto padded = [](int32_t n) {
        std::string digits = std::to_string(n);
        return std::string(16 - digits.size(), ' ') + digits;
    };
    auto expectColumns = [](ListItem& item, const std::vector<std::string>& want) {
        const ListItem copy = item;
        ListItem assigned;
        assigned = item;
        for (int32_t k = 1; k <= 4; ++k) {
            SCOPED_TRACE(k);
            EXPECT_EQ(item.SubItems(k), want[k - 1]);
            EXPECT_EQ(copy.SubItems(k), want[k - 1]);
            EXPECT_EQ(assigned.SubItems(k), want[k - 1]);
        }
    };
    ListView lv;
    ListItem& files = lv.Add("a.tar.gz");
    files.SetSubItemNumber(1, 1234);
    files.SetSubItemNumber(2, INT32_MIN);
    files.SetSubItemExtension(3);
    expectColumns(files, {padded(1234), padded(INT32_MIN), "gz", ""});
    files.Text = "readme";
    expectColumns(files, {padded(1234), padded(INT32_MIN), "", ""});
    // A text turns the item to texts; here the text of its own column 1.
    files.Text = "b.dat";
    files.SubItems(2) = files.SubItems(1);
    files.SetSubItemNumber(1, 0);
    expectColumns(files, {padded(0), padded(1234), "dat", ""});
    ListItem& wide = lv.Add("c.gz");
    wide.SetSubItemNumber(4, 7);
    wide.SetSubItemExtension(1);
    expectColumns(wide, {"gz", "", "", padded(7)});
    EXPECT_THROW(wide.SubItems(65), RuntimeError);
    EXPECT_THROW(wide.SetSubItemNumber(0, 1), RuntimeError);
}

TEST(ListViewModel, SelectedItemFollowsTheFocusAndEmptiesWithTheList) {
    ListView lv;
    for (const char* n : {"a", "b", "c"}) lv.Add(n);
    lv.SelectOnly(2);
    lv.SetSelected(3, true);
    EXPECT_EQ(lv.SelectedItem()->Text, "c");
    lv.SetFocusItem(2);
    EXPECT_EQ(lv.SelectedItem()->Text, "b");
    lv.SelectOnly(1);
    EXPECT_FALSE(lv.Item(2).Selected);
    lv.Clear();
    EXPECT_EQ(lv.SelectedItem(), nullptr);
    EXPECT_THROW(lv.Item(1), RuntimeError);
}

TEST(FileSystemLists, TheFolderListHoldsTheChainAndTheFileListTheFiles) {
    fixtures::TempDir dir;
    std::filesystem::create_directories(dir / "b");
    std::filesystem::create_directories(dir / "a");
    fixtures::WriteFile(dir / "x", "");
    fixtures::WriteFile(dir / "y", "");
    DirListBox folders;
    int changes = 0;
    folders.Change.Connect([&] { ++changes; });
    folders.SetPath(dir.Path());
    EXPECT_EQ(folders.List(0), "/");
    EXPECT_EQ(folders.List(folders.CurrentIndex()), dir.Path());
    EXPECT_EQ(folders.ListCount(), folders.CurrentIndex() + 3);
    EXPECT_EQ(folders.List(folders.CurrentIndex() + 1), dir / "a");
    folders.SetPath("a");
    EXPECT_EQ(folders.Path(), dir / "a");
    folders.SetPath("..");
    EXPECT_EQ(folders.Path(), dir.Path());
    folders.SetPath(dir.Path() + "/");  // the same folder: no change
    EXPECT_EQ(changes, 3);
    EXPECT_EQ(fixtures::ErrorOf([&] { folders.SetPath(dir / "x"); }).Number, 76);
    EXPECT_EQ(folders.Path(), dir.Path());

    // Selecting a file raises Click, also again; another folder forgets it.
    FileListBox files;
    int clicks = 0;
    files.Click.Connect([&] { ++clicks; });
    files.SetPath(dir.Path());
    EXPECT_EQ(files.ListCount(), 2);
    EXPECT_TRUE(files.Select("y"));
    EXPECT_TRUE(files.Select("y"));
    EXPECT_EQ(clicks, 2);
    EXPECT_FALSE(files.Select("a"));
    EXPECT_EQ(fixtures::ErrorOf([&] { files.List(2); }).Number, 381);
    files.SetPath(dir / "a");
    EXPECT_EQ(files.FileName(), "");
    EXPECT_EQ(fixtures::ErrorOf([&] { files.SetPath(dir / "none"); }).Number, 76);
    EXPECT_EQ(files.Path(), dir / "a");
}
