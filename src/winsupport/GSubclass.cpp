#include "winsupport/GSubclass.h"

#include "winsupport/MSubclass.h"

void GSubclass::AttachMessage(ISubclass& iwp, int32_t hwnd, int32_t iMsg) { MSubclass::AttachMessage(iwp, hwnd, iMsg); }

void GSubclass::DetachMessage(ISubclass& iwp, int32_t hwnd, int32_t iMsg) { MSubclass::DetachMessage(iwp, hwnd, iMsg); }

int32_t GSubclass::CurrentMessage() { return MSubclass::CurrentMessage(); }

int32_t GSubclass::CallOldWindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) {
    return MSubclass::CallOldWindowProc(hwnd, iMsg, wParam, lParam);
}
