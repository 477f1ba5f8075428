#pragma once
// A window procedure that records the messages reaching it and answers
// wParam + 1, registered for the life of the object.
#include <vector>

#include "platform/Windows.h"

struct Delivered {
    int32_t hWnd;
    uint32_t uMsg;
    int32_t wParam, lParam;
};

struct Recorder {
    ~Recorder() { UnregisterWindowProc(address); }
    // Gives the window this procedure; answers the one it had.
    int32_t Attach(int32_t hWnd) const { return SetWindowLongA(hWnd, GWL_WNDPROC, address); }
    std::vector<Delivered> seen;
    const int32_t address = RegisterWindowProc([this](int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t lParam) {
        seen.push_back({hWnd, uMsg, wParam, lParam});
        return wParam + 1;
    });
};
