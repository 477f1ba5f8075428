#pragma once
// The file chooser of the open and save dialogs, as a Qt file dialog. A
// hooked request's dialog reports to the request's events: a change of the
// type (filterSelected), of the folder (directoryEntered) and of the file
// (currentChanged), and the user's OK, which the events may refuse; the dialog
// then stays open. A failure raised by the events ends the dialog and goes on
// to the caller of Show.
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
    // was accepted gives. Show is these two around the dialog's own loop,
    // with the dialog's window bound to the request's handle.
    std::unique_ptr<QFileDialog> Build(const FileDialogRequest& request) const;
    static FileDialogAnswer Answer(const QFileDialog& dialog, const FileDialogRequest& request);
    // The Qt name filters of a request's pairs, one for each pair, in order.
    static QStringList NameFilters(const FileDialogRequest& request);

private:
    OwnerLookup owner_;
};
