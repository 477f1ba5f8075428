#include "QtWindowService.h"

#include <QApplication>
#include <QGuiApplication>
#include <QScreen>
#include <map>

namespace {

std::map<int32_t, QPointer<QWidget>>& Table() {
    static std::map<int32_t, QPointer<QWidget>> table;
    return table;
}

RECT ToRect(const QRect& r) { return RECT{r.left(), r.top(), r.left() + r.width(), r.top() + r.height()}; }

}  // namespace

void QtWindowService::Bind(int32_t hwnd, QWidget* widget) {
    if (hwnd != 0) Table()[hwnd] = widget;
}

void QtWindowService::Unbind(int32_t hwnd) { Table().erase(hwnd); }

QWidget* QtWindowService::Find(int32_t hwnd) {
    const auto it = Table().find(hwnd);
    return it != Table().end() ? it->second.data() : nullptr;
}

QWidget* QtWindowService::OwnerOf(int32_t hwnd) {
    QWidget* widget = Find(hwnd);
    return widget != nullptr ? widget : QApplication::activeWindow();
}

bool QtWindowService::WindowRect(int32_t hWnd, RECT& rect) {
    QWidget* widget = Find(hWnd);
    if (widget == nullptr) return false;
    rect = ToRect(widget->frameGeometry());
    return true;
}

bool QtWindowService::MoveWindow(int32_t hWnd, int32_t x, int32_t y, int32_t width, int32_t height, bool repaint) {
    QWidget* widget = Find(hWnd);
    if (widget == nullptr) return false;
    // The frame goes where it is asked; the window inside it is the frame
    // less its borders and title.
    const QRect frame = widget->frameGeometry();
    const QRect inner = widget->geometry();
    const QSize size(width - (frame.width() - inner.width()), height - (frame.height() - inner.height()));
    if (size != inner.size()) widget->resize(size);
    widget->move(x, y);
    if (repaint) widget->update();
    return true;
}

bool QtWindowService::WorkArea(RECT& rect) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return false;
    rect = ToRect(screen->availableGeometry());
    return true;
}

bool QtWindowService::ScreenSize(int32_t& width, int32_t& height) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return false;
    width = screen->geometry().width();
    height = screen->geometry().height();
    return true;
}

QtWindowBinding::QtWindowBinding(int32_t hwnd, QWidget* widget) : hwnd_(hwnd) { QtWindowService::Bind(hwnd, widget); }

QtWindowBinding::~QtWindowBinding() {
    if (hwnd_ != 0) QtWindowService::Unbind(hwnd_);
}
