// Drives the scroll-bar object and its bar model with sequences of scroll
// messages, property settings and the user's actions. Every input is a first
// byte (bit 0: the flat functions are missing) and then records of five bytes:
// an operation (bit 7 picks the bar) and a 32-bit little-endian argument.
// After each step both bars must hold nMin <= nPos <= the last position a page
// allows, the same for the thumb's track position, and a page inside the range.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/Runtime.h"
#include "platform/ScrollBars.h"
#include "platform/Windows.h"
#include "winsupport/cScrollBars.h"

namespace {

void CheckBar(int32_t hWnd, int32_t nBar) {
    ScrollBarState state;
    if (!GetScrollBarState(hWnd, nBar, state)) std::abort();
    const SCROLLINFO& info = state.info;
    const int64_t limit = ScrollPosLimit(info);
    const int64_t span = std::max<int64_t>(0, int64_t(info.nMax) - info.nMin + 1);
    if (info.nPos < info.nMin || info.nPos > limit) std::abort();
    if (info.nTrackPos < info.nMin || info.nTrackPos > limit) std::abort();
    if (int64_t(info.nPage) > span) std::abort();
}

void Step(cScrollBars& bars, int32_t hWnd, uint8_t op, int32_t arg) {
    const int32_t eBar = op >> 7;
    switch (op & 0x7F) {
        case 0: SendMessageA(hWnd, WM_HSCROLL, arg, 0); break;
        case 1: SendMessageA(hWnd, WM_VSCROLL, arg, 0); break;
        case 2: bars.SetLargeChange(eBar, arg); break;
        case 3: bars.SetMax(eBar, arg); break;
        case 4: bars.SetMin(eBar, arg); break;
        case 5: bars.SetValue(eBar, arg); break;
        case 6: bars.SetSmallChange(eBar, arg); break;
        case 7: ScrollBarTrack(hWnd, eBar, arg); break;
        case 8: ScrollBarRelease(hWnd, eBar); break;
        // A few notches at a time: the lines of many notches add nothing new.
        case 9: ScrollBarWheel(hWnd, arg % 361); break;
        case 10: ScrollBarClick(hWnd, eBar, arg & 0xF); break;
        case 11:
            bars.SetVisible(eBar, (arg & 1) != 0);
            bars.SetEnabled(eBar, (arg & 2) != 0);
            break;
        case 12: {
            const SCROLLINFO info{sizeof(SCROLLINFO), static_cast<uint32_t>(arg) & SIF_ALL, arg >> 8, arg >> 4,
                                  static_cast<uint32_t>(arg) >> 20, arg, 0};
            SetScrollInfo(hWnd, eBar, &info, 1);
            break;
        }
        case 13: bars.SetOrientation(arg & 3); break;
        default: SendMessageA(hWnd, eBar == 0 ? WM_HSCROLL : WM_VSCROLL, (arg & 0xFFFF0000) | (op % 10), 0); break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    SetFlatScrollBarsAvailable((data[0] & 1) == 0);
    const PlatformWindow window;
    const int32_t hWnd = window.hWnd();
    cScrollBars bars;
    bars.Create(hWnd);
    SetFlatScrollBarsAvailable(true);
    // With bit 1 of the first byte a listener moves the value once more
    // inside the event.
    const bool moveAgain = (data[0] & 2) != 0;
    bool inside = false;
    bars.Change.Connect([&](int32_t& eBar) {
        if (!moveAgain || inside) return;
        inside = true;
        PassOver([&] { bars.SetValue(eBar, bars.Value(eBar) / 2); });
        inside = false;
    });
    constexpr size_t kRecord = 5;
    for (size_t at = 1; at + kRecord <= size && at < 1 + 64 * kRecord; at += kRecord) {
        const uint8_t op = data[at];
        const int32_t arg = static_cast<int32_t>(uint32_t(data[at + 1]) | uint32_t(data[at + 2]) << 8 |
                                                 uint32_t(data[at + 3]) << 16 | uint32_t(data[at + 4]) << 24);
        // Sums beyond 32 bits raise the runtime's overflow, as the class allows.
        PassOver([&] { Step(bars, hWnd, op, arg); });
        CheckBar(hWnd, SB_HORZ);
        CheckBar(hWnd, SB_VERT);
    }
    return 0;
}
