#include <gtest/gtest.h>

#include <vector>

#include "platform/MessageBox.h"
#include "shell/frmMain.h"

namespace {

class RecordingBoxes : public IMessageBoxService {
public:
    int32_t Show(const std::string& prompt, int32_t buttons, const std::string& title) override {
        shown.push_back({prompt, buttons, title});
        return vbOK;
    }
    struct Box {
        std::string prompt;
        int32_t buttons;
        std::string title;
    };
    std::vector<Box> shown;
};

class Commands : public ::testing::Test {
protected:
    void SetUp() override {
        SetMessageBoxService(&boxes);
        for (const char* name : {"b.dat", "a.txt", "c.bin"}) {
            ListItem& item = form.oListView.Add(name);
            item.SubItems(1) = std::string(name) == "a.txt" ? "               9" : "              10";
        }
    }
    void TearDown() override { SetMessageBoxService(nullptr); }
    std::string Order() {
        std::string s;
        for (int32_t i = 1; i <= form.oListView.Count(); ++i) s += form.oListView.Item(i).Text.substr(0, 1);
        return s;
    }
    RecordingBoxes boxes;
    frmMain form;
};

}  // namespace

TEST_F(Commands, TheMenusAndToolbarStartAsDesigned) {
    EXPECT_FALSE(form.mnuSubFile[0]->Enabled());
    EXPECT_TRUE(form.mnuSubFile[1]->Enabled());
    EXPECT_TRUE(form.mnuSubFile[2]->Enabled());
    EXPECT_TRUE(form.mnuSubFile[3]->IsSeparator());
    EXPECT_EQ(form.mnuSubFile[4]->Caption(), "E&xit");
    EXPECT_FALSE(form.mnuSubTools[0]->Enabled());
    EXPECT_EQ(form.mnuSubTools[0]->Shortcut, "Ctrl+U");
    EXPECT_EQ(form.mnuSubTools[2]->Shortcut, "Ctrl+O");
    EXPECT_EQ(form.oToolbar.Buttons(2).ToolTipText, "Extract");
    EXPECT_EQ(form.oToolbar.Buttons(3).ToolTipText, "Save as ...");
    EXPECT_EQ(form.oToolbar.Buttons(4).ToolTipText, "Quick view ...");
    EXPECT_EQ(form.oToolbar.Buttons(1).Kind, ToolButton::Separator);
}

TEST_F(Commands, ColumnClicksSortAndTellTheOrderByTheIcon) {
    EXPECT_EQ(Order(), "abc");
    form.oListView_ColumnClick(1);  // the first click on the sorted column turns it round
    EXPECT_EQ(form.oListView.Column(1).Icon, "DESC");
    EXPECT_EQ(Order(), "cba");
    form.oListView_ColumnClick(1);
    EXPECT_EQ(form.oListView.Column(1).Icon, "ASC");
    EXPECT_EQ(Order(), "abc");
    form.oListView_ColumnClick(2);  // padded sizes sort by number
    EXPECT_EQ(form.oListView.Column(1).Icon, "");
    EXPECT_EQ(form.oListView.Column(2).Icon, "ASC");
    EXPECT_EQ(form.oListView.SortKey(), 1);
    EXPECT_EQ(Order(), "abc");
    form.oListView_ColumnClick(2);
    EXPECT_EQ(form.oListView.Column(2).Icon, "DESC");
    EXPECT_EQ(Order().substr(2), "a");
    EXPECT_EQ(form.m_lSortColumn, 2);
}

TEST_F(Commands, SaveWithoutAFileDoesNothing) {
    form.SaveCommand();
    form.mnuSubFile_Click(1);
    form.oToolbar_ButtonClick(3);
    form.oListView.SelectOnly(1);
    form.oListView_DblClick();
    EXPECT_TRUE(boxes.shown.empty());
    EXPECT_EQ(form.screen.MousePointer(), 0);
}

TEST_F(Commands, ThePanelDoubleClickNamesTheAuthor) {
    form.oStatusBar.PanelDblClick.Raise(2);
    ASSERT_EQ(boxes.shown.size(), 1u);
    EXPECT_EQ(boxes.shown[0].prompt, "Coded by Dovrin");
    EXPECT_EQ(boxes.shown[0].buttons, vbOKOnly);
    EXPECT_EQ(boxes.shown[0].title, "");
}

TEST_F(Commands, ExitClosesTheWindowAndToolsOpenTheirDialogs) {
    std::vector<std::string> opened;
    form.ShowModalForm = [&](const std::string& name) { opened.push_back(name); };
    form.mnuSubTools[2]->Click.Raise();
    form.oToolbar_ButtonClick(2);
    form.mnuSubTools_Click(1);
    EXPECT_EQ(opened, (std::vector<std::string>{"frmOpt", "frmScript"}));
    bool closed = false;
    form.CloseWindow = [&] { closed = true; };
    form.mnuSubFile[4]->Click.Raise();
    EXPECT_TRUE(closed);
}
