#pragma once
// 32-bit addresses for objects of this process. Window messages and window
// properties carry 32-bit values, while objects here live at 64-bit
// addresses; an object that travels in such a value (a wave header in the
// lParam of MM_WOM_DONE) is named by the number given here. Numbers are never
// 0, never negative, and not given twice in a run, so a stale number names
// nothing rather than another object.
#include <cstdint>

// The object's number, given at its first use.
int32_t AddressOf(const void* object);
// The object of a number; nullptr for a number that names none.
void* ObjectAt(int32_t address);
// Drops the object's number: the object is about to end.
void ForgetAddress(const void* object);
