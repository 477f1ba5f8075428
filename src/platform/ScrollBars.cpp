#include "platform/ScrollBars.h"

#include <algorithm>
#include <unordered_map>

#include "platform/Runtime.h"
#include "platform/Windows.h"

namespace {

struct Bar {
    SCROLLINFO info;
    bool shown = false;
    bool enabled = true;
    int32_t style = 0;
    bool tracking = false;
};

struct WindowBars {
    Bar bars[2];
    bool flat = false;
    int32_t wheelRest = 0;
};

// The bars of each window that has used them; they go when it ends.
std::unordered_map<int32_t, WindowBars>& Bars() {
    static std::unordered_map<int32_t, WindowBars>* bars = [] {
        OnWindowEnd([](int32_t hWnd) { Bars().erase(hWnd); });
        return new std::unordered_map<int32_t, WindowBars>();
    }();
    return *bars;
}
std::function<void(int32_t)> g_observer;
bool g_flatAvailable = true;

constexpr int32_t kLinesPerNotch = 3;
constexpr int32_t kNotch = 120;
constexpr int32_t kMostNotches = 32;

WindowBars* FindBars(int32_t hWnd) { return IsWindow(hWnd) != 0 ? &Bars()[hWnd] : nullptr; }

Bar* FindBar(int32_t hWnd, int32_t nBar) {
    if (nBar != SB_HORZ && nBar != SB_VERT) return nullptr;
    WindowBars* bars = FindBars(hWnd);
    return bars != nullptr ? &bars->bars[nBar] : nullptr;
}

void Changed(int32_t hWnd) {
    if (g_observer) g_observer(hWnd);
}

int32_t Clamp(int64_t value, int64_t low, int64_t high) {
    return static_cast<int32_t>(std::clamp(value, low, std::max(low, high)));
}

// Applies to the bars SB_BOTH names, or to one bar.
template <typename F>
int32_t ForBars(int32_t hWnd, int32_t wBar, F&& apply) {
    WindowBars* bars = FindBars(hWnd);
    if (bars == nullptr || (wBar != SB_HORZ && wBar != SB_VERT && wBar != SB_BOTH)) return 0;
    if (wBar != SB_VERT) apply(bars->bars[SB_HORZ]);
    if (wBar != SB_HORZ) apply(bars->bars[SB_VERT]);
    Changed(hWnd);
    return 1;
}

int32_t SendScroll(int32_t hWnd, int32_t nBar, int32_t code, int32_t pos) {
    const uint32_t wParam = static_cast<uint32_t>(code & 0xFFFF) | (static_cast<uint32_t>(pos) << 16);
    return SendMessageA(hWnd, nBar == SB_HORZ ? WM_HSCROLL : WM_VSCROLL, static_cast<int32_t>(wParam), 0);
}

// A bar the user can act on.
Bar* ActiveBar(int32_t hWnd, int32_t nBar) {
    Bar* bar = FindBar(hWnd, nBar);
    return bar != nullptr && bar->shown && bar->enabled ? bar : nullptr;
}

}  // namespace

int64_t ScrollPosLimit(const SCROLLINFO& info) {
    const int64_t page = std::max<int64_t>(info.nPage, 1);
    return std::max<int64_t>(info.nMin, int64_t(info.nMax) - page + 1);
}

int32_t GetScrollInfo(int32_t hWnd, int32_t nBar, SCROLLINFO* lpsi) {
    if (lpsi == nullptr || lpsi->cbSize != sizeof(SCROLLINFO) || (lpsi->fMask & SIF_ALL) == 0) return 0;
    const Bar* bar = FindBar(hWnd, nBar);
    if (bar == nullptr) return 0;
    if (lpsi->fMask & SIF_RANGE) {
        lpsi->nMin = bar->info.nMin;
        lpsi->nMax = bar->info.nMax;
    }
    if (lpsi->fMask & SIF_PAGE) lpsi->nPage = bar->info.nPage;
    if (lpsi->fMask & SIF_POS) lpsi->nPos = bar->info.nPos;
    if (lpsi->fMask & SIF_TRACKPOS) lpsi->nTrackPos = bar->tracking ? bar->info.nTrackPos : bar->info.nPos;
    return 1;
}

int32_t SetScrollInfo(int32_t hWnd, int32_t nBar, const SCROLLINFO* lpsi, int32_t bRedraw) {
    if (lpsi == nullptr || lpsi->cbSize != sizeof(SCROLLINFO)) return 0;
    Bar* bar = FindBar(hWnd, nBar);
    if (bar == nullptr) return 0;
    SCROLLINFO& info = bar->info;
    if (lpsi->fMask & SIF_RANGE) {
        info.nMin = lpsi->nMin;
        info.nMax = lpsi->nMax;
    }
    if (lpsi->fMask & SIF_PAGE) info.nPage = lpsi->nPage;
    if (lpsi->fMask & SIF_POS) info.nPos = lpsi->nPos;
    const int64_t span = std::max<int64_t>(0, int64_t(info.nMax) - info.nMin + 1);
    info.nPage = static_cast<uint32_t>(std::min<int64_t>(info.nPage, span));
    info.nPos = Clamp(info.nPos, info.nMin, ScrollPosLimit(info));
    info.nTrackPos = Clamp(info.nTrackPos, info.nMin, ScrollPosLimit(info));
    Changed(hWnd);
    return info.nPos;
}

int32_t ShowScrollBar(int32_t hWnd, int32_t wBar, int32_t bShow) {
    return ForBars(hWnd, wBar, [bShow](Bar& bar) { bar.shown = bShow != 0; });
}

int32_t EnableScrollBar(int32_t hWnd, uint32_t wSBflags, uint32_t wArrows) {
    if (wArrows != ESB_ENABLE_BOTH && wArrows != ESB_DISABLE_BOTH) return 0;
    return ForBars(hWnd, static_cast<int32_t>(wSBflags),
                   [wArrows](Bar& bar) { bar.enabled = wArrows == ESB_ENABLE_BOTH; });
}

int32_t InitializeFlatSB(int32_t hWnd) {
    if (!g_flatAvailable) {
        RaiseError(vbErrDllEntryPoint, App::EXEName(), "Can't find DLL entry point InitializeFlatSB in comctl32");
    }
    WindowBars* bars = FindBars(hWnd);
    if (bars == nullptr) return 0;
    bars->flat = true;
    Changed(hWnd);
    return 1;
}

int32_t UninitializeFlatSB(int32_t hWnd) {
    WindowBars* bars = FindBars(hWnd);
    if (bars == nullptr || !bars->flat) return 0;
    bars->flat = false;
    Changed(hWnd);
    return 1;
}

int32_t FlatSB_GetScrollInfo(int32_t hWnd, int32_t code, SCROLLINFO* lpsi) { return GetScrollInfo(hWnd, code, lpsi); }

int32_t FlatSB_SetScrollInfo(int32_t hWnd, int32_t code, const SCROLLINFO* lpsi, int32_t fRedraw) {
    return SetScrollInfo(hWnd, code, lpsi, fRedraw);
}

int32_t FlatSB_ShowScrollBar(int32_t hWnd, int32_t code, int32_t fShow) { return ShowScrollBar(hWnd, code, fShow); }

int32_t FlatSB_EnableScrollBar(int32_t hWnd, int32_t wSBflags, uint32_t wArrows) {
    return EnableScrollBar(hWnd, static_cast<uint32_t>(wSBflags), wArrows);
}

int32_t FlatSB_SetScrollProp(int32_t hWnd, int32_t index, int32_t newValue, int32_t fRedraw) {
    WindowBars* bars = FindBars(hWnd);
    if (bars == nullptr || !bars->flat || (index != WSB_PROP_HSTYLE && index != WSB_PROP_VSTYLE)) return 0;
    bars->bars[index == WSB_PROP_HSTYLE ? SB_HORZ : SB_VERT].style = newValue;
    Changed(hWnd);
    return 1;
}

void SetFlatScrollBarsAvailable(bool available) { g_flatAvailable = available; }

bool GetScrollBarState(int32_t hWnd, int32_t nBar, ScrollBarState& state) {
    const Bar* bar = FindBar(hWnd, nBar);
    if (bar == nullptr) return false;
    state.info = bar->info;
    state.info.cbSize = sizeof(SCROLLINFO);
    state.info.fMask = SIF_ALL;
    if (!bar->tracking) state.info.nTrackPos = bar->info.nPos;
    state.shown = bar->shown;
    state.enabled = bar->enabled;
    state.flat = Bars()[hWnd].flat;
    state.style = bar->style;
    state.tracking = bar->tracking;
    return true;
}

void SetScrollBarObserver(std::function<void(int32_t hWnd)> observer) { g_observer = std::move(observer); }

bool ScrollBarClick(int32_t hWnd, int32_t nBar, int32_t code) {
    if (ActiveBar(hWnd, nBar) == nullptr || code < SB_LINEUP || code > SB_BOTTOM || code == SB_THUMBPOSITION ||
        code == SB_THUMBTRACK) {
        return false;
    }
    SendScroll(hWnd, nBar, code, 0);
    SendScroll(hWnd, nBar, SB_ENDSCROLL, 0);
    return true;
}

bool ScrollBarTrack(int32_t hWnd, int32_t nBar, int32_t nPos) {
    Bar* bar = ActiveBar(hWnd, nBar);
    if (bar == nullptr) return false;
    bar->tracking = true;
    bar->info.nTrackPos = Clamp(nPos, bar->info.nMin, ScrollPosLimit(bar->info));
    Changed(hWnd);
    SendScroll(hWnd, nBar, SB_THUMBTRACK, bar->info.nTrackPos);
    return true;
}

bool ScrollBarRelease(int32_t hWnd, int32_t nBar) {
    Bar* bar = ActiveBar(hWnd, nBar);
    if (bar == nullptr || !bar->tracking) return false;
    SendScroll(hWnd, nBar, SB_THUMBPOSITION, bar->info.nTrackPos);
    // The window's handler may have ended the window or its bars.
    if ((bar = FindBar(hWnd, nBar)) == nullptr) return true;
    bar->tracking = false;
    Changed(hWnd);
    SendScroll(hWnd, nBar, SB_ENDSCROLL, 0);
    return true;
}

bool ScrollBarWheel(int32_t hWnd, int32_t delta) {
    WindowBars* bars = FindBars(hWnd);
    if (bars == nullptr) return false;
    const auto active = [bars](int32_t nBar) { return bars->bars[nBar].shown && bars->bars[nBar].enabled; };
    const int32_t nBar = active(SB_VERT) ? SB_VERT : SB_HORZ;
    if (!active(nBar)) return false;
    const int64_t total = std::clamp<int64_t>(int64_t(bars->wheelRest) + delta, -int64_t(kNotch) * kMostNotches,
                                              int64_t(kNotch) * kMostNotches);
    const int64_t lines = total * kLinesPerNotch / kNotch;
    bars->wheelRest = static_cast<int32_t>(total - lines * kNotch / kLinesPerNotch);
    if (lines == 0) return true;
    const int32_t code = lines > 0 ? SB_LINEUP : SB_LINEDOWN;
    for (int64_t i = 0; i < (lines > 0 ? lines : -lines); ++i) SendScroll(hWnd, nBar, code, 0);
    SendScroll(hWnd, nBar, SB_ENDSCROLL, 0);
    return true;
}
