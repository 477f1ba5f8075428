#pragma once
// The file chooser of the open and save dialogs, as a Qt file dialog.
#include <QString>
#include <QStringList>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>

#include "platform/FileDialogs.h"

class QFileDialog;

class QtFileDialogService : public IFileDialogService {
public:
    // Finds the widget of a window handle; the default takes the active window.
    using OwnerLookup = std::function<QWidget*(int32_t hwnd)>;

    QtFileDialogService();
    void SetOwnerLookup(OwnerLookup lookup);

    FileDialogAnswer Show(const FileDialogRequest& request) override;

    // The dialog for a request, not yet shown; and the answer a dialog that
    // was accepted gives. Show is these two around the dialog's own loop.
    std::unique_ptr<QFileDialog> Build(const FileDialogRequest& request) const;
    static FileDialogAnswer Answer(const QFileDialog& dialog, const FileDialogRequest& request);
    // The Qt name filters of a request's pairs, one for each pair, in order.
    static QStringList NameFilters(const FileDialogRequest& request);

private:
    OwnerLookup owner_;
};
