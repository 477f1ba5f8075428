#pragma once
// The key codes that the logic's key events carry: the platform's virtual key
// codes for KeyDown, the character's code for KeyPress.
#include <Qt>
#include <cstdint>

class QKeyEvent;

namespace KeyCodes {

// The virtual key code of a key (Home 36, Page Up 33, "A" 65, ...); 0 for a
// key that has none.
int16_t VirtualKey(const QKeyEvent& event);
// The shift state: 1 Shift, 2 Ctrl, 4 Alt, added up.
int16_t ShiftState(Qt::KeyboardModifiers modifiers);
// The code of the character a key types, as KeyPress gives it (Enter 13,
// Escape 27, Backspace 8); 0 for a key that types no character of the code
// page.
int16_t KeyAscii(const QKeyEvent& event);

}  // namespace KeyCodes
