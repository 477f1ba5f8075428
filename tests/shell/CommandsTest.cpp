#include <gtest/gtest.h>

#include "fixtures/ScriptedDialogs.h"
#include "shell/frmMain.h"

TEST(Commands, ColumnClicksSortAndTellTheOrderByTheIcon) {
    frmMain form;
    // Sizes padded to 16 characters sort by number.
    const std::pair<const char*, const char*> members[] = {
        {"b.dat", "               1"}, {"a.txt", "               9"}, {"c.bin", "              10"}};
    for (const auto& [name, size] : members) form.oListView.Add(name).SubItems(1) = size;
    struct Row {
        int32_t column;
        const char *icon1, *icon2, *order;
    };
    // The first click on the sorted column turns it round; another column
    // takes the icon and sorts ascending.
    const Row rows[] = {{1, "DESC", "", "cba"}, {1, "ASC", "", "abc"}, {2, "", "ASC", "bac"}, {2, "", "DESC", "cab"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.order);
        form.oListView_ColumnClick(row.column);
        std::string order;
        for (int32_t i = 1; i <= form.oListView.Count(); ++i) order += form.oListView.Item(i).Text[0];
        EXPECT_EQ(order, row.order);
        EXPECT_EQ(form.oListView.Column(1).Icon, row.icon1);
        EXPECT_EQ(form.oListView.Column(2).Icon, row.icon2);
        EXPECT_EQ(form.oListView.SortKey(), row.column - 1);
        EXPECT_EQ(form.m_lSortColumn, row.column);
    }
}

TEST(Commands, EntriesDoTheirOneThing) {
    fixtures::ScriptedMessageBoxes boxes;
    frmMain form;
    std::vector<std::string> opened;  // each form with the mouse pointer it ran under
    form.ShowModalForm = [&](const std::string& name) { opened.push_back(name + std::to_string(form.screen.MousePointer())); };
    bool closed = false;
    form.CloseWindow = [&] { closed = true; };
    // Save without a file object does nothing, wherever it comes from.
    form.mnuSubFile_Click(1);
    form.oToolbar_ButtonClick(3);
    form.oListView.Add("m");
    form.oListView.SelectOnly(1);
    form.oListView_KeyPress(vbKeyReturn);
    form.mnuSubFile_Click(0);
    form.mnuSubTools[2]->Click.Raise();
    form.oToolbar_ButtonClick(2);
    form.mnuSubTools_Click(1);
    EXPECT_EQ(opened, (std::vector<std::string>{"frmOpt0", "frmScript0"}));
    EXPECT_EQ(form.screen.MousePointer(), 0);
    EXPECT_FALSE(closed);
    form.oStatusBar.PanelDblClick.Raise(2);
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, "Coded by Dovrin");
    EXPECT_EQ(boxes.Calls[0].buttons, vbOKOnly);
    EXPECT_EQ(boxes.Calls[0].title, "");
    form.mnuSubFile[4]->Click.Raise();
    EXPECT_TRUE(closed);
}
