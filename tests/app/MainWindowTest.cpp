#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStatusBar>
#include <QImage>
#include <QPixmap>
#include <QTabWidget>
#include <QTest>
#include <QWheelEvent>
#include <QToolBar>
#include <QTreeView>
#include <QTreeWidget>
#include <functional>
#include <sys/stat.h>

#include "AppTestSupport.h"
#include "MainWindow.h"
#include "ScrollBarView.h"
#include "QtPictureService.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"
#include "fixtures/PlanarBuilder.h"
#include "platform/MessageBox.h"
#include "shell/frmMain.h"

using apptest::DoubleClick;
using apptest::EventsUntil;
using fixtures::ByteWriter;
using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

// A game file of the flat tile kind whose body bytes count up from its head:
// the byte at offset k is k modulo 256 from offset 8 on.
std::string CountingTile(size_t length) {
    ByteWriter w;
    w.U32(0x6E71).U32(0x0289FCF5);
    for (size_t k = 8; k < length; ++k) w.U8(static_cast<uint8_t>(k & 0xFF));
    return w.Data();
}

class ScriptedBoxes : public IMessageBoxService {
public:
    int32_t Show(const std::string& prompt, int32_t buttons, const std::string& title) override {
        prompts.push_back(prompt);
        return vbOK;
    }
    std::vector<std::string> prompts;
};

class Window : public ::testing::Test {
protected:
    void SetUp() override {
        WriteFile(dir / "notes.txt", "first line\r\nsecond line\r\n");
        WriteFile(dir / "tile.ftl", CountingTile(1000));
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

    TempDir dir;
    frmMain form;
    MainWindow window{form};
};

}  // namespace

// ---- Building ---------------------------------------------------------------------

TEST_F(Window, OpensWithTheDesignClientSizeAndTitle) {
    EXPECT_EQ(window.ClientArea()->size(), QSize(609, 522));
    EXPECT_EQ(form.Bounds().Width, 9255);
    EXPECT_EQ(form.Bounds().Height, 8565);
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Quarrin (beta version)"));
}

TEST_F(Window, PlacesTheFileBrowserAtItsDesignPlaces) {
    // Controls that the layout leaves where the design put them, in pixels of
    // 15 twips.
    EXPECT_EQ(Find<QWidget>("oFile")->geometry(), QRect(144, 10, 161, 188));
    EXPECT_EQ(Find<QWidget>("oDir")->geometry(), QRect(4, 34, 137, 171));
    EXPECT_EQ(Find<QWidget>("lInfo")->geometry(), QRect(144, 200, 153, 25));
    EXPECT_EQ(Find<QWidget>("oFolderTbar")->geometry(), QRect(8, 10, 129, 22));
    EXPECT_EQ(Find<QWidget>("oToolbar")->geometry(), QRect(0, 0, 609, 24));
    EXPECT_EQ(Find<QWidget>("oStatusBar")->geometry(), QRect(0, 502, 609, 20));
    EXPECT_EQ(Find<QWidget>("oPicture")->geometry().size(), QSize(249, 161));
}

TEST_F(Window, RunsTheFirstLayoutAndShowsEveryControlWhereItsModelIs) {
    // The first Form_Resize widens the tab strip to the window less 340 twips.
    EXPECT_EQ(form.oSSTab.Bounds().Width, 9255 - 340);
    EXPECT_EQ(form.oImg.Bounds().Height, 8565 - 360 - 300 - 4080 - 680);
    const Control* controls[] = {&form.fraMain,  &form.oSSTab,   &form.fraDocMain, &form.oImg,
                                 &form.oListView, &form.oDir,    &form.oDrive,     &form.oFile,
                                 &form.lInfo,    &form.tReport,  &form.oVScroll,   &form.oFolderTbar,
                                 &form.oToolbar, &form.oStatusBar};
    for (const Control* c : controls) {
        QWidget* view = Find<QWidget>(c->Name.c_str());
        ASSERT_NE(view, nullptr);
        EXPECT_EQ(window.ViewOf(*c), view) << c->Name;
        EXPECT_EQ(view->geometry(), MainWindow::PixelRect(c->Bounds())) << c->Name;
        EXPECT_EQ(view->isVisibleTo(&window), c->Visible()) << c->Name;
    }
    EXPECT_FALSE(Find<QWidget>("oListView")->isVisibleTo(&window));
    EXPECT_EQ(Find<QTabWidget>("oSSTab")->tabText(0), QStringLiteral("Documents"));
}

TEST_F(Window, BuildsTheMenusAndToolbarFromTheModels) {
    const char* names[] = {"mnuSubFile_0", "mnuSubFile_1", "mnuSubFile_2", "mnuSubFile_3", "mnuSubFile_4",
                           "mnuSubTools_0", "mnuSubTools_1", "mnuSubTools_2"};
    for (const char* name : names) ASSERT_NE(Find<QAction>(name), nullptr);
    EXPECT_EQ(Find<QAction>("mnuSubFile_0")->text(), QStringLiteral("&Open"));
    EXPECT_FALSE(Find<QAction>("mnuSubFile_0")->isEnabled());
    EXPECT_EQ(Find<QAction>("mnuSubFile_1")->text(), QStringLiteral("S&ave As"));
    EXPECT_TRUE(Find<QAction>("mnuSubFile_3")->isSeparator());
    EXPECT_EQ(Find<QAction>("mnuSubFile_4")->text(), QStringLiteral("E&xit"));
    EXPECT_FALSE(Find<QAction>("mnuSubTools_0")->isEnabled());
    EXPECT_EQ(Find<QAction>("mnuSubTools_0")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_U));
    EXPECT_EQ(Find<QAction>("mnuSubTools_2")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));
    EXPECT_EQ(Find<QAction>("mnuSubTools_2")->text(), QStringLiteral("O&ptions"));

    auto* bar = Find<QToolBar>("oToolbar");
    ASSERT_EQ(bar->actions().size(), 4);
    EXPECT_TRUE(bar->actions()[0]->isSeparator());
    EXPECT_EQ(bar->actions()[1]->toolTip(), QStringLiteral("Extract"));
    EXPECT_EQ(bar->actions()[2]->toolTip(), QStringLiteral("Save as ..."));
    EXPECT_EQ(bar->actions()[3]->toolTip(), QStringLiteral("Quick view ..."));
    EXPECT_FALSE(bar->actions()[1]->icon().isNull());
    auto* folders = Find<QToolBar>("oFolderTbar");
    ASSERT_EQ(folders->actions().size(), 5);
    EXPECT_EQ(folders->actions()[0]->toolTip(), QStringLiteral("Selvane"));
    EXPECT_EQ(folders->actions()[4]->toolTip(), QStringLiteral("..."));
}

// ---- Selection and preview ---------------------------------------------------------

TEST_F(Window, AClickOnAFileFillsTheStatusBarAndTheHexDump) {
    ClickFile("tile.ftl");
    EXPECT_EQ(form.oFile.FileName(), "tile.ftl");
    EXPECT_EQ(PanelText(1), QStringLiteral("FlatTile"));
    EXPECT_EQ(PanelText(2), QStringLiteral("ftl"));
    EXPECT_TRUE(Find<QPlainTextEdit>("tReport")->toPlainText().startsWith(QStringLiteral("71 6E 00 00 F5 FC 89 02 08 09")));
    EXPECT_EQ(Find<QScrollBar>("oVScroll")->maximum(), 3);

    // The offers follow the selection into the menu and the toolbar.
    ClickFile("notes.txt");
    EXPECT_EQ(PanelText(1), QStringLiteral("ASCII Formated File"));
    EXPECT_TRUE(Find<QAction>("mnuSubFile_2")->isEnabled());
    EXPECT_TRUE(Find<QAction>("oToolbar_4")->isEnabled());
    EXPECT_FALSE(Find<QScrollBar>("oVScroll")->isVisibleTo(&window));
    ClickFile("plain.dat");
    EXPECT_EQ(PanelText(1), QString());
    EXPECT_FALSE(Find<QAction>("mnuSubFile_2")->isEnabled());
    EXPECT_FALSE(Find<QAction>("oToolbar_4")->isEnabled());
}

TEST_F(Window, AClickOnTheSelectedFileRaisesClickAgainButOnce) {
    int clicks = 0;
    const int32_t token = form.oFile.Click.Connect([&] { ++clicks; });
    ClickFile("plain.dat");
    EXPECT_EQ(clicks, 1);
    ClickFile("plain.dat");
    EXPECT_EQ(clicks, 2);
    form.oFile.Click.Disconnect(token);
}

TEST_F(Window, ArrowKeysMoveTheSelectionAndEachMoveIsAClick) {
    ClickFile("notes.txt");
    auto* list = Find<QListView>("oFile");
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(form.oFile.FileName(), "plain.dat");
    EXPECT_EQ(PanelText(1), QString());
    EXPECT_TRUE(Find<QPlainTextEdit>("tReport")->toPlainText().startsWith(QStringLiteral("6A 75 73 74")));
}

TEST_F(Window, EnterOnATextFileShowsItsText) {
    ClickFile("notes.txt");
    QTest::keyClick(Find<QListView>("oFile"), Qt::Key_Return);
    EXPECT_EQ(Find<QPlainTextEdit>("tReport")->toPlainText(), QStringLiteral("first line\nsecond line\n"));
    EXPECT_EQ(form.tReport.Text(), "first line\r\nsecond line\r\n");
}

TEST_F(Window, ADoubleClickOnATextFileShowsItsText) {
    ClickFile("plain.dat");
    DoubleClick(Find<QListView>("oFile")->viewport(), FileRow("notes.txt"));
    EXPECT_EQ(form.oFile.FileName(), "notes.txt");
    EXPECT_EQ(Find<QPlainTextEdit>("tReport")->toPlainText(), QStringLiteral("first line\nsecond line\n"));
}

TEST_F(Window, PageKeysInTheReportTurnTheHexPagesAndReachTheTextBox) {
    ClickFile("tile.ftl");
    auto* report = Find<QPlainTextEdit>("tReport");
    auto* bar = Find<QScrollBar>("oVScroll");
    report->setFocus();

    QTest::keyClick(report, Qt::Key_PageDown);
    EXPECT_EQ(form.oVScroll.Value(), 1);
    EXPECT_EQ(bar->value(), 1);
    EXPECT_TRUE(report->toPlainText().startsWith(QStringLiteral("00 01 02 03")));

    QTest::keyClick(report, Qt::Key_End);
    EXPECT_EQ(bar->value(), 3);
    // The text box took the key too: its caret went to the end of the line.
    EXPECT_GT(report->textCursor().position(), 0);

    QTest::keyClick(report, Qt::Key_PageUp);
    EXPECT_EQ(bar->value(), 2);
    QTest::keyClick(report, Qt::Key_Home);
    EXPECT_EQ(bar->value(), 0);
    EXPECT_TRUE(report->toPlainText().startsWith(QStringLiteral("71 6E")));
}

TEST_F(Window, MovingTheScrollBarTurnsThePage) {
    ClickFile("tile.ftl");
    auto* bar = Find<QScrollBar>("oVScroll");
    bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    EXPECT_EQ(form.oVScroll.Value(), 1);
    EXPECT_TRUE(Find<QPlainTextEdit>("tReport")->toPlainText().startsWith(QStringLiteral("00 01 02 03")));
    bar->triggerAction(QAbstractSlider::SliderToMaximum);
    EXPECT_EQ(form.oVScroll.Value(), 3);
}

TEST_F(Window, ADoubleClickOnAStatusPanelShowsTheCredits) {
    ScriptedBoxes boxes;
    SetMessageBoxService(&boxes);
    DoubleClick(Find<QLabel>("oStatusBar_Panel2"), Find<QLabel>("oStatusBar_Panel2")->rect().center());
    SetMessageBoxService(nullptr);
    ASSERT_EQ(boxes.prompts.size(), 1u);
    EXPECT_EQ(boxes.prompts[0], "Coded by Dovrin");
}

// ---- Folders --------------------------------------------------------------------------

TEST_F(Window, FolderListOpensAFolderOnDoubleClickAndOnEnter) {
    auto* tree = Find<QTreeWidget>("oDir");
    QTreeWidgetItem* sub = nullptr;
    for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it)
        if ((*it)->text(0) == QStringLiteral("sub")) sub = *it;
    ASSERT_NE(sub, nullptr);
    // The sub-folder hangs one level below the folder it lies in.
    ASSERT_NE(sub->parent(), nullptr);
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
    EXPECT_EQ(form.oDrive.Drive(), "/");
    EXPECT_EQ(form.oDir.Path(), "/");
    EXPECT_EQ(changes, 1);
    // The drive that is already chosen is no change.
    emit drive->activated(0);
    EXPECT_EQ(changes, 1);
}

TEST_F(Window, ThePicturePaneShowsTheBackgroundsOfItsModels) {
    QWidget* img = Find<QWidget>("oImg");
    QWidget* picture = Find<QWidget>("oPicture");
    // oPicture fits the pane, so the first layout puts it at the top left
    // inside oImg's border.
    EXPECT_EQ(picture->mapTo(img, QPoint(0, 0)), img->contentsRect().topLeft());
    const QImage pane = img->grab().toImage();
    const QImage inside = picture->grab().toImage();
    EXPECT_EQ(inside.pixelColor(inside.width() / 2, inside.height() / 2), picture->palette().color(QPalette::WindowText));
    EXPECT_EQ(pane.pixelColor(pane.width() - 20, pane.height() / 2), img->palette().color(QPalette::Button));
}

// ---- The window's size, pointer and end ---------------------------------------------

TEST_F(Window, ANarrowWindowSnapsBackAndThePanesFollowTheModel) {
    window.resize(400, 300);
    // The form sets itself to 7200 twips wide and 6400 high, and the window follows.
    ASSERT_TRUE(EventsUntil([&] { return window.ClientArea()->size() == QSize(472, 378); }));
    EXPECT_EQ(form.Bounds().Width, 7200);
    EXPECT_EQ(form.Bounds().Height, 378 * 15 + 735);
    EXPECT_EQ(Find<QWidget>("oImg")->geometry(), MainWindow::PixelRect(form.oImg.Bounds()));
    EXPECT_EQ(Find<QWidget>("tReport")->geometry(), MainWindow::PixelRect(form.tReport.Bounds()));
    EXPECT_EQ(Find<QWidget>("oStatusBar")->geometry(), QRect(0, 378 - 20, 472, 20));

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

TEST_F(Window, TheHourglassFollowsTheScreenPointer) {
    form.screen.SetMousePointer(11);
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    form.screen.SetMousePointer(0);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(Window, ExitClosesTheWindowThroughFormUnload) {
    Find<QAction>("mnuSubFile_4")->trigger();
    EXPECT_TRUE(form.Unloaded);
    EXPECT_FALSE(window.isVisible());
}

// ---- Pictures ---------------------------------------------------------------------

TEST_F(Window, ADoubleClickOnAPictureDrawsItOneScreenPixelToAPixel) {
    // A Planar Bitmap in its own palette, and a BMP through the picture loader.
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
