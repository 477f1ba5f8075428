#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include "QtFileDialogService.h"
#include "QtMessageBoxService.h"
#include "fixtures/ByteWriter.h"

namespace {

// Runs `act` on the modal dialog as soon as the event loop shows it.
template <typename Dialog, typename Act>
void WhenShown(Act act) {
    QTimer::singleShot(0, [act] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(dialog);
    });
}

FileDialogRequest SaveRequest(const std::string& folder) {
    FileDialogRequest r;
    r.save = true;
    r.title = "Save the member";
    r.initialDir = folder;
    r.fileName = "member.pak";
    r.filters = {{"Pak Files (*.pak)", "*.pak"}, {"Raw stream", "*.dcl;*.raw"}};
    r.filterIndex = 2;
    r.defaultExt = "pak";
    r.overwritePrompt = true;
    return r;
}

}  // namespace

TEST(QtFileDialogs, FilterPairsBecomeQtFilters) {
    FileDialogRequest r;
    r.filters = {{"Pak Files (*.pak)", "*.pak"},
                 {"All (*.*)", "*.*"},
                 {"Pictures", "*.bmp; *.gif"},
                 {"Bitmap (256 colours)", "*.bmp"},
                 {"Caf\xE9", ""}};
    EXPECT_EQ(QtFileDialogService::NameFilters(r),
              (QStringList{QStringLiteral("Pak Files (*.pak)"), QStringLiteral("All (*)"),
                           QStringLiteral("Pictures (*.bmp *.gif)"), QStringLiteral("Bitmap (256 colours) (*.bmp)"),
                           QStringLiteral("Caf\u00E9 (*)")}));
}

TEST(QtFileDialogs, TheDialogIsBuiltFromTheRequest) {
    fixtures::TempDir dir;
    QWidget owner;
    int32_t askedFor = 0;
    QtFileDialogService service;
    service.SetOwnerLookup([&](int32_t hwnd) {
        askedFor = hwnd;
        return &owner;
    });
    FileDialogRequest r = SaveRequest(dir.Path());
    r.hwndOwner = 77;
    auto dialog = service.Build(r);
    EXPECT_EQ(askedFor, 77);
    EXPECT_EQ(dialog->parentWidget(), &owner);
    EXPECT_EQ(dialog->objectName(), QStringLiteral("CommonDialog"));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Save the member"));
    EXPECT_EQ(dialog->acceptMode(), QFileDialog::AcceptSave);
    EXPECT_FALSE(dialog->testOption(QFileDialog::DontConfirmOverwrite));
    EXPECT_EQ(dialog->selectedNameFilter(), QStringLiteral("Raw stream (*.dcl *.raw)"));
    EXPECT_EQ(dialog->directory().absolutePath(), QString::fromStdString(dir.Path()));
    EXPECT_EQ(dialog->defaultSuffix(), QStringLiteral("pak"));

    FileDialogRequest open;
    open.fileMustExist = true;
    auto opener = service.Build(open);
    EXPECT_EQ(opener->windowTitle(), QStringLiteral("Open"));
    EXPECT_EQ(opener->fileMode(), QFileDialog::ExistingFile);
    open.multiSelect = true;
    EXPECT_EQ(service.Build(open)->fileMode(), QFileDialog::ExistingFiles);
}

TEST(QtFileDialogs, TheUsersChoiceComesBackAsPathAndFilterIndex) {
    fixtures::TempDir dir;
    QtFileDialogService service;
    WhenShown<QFileDialog>([](QFileDialog* d) {
        d->selectNameFilter(QStringLiteral("Pak Files (*.pak)"));
        d->selectFile(QStringLiteral("chosen.pak"));
        QMetaObject::invokeMethod(d, "accept");
    });
    const FileDialogAnswer answer = service.Show(SaveRequest(dir.Path()));
    ASSERT_TRUE(answer.accepted);
    ASSERT_EQ(answer.paths.size(), 1u);
    EXPECT_EQ(answer.paths[0], dir / "chosen.pak");
    EXPECT_EQ(answer.filterIndex, 1);

    WhenShown<QFileDialog>([](QFileDialog* d) { d->reject(); });
    EXPECT_FALSE(service.Show(SaveRequest(dir.Path())).accepted);
}

TEST(QtMessageBoxes, StyleBitsChooseButtonsIconAndDefault) {
    QtMessageBoxService service;
    auto box = service.Build("Replace caf\xE9?", vbYesNoCancel | vbQuestion | 256, "");
    EXPECT_EQ(box->windowTitle(), QStringLiteral("Quarrin"));
    EXPECT_EQ(box->text(), QStringLiteral("Replace caf\u00E9?"));
    EXPECT_EQ(box->icon(), QMessageBox::Question);
    EXPECT_EQ(box->standardButtons(), QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    EXPECT_EQ(static_cast<QAbstractButton*>(box->defaultButton()), box->button(QMessageBox::No));
    EXPECT_EQ(box->escapeButton(), box->button(QMessageBox::Cancel));

    struct Case {
        int32_t style;
        QMessageBox::StandardButtons buttons;
        QMessageBox::Icon icon;
        QMessageBox::StandardButton first;
    } cases[] = {
        {vbOKOnly | vbCritical, QMessageBox::Ok, QMessageBox::Critical, QMessageBox::Ok},
        {vbOKCancel | vbExclamation, QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Warning, QMessageBox::Ok},
        {vbAbortRetryIgnore, QMessageBox::Abort | QMessageBox::Retry | QMessageBox::Ignore, QMessageBox::NoIcon,
         QMessageBox::Abort},
        {vbYesNo | vbInformation, QMessageBox::Yes | QMessageBox::No, QMessageBox::Information, QMessageBox::Yes},
        {vbRetryCancel, QMessageBox::Retry | QMessageBox::Cancel, QMessageBox::NoIcon, QMessageBox::Retry},
    };
    for (const auto& c : cases) {
        auto b = service.Build("x", c.style, "Title");
        EXPECT_EQ(b->standardButtons(), c.buttons) << c.style;
        EXPECT_EQ(b->icon(), c.icon) << c.style;
        EXPECT_EQ(b->windowTitle(), QStringLiteral("Title"));
        EXPECT_EQ(static_cast<QAbstractButton*>(b->defaultButton()), b->button(c.first)) << c.style;
    }
    // A default button beyond the style's buttons falls back to the first.
    auto b = service.Build("x", vbOKOnly | 512, "");
    EXPECT_EQ(static_cast<QAbstractButton*>(b->defaultButton()), b->button(QMessageBox::Ok));
}

TEST(QtMessageBoxes, TheButtonClickedIsTheAnswer) {
    QtMessageBoxService service;
    WhenShown<QMessageBox>([](QMessageBox* b) { b->button(QMessageBox::No)->click(); });
    EXPECT_EQ(service.Show("Replace?", vbYesNo, ""), vbNo);
    WhenShown<QMessageBox>([](QMessageBox* b) { b->button(QMessageBox::Retry)->click(); });
    EXPECT_EQ(service.Show("Again?", vbAbortRetryIgnore, ""), vbRetry);
    // Closed without a button: Cancel where there is one.
    WhenShown<QMessageBox>([](QMessageBox* b) { b->reject(); });
    EXPECT_EQ(service.Show("Go?", vbOKCancel, ""), vbCancel);
}
