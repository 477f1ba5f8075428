#include "QtFileDialogService.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QRegularExpression>
#include <exception>

#include "QtWindowService.h"
#include "Text1252.h"

namespace {

// The file dialog that reports to a hooked request's events. The user's OK is
// asked about in done(), which QFileDialog::accept() reaches only with a real
// choice: a folder's name typed in opens that folder, and a declined
// overwrite stays, without asking.
class HookedFileDialog : public QFileDialog {
public:
    HookedFileDialog(QWidget* parent, DialogEventSink events) : QFileDialog(parent), events_(std::move(events)) {
        if (!events_) return;
        connect(this, &QFileDialog::filterSelected, this, [this] { Report(DialogEvent::TypeChanged); });
        connect(this, &QFileDialog::directoryEntered, this, [this] { Report(DialogEvent::FolderChanged); });
        connect(this, &QFileDialog::currentChanged, this, [this] { Report(DialogEvent::SelectionChanged); });
    }

    // Before the dialog shows; a failure raised here goes straight on.
    void ReportShown() {
        if (events_) events_(DialogEvent::Shown);
    }
    // What a handler raised while the dialog ran.
    std::exception_ptr Failure() const { return failure_; }

protected:
    void done(int result) override {
        if (result == QDialog::Accepted && events_ && !Report(DialogEvent::OkPressed)) return;
        QFileDialog::done(result);
    }

private:
    // A failure can't pass through Qt's event loop: it is kept, and the
    // dialog ends.
    bool Report(DialogEvent event) {
        if (failure_) return false;
        try {
            return events_(event);
        } catch (...) {
            failure_ = std::current_exception();
            QFileDialog::done(QDialog::Rejected);
            return false;
        }
    }

    DialogEventSink events_;
    std::exception_ptr failure_;
};

}  // namespace

QtFileDialogService::QtFileDialogService() : owner_([](int32_t) { return QApplication::activeWindow(); }) {}

void QtFileDialogService::SetOwnerLookup(OwnerLookup lookup) { owner_ = std::move(lookup); }

QStringList QtFileDialogService::NameFilters(const FileDialogRequest& request) {
    // The platform's filters name their patterns apart from the text that is
    // shown, while a Qt filter reads them from the parentheses at its end. A
    // name that already ends in a group of patterns loses that group, so the
    // patterns show once, as they really are.
    static const QRegularExpression trailingPatterns(QStringLiteral("\\s*\\([^()]*[*?][^()]*\\)\\s*$"));
    QStringList filters;
    for (const auto& [name, pattern] : request.filters) {
        QString shown = FromBytes(name);
        shown.remove(trailingPatterns);
        QStringList patterns;
        for (QString p : FromBytes(pattern).split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            p = p.trimmed();
            if (p.isEmpty()) continue;
            // "*.*" takes every file on the platform, also those without a point.
            patterns << (p == QLatin1String("*.*") ? QStringLiteral("*") : p);
        }
        if (patterns.isEmpty()) patterns << QStringLiteral("*");
        filters << shown.trimmed() + QStringLiteral(" (") + patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
    }
    return filters;
}

std::unique_ptr<QFileDialog> QtFileDialogService::Build(const FileDialogRequest& request) const {
    auto dialog = std::make_unique<HookedFileDialog>(owner_ ? owner_(request.hwndOwner) : nullptr, request.events);
    dialog->setObjectName(QStringLiteral("CommonDialog"));
    // The widgets' own dialog, whose OK can be refused; a desktop's native
    // dialog can't be.
    dialog->setOption(QFileDialog::DontUseNativeDialog, true);
    QString title = FromBytes(request.title);
    if (title.isEmpty()) title = request.save ? QStringLiteral("Save As") : QStringLiteral("Open");
    dialog->setWindowTitle(title);
    if (request.save) {
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->setFileMode(QFileDialog::AnyFile);
        dialog->setOption(QFileDialog::DontConfirmOverwrite, !request.overwritePrompt);
    } else {
        dialog->setAcceptMode(QFileDialog::AcceptOpen);
        dialog->setFileMode(request.multiSelect     ? QFileDialog::ExistingFiles
                            : request.fileMustExist ? QFileDialog::ExistingFile
                                                    : QFileDialog::AnyFile);
    }
    const QStringList filters = NameFilters(request);
    if (!filters.isEmpty()) {
        dialog->setNameFilters(filters);
        const int index = request.filterIndex >= 1 && request.filterIndex <= filters.size() ? request.filterIndex : 1;
        dialog->selectNameFilter(filters.at(index - 1));
    }
    if (!request.initialDir.empty()) dialog->setDirectory(QFile::decodeName(request.initialDir.c_str()));
    if (!request.defaultExt.empty()) dialog->setDefaultSuffix(QFile::decodeName(request.defaultExt.c_str()));
    if (!request.fileName.empty()) dialog->selectFile(QFile::decodeName(request.fileName.c_str()));
    return dialog;
}

FileDialogAnswer QtFileDialogService::Answer(const QFileDialog& dialog, const FileDialogRequest& request) {
    FileDialogAnswer answer;
    for (const QString& path : dialog.selectedFiles()) answer.paths.push_back(QFile::encodeName(path).toStdString());
    answer.accepted = !answer.paths.empty();
    const int index = dialog.nameFilters().indexOf(dialog.selectedNameFilter());
    answer.filterIndex = index >= 0 ? index + 1 : request.filterIndex;
    return answer;
}

FileDialogAnswer QtFileDialogService::Show(const FileDialogRequest& request) {
    std::unique_ptr<QFileDialog> dialog = Build(request);
    auto& hooked = static_cast<HookedFileDialog&>(*dialog);
    const QtWindowBinding binding(request.hwndDialog, dialog.get());
    hooked.ReportShown();
    const int result = dialog->exec();
    if (hooked.Failure()) std::rethrow_exception(hooked.Failure());
    if (result != QDialog::Accepted) return {};
    return Answer(*dialog, request);
}
