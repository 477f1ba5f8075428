#include "KeyCodes.h"

#include <QKeyEvent>

#include "Text1252.h"

namespace KeyCodes {

int16_t VirtualKey(const QKeyEvent& event) {
    const int key = event.key();
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<int16_t>('A' + (key - Qt::Key_A));
    if (key >= Qt::Key_0 && key <= Qt::Key_9) return static_cast<int16_t>('0' + (key - Qt::Key_0));
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return static_cast<int16_t>(112 + (key - Qt::Key_F1));
    switch (key) {
        case Qt::Key_Backspace: return 8;
        case Qt::Key_Tab:
        case Qt::Key_Backtab: return 9;
        case Qt::Key_Clear: return 12;
        case Qt::Key_Return:
        case Qt::Key_Enter: return 13;
        case Qt::Key_Shift: return 16;
        case Qt::Key_Control: return 17;
        case Qt::Key_Alt: return 18;
        case Qt::Key_Pause: return 19;
        case Qt::Key_CapsLock: return 20;
        case Qt::Key_Escape: return 27;
        case Qt::Key_Space: return 32;
        case Qt::Key_PageUp: return 33;
        case Qt::Key_PageDown: return 34;
        case Qt::Key_End: return 35;
        case Qt::Key_Home: return 36;
        case Qt::Key_Left: return 37;
        case Qt::Key_Up: return 38;
        case Qt::Key_Right: return 39;
        case Qt::Key_Down: return 40;
        case Qt::Key_Insert: return 45;
        case Qt::Key_Delete: return 46;
        default: return 0;
    }
}

int16_t ShiftState(Qt::KeyboardModifiers modifiers) {
    int16_t state = 0;
    if (modifiers & Qt::ShiftModifier) state |= 1;
    if (modifiers & Qt::ControlModifier) state |= 2;
    if (modifiers & Qt::AltModifier) state |= 4;
    return state;
}

int16_t KeyAscii(const QKeyEvent& event) {
    switch (event.key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter: return 13;
        case Qt::Key_Escape: return 27;
        case Qt::Key_Backspace: return 8;
        // Tab moves the focus and types nothing.
        case Qt::Key_Tab:
        case Qt::Key_Backtab: return 0;
        default: break;
    }
    const QString text = event.text();
    if (text.size() != 1) return 0;
    // A character outside the code page has no code; it must come back as itself.
    const std::string bytes = ToBytes(text);
    if (bytes.size() != 1 || FromBytes(bytes) != text) return 0;
    return static_cast<int16_t>(static_cast<unsigned char>(bytes[0]));
}

}  // namespace KeyCodes
