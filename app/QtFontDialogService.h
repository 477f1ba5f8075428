#pragma once
// The font dialog as Qt's font dialog. Qt's dialog has no colour to choose,
// so the colour comes back as it went.
#include <QFont>
#include <memory>

#include "platform/CommonDialogs.h"

class QFontDialog;

class QtFontDialogService : public IFontDialogService {
public:
    FontDialogAnswer Show(const FontDialogRequest& request) override;

    // The font a request starts from, the dialog for a request, not yet
    // shown, and the answer for the font that a dialog's user chose.
    static QFont FontOf(const FontDialogRequest& request);
    static std::unique_ptr<QFontDialog> Build(const FontDialogRequest& request);
    static FontDialogAnswer Answer(const QFont& font, const FontDialogRequest& request);
};
