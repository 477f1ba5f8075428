#pragma once
// DoEvents of the logic, run by Qt's event loop.

namespace EventPump {

// Fills the DoEvents hook with one pass of the Qt event loop.
void Install();
// Empties the hook again.
void Uninstall();
// One pass of the event loop. A pass inside another pass leaves the user's
// input for later: a handler that yields inside another handler's yield still
// gets its timers and posted events (a wait for the end of a wave needs them),
// but the same click is not delivered into a half-finished handler, and the
// passes can't pile up without end.
void Pump();
// How many passes are running now.
int Depth();
// The deepest a pass may run; a deeper call returns at once.
inline constexpr int kMaxDepth = 8;

}  // namespace EventPump
