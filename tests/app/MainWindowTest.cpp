#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QListView>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>
#include <QWheelEvent>
#include <sys/stat.h>

#include "AppTestSupport.h"
#include "MainWindow.h"
#include "QtPictureService.h"
#include "ScrollBarView.h"
#include "Text1252.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"
#include "fixtures/PlanarBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "shell/frmMain.h"

using apptest::DoubleClick;
using apptest::EventsUntil;
using fixtures::WriteFile;

namespace {

class Window : public ::testing::Test {
protected:
    void SetUp() override {
        WriteFile(dir / "notes.txt", "first line\r\nsecond line\r\n");
        // A game file of the flat tile kind whose byte at offset k is k modulo 256 from offset 8 on.
        fixtures::ByteWriter tile;
        tile.U32(0x6E71).U32(0x0289FCF5);
        for (size_t k = 8; k < 1000; ++k) tile.U8(static_cast<uint8_t>(k & 0xFF));
        WriteFile(dir / "tile.ftl", tile.Data());
        WriteFile(dir / "plain.dat", "just some bytes");
        ASSERT_EQ(mkdir((dir / "sub").c_str(), 0755), 0);
        WriteFile(dir / "sub" + "/inner.dat", "inside");
        form.oDir.SetPath(dir.Path());
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    template <typename T>
    T* Find(const char* name) {
        T* widget = window.findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    QPoint FileRow(const std::string& name) {
        auto* list = Find<QListView>("oFile");
        for (int r = 0; r < list->model()->rowCount(); ++r) {
            const QModelIndex index = list->model()->index(r, 0);
            if (index.data().toString() == QString::fromStdString(name)) {
                list->scrollTo(index);
                return list->visualRect(index).center();
            }
        }
        ADD_FAILURE() << "no row " << name;
        return {};
    }

    void ClickFile(const std::string& name) {
        QTest::mouseClick(Find<QListView>("oFile")->viewport(), Qt::LeftButton, {}, FileRow(name));
    }
    QString PanelText(int i) { return Find<QLabel>(("oStatusBar_Panel" + std::to_string(i)).c_str())->text(); }
    QString Report() { return Find<QPlainTextEdit>("tReport")->toPlainText(); }

    fixtures::TempDir dir;
    frmMain form;
    MainWindow window{form};
};

}  // namespace

// The first Form_Resize widens the tab strip to the window less 340 twips;
// every control shows where its model is, and every menu entry as its model.
TEST_F(Window, RunsTheFirstLayoutAndShowsEveryControlAndMenuAsItsModel) {
    EXPECT_EQ(window.ClientArea()->size(), QSize(609, 522));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Quarrin (beta version)"));
    EXPECT_EQ(form.oSSTab.Bounds().Width, 9255 - 340);
    EXPECT_EQ(form.oImg.Bounds().Height, 8565 - 360 - 300 - 4080 - 680);
    const Control* controls[] = {&form.fraMain,  &form.oSSTab,  &form.fraDocMain, &form.oImg,    &form.oListView,
                                 &form.oDir,     &form.oDrive,  &form.oFile,      &form.lInfo,   &form.tReport,
                                 &form.oVScroll, &form.oFolderTbar, &form.oToolbar, &form.oStatusBar};
    for (const Control* c : controls) {
        QWidget* view = Find<QWidget>(c->Name.c_str());
        ASSERT_NE(view, nullptr);
        EXPECT_EQ(window.ViewOf(*c), view) << c->Name;
        EXPECT_EQ(view->geometry(), MainWindow::PixelRect(c->Bounds())) << c->Name;
        EXPECT_EQ(view->isVisibleTo(&window), c->Visible()) << c->Name;
    }
    for (const auto* entries : {&form.mnuSubFile, &form.mnuSubTools}) {
        for (const auto& item : *entries) {
            auto* action = Find<QAction>((item->Name + "_" + std::to_string(item->Index)).c_str());
            ASSERT_NE(action, nullptr);
            EXPECT_EQ(action->isSeparator() ? QStringLiteral("-") : action->text(), FromBytes(item->Caption()));
            EXPECT_EQ(action->isEnabled(), item->Enabled()) << item->Caption();
            EXPECT_EQ(action->shortcut(), QKeySequence(QString::fromStdString(item->Shortcut)));
        }
    }
}

TEST_F(Window, AClickOnAFileFillsTheStatusBarAndTheHexDump) {
    int clicks = 0;
    const int32_t token = form.oFile.Click.Connect([&] { ++clicks; });
    ClickFile("tile.ftl");
    EXPECT_EQ(form.oFile.FileName(), "tile.ftl");
    EXPECT_EQ(PanelText(1) + " " + PanelText(2), QStringLiteral("FlatTile ftl"));
    EXPECT_TRUE(Report().startsWith(QStringLiteral("71 6E 00 00 F5 FC 89 02 08 09")));
    EXPECT_EQ(Find<QScrollBar>("oVScroll")->maximum(), 3);
    // The offers follow the selection into the menu and the toolbar.
    ClickFile("notes.txt");
    EXPECT_EQ(PanelText(1), QStringLiteral("ASCII Formated File"));
    EXPECT_TRUE(Find<QAction>("mnuSubFile_2")->isEnabled() && Find<QAction>("oToolbar_4")->isEnabled());
    EXPECT_FALSE(Find<QScrollBar>("oVScroll")->isVisibleTo(&window));
    ClickFile("plain.dat");
    EXPECT_EQ(PanelText(1), QString());
    EXPECT_FALSE(Find<QAction>("mnuSubFile_2")->isEnabled() || Find<QAction>("oToolbar_4")->isEnabled());
    // A click on the selected file raises Click again, but once.
    ClickFile("plain.dat");
    EXPECT_EQ(clicks, 4);
    form.oFile.Click.Disconnect(token);
}

// An arrow key moves the selection, and each move is a click; Enter or a
// double click on a text file shows its text.
TEST_F(Window, KeysAndDoubleClicksReachTheFileList) {
    const QString text = QStringLiteral("first line\nsecond line\n");
    ClickFile("notes.txt");
    QTest::keyClick(Find<QListView>("oFile"), Qt::Key_Down);
    EXPECT_EQ(form.oFile.FileName(), "plain.dat");
    EXPECT_TRUE(Report().startsWith(QStringLiteral("6A 75 73 74")));
    DoubleClick(Find<QListView>("oFile")->viewport(), FileRow("notes.txt"));
    EXPECT_EQ(form.oFile.FileName(), "notes.txt");
    EXPECT_EQ(Report(), text);
    ClickFile("plain.dat");
    QTest::keyClick(Find<QListView>("oFile"), Qt::Key_Up);
    QTest::keyClick(Find<QListView>("oFile"), Qt::Key_Return);
    EXPECT_EQ(Report(), text);
    EXPECT_EQ(form.tReport.Text(), "first line\r\nsecond line\r\n");
}

TEST_F(Window, PageKeysAndTheScrollBarTurnTheHexPages) {
    ClickFile("tile.ftl");
    auto* report = Find<QPlainTextEdit>("tReport");
    auto* bar = Find<QScrollBar>("oVScroll");
    report->setFocus();
    QTest::keyClick(report, Qt::Key_PageDown);
    EXPECT_EQ(form.oVScroll.Value() * 10 + bar->value(), 11);
    EXPECT_TRUE(Report().startsWith(QStringLiteral("00 01 02 03")));
    QTest::keyClick(report, Qt::Key_End);
    EXPECT_EQ(bar->value(), 3);
    // The text box took the key too: its caret went to the end of the line.
    EXPECT_GT(report->textCursor().position(), 0);
    QTest::keyClick(report, Qt::Key_PageUp);
    EXPECT_EQ(bar->value(), 2);
    QTest::keyClick(report, Qt::Key_Home);
    EXPECT_EQ(bar->value(), 0);
    EXPECT_TRUE(Report().startsWith(QStringLiteral("71 6E")));
    bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    EXPECT_EQ(form.oVScroll.Value(), 1);
    EXPECT_TRUE(Report().startsWith(QStringLiteral("00 01 02 03")));
    bar->triggerAction(QAbstractSlider::SliderToMaximum);
    EXPECT_EQ(form.oVScroll.Value(), 3);
}

TEST_F(Window, ADoubleClickOnAStatusPanelShowsTheCredits) {
    fixtures::ScriptedMessageBoxes boxes;
    DoubleClick(Find<QLabel>("oStatusBar_Panel2"), Find<QLabel>("oStatusBar_Panel2")->rect().center());
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, "Coded by Dovrin");
}

TEST_F(Window, FolderListOpensAFolderOnDoubleClickAndOnEnter) {
    auto* tree = Find<QTreeWidget>("oDir");
    QTreeWidgetItem* sub = nullptr;
    for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it)
        if ((*it)->text(0) == QStringLiteral("sub")) sub = *it;
    // The sub-folder hangs one level below the folder it lies in.
    ASSERT_TRUE(sub != nullptr && sub->parent() != nullptr);
    EXPECT_EQ(sub->parent()->toolTip(0), QString::fromStdString(dir.Path()));
    DoubleClick(tree->viewport(), tree->visualItemRect(sub).center());
    EXPECT_EQ(form.oDir.Path(), dir / "sub");
    EXPECT_EQ(form.oFile.Path(), dir / "sub");
    EXPECT_EQ(Find<QListView>("oFile")->model()->rowCount(), 1);
    // Enter opens the highlighted entry: here the parent, one row up.
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_Up);
    EXPECT_EQ(form.oDir.ListIndex, form.oDir.CurrentIndex() - 1);
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_EQ(form.oDir.Path(), dir.Path());
}

TEST_F(Window, TheParentButtonGoesUpAndTheDriveListGoesToTheRoot) {
    form.oDrive.Refresh();
    Find<QAction>("oFolderTbar_5")->trigger();
    EXPECT_EQ(form.oDir.Path(), dir.Path().substr(0, dir.Path().rfind('/')));
    auto* drive = Find<QComboBox>("oDrive");
    ASSERT_GT(drive->count(), 0);
    EXPECT_EQ(drive->itemText(0), QStringLiteral("/"));
    int changes = 0;
    form.oDrive.Change.Connect([&] { ++changes; });
    emit drive->activated(0);
    emit drive->activated(0);  // the drive that is already chosen is no change
    EXPECT_EQ(form.oDrive.Drive() + form.oDir.Path(), "//");
    EXPECT_EQ(changes, 1);
}

TEST_F(Window, ANarrowWindowSnapsBackAndThePanesFollowTheModel) {
    // oPicture fits the pane, so the first layout puts it at the top left inside oImg's border.
    QWidget* img = Find<QWidget>("oImg");
    EXPECT_EQ(Find<QWidget>("oPicture")->mapTo(img, QPoint(0, 0)), img->contentsRect().topLeft());
    window.resize(400, 300);
    // The form sets itself to 7200 twips wide and 6400 high, and the window follows.
    ASSERT_TRUE(EventsUntil([&] { return window.ClientArea()->size() == QSize(472, 378); }));
    EXPECT_EQ(form.Bounds().Width, 7200);
    EXPECT_EQ(form.Bounds().Height, 378 * 15 + 735);
    for (const Control* c : std::initializer_list<const Control*>{&form.oImg, &form.tReport, &form.oStatusBar})
        EXPECT_EQ(Find<QWidget>(c->Name.c_str())->geometry(), MainWindow::PixelRect(c->Bounds())) << c->Name;
    window.resize(900, 700 + window.menuBar()->height());
    ASSERT_TRUE(EventsUntil([&] { return window.ClientArea()->size() == QSize(900, 700); }));
    EXPECT_EQ(form.oSSTab.Bounds().Width, 900 * 15 + 120 - 340);
    EXPECT_EQ(Find<QWidget>("oSSTab")->width(), MainWindow::Pixels(900 * 15 + 120 - 340));
}

TEST_F(Window, ALargePictureGetsBarsThatMoveIt) {
    form.oScroll.Create(form.oImg.hWnd());
    form.oPicture.Move(0, 0, 2000, 1500);
    form.oImg_Resize();
    auto* hbar = Find<ScrollBarView>("oImg_HScroll");
    auto* vbar = Find<ScrollBarView>("oImg_VScroll");
    QWidget* img = Find<QWidget>("oImg");
    QWidget* picture = Find<QWidget>("oPicture");
    ASSERT_TRUE(hbar->isVisible() && vbar->isVisible());
    // The bars lie inside the border along the right and bottom edges.
    EXPECT_EQ(vbar->geometry().topRight(), img->contentsRect().topRight());
    EXPECT_EQ(hbar->geometry().bottomLeft(), img->contentsRect().bottomLeft());
    // The down arrow moves the picture one unit of 15 pixels up; a notch of
    // the wheel over the picture three more.
    QTest::mouseClick(vbar, Qt::LeftButton, {}, QPoint(vbar->width() / 2, vbar->height() - 3));
    EXPECT_EQ(form.oScroll.Value(1), 1);
    EXPECT_EQ(picture->y(), -15);
    QWheelEvent wheel(QPointF(5, 5), picture->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(picture, &wheel);
    EXPECT_EQ(picture->y(), -60);
    // A narrower window gives a wider overhang and so a longer bar.
    const int32_t max = form.oScroll.Max(0);
    window.resize(500, window.height());
    ASSERT_TRUE(EventsUntil([&] { return form.oScroll.Max(0) > max; }));
    EXPECT_EQ(hbar->geometry().bottomLeft(), img->contentsRect().bottomLeft());
}

TEST_F(Window, TheHourglassFollowsTheScreenPointerAndExitUnloads) {
    form.screen.SetMousePointer(11);
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    form.screen.SetMousePointer(0);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    Find<QAction>("mnuSubFile_4")->trigger();
    EXPECT_TRUE(form.Unloaded);
    EXPECT_FALSE(window.isVisible());
}

// A Planar Bitmap in its own palette, and a BMP through the picture loader,
// are drawn one screen pixel to a pixel.
TEST_F(Window, ADoubleClickOnAPictureDrawsItOneScreenPixelToAPixel) {
    fixtures::BtmSpec btm;
    btm.Width = 40;
    btm.Height = 30;
    btm.Palette = fixtures::RainbowPalette();
    btm.Pixels = fixtures::PlanarPixels(40, 30, 1, [](int32_t x, int32_t y) { return (x * 5 + y * 3) & 0xFF; });
    WriteFile(dir / "grad.btm", fixtures::BuildBtm(btm));
    const fixtures::RgbImage image = fixtures::GradientImage(40, 30);
    WriteFile(dir / "grad.bmp", fixtures::BuildBmp24(image));
    form.oFile.Refresh();
    const QtPictureLoader loader;
    for (const char* name : {"grad.btm", "grad.bmp"}) {
        DoubleClick(Find<QListView>("oFile")->viewport(), FileRow(name));
        auto* pane = Find<QWidget>("oPicture");
        ASSERT_TRUE(EventsUntil([&] { return pane->size() == QSize(40, 30); })) << name;
        const QImage shot = pane->grab().toImage();
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) {
                const uint32_t word = fixtures::ColorWord(image.At(x, y)[0], image.At(x, y)[1], image.At(x, y)[2]);
                const uint32_t c = std::string(name) == "grad.btm" ? btm.Palette[(x * 5 + y * 3) & 0xFF][2] : word;
                ASSERT_EQ(shot.pixel(x, y) & 0xFFFFFFu, qRgb(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF) & 0xFFFFFFu)
                    << name << " " << x << "," << y;
            }
    }
}
