#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <QWidget>
#include <filesystem>
#include <string>

#include "AppTestSupport.h"
#include "QtDialogServices.h"
#include "QtFileDialogService.h"
#include "QtMessageBoxService.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/ErrorOf.h"
#include "fixtures/ScriptedDialogs.h"
#include "platform/Runtime.h"
#include "winsupport/cCommonDialog.h"

using apptest::WhenShown;

// The dialog shows what the request asks for, over the window that the owner
// handle names; the user's choice comes back as a path and a filter index.
// The platform's filters name their patterns apart from the text shown, and
// a name that ends in patterns shows them once.
TEST(QtFileDialogs, TheDialogFollowsTheRequestAndTheChoiceComesBack) {
    fixtures::TempDir dir;
    QWidget owner;
    int32_t askedFor = 0;
    QtFileDialogService service;
    service.SetOwnerLookup([&](int32_t hwnd) {
        askedFor = hwnd;
        return &owner;
    });
    const FileDialogRequest r{.save = true, .hwndOwner = 77, .title = "Save the member", .initialDir = dir.Path(),
                              .fileName = "member.pak",
                              .filters = {{"Pak Files (*.pak)", "*.pak"},
                                          {"Raw stream", "*.dcl;*.raw"},
                                          {"All (*.*)", "*.*"},
                                          {"Pictures", "*.bmp; *.gif"},
                                          {"Bitmap (256 colours)", "*.bmp"},
                                          {"Caf\xE9", ""}},
                              .filterIndex = 2, .defaultExt = "pak", .overwritePrompt = true};
    WhenShown<QFileDialog>([&](QFileDialog* d) {
        EXPECT_EQ(d->parentWidget(), &owner);
        EXPECT_EQ(d->windowTitle(), QStringLiteral("Save the member"));
        EXPECT_EQ(d->acceptMode(), QFileDialog::AcceptSave);
        EXPECT_FALSE(d->testOption(QFileDialog::DontConfirmOverwrite));
        EXPECT_EQ(d->nameFilters(),
                  (QStringList{QStringLiteral("Pak Files (*.pak)"), QStringLiteral("Raw stream (*.dcl *.raw)"),
                               QStringLiteral("All (*)"), QStringLiteral("Pictures (*.bmp *.gif)"),
                               QStringLiteral("Bitmap (256 colours) (*.bmp)"), QStringLiteral("Caf\u00E9 (*)")}));
        EXPECT_EQ(d->selectedNameFilter(), QStringLiteral("Raw stream (*.dcl *.raw)"));
        EXPECT_EQ(d->directory().absolutePath(), QString::fromStdString(dir.Path()));
        EXPECT_EQ(d->defaultSuffix(), QStringLiteral("pak"));
        d->selectNameFilter(QStringLiteral("Pak Files (*.pak)"));
        d->selectFile(QStringLiteral("chosen.pak"));
        QMetaObject::invokeMethod(d, "accept");
    });
    const FileDialogAnswer answer = service.Show(r);
    EXPECT_EQ(askedFor, 77);
    ASSERT_TRUE(answer.accepted);
    ASSERT_EQ(answer.paths.size(), 1u);
    EXPECT_EQ(answer.paths[0], dir / "chosen.pak");
    EXPECT_EQ(answer.filterIndex, 1);
    WhenShown<QFileDialog>([](QFileDialog* d) { d->reject(); });
    EXPECT_FALSE(service.Show(r).accepted);

    FileDialogRequest open;
    open.fileMustExist = true;
    auto opener = service.Build(open);
    EXPECT_EQ(opener->windowTitle(), QStringLiteral("Open"));
    EXPECT_EQ(opener->fileMode(), QFileDialog::ExistingFile);
    open.multiSelect = true;
    EXPECT_EQ(service.Build(open)->fileMode(), QFileDialog::ExistingFiles);
}

TEST(QtMessageBoxes, StyleBitsChooseButtonsIconAndDefaultAndTheButtonClickedIsTheAnswer) {
    QtMessageBoxService service;
    auto box = service.Build("Replace caf\xE9?", vbYesNoCancel | vbQuestion | 256, "");
    EXPECT_EQ(box->windowTitle() + " " + box->text(), QStringLiteral("Quarrin Replace caf\u00E9?"));
    EXPECT_EQ(box->escapeButton(), box->button(QMessageBox::Cancel));
    using B = QMessageBox;
    const struct {
        int32_t style;
        QMessageBox::StandardButtons buttons;
        QMessageBox::Icon icon;
        QMessageBox::StandardButton byDefault;
    } cases[] = {
        {vbYesNoCancel | vbQuestion | 256, B::Yes | B::No | B::Cancel, B::Question, B::No},
        {vbOKCancel | vbExclamation, B::Ok | B::Cancel, B::Warning, B::Ok},
        {vbAbortRetryIgnore | vbInformation | 512, B::Abort | B::Retry | B::Ignore, B::Information, B::Ignore},
        {vbRetryCancel | vbCritical | 768, B::Retry | B::Cancel, B::Critical, B::Retry},  // beyond the buttons: the first
    };
    for (const auto& c : cases) {
        auto b = service.Build("x", c.style, "Title");
        EXPECT_EQ(b->standardButtons(), c.buttons) << c.style;
        EXPECT_EQ(b->icon(), c.icon) << c.style;
        EXPECT_EQ(static_cast<QAbstractButton*>(b->defaultButton()), b->button(c.byDefault)) << c.style;
    }
    WhenShown<QMessageBox>([](QMessageBox* b) { b->button(QMessageBox::No)->click(); });
    EXPECT_EQ(service.Show("Replace?", vbYesNo, ""), vbNo);
    // Closed without a button: Cancel where there is one, else the first button.
    WhenShown<QMessageBox>([](QMessageBox* b) { b->reject(); });
    EXPECT_EQ(service.Show("Go?", vbOKCancel, ""), vbCancel);
    WhenShown<QMessageBox>([](QMessageBox* b) { b->reject(); });
    EXPECT_EQ(service.Show("Go?", vbYesNo, ""), vbYes);
}

// While a hooked save dialog runs, the Qt dialog's changes reach the dialog
// object's events, its window can be centred from InitDialog, and a ConfirmOK
// handler that refuses keeps it open: only the second OK is taken.
TEST(QtFileDialogs, AHookedDialogsEventsReachTheHandlersAndTheirRefusalsAndFailures) {
    fixtures::TempDir dir;
    std::filesystem::create_directory(dir / "sub");
    const fixtures::Installed<QtFileDialogService, GetFileDialogService, SetFileDialogService> files;
    const QtDialogServices others;
    cCommonDialog dlg;
    dlg.SetHookDialog(true);
    dlg.SetInitDir(dir / "sub");
    dlg.SetFilter("Pak Files (*.pak)|*.pak|All Files (*.*)|*.*");
    std::string events;
    // A window away from the screen's centre, to centre the dialog on.
    QWidget anchor;
    anchor.setGeometry(20, 30, 200, 100);
    const QtWindowBinding anchorHandle(0x7F0, &anchor);
    const WindowObject anchorObject(0x7F0);
    dlg.Events.InitDialog.Connect([&](int32_t hDlg) {
        events += "InitDialog ";
        dlg.CentreDialog(hDlg, &anchorObject);
    });
    dlg.Events.TypeChange.Connect([&](int32_t) { events += "TypeChange "; });
    dlg.Events.FolderChange.Connect([&](int32_t) { events += "FolderChange "; });
    dlg.Events.FileChange.Connect([&](int32_t) { events += "FileChange "; });
    dlg.Events.DialogClose.Connect([&] { events += "DialogClose "; });
    int asked = 0;
    dlg.Events.ConfirmOK.Connect([&](bool& bRefuse) { bRefuse = ++asked == 1; });

    QPoint centre;
    WhenShown<QFileDialog>([&](QFileDialog* d) {
        centre = d->frameGeometry().center();
        auto* types = d->findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
        auto* up = d->findChild<QToolButton*>(QStringLiteral("toParentButton"));
        auto* name = d->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        auto* buttons = d->findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
        ASSERT_TRUE(types && up && name && buttons);
        QPushButton* ok = buttons->button(QDialogButtonBox::Save);
        QTest::keyClick(types, Qt::Key_Down);  // the second type
        up->click();
        emit d->currentChanged(QString::fromStdString(dir / "x.pak"));
        name->setText(QStringLiteral("chosen.pak"));
        ok->click();
        ok->click();
    });
    dlg.ShowSave();
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(dlg.Filename(), dir / "chosen.pak");
    EXPECT_TRUE(events.starts_with("InitDialog ") && events.ends_with(" DialogClose ")) << events;
    for (const char* e : {"TypeChange", "FolderChange", "FileChange"}) EXPECT_NE(events.find(e), std::string::npos) << events;
    // The window's frame is known only once it shows: the centre may be off
    // by the frame's width.
    EXPECT_LE((centre - anchor.geometry().center()).manhattanLength(), 8);

    // A failure raised by a handler while the Qt dialog runs ends the dialog
    // and reaches the caller.
    dlg.SetFilter("A|*.a|B|*.b");
    dlg.Events.TypeChange.Connect([](int32_t) { RaiseError(vbErrInvalidCall); });
    WhenShown<QFileDialog>([](QFileDialog* d) {
        auto* types = d->findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
        ASSERT_NE(types, nullptr);
        QTest::keyClick(types, Qt::Key_Up);  // the second type was kept
    });
    EXPECT_EQ(fixtures::ErrorOf([&] { dlg.ShowOpen(); }).Number, vbErrInvalidCall);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST(QtFontDialogs, TheRequestedFontGoesInAndTheChoiceComesBack) {
    const FontDialogRequest r{.faceName = "DejaVu Sans", .pointSize = 125, .weight = FW_BOLD, .italic = true,
                              .underline = true, .color = 0x123456, .fixedPitchOnly = true};
    EXPECT_EQ(QtFontDialogService::Build(r)->options() & (QFontDialog::MonospacedFonts | QFontDialog::ScalableFonts),
              QFontDialog::MonospacedFonts);

    const FontDialogAnswer a = QtFontDialogService::Answer(QtFontDialogService::FontOf(r), r);
    EXPECT_TRUE(a.accepted && a.italic && a.underline && !a.strikeOut);
    EXPECT_EQ(a.faceName + " " + std::to_string(a.pointSize) + " " + std::to_string(a.weight), "DejaVu Sans 125 700");
    EXPECT_EQ(a.color, 0x123456u);  // Qt's dialog has no colour: it comes back as it went
}
