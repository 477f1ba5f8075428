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

namespace {

QKeyEvent Key(int key, Qt::KeyboardModifiers modifiers = {}, const QString& text = {}) {
    return QKeyEvent(QEvent::KeyPress, key, modifiers, text);
}

}  // namespace

TEST(KeyCodesTest, GivesTheVirtualKeysThatTheReportPaneTests) {
    EXPECT_EQ(KeyCodes::VirtualKey(Key(Qt::Key_PageUp)), 33);
    EXPECT_EQ(KeyCodes::VirtualKey(Key(Qt::Key_PageDown)), 34);
    EXPECT_EQ(KeyCodes::VirtualKey(Key(Qt::Key_End)), 35);
    EXPECT_EQ(KeyCodes::VirtualKey(Key(Qt::Key_Home)), 36);
    EXPECT_EQ(KeyCodes::VirtualKey(Key(Qt::Key_Down)), 40);
    EXPECT_EQ(KeyCodes::VirtualKey(Key(Qt::Key_Q, {}, "q")), 'Q');
    EXPECT_EQ(KeyCodes::VirtualKey(Key(Qt::Key_F5)), 116);
    EXPECT_EQ(KeyCodes::VirtualKey(Key(Qt::Key_Eject)), 0);
    EXPECT_EQ(KeyCodes::ShiftState(Qt::ShiftModifier | Qt::AltModifier), 5);
    EXPECT_EQ(KeyCodes::ShiftState(Qt::ControlModifier), 2);
}

TEST(KeyCodesTest, GivesTheCodePageCharacterOfATypedKey) {
    EXPECT_EQ(KeyCodes::KeyAscii(Key(Qt::Key_Return, {}, "\r")), 13);
    EXPECT_EQ(KeyCodes::KeyAscii(Key(Qt::Key_Enter, Qt::KeypadModifier, "\r")), 13);
    EXPECT_EQ(KeyCodes::KeyAscii(Key(Qt::Key_A, Qt::ShiftModifier, "A")), 'A');
    EXPECT_EQ(KeyCodes::KeyAscii(Key(Qt::Key_Eacute, {}, QStringLiteral("\u00E9"))), 0xE9);
    EXPECT_EQ(KeyCodes::KeyAscii(Key(Qt::Key_unknown, {}, QStringLiteral("\u20AC"))), 0x80);
    // Characters outside the code page, keys without text, and Tab type nothing.
    EXPECT_EQ(KeyCodes::KeyAscii(Key(Qt::Key_unknown, {}, QStringLiteral("\u0142"))), 0);
    EXPECT_EQ(KeyCodes::KeyAscii(Key(Qt::Key_PageDown)), 0);
    EXPECT_EQ(KeyCodes::KeyAscii(Key(Qt::Key_Tab, {}, "\t")), 0);
}

TEST(UnitsTest, ShowsTwipsAtFifteenToThePixel) {
    EXPECT_EQ(MainWindow::Pixels(9135), 609);
    EXPECT_EQ(MainWindow::PixelRect(Rect{2160, 150, 2415, 2820}), QRect(144, 10, 161, 188));
    // Neighbours meet: the far edge is rounded, not the size.
    const QRect a = MainWindow::PixelRect(Rect{65, 3100, 2055, 315});
    EXPECT_EQ(a.left(), 4);
    EXPECT_EQ(a.right() + 1, 141);
    EXPECT_EQ(MainWindow::ClientSizeOf(9255, 8565), QSize(609, 522));
    EXPECT_EQ(MainWindow::ClientSizeOf(7200, 6400), QSize(472, 378));
    EXPECT_EQ(MainWindow::PixelsOfHimetric(2540), 96);
    EXPECT_EQ(MainWindow::PixelsOfHimetric(4304), 163);
}

TEST(EventPumpTest, DoEventsRunsPendingEventsAlsoInsideAnotherYield) {
    EventPump::Install();
    int depthOuter = -1;
    int depthInner = -1;
    QTimer::singleShot(0, [&] {
        depthOuter = EventPump::Depth();
        QTimer::singleShot(0, [&] { depthInner = EventPump::Depth(); });
        // A wait inside a yield still gets its timers.
        DoEvents();
    });
    DoEvents();
    EXPECT_EQ(depthOuter, 1);
    EXPECT_EQ(depthInner, 2);
    EXPECT_EQ(EventPump::Depth(), 0);
    EventPump::Uninstall();

    // Without the hook DoEvents leaves events where they are.
    bool ran = false;
    QTimer::singleShot(0, [&ran] { ran = true; });
    DoEvents();
    EXPECT_FALSE(ran);
    QCoreApplication::processEvents();
    EXPECT_TRUE(ran);
}

TEST(EventPumpTest, YieldsInsideYieldsStopAtAFixedDepth) {
    EventPump::Install();
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
    EventPump::Uninstall();
    EXPECT_EQ(deepest, EventPump::kMaxDepth);
    // The chain's last timer still holds this frame's locals: run it out here,
    // not in a later test.
    while (calls < 100) QCoreApplication::processEvents();
}

TEST(EventPumpTest, DeliversPostedWindowMessagesFromTheEventLoop) {
    EventPump::Install();
    const PlatformWindow window;
    std::vector<int32_t> seen;
    const int32_t proc = RegisterWindowProc([&seen](int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t) {
        seen.push_back(wParam);
        // A message posted while one is delivered comes in a later pass.
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
    EventPump::Uninstall();
    UnregisterWindowProc(proc);
}
