#pragma once
// The colour dialog as Qt's colour dialog. Qt's dialog always shows its
// custom colours, so the requests to open it full or to keep it closed have
// nothing to steer.
#include <QColor>
#include <cstdint>
#include <memory>

#include "platform/CommonDialogs.h"

class QColorDialog;

class QtColorDialogService : public IColorDialogService {
public:
    ColorDialogAnswer Show(const ColorDialogRequest& request) override;

    // The dialog for a request, not yet shown, with the request's custom
    // colours put into Qt's; and the answer of a dialog that was accepted.
    static std::unique_ptr<QColorDialog> Build(const ColorDialogRequest& request);
    static ColorDialogAnswer Answer(const QColorDialog& dialog);

    // A colour word (red in the low byte) and a Qt colour.
    static QColor ToQColor(uint32_t color);
    static uint32_t FromQColor(const QColor& color);
};
