#pragma once
// DoEvents of the logic, run by Qt's event loop, and the delivery of the
// platform's posted window messages from that loop.

namespace EventPump {

// Fills the DoEvents hook with one pass of the Qt event loop, and has each
// message posted to a platform window delivered by the loop: a posted message
// asks the loop for one pass over the queue (DispatchPostedMessages), which
// runs in the loop itself and in every DoEvents.
void Install();
// Empties the hook and stops the delivery again.
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
