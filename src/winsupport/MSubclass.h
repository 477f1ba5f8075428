#pragma once
// Window subclassing: clients (ISubclass) attach to single messages of a
// window; the first attachment puts the module's own procedure in front of
// the window's, which calls the clients of each message in the order they
// attached and the previous procedure before, after or not at all, as the
// first and last client's MsgResponse say.
//
// All bookkeeping lies in the window's properties, under decimal keys of the
// signed handle H and message M: H (the previous procedure), "C"H (the
// attachments on the window), H#MC (the clients of M) and H#M#i (client i).
//
// Failures are raised as RuntimeError with the source App::EXEName() +
// ".WindowProc".
#include <cstdint>

#include "winsupport/ISubclass.h"

inline constexpr int32_t kSubclassErrCantSubclass = static_cast<int32_t>(0x80043319u);
inline constexpr int32_t kSubclassErrAlreadyHandled = static_cast<int32_t>(0x8004331Au);
inline constexpr int32_t kSubclassErrInvalidWindow = static_cast<int32_t>(0x8004331Bu);
inline constexpr int32_t kSubclassErrExternalWindow = static_cast<int32_t>(0x8004331Cu);

namespace MSubclass {

// Attaches iwp to message iMsg of hwnd; raises for a window that doesn't
// exist or belongs to another process, for a window whose procedure can't be
// replaced, and for a client already attached to that message.
void AttachMessage(ISubclass& iwp, int32_t hwnd, int32_t iMsg);
// Undoes one AttachMessage of the same arguments; raises nothing.
void DetachMessage(ISubclass& iwp, int32_t hwnd, int32_t iMsg);
// The message being handed to a client now.
int32_t CurrentMessage();
// Runs the message through the procedure that the window had before it was
// subclassed; for a client inside its WindowProc.
int32_t CallOldWindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam);

}  // namespace MSubclass
