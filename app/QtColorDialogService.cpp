#include "QtColorDialogService.h"

#include <QColorDialog>

#include "QtWindowService.h"

QColor QtColorDialogService::ToQColor(uint32_t color) {
    return QColor(static_cast<int>(color & 0xFF), static_cast<int>((color >> 8) & 0xFF),
                  static_cast<int>((color >> 16) & 0xFF));
}

uint32_t QtColorDialogService::FromQColor(const QColor& color) {
    const QColor rgb = color.toRgb();
    return static_cast<uint32_t>(rgb.red()) | (static_cast<uint32_t>(rgb.green()) << 8) |
           (static_cast<uint32_t>(rgb.blue()) << 16);
}

std::unique_ptr<QColorDialog> QtColorDialogService::Build(const ColorDialogRequest& request) {
    auto dialog = std::make_unique<QColorDialog>(QtWindowService::OwnerOf(request.hwndOwner));
    dialog->setObjectName(QStringLiteral("CommonDialog"));
    dialog->setOption(QColorDialog::DontUseNativeDialog, true);
    dialog->setOption(QColorDialog::ShowAlphaChannel, false);
    for (int i = 0; i < QColorDialog::customCount() && i < static_cast<int>(request.customColors.size()); ++i) {
        QColorDialog::setCustomColor(i, ToQColor(request.customColors[static_cast<size_t>(i)]));
    }
    dialog->setCurrentColor(ToQColor(request.color));
    return dialog;
}

ColorDialogAnswer QtColorDialogService::Answer(const QColorDialog& dialog) {
    ColorDialogAnswer answer;
    answer.accepted = true;
    answer.color = FromQColor(dialog.currentColor());
    for (int i = 0; i < QColorDialog::customCount() && i < static_cast<int>(answer.customColors.size()); ++i) {
        answer.customColors[static_cast<size_t>(i)] = FromQColor(QColorDialog::customColor(i));
    }
    return answer;
}

ColorDialogAnswer QtColorDialogService::Show(const ColorDialogRequest& request) {
    std::unique_ptr<QColorDialog> dialog = Build(request);
    const QtWindowBinding binding(request.hwndDialog, dialog.get());
    if (request.events) request.events(DialogEvent::Shown);
    if (dialog->exec() != QDialog::Accepted) return {};
    return Answer(*dialog);
}
