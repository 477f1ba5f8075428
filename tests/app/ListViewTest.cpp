#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QHeaderView>
#include <QTest>
#include <QTreeView>
#include <string>

#include "ListViewModel.h"
#include "AppTestSupport.h"
#include "MainWindow.h"
#include "controls/ListView.h"
#include "shell/frmMain.h"

using apptest::DoubleClick;

namespace {

std::string Padded(int32_t n) {
    std::string digits = std::to_string(n);
    return std::string(16 - digits.size(), ' ') + digits;
}

// Members as a PAK's directory fills the list: name, packed and original
// size padded to 16 characters, extension.
void AddMember(ListView& list, const std::string& name, int32_t packed, int32_t original, const std::string& ext) {
    ListItem& item = list.Add(name);
    item.SubItems(1) = Padded(packed);
    item.SubItems(2) = Padded(original);
    item.SubItems(3) = ext;
}

std::vector<std::string> Column(const QAbstractItemModel& model, int column) {
    std::vector<std::string> texts;
    for (int r = 0; r < model.rowCount(); ++r) texts.push_back(model.index(r, column).data().toString().toStdString());
    return texts;
}

class ListPane : public ::testing::Test {
protected:
    void SetUp() override {
        ListView& list = form.oListView;
        AddMember(list, "walls.btm", 300, 900, "btm");
        AddMember(list, "Alpha.plt", 1000, 1000, "plt");
        AddMember(list, "zone.msh", 20, 75, "msh");
        AddMember(list, "b\xE9ton.txt", 5, 5, "txt");
        list.Refresh();
        list.SetVisible(true);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        view = window.findChild<QTreeView*>(QStringLiteral("oListView"));
        ASSERT_NE(view, nullptr);
    }

    QPoint Row(int r) { return view->visualRect(view->model()->index(r, 0)).center(); }
    QPoint Head(int section) {
        QHeaderView* h = view->header();
        return QPoint(h->sectionViewportPosition(section) + h->sectionSize(section) / 2, h->height() / 2);
    }

    frmMain form;
    MainWindow window{form};
    QTreeView* view = nullptr;
};

}  // namespace

// The control sorts by name without regard to case; names are bytes of the
// Windows code page. A header click sorts through the form and shows the arrow.
TEST_F(ListPane, ShowsTheItemsInTheControlsOrderAndAHeaderClickSortsThem) {
    QAbstractItemModel& model = *view->model();
    EXPECT_EQ(Column(model, 0), (std::vector<std::string>{"Alpha.plt", "b\xC3\xA9ton.txt", "walls.btm", "zone.msh"}));
    EXPECT_EQ(Column(model, 1)[2] + Column(model, 3)[2], Padded(300) + "btm");
    QHeaderView* header = view->header();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, Head(1));
    EXPECT_EQ(form.m_lSortColumn, 2);
    EXPECT_EQ(Column(*view->model(), 0),
              (std::vector<std::string>{"b\xC3\xA9ton.txt", "zone.msh", "walls.btm", "Alpha.plt"}));
    EXPECT_FALSE(view->model()->headerData(1, Qt::Horizontal, Qt::DecorationRole).value<QIcon>().isNull());
    EXPECT_TRUE(view->model()->headerData(0, Qt::Horizontal, Qt::DecorationRole).value<QIcon>().isNull());

    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, Head(1));
    EXPECT_EQ(form.oListView.Column(2).Icon, "DESC");
    EXPECT_EQ(view->model()->index(0, 0).data().toString(), QStringLiteral("Alpha.plt"));

    // Back to the names: the first column takes the arrow, the second loses it.
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, Head(0));
    EXPECT_EQ(form.oListView.Column(1).Icon, "ASC");
    EXPECT_TRUE(view->model()->headerData(1, Qt::Horizontal, Qt::DecorationRole).value<QIcon>().isNull());
    EXPECT_EQ(view->model()->index(0, 0).data().toString(), QStringLiteral("Alpha.plt"));
}

TEST_F(ListPane, MirrorsClicksCtrlAndShiftIntoTheItemsSelection) {
    ListView& list = form.oListView;
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, Row(0));
    ASSERT_NE(list.SelectedItem(), nullptr);
    EXPECT_EQ(list.SelectedItem()->Text, "Alpha.plt");

    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ControlModifier, Row(2));
    EXPECT_TRUE(list.Item(1).Selected && !list.Item(2).Selected && list.Item(3).Selected);
    EXPECT_EQ(list.SelectedItem()->Text, "walls.btm");

    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, Row(3));
    EXPECT_TRUE(list.Item(3).Selected && list.Item(4).Selected);
    for (int r = 0; r < list.Count(); ++r)
        EXPECT_EQ(view->selectionModel()->isRowSelected(r, {}), list.Item(r + 1).Selected) << r;
    EXPECT_EQ(list.SelectedItem()->Text, "zone.msh");

    // A plain click leaves one item selected.
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, Row(1));
    int selected = 0;
    for (int i = 1; i <= list.Count(); ++i) selected += list.Item(i).Selected ? 1 : 0;
    EXPECT_EQ(selected, 1);
    EXPECT_EQ(list.SelectedItem()->Text, "b\xE9ton.txt");
}

TEST_F(ListPane, TheSelectionSurvivesASortAndFollowsTheModel) {
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, Row(3));
    QTest::mouseClick(view->header()->viewport(), Qt::LeftButton, {}, Head(1));
    QCoreApplication::processEvents();
    // zone.msh is the second smallest now, and still the one selected.
    const QModelIndexList rows = view->selectionModel()->selectedRows();
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0].row(), 1);
    EXPECT_EQ(view->currentIndex().row(), 1);

    // A selection made by the logic shows in the view.
    form.oListView.SelectOnly(4);
    QCoreApplication::processEvents();
    const QModelIndexList after = view->selectionModel()->selectedRows();
    ASSERT_EQ(after.size(), 1);
    EXPECT_EQ(after[0].row(), 3);
}

TEST_F(ListPane, DoubleClickAndEnterReachTheControlsEvents) {
    int doubles = 0;
    std::vector<int16_t> keys;
    form.oListView.DblClick.Connect([&] { ++doubles; });
    form.oListView.KeyPress.Connect([&](int16_t k) { keys.push_back(k); });
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
    for (int32_t i = 0; i < 100000; ++i) AddMember(list, "m" + std::to_string(i) + ".dat", i % 977, i, "dat");
    list.Refresh();
    ASSERT_EQ(view->model()->rowCount(), 100000);
    EXPECT_EQ(view->model()->index(0, 0).data().toString(), QStringLiteral("m0.dat"));
    EXPECT_EQ(view->model()->index(99999, 0).data().toString(), QStringLiteral("m99999.dat"));

    QTest::mouseClick(view->header()->viewport(), Qt::LeftButton, {}, Head(2));
    EXPECT_EQ(view->model()->index(0, 0).data().toString(), QStringLiteral("m0.dat"));
    EXPECT_EQ(view->model()->index(99999, 2).data().toString().toStdString(), Padded(99999));
    QTest::mouseClick(view->header()->viewport(), Qt::LeftButton, {}, Head(2));
    EXPECT_EQ(view->model()->index(0, 0).data().toString(), QStringLiteral("m99999.dat"));

    // Selecting everything reaches every item.
    view->setFocus();
    QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(list.Item(1).Selected && list.Item(100000).Selected);
}

// ---- The model alone ------------------------------------------------------------------

TEST(ListViewModelTest, ResetsOnlyForANewListOrOrder) {
    ListView list("oListView");
    list.ColumnHeaders = {{"File Name", 4304, ""}, {"Packed Size", 2540, ""}};
    ListViewModel model(list);
    EXPECT_EQ(model.rowCount(), 0);
    AddMember(list, "b", 1, 1, "");
    AddMember(list, "a", 2, 2, "");
    // Items added without a refresh are not rows yet.
    EXPECT_EQ(model.rowCount(), 0);
    list.Refresh();
    EXPECT_TRUE(model.Reload());
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.index(0, 0).data().toString(), QStringLiteral("a"));

    list.SelectOnly(1);
    EXPECT_FALSE(model.Reload());
    list.SetSortOrder(1);
    EXPECT_TRUE(model.Reload());
    EXPECT_EQ(model.index(0, 0).data().toString(), QStringLiteral("b"));

    // Rows announced before a clear are never read past the control's end.
    list.Clear();
    EXPECT_FALSE(model.index(1, 0).data().isValid());
}
