#pragma once
// Where the program's windows stand, for the platform's window rectangles:
// the front end's table of window handles, and the screen from QScreen.
#include <QPointer>
#include <QWidget>
#include <cstdint>

#include "platform/Windows.h"

class QtWindowService : public IWindowGeometryService {
public:
    // The table of handles is the program's, as the platform's handles are:
    // a handle names its widget until it is unbound or the widget is gone.
    static void Bind(int32_t hwnd, QWidget* widget);
    static void Unbind(int32_t hwnd);
    static QWidget* Find(int32_t hwnd);
    // The widget of a handle, or the active window for a handle without one.
    static QWidget* OwnerOf(int32_t hwnd);

    // Rectangles are the windows' frames, in the screen's logical pixels.
    bool WindowRect(int32_t hWnd, RECT& rect) override;
    bool MoveWindow(int32_t hWnd, int32_t x, int32_t y, int32_t width, int32_t height, bool repaint) override;
    // The primary screen's.
    bool WorkArea(RECT& rect) override;
    bool ScreenSize(int32_t& width, int32_t& height) override;
};

// A handle bound to a widget for the life of the binding; a handle of 0 binds
// nothing.
class QtWindowBinding {
public:
    QtWindowBinding(int32_t hwnd, QWidget* widget);
    ~QtWindowBinding();
    QtWindowBinding(const QtWindowBinding&) = delete;
    QtWindowBinding& operator=(const QtWindowBinding&) = delete;

private:
    int32_t hwnd_;
};
