#include "Icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <functional>

namespace {

using Drawing = std::function<void(QPainter&)>;

// Draws a picture on a 16 x 16 grid at 1x and 2x, so that it stays sharp on
// screens of a higher density.
QIcon Make(const Drawing& draw, int grid = 16) {
    QIcon icon;
    for (int scale : {1, 2, 4}) {
        QPixmap pixmap(grid * scale, grid * scale);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        p.scale(scale, scale);
        draw(p);
        p.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

const QColor kOutline(0x40, 0x40, 0x40);

void DrawFolder(QPainter& p, bool open) {
    p.setPen(QPen(QColor(0x8a, 0x6a, 0x10), 1));
    QPainterPath back;
    back.moveTo(1.5, 3.5);
    back.lineTo(6, 3.5);
    back.lineTo(7.5, 5);
    back.lineTo(14.5, 5);
    back.lineTo(14.5, 13.5);
    back.lineTo(1.5, 13.5);
    back.closeSubpath();
    p.setBrush(QColor(0xe8, 0xb8, 0x30));
    p.drawPath(back);
    QPainterPath front;
    if (open) {
        front.moveTo(1.5, 13.5);
        front.lineTo(4, 7.5);
        front.lineTo(15.5, 7.5);
        front.lineTo(13, 13.5);
    } else {
        front.moveTo(1.5, 13.5);
        front.lineTo(1.5, 6.5);
        front.lineTo(14.5, 6.5);
        front.lineTo(14.5, 13.5);
    }
    front.closeSubpath();
    p.setBrush(QColor(0xf8, 0xd8, 0x60));
    p.drawPath(front);
}

void DrawFloppy(QPainter& p) {
    p.setPen(QPen(QColor(0x20, 0x30, 0x60), 1));
    p.setBrush(QColor(0x3a, 0x5f, 0xb0));
    QPainterPath body;
    body.moveTo(1.5, 1.5);
    body.lineTo(12.5, 1.5);
    body.lineTo(14.5, 3.5);
    body.lineTo(14.5, 14.5);
    body.lineTo(1.5, 14.5);
    body.closeSubpath();
    p.drawPath(body);
    p.setBrush(QColor(0xf0, 0xf0, 0xf0));
    p.drawRect(QRectF(4.5, 1.5, 7, 5));
    p.setBrush(QColor(0x3a, 0x5f, 0xb0));
    p.drawRect(QRectF(9, 2.5, 1.5, 3));
    p.setBrush(QColor(0xe0, 0xe0, 0xe0));
    p.drawRect(QRectF(3.5, 9.5, 9, 5));
}

void DrawMagnifier(QPainter& p) {
    p.setPen(QPen(QColor(0x50, 0x50, 0x50), 1));
    p.setBrush(QColor(0xff, 0xff, 0xff));
    p.drawRect(QRectF(1.5, 1.5, 9, 12));
    p.setPen(QPen(QColor(0x90, 0x90, 0x90), 1));
    for (int y = 4; y <= 11; y += 2) p.drawLine(QPointF(3, y + 0.5), QPointF(9, y + 0.5));
    p.setPen(QPen(QColor(0x60, 0x40, 0x20), 2.5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(11.5, 11.5), QPointF(14.5, 14.5));
    p.setPen(QPen(kOutline, 1.2));
    p.setBrush(QColor(0xc0, 0xe0, 0xff, 0xd0));
    p.drawEllipse(QPointF(9.5, 9.5), 3.6, 3.6);
}

void DrawExtract(QPainter& p) {
    // A box with an arrow coming out of it.
    p.setPen(QPen(QColor(0x6a, 0x4a, 0x20), 1));
    p.setBrush(QColor(0xc8, 0x96, 0x50));
    p.drawRect(QRectF(1.5, 8.5, 11, 6));
    p.setBrush(QColor(0xb0, 0x80, 0x40));
    QPainterPath lid;
    lid.moveTo(1.5, 8.5);
    lid.lineTo(3.5, 6.5);
    lid.lineTo(14.5, 6.5);
    lid.lineTo(12.5, 8.5);
    lid.closeSubpath();
    p.drawPath(lid);
    p.setPen(QPen(QColor(0x10, 0x80, 0x20), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawLine(QPointF(8, 9), QPointF(8, 1.5));
    p.drawLine(QPointF(5, 4.5), QPointF(8, 1.5));
    p.drawLine(QPointF(11, 4.5), QPointF(8, 1.5));
}

void DrawArrow(QPainter& p, bool down) {
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x50, 0x50, 0x50));
    QPainterPath tri;
    if (down) {
        tri.moveTo(4, 6);
        tri.lineTo(12, 6);
        tri.lineTo(8, 11);
    } else {
        tri.moveTo(4, 11);
        tri.lineTo(12, 11);
        tri.lineTo(8, 6);
    }
    tri.closeSubpath();
    p.drawPath(tri);
}

void DrawParentFolder(QPainter& p) {
    DrawFolder(p, false);
    p.setPen(QPen(QColor(0x20, 0x20, 0x20), 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawLine(QPointF(8, 12), QPointF(8, 8));
    p.drawLine(QPointF(8, 8), QPointF(10.5, 8));
    p.drawLine(QPointF(6, 10), QPointF(8, 8));
    p.drawLine(QPointF(10, 10), QPointF(8, 8));
}

}  // namespace

namespace Icons {

QIcon ToolImage(int image) {
    switch (image) {
        case 1: return Folder(true);
        case 2: return Make(DrawFloppy);
        case 3: return Make(DrawMagnifier);
        case 4: return SortArrow(false);
        case 5: return SortArrow(true);
        case 6: return Make(DrawExtract);
        default: return {};
    }
}

QIcon FolderImage(int image) {
    switch (image) {
        case 1: return Folder(false);
        case 2: return Make(DrawParentFolder);
        default: return {};
    }
}

QIcon SortArrow(bool descending) {
    return Make([descending](QPainter& p) { DrawArrow(p, descending); });
}

QIcon Folder(bool open) {
    return Make([open](QPainter& p) { DrawFolder(p, open); });
}

QIcon Application() {
    return Make(
        [](QPainter& p) {
            // The same picture as the installed quarrin.svg, on a 16 grid.
            p.setPen(Qt::NoPen);
            p.setBrush(QColor(0x2d, 0x55, 0x72));
            p.drawRoundedRect(QRectF(0.5, 0.5, 15, 15), 3, 3);
            p.setBrush(QColor(0xc8, 0x96, 0x50));
            p.drawRect(QRectF(3, 8, 8, 5));
            p.setBrush(QColor(0xa8, 0x76, 0x38));
            QPainterPath lid;
            lid.moveTo(3, 8);
            lid.lineTo(4.5, 6);
            lid.lineTo(12.5, 6);
            lid.lineTo(11, 8);
            lid.closeSubpath();
            p.drawPath(lid);
            p.setPen(QPen(QColor(0xf4, 0xf4, 0xf4), 1.4));
            p.setBrush(Qt::NoBrush);
            p.drawEllipse(QPointF(10.5, 6), 2.6, 2.6);
            p.setPen(QPen(QColor(0xf4, 0xf4, 0xf4), 1.8, Qt::SolidLine, Qt::RoundCap));
            p.drawLine(QPointF(12.4, 7.9), QPointF(14.2, 9.7));
        },
        16);
}

}  // namespace Icons
