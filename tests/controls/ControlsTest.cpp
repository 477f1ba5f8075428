#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <functional>
#include <utility>

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
    EXPECT_EQ(lv.ItemsInAddOrder().size(), 4u);
}

namespace {
std::string Padded(int32_t n) {
    std::string digits = std::to_string(n);
    return std::string(16 - digits.size(), ' ') + digits;
}
}  // namespace

// Columns kept as numbers and as the extension read, sort and copy as the
// texts that they stand for, whatever else is set on the item.
TEST(ListViewModel, CompactColumnsReadAndSortAsTheirTexts) {
    struct Case {
        const char* what;
        std::function<void(ListItem&)> set;
        std::vector<std::string> columns;  // SubItems(1) to SubItems(4)
    };
    const std::vector<Case> cases = {
        {"two numbers and the extension",
         [](ListItem& i) {
             i.SetSubItemNumber(1, 1234);
             i.SetSubItemNumber(2, INT32_MIN);
             i.SetSubItemExtension(3);
         },
         {Padded(1234), Padded(INT32_MIN), "gz", ""}},
        {"the extension follows the name",
         [](ListItem& i) {
             i.SetSubItemExtension(3);
             i.Text = "readme";
         },
         {"", "", "", ""}},
        {"a text among numbers",
         [](ListItem& i) {
             i.SetSubItemNumber(1, -1);
             i.SetSubItemExtension(3);
             i.SubItems(2) = "two";
             i.SetSubItemNumber(1, 0);
         },
         {Padded(0), "two", "gz", ""}},
        {"a number beyond the compact columns",
         [](ListItem& i) {
             i.SetSubItemNumber(4, 7);
             i.SetSubItemExtension(1);
         },
         {"gz", "", "", Padded(7)}},
        {"a column copied to another of the same item",
         [](ListItem& i) {
             i.SetSubItemNumber(1, 99);
             i.SubItems(2) = i.SubItems(1);
         },
         {Padded(99), Padded(99), "", ""}},
        {"an empty text keeps nothing",
         [](ListItem& i) {
             i.SetSubItemNumber(1, 5);
             i.SubItems(1) = "";
         },
         {"", "", "", ""}},
    };
    for (const Case& c : cases) {
        ListView lv;
        ListItem& item = lv.Add("a.tar.gz");
        c.set(item);
        const ListItem copy = item;
        ListItem assigned;
        assigned = item;
        for (int32_t k = 1; k <= 4; ++k) {
            const std::string& want = c.columns[static_cast<size_t>(k) - 1];
            EXPECT_EQ(std::as_const(item).SubItems(k), want) << c.what << " column " << k;
            EXPECT_EQ(item.SubItems(k), want) << c.what << " column " << k;
            EXPECT_EQ(copy.SubItems(k), want) << c.what << " copy, column " << k;
            EXPECT_EQ(assigned.SubItems(k), want) << c.what << " assigned, column " << k;
        }
    }
    ListView lv;
    EXPECT_THROW(lv.Add("x").SubItems(65), RuntimeError);
    EXPECT_THROW(lv.Add("x").SetSubItemNumber(0, 1), RuntimeError);

    // A list of numbers sorts as the same list of their padded texts, the
    // negative ones included, in both orders and for a column of each form.
    const std::vector<int32_t> values = {5, -5, 10, -10, 0, 1234, INT32_MIN, INT32_MAX, 10, -1};
    ListView numbers, texts;
    for (size_t i = 0; i < values.size(); ++i) {
        const std::string name = "m" + std::to_string(i) + (i % 2 ? ".Dat" : ".bin");
        ListItem& n = numbers.Add(name);
        n.SetSubItemNumber(1, values[i]);
        n.SetSubItemExtension(3);
        ListItem& t = texts.Add(name);
        t.SubItems(1) = Padded(values[i]);
        t.SubItems(3) = name.substr(name.find('.') + 1);
    }
    for (int32_t key : {1, 3}) {
        for (int32_t order : {0, 1}) {
            numbers.SetSortKey(key);
            numbers.SetSortOrder(order);
            texts.SetSortKey(key);
            texts.SetSortOrder(order);
            for (int32_t i = 1; i <= numbers.Count(); ++i)
                EXPECT_EQ(numbers.Item(i).Text, texts.Item(i).Text) << "key " << key << " order " << order;
        }
    }
    // Texts compare as the platform's C strings: up to a zero byte.
    ListView zeros;
    for (const std::string& n : {std::string("a\0z", 3), std::string("A\0b", 3), std::string("a")}) zeros.Add(n);
    EXPECT_EQ(zeros.Item(1).Text, std::string("a\0z", 3));
    EXPECT_EQ(zeros.Item(3).Text, "a");
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
    EXPECT_EQ(fixtures::ErrorOf([&] { box.SetPath(dir / "file"); }).Number, 76);
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
