#include "QtMessageBoxService.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <algorithm>
#include <vector>

#include "Text1252.h"

namespace {

// The buttons of each style, left to right.
std::vector<QMessageBox::StandardButton> ButtonsOf(int32_t buttons) {
    switch (buttons & 7) {
        case vbOKCancel: return {QMessageBox::Ok, QMessageBox::Cancel};
        case vbAbortRetryIgnore: return {QMessageBox::Abort, QMessageBox::Retry, QMessageBox::Ignore};
        case vbYesNoCancel: return {QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel};
        case vbYesNo: return {QMessageBox::Yes, QMessageBox::No};
        case vbRetryCancel: return {QMessageBox::Retry, QMessageBox::Cancel};
        default: return {QMessageBox::Ok};
    }
}

QMessageBox::Icon IconOf(int32_t buttons) {
    switch (buttons & 0x70) {
        case vbCritical: return QMessageBox::Critical;
        case vbQuestion: return QMessageBox::Question;
        case vbExclamation: return QMessageBox::Warning;
        case vbInformation: return QMessageBox::Information;
        default: return QMessageBox::NoIcon;
    }
}

int32_t ResultOf(QMessageBox::StandardButton b) {
    switch (b) {
        case QMessageBox::Ok: return vbOK;
        case QMessageBox::Cancel: return vbCancel;
        case QMessageBox::Abort: return vbAbort;
        case QMessageBox::Retry: return vbRetry;
        case QMessageBox::Ignore: return vbIgnore;
        case QMessageBox::Yes: return vbYes;
        case QMessageBox::No: return vbNo;
        default: return 0;
    }
}

}  // namespace

QtMessageBoxService::QtMessageBoxService() : owner_([] { return QApplication::activeWindow(); }) {}

void QtMessageBoxService::SetOwnerLookup(OwnerLookup lookup) { owner_ = std::move(lookup); }

std::unique_ptr<QMessageBox> QtMessageBoxService::Build(const std::string& prompt, int32_t buttons,
                                                        const std::string& title) const {
    auto box = std::make_unique<QMessageBox>(owner_ ? owner_() : nullptr);
    box->setObjectName(QStringLiteral("MsgBox"));
    box->setWindowTitle(title.empty() ? QStringLiteral("Quarrin") : FromBytes(title));
    box->setText(FromBytes(prompt));
    box->setTextFormat(Qt::PlainText);
    box->setIcon(IconOf(buttons));
    const auto standard = ButtonsOf(buttons);
    for (QMessageBox::StandardButton b : standard) box->addButton(b);
    // The default button is the first unless the style's bits 8 and 9 name another.
    const size_t def = static_cast<size_t>((buttons >> 8) & 3);
    box->setDefaultButton(standard[def < standard.size() ? def : 0]);
    // Escape answers Cancel where there is one, and OK on a box with OK alone;
    // other boxes need a button.
    if ((buttons & 7) == vbOKOnly) {
        box->setEscapeButton(QMessageBox::Ok);
    } else if (std::find(standard.begin(), standard.end(), QMessageBox::Cancel) != standard.end()) {
        box->setEscapeButton(QMessageBox::Cancel);
    }
    return box;
}

int32_t QtMessageBoxService::Answer(const QMessageBox& box, int32_t buttons) {
    QAbstractButton* clicked = box.clickedButton();
    if (clicked != nullptr) {
        const int32_t r = ResultOf(box.standardButton(clicked));
        if (r != 0) return r;
    }
    const auto standard = ButtonsOf(buttons);
    for (QMessageBox::StandardButton b : standard)
        if (b == QMessageBox::Cancel) return vbCancel;
    return ResultOf(standard.front());
}

int32_t QtMessageBoxService::Show(const std::string& prompt, int32_t buttons, const std::string& title) {
    std::unique_ptr<QMessageBox> box = Build(prompt, buttons, title);
    box->exec();
    return Answer(*box, buttons);
}
