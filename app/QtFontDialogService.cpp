#include "QtFontDialogService.h"

#include <QFontDialog>
#include <algorithm>
#include <cmath>

#include "QtWindowService.h"
#include "Text1252.h"

QFont QtFontDialogService::FontOf(const FontDialogRequest& request) {
    QFont font;
    if (!request.faceName.empty()) font.setFamily(FromBytes(request.faceName));
    if (request.pointSize > 0) font.setPointSizeF(request.pointSize / 10.0);
    // The platform's weights and Qt's run on the same scale, 100 to 900.
    font.setWeight(static_cast<QFont::Weight>(std::clamp(request.weight, 100, 900)));
    font.setItalic(request.italic);
    font.setUnderline(request.underline);
    font.setStrikeOut(request.strikeOut);
    return font;
}

std::unique_ptr<QFontDialog> QtFontDialogService::Build(const FontDialogRequest& request) {
    auto dialog = std::make_unique<QFontDialog>(QtWindowService::OwnerOf(request.hwndOwner));
    dialog->setObjectName(QStringLiteral("CommonDialog"));
    QFontDialog::FontDialogOptions options = QFontDialog::DontUseNativeDialog;
    if (request.fixedPitchOnly) options |= QFontDialog::MonospacedFonts;
    if (request.scalableOnly) options |= QFontDialog::ScalableFonts;
    dialog->setOptions(options);
    dialog->setCurrentFont(FontOf(request));
    return dialog;
}

FontDialogAnswer QtFontDialogService::Answer(const QFont& font, const FontDialogRequest& request) {
    FontDialogAnswer answer;
    answer.accepted = true;
    answer.faceName = ToBytes(font.family());
    answer.pointSize = static_cast<int32_t>(std::lround(font.pointSizeF() * 10));
    answer.weight = font.weight();
    answer.italic = font.italic();
    answer.underline = font.underline();
    answer.strikeOut = font.strikeOut();
    answer.color = request.color;
    return answer;
}

FontDialogAnswer QtFontDialogService::Show(const FontDialogRequest& request) {
    std::unique_ptr<QFontDialog> dialog = Build(request);
    const QtWindowBinding binding(request.hwndDialog, dialog.get());
    if (request.events) request.events(DialogEvent::Shown);
    if (dialog->exec() != QDialog::Accepted) return {};
    return Answer(dialog->selectedFont(), request);
}
