#include "PictureView.h"

#include <QImage>
#include <QPaintEvent>
#include <QPainter>

#include "controls/Controls.h"
#include "platform/SystemColors.h"

PictureView::PictureView(const PictureBox& model, QWidget* parent) : QFrame(parent), model_(model) {
    // Every pixel is drawn here: nothing behind the widget needs painting.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void PictureView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    uint32_t back = 0;
    if (OleTranslateColor(model_.BackColor, 0, &back) != S_OK) back = 0;
    painter.fillRect(event->rect(), QColor(static_cast<int>(back & 0xFF), static_cast<int>((back >> 8) & 0xFF),
                                           static_cast<int>((back >> 16) & 0xFF)));
    const uint8_t* bits = model_.ImageBits();
    const QRect area = event->rect().intersected(QRect(0, 0, model_.ImageWidth(), model_.ImageHeight()));
    if (bits == nullptr || area.isEmpty()) return;
    // Only the part to repaint is copied. The image's fourth byte is unused;
    // Format_RGB32 wants it 0xFF.
    QImage part(area.size(), QImage::Format_RGB32);
    if (part.isNull()) return;
    const auto* pixels = reinterpret_cast<const uint32_t*>(bits);
    for (int y = 0; y < area.height(); ++y) {
        const uint32_t* in = pixels + static_cast<size_t>(area.top() + y) * model_.ImageWidth() + area.left();
        auto* out = reinterpret_cast<uint32_t*>(part.scanLine(y));
        for (int x = 0; x < area.width(); ++x) out[x] = in[x] | 0xFF000000u;
    }
    painter.drawImage(area.topLeft(), part);
}
