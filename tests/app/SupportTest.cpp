#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QKeyEvent>
#include <QTimer>
#include <algorithm>
#include <functional>
#include <vector>

#include "EventPump.h"
#include "KeyCodes.h"
#include "MainWindow.h"
#include "platform/Runtime.h"
#include "platform/Windows.h"

// The virtual key of a letter, a digit or a function key, and the code page
// character of a typed key: characters outside the code page, keys without
// text, and Tab type nothing. -1: not asked.
TEST(KeyCodesTest, GivesTheVirtualKeyAndTheCodePageCharacter) {
    const std::tuple<int, Qt::KeyboardModifiers, QString, int, int> keys[] = {
        {Qt::Key_Q, {}, "q", 'Q', -1},
        {Qt::Key_9, {}, "9", '9', '9'},
        {Qt::Key_F5, {}, {}, 116, 0},
        {Qt::Key_Enter, Qt::KeypadModifier, "\r", -1, 13},
        {Qt::Key_Eacute, {}, QStringLiteral("\u00E9"), -1, 0xE9},
        {Qt::Key_unknown, {}, QStringLiteral("\u20AC"), -1, 0x80},
        {Qt::Key_unknown, {}, QStringLiteral("\u0142"), -1, 0},
        {Qt::Key_Tab, {}, "\t", -1, 0},
    };
    for (const auto& [key, modifiers, text, virtualKey, ascii] : keys) {
        const QKeyEvent e(QEvent::KeyPress, key, modifiers, text);
        if (virtualKey >= 0) { EXPECT_EQ(KeyCodes::VirtualKey(e), virtualKey) << key; }
        if (ascii >= 0) { EXPECT_EQ(KeyCodes::KeyAscii(e), ascii) << key; }
    }
    EXPECT_EQ(KeyCodes::ShiftState(Qt::ShiftModifier | Qt::AltModifier), 5);
    EXPECT_EQ(KeyCodes::ShiftState(Qt::ControlModifier), 2);
}

// Twips at fifteen to the pixel; neighbours meet, as the far edge is rounded
// and not the size. Column widths in hundredths of a millimetre at 96 dpi.
TEST(UnitsTest, ShowsTwipsAtFifteenToThePixel) {
    EXPECT_EQ(MainWindow::PixelRect(Rect{2160, 150, 2415, 2820}), QRect(144, 10, 161, 188));
    EXPECT_EQ(MainWindow::PixelRect(Rect{65, 3100, 2055, 315}), QRect(4, 207, 137, 21));
    EXPECT_EQ(MainWindow::PixelsOfHimetric(4304), 163);
}

// Posted window messages are delivered from the event loop, one posted while
// one is delivered in a later pass. A wait inside a yield still gets its
// timers, down to a fixed depth; without the hook DoEvents leaves events
// where they are.
TEST(EventPumpTest, DeliversPostedMessagesAndYieldsInsideYieldsDownToAFixedDepth) {
    EventPump::Install();
    const PlatformWindow window;
    std::vector<int32_t> seen;
    const int32_t proc = RegisterWindowProc([&seen](int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t) {
        seen.push_back(wParam);
        if (wParam == 1) PostMessageA(hWnd, uMsg, 3, 0);
        return 0;
    });
    SetWindowLongA(window.hWnd(), GWL_WNDPROC, proc);
    PostMessageA(window.hWnd(), MM_WOM_DONE, 1, 0);
    PostMessageA(window.hWnd(), MM_WOM_DONE, 2, 0);
    EXPECT_TRUE(seen.empty());
    DoEvents();
    DoEvents();
    EXPECT_EQ(seen, (std::vector<int32_t>{1, 2, 3}));
    EXPECT_EQ(PostedMessageCount(), 0u);
    UnregisterWindowProc(proc);

    int deepest = 0;
    int calls = 0;
    // Each pass starts a timer whose handler yields again, without end.
    std::function<void()> again = [&] {
        ++calls;
        deepest = std::max(deepest, EventPump::Depth());
        if (calls < 100) {
            QTimer::singleShot(0, again);
            DoEvents();
        }
    };
    QTimer::singleShot(0, again);
    DoEvents();
    EXPECT_EQ(EventPump::Depth(), 0);
    EventPump::Uninstall();
    EXPECT_EQ(deepest, EventPump::kMaxDepth);
    // The chain's last timer still holds this frame's locals: run it out here,
    // not in a later test.
    while (calls < 100) QCoreApplication::processEvents();
    bool ran = false;
    QTimer::singleShot(0, [&ran] { ran = true; });
    DoEvents();
    EXPECT_FALSE(ran);
    QCoreApplication::processEvents();
    EXPECT_TRUE(ran);
}
