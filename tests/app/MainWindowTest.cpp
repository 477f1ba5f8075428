#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QAudioDevice>
#include <QComboBox>
#include <QLabel>
#include <QListView>
#include <QMediaDevices>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTest>
#include <QTreeWidget>
#include <QWheelEvent>
#include <sys/stat.h>

#include "AppTestSupport.h"
#include "EventPump.h"
#include "MainWindow.h"
#include "QtAudioBackend.h"
#include "ScrollBarView.h"
#include "Text1252.h"
#include "fixtures/ByteWriter.h"
#include "samples/GameFiles.h"
#include "samples/PlanarBuilder.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "samples/WavBuilder.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"
#include "sound/cWavPlayer.h"

using apptest::DoubleClick;
using fixtures::WriteFile;

namespace {

class Window : public ::testing::Test {
protected:
    void SetUp() override {
        WriteFile(dir / "notes.txt", "first line\r\nsecond line\r\n");
        // A flat tile of four hex pages: its body's byte i is i * 7 + 3.
        WriteFile(dir / "tile.ftl", fixtures::GameFileWithBody(fixtures::kIdFlatTile, 992));
        WriteFile(dir / "plain.dat", "just some bytes");
        ASSERT_EQ(mkdir((dir / "sub").c_str(), 0755), 0);
        WriteFile(dir / "sub" + "/inner.dat", "inside");
        form.oDir.SetPath(dir.Path());
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    template <typename T>
    T* Find(const char* name) { return apptest::Child<T>(&window, name); }

    // The middle of a file's row, scrolled into view.
    QPoint FileRow(const std::string& name) {
        auto* list = Find<QListView>("oFile");
        int row = 0;
        while (row < form.oFile.ListCount() && form.oFile.List(row) != name) ++row;
        const QModelIndex index = list->model()->index(row, 0);
        list->scrollTo(index);
        return list->visualRect(index).center();
    }

    void ClickFile(const std::string& name) {
        QTest::mouseClick(Find<QListView>("oFile")->viewport(), Qt::LeftButton, {}, FileRow(name));
    }
    QString PanelText(int i) { return Find<QLabel>(("oStatusBar_Panel" + std::to_string(i)).c_str())->text(); }
    QString Report() { return Find<QPlainTextEdit>("tReport")->toPlainText(); }

    fixtures::RegistryHome home;
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
    const Control* controls[] = {&form.fraMain,  &form.oSSTab,  &form.fraDocMain, &form.oImg,    &form.oListView,
                                 &form.oDir,     &form.oDrive,  &form.oFile,      &form.lInfo,   &form.tReport,
                                 &form.oVScroll, &form.oFolderTbar, &form.oToolbar, &form.oStatusBar};
    for (const Control* c : controls) {
        QWidget* view = Find<QWidget>(c->Name.c_str());
        ASSERT_TRUE(view != nullptr && window.ViewOf(*c) == view) << c->Name;
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
    EXPECT_EQ(PanelText(1) + " " + PanelText(2), QStringLiteral("FlatTile ftl"));
    EXPECT_TRUE(Report().startsWith(QStringLiteral("71 6E 00 00 F5 FC 89 02 03 0A")));
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
    // A double click on a panel shows the credits.
    fixtures::ScriptedMessageBoxes boxes;
    DoubleClick(Find<QLabel>("oStatusBar_Panel2"), Find<QLabel>("oStatusBar_Panel2")->rect().center());
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, "Coded by Dovrin");
}

// An arrow key moves the selection, and each move is a click; Enter or a
// double click on a text file shows its text.
TEST_F(Window, KeysAndDoubleClicksReachTheFileList) {
    const QString text = QStringLiteral("first line\nsecond line\n");
    auto* list = Find<QListView>("oFile");
    ClickFile("plain.dat");
    QTest::keyClick(list, Qt::Key_Up);
    EXPECT_EQ(form.oFile.FileName(), "notes.txt");
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(Report(), text);
    EXPECT_EQ(form.tReport.Text(), "first line\r\nsecond line\r\n");
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_TRUE(Report().startsWith(QStringLiteral("6A 75 73 74")));
    DoubleClick(list->viewport(), FileRow("notes.txt"));
    EXPECT_EQ(Report(), text);
}

TEST_F(Window, PageKeysAndTheScrollBarTurnTheHexPages) {
    ClickFile("tile.ftl");
    auto* report = Find<QPlainTextEdit>("tReport");
    auto* bar = Find<QScrollBar>("oVScroll");
    report->setFocus();
    QTest::keyClick(report, Qt::Key_PageDown);
    EXPECT_EQ(form.oVScroll.Value() * 10 + bar->value(), 11);
    EXPECT_TRUE(Report().startsWith(QStringLiteral("CB D2 D9 E0")));
    QTest::keyClick(report, Qt::Key_End);
    EXPECT_EQ(bar->value(), 3);
    // The text box took the key too: its caret went to the end of the line.
    EXPECT_GT(report->textCursor().position(), 0);
    QTest::keyClick(report, Qt::Key_PageUp);
    EXPECT_EQ(bar->value(), 2);
    QTest::keyClick(report, Qt::Key_Home);
    EXPECT_EQ(bar->value(), 0);
    bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    EXPECT_EQ(form.oVScroll.Value(), 1);
    EXPECT_TRUE(Report().startsWith(QStringLiteral("CB D2 D9 E0")));
}

TEST_F(Window, TheFolderListTheParentButtonAndTheDriveListGoElsewhere) {
    auto* tree = Find<QTreeWidget>("oDir");
    QTreeWidgetItem* sub = nullptr;
    for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it)
        if ((*it)->text(0) == QStringLiteral("sub")) sub = *it;
    // The sub-folder hangs one level below the folder it lies in.
    ASSERT_TRUE(sub != nullptr && sub->parent() != nullptr);
    EXPECT_EQ(sub->parent()->toolTip(0), QString::fromStdString(dir.Path()));
    DoubleClick(tree->viewport(), tree->visualItemRect(sub).center());
    EXPECT_EQ(form.oDir.Path(), dir / "sub");
    EXPECT_EQ(Find<QListView>("oFile")->model()->rowCount(), 1);
    // Enter opens the highlighted entry: here the parent, one row up.
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_Up);
    EXPECT_EQ(form.oDir.ListIndex, form.oDir.CurrentIndex() - 1);
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_EQ(form.oDir.Path(), dir.Path());

    // The parent button goes up, and the drive list to the root.
    form.oDrive.Refresh();
    Find<QAction>("oFolderTbar_5")->trigger();
    EXPECT_EQ(form.oDir.Path(), dir.Path().substr(0, dir.Path().rfind('/')));
    auto* drive = Find<QComboBox>("oDrive");
    ASSERT_EQ(drive->itemText(0), QStringLiteral("/"));
    int changes = 0;
    form.oDrive.Change.Connect([&] { ++changes; });
    emit drive->activated(0);
    emit drive->activated(0);  // the drive that is already chosen is no change
    EXPECT_EQ(form.oDrive.Drive() + form.oDir.Path(), "//");
    EXPECT_EQ(changes, 1);
}

// A picture larger than its pane gets bars inside the pane's border that move
// it. A narrow window snaps back to the form's least size, with a longer bar
// for the wider overhang, and the panes follow the model.
TEST_F(Window, ALargePictureGetsBarsThatMoveItAndANarrowWindowSnapsBack) {
    // oPicture fits the pane, so the first layout puts it at the top left inside oImg's border.
    QWidget* img = Find<QWidget>("oImg");
    QWidget* picture = Find<QWidget>("oPicture");
    EXPECT_EQ(picture->mapTo(img, QPoint(0, 0)), img->contentsRect().topLeft());
    form.oScroll.Create(form.oImg.hWnd());
    form.oPicture.Move(0, 0, 2000, 1500);
    form.oImg_Resize();
    auto* hbar = Find<ScrollBarView>("oImg_HScroll");
    auto* vbar = Find<ScrollBarView>("oImg_VScroll");
    ASSERT_TRUE(hbar->isVisible() && vbar->isVisible());
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

    // The form sets itself to 7200 twips wide and 6400 high, and the window follows.
    const int32_t max = form.oScroll.Max(0);
    window.resize(400, 300);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.ClientArea()->size() == QSize(472, 378); }));
    ASSERT_TRUE(QTest::qWaitFor([&] { return form.oScroll.Max(0) > max; }));
    EXPECT_EQ(hbar->geometry().bottomLeft(), img->contentsRect().bottomLeft());
    for (const Control* c : std::initializer_list<const Control*>{&form.oImg, &form.tReport, &form.oStatusBar})
        EXPECT_EQ(Find<QWidget>(c->Name.c_str())->geometry(), MainWindow::PixelRect(c->Bounds())) << c->Name;
    window.resize(900, 700 + window.menuBar()->height());
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.ClientArea()->size() == QSize(900, 700); }));
    EXPECT_EQ(Find<QWidget>("oSSTab")->width(), MainWindow::Pixels(900 * 15 + 120 - 340));
}

TEST_F(Window, TheHourglassFollowsTheScreenPointerAndExitUnloads) {
    form.screen.SetMousePointer(11);
    ASSERT_TRUE(QApplication::overrideCursor() && QApplication::overrideCursor()->shape() == Qt::WaitCursor);
    form.screen.SetMousePointer(0);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    Find<QAction>("mnuSubFile_4")->trigger();
    EXPECT_TRUE(form.Unloaded);
    EXPECT_FALSE(window.isVisible());
}

// A Planar Bitmap is drawn in its own palette, one screen pixel to a pixel.
TEST_F(Window, ADoubleClickOnAPictureDrawsItOneScreenPixelToAPixel) {
    auto index = [](int32_t x, int32_t y) { return (x * 5 + y * 3) & 0xFF; };
    fixtures::BtmSpec btm;
    btm.Width = 40;
    btm.Height = 30;
    btm.Palette = fixtures::RainbowPalette();
    btm.Pixels = fixtures::PlanarPixels(40, 30, 1, index);
    WriteFile(dir / "grad.btm", fixtures::BuildBtm(btm));
    form.oFile.Refresh();
    DoubleClick(Find<QListView>("oFile")->viewport(), FileRow("grad.btm"));
    auto* pane = Find<QWidget>("oPicture");
    ASSERT_TRUE(QTest::qWaitFor([&] { return pane->size() == QSize(40, 30); }));
    const QImage shot = pane->grab().toImage();
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const uint32_t c = btm.Palette[index(x, y)][2];
            ASSERT_EQ(shot.pixel(x, y) & 0xFFFFFFu, qRgb(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF) & 0xFFFFFFu)
                << x << "," << y;
        }
}

// A wave played on Qt's sound output: the posted buffer messages run from the
// event loop to the end of the sound. Without an output device the device's
// text stands in the status bar.
TEST_F(Window, ADoubleClickPlaysAWaveToItsEndOrNamesTheMissingDevice) {
    WriteFile(dir / "tone.wav", fixtures::BuildWav(fixtures::WavSpec{}));
    form.oFile.Refresh();
    QtAudioBackend audio;
    SetAudioBackend(&audio);
    EventPump::Install();
    form.Form_Initialize();
    DoubleClick(Find<QListView>("oFile")->viewport(), FileRow("tone.wav"));
    if (QMediaDevices::defaultAudioOutput().isNull()) {
        EXPECT_EQ(PanelText(1), QStringLiteral("There is no driver installed on your system."));
    } else {
        EXPECT_TRUE(form.oWavPlayer->Playing());
        // The end of the sound closes the file, through Complete.
        EXPECT_TRUE(QTest::qWaitFor([&] { return !form.oWavPlayer->Playing(); }));
        EXPECT_THROW(form.oWavPlayer->Channels(), RuntimeError);
    }
    EventPump::Uninstall();
    SetAudioBackend(nullptr);
}
