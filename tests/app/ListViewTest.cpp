#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QHeaderView>
#include <QTest>
#include <QTreeView>
#include <string>

#include "AppTestSupport.h"
#include "MainWindow.h"
#include "controls/ListView.h"
#include "shell/frmMain.h"

using apptest::DoubleClick;

namespace {

// Members as a PAK's directory fills the list: name, packed and original
// size, extension.
void AddMember(ListView& list, const std::string& name, int32_t packed, int32_t original) {
    ListItem& item = list.Add(name);
    item.SetSubItemNumber(1, packed);
    item.SetSubItemNumber(2, original);
    item.SetSubItemExtension(3);
}

class ListPane : public ::testing::Test {
protected:
    void SetUp() override {
        ListView& list = form.oListView;
        AddMember(list, "walls.btm", 300, 900);
        AddMember(list, "Alpha.plt", 1000, 1000);
        AddMember(list, "zone.msh", 20, 75);
        AddMember(list, "b\xE9ton.txt", 5, 5);
        list.Refresh();
        list.SetVisible(true);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        view = window.findChild<QTreeView*>(QStringLiteral("oListView"));
        ASSERT_NE(view, nullptr);
    }

    QPoint Row(int r) { return view->visualRect(view->model()->index(r, 0)).center(); }
    void ClickHead(int section) {
        QHeaderView* h = view->header();
        const QPoint middle(h->sectionViewportPosition(section) + h->sectionSize(section) / 2, h->height() / 2);
        QTest::mouseClick(h->viewport(), Qt::LeftButton, {}, middle);
    }
    // The texts of a column, top to bottom, each followed by a blank.
    std::string Column(int column) {
        std::string texts;
        for (int r = 0; r < view->model()->rowCount(); ++r)
            texts += view->model()->index(r, column).data().toString().trimmed().toStdString() + " ";
        return texts;
    }
    bool Arrow(int section) {
        return !view->model()->headerData(section, Qt::Horizontal, Qt::DecorationRole).value<QIcon>().isNull();
    }

    frmMain form;
    MainWindow window{form};
    QTreeView* view = nullptr;
};

}  // namespace

// The control sorts by name without regard to case; names are bytes of the
// Windows code page. A header click sorts through the form, shows the arrow,
// and keeps the selected item selected.
TEST_F(ListPane, ShowsTheItemsInTheControlsOrderAndAHeaderClickSortsThem) {
    EXPECT_EQ(Column(0), "Alpha.plt b\xC3\xA9ton.txt walls.btm zone.msh ");
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, Row(3));
    ClickHead(1);
    EXPECT_EQ(Column(0), "b\xC3\xA9ton.txt zone.msh walls.btm Alpha.plt ");
    EXPECT_TRUE(Arrow(1) && !Arrow(0));
    QCoreApplication::processEvents();
    const QModelIndexList rows = view->selectionModel()->selectedRows();
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0].row(), 1);
    EXPECT_EQ(view->currentIndex().row(), 1);

    ClickHead(1);
    EXPECT_EQ(Column(0), "Alpha.plt walls.btm zone.msh b\xC3\xA9ton.txt ");
    // Back to the names: the first column takes the arrow, the second loses it.
    ClickHead(0);
    EXPECT_TRUE(Arrow(0) && !Arrow(1));
    EXPECT_EQ(Column(0), "Alpha.plt b\xC3\xA9ton.txt walls.btm zone.msh ");
}

// Clicks with Ctrl and Shift reach the items' selection, and a selection made
// by the logic shows in the view.
TEST_F(ListPane, MirrorsTheSelectionBothWaysAndPassesOnDoubleClicksAndKeys) {
    ListView& list = form.oListView;
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, Row(0));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ControlModifier, Row(2));
    EXPECT_TRUE(list.Item(1).Selected && !list.Item(2).Selected && list.Item(3).Selected);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, Row(3));
    EXPECT_TRUE(list.Item(3).Selected && list.Item(4).Selected);
    EXPECT_EQ(list.SelectedItem()->Text, "zone.msh");
    for (int r = 0; r < list.Count(); ++r)
        EXPECT_EQ(view->selectionModel()->isRowSelected(r, {}), list.Item(r + 1).Selected) << r;

    // A plain click leaves one item selected.
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, Row(1));
    EXPECT_FALSE(list.Item(1).Selected || list.Item(3).Selected || list.Item(4).Selected);
    EXPECT_EQ(list.SelectedItem()->Text, "b\xE9ton.txt");

    list.SelectOnly(4);
    QCoreApplication::processEvents();
    const QModelIndexList after = view->selectionModel()->selectedRows();
    ASSERT_EQ(after.size(), 1);
    EXPECT_EQ(after[0].row(), 3);

    // A double click and the keys typed reach the control's events.
    int doubles = 0;
    std::vector<int16_t> keys;
    list.DblClick.Connect([&] { ++doubles; });
    list.KeyPress.Connect([&](int16_t k) { keys.push_back(k); });
    DoubleClick(view->viewport(), Row(1));
    EXPECT_EQ(doubles, 1);
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Return);
    QTest::keyClick(view, Qt::Key_A);
    EXPECT_EQ(keys, (std::vector<int16_t>{13, 'a'}));
}

TEST_F(ListPane, AHundredThousandMembersAreRowsAskedOnlyWhenShown) {
    ListView& list = form.oListView;
    list.Clear();
    for (int32_t i = 0; i < 100000; ++i) AddMember(list, "m" + std::to_string(i) + ".dat", i % 977, i);
    list.Refresh();
    ASSERT_EQ(view->model()->rowCount(), 100000);
    EXPECT_EQ(view->model()->index(0, 0).data().toString(), QStringLiteral("m0.dat"));
    EXPECT_EQ(view->model()->index(99999, 0).data().toString(), QStringLiteral("m99999.dat"));

    ClickHead(2);
    EXPECT_EQ(view->model()->index(0, 0).data().toString(), QStringLiteral("m0.dat"));
    EXPECT_EQ(view->model()->index(99999, 2).data().toString().trimmed(), QStringLiteral("99999"));
    ClickHead(2);
    EXPECT_EQ(view->model()->index(0, 0).data().toString(), QStringLiteral("m99999.dat"));

    // Selecting everything reaches every item.
    view->setFocus();
    QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(list.Item(1).Selected && list.Item(100000).Selected);
}
