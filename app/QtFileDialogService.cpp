#include "QtFileDialogService.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QRegularExpression>

#include "Text1252.h"

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
    auto dialog = std::make_unique<QFileDialog>(owner_ ? owner_(request.hwndOwner) : nullptr);
    dialog->setObjectName(QStringLiteral("CommonDialog"));
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
    if (dialog->exec() != QDialog::Accepted) return {};
    return Answer(*dialog, request);
}
