#pragma once
// The subclassing service as an object: it forwards to MSubclass and keeps no
// state of its own.
#include <cstdint>

#include "winsupport/ISubclass.h"

class GSubclass {
public:
    void AttachMessage(ISubclass& iwp, int32_t hwnd, int32_t iMsg);
    void DetachMessage(ISubclass& iwp, int32_t hwnd, int32_t iMsg);
    int32_t CurrentMessage();
    int32_t CallOldWindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam);
};
