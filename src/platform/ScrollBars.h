#pragma once
// The scroll bars of a window: for each of its two bars the scroll
// information record, whether the bar is shown and whether its arrows are
// enabled; the standard functions and the flat scroll bar functions over that
// one model, and what a view needs to draw the bars and to turn the user's
// actions into scroll messages.
//
// A flat bar is the same bar drawn flat: InitializeFlatSB marks the window's
// bars flat, and the FlatSB functions reach the same record as the standard
// ones. Where the flat functions are missing (SetFlatScrollBarsAvailable with
// false), InitializeFlatSB raises the runtime's error 453, as a call to a
// missing entry point of a library does.
#include <cstdint>
#include <functional>

struct SCROLLINFO {
    uint32_t cbSize = 0;
    uint32_t fMask = 0;
    int32_t nMin = 0;
    int32_t nMax = 0;
    uint32_t nPage = 0;
    int32_t nPos = 0;
    int32_t nTrackPos = 0;
};
static_assert(sizeof(SCROLLINFO) == 28, "the platform's scroll information record is 28 bytes");

// Bars.
inline constexpr int32_t SB_HORZ = 0;
inline constexpr int32_t SB_VERT = 1;
inline constexpr int32_t SB_BOTH = 3;
// Fields of SCROLLINFO.
inline constexpr uint32_t SIF_RANGE = 1;
inline constexpr uint32_t SIF_PAGE = 2;
inline constexpr uint32_t SIF_POS = 4;
inline constexpr uint32_t SIF_TRACKPOS = 16;
inline constexpr uint32_t SIF_ALL = 23;
// Arrows of EnableScrollBar.
inline constexpr uint32_t ESB_ENABLE_BOTH = 0;
inline constexpr uint32_t ESB_DISABLE_BOTH = 3;
// Properties of FlatSB_SetScrollProp.
inline constexpr int32_t WSB_PROP_VSTYLE = 0x100;
inline constexpr int32_t WSB_PROP_HSTYLE = 0x200;
// SetWindowPos.
inline constexpr int32_t HWND_NOTOPMOST = -2;
inline constexpr uint32_t SWP_NOSIZE = 1;
inline constexpr uint32_t SWP_NOMOVE = 2;
inline constexpr uint32_t SWP_NOZORDER = 4;
inline constexpr uint32_t SWP_FRAMECHANGED = 0x20;
// Scroll codes, the low word of WM_HSCROLL's and WM_VSCROLL's wParam; the
// thumb codes carry the position in the high word.
inline constexpr int32_t SB_LINEUP = 0;
inline constexpr int32_t SB_LINEDOWN = 1;
inline constexpr int32_t SB_PAGEUP = 2;
inline constexpr int32_t SB_PAGEDOWN = 3;
inline constexpr int32_t SB_THUMBPOSITION = 4;
inline constexpr int32_t SB_THUMBTRACK = 5;
inline constexpr int32_t SB_TOP = 6;
inline constexpr int32_t SB_BOTTOM = 7;
inline constexpr int32_t SB_ENDSCROLL = 8;

// The error of a call to a missing library function.
inline constexpr int32_t vbErrDllEntryPoint = 453;

// Fills the fields that fMask names; 0 when the window or bar is unknown,
// cbSize is not 28 or the mask names no field. SIF_TRACKPOS gives the thumb's
// position while the user drags it and nPos otherwise.
int32_t GetScrollInfo(int32_t hWnd, int32_t nBar, SCROLLINFO* lpsi);
// Sets the fields that fMask names, range first, then page, then position,
// and keeps the page inside the range and nPos between nMin and the last
// position a whole page allows (ScrollPosLimit). Gives the position, or 0.
int32_t SetScrollInfo(int32_t hWnd, int32_t nBar, const SCROLLINFO* lpsi, int32_t bRedraw);
// wBar SB_HORZ, SB_VERT or SB_BOTH. 1, or 0 for an unknown window or bar.
int32_t ShowScrollBar(int32_t hWnd, int32_t wBar, int32_t bShow);
int32_t EnableScrollBar(int32_t hWnd, uint32_t wSBflags, uint32_t wArrows);

// Flat bars: InitializeFlatSB raises error 453 where they are missing.
int32_t InitializeFlatSB(int32_t hWnd);
int32_t UninitializeFlatSB(int32_t hWnd);
int32_t FlatSB_GetScrollInfo(int32_t hWnd, int32_t code, SCROLLINFO* lpsi);
int32_t FlatSB_SetScrollInfo(int32_t hWnd, int32_t code, const SCROLLINFO* lpsi, int32_t fRedraw);
int32_t FlatSB_ShowScrollBar(int32_t hWnd, int32_t code, int32_t fShow);
int32_t FlatSB_EnableScrollBar(int32_t hWnd, int32_t wSBflags, uint32_t wArrows);
// Sets the style of the horizontal or vertical flat bar; 0 and nothing done
// on a window whose bars are not flat.
int32_t FlatSB_SetScrollProp(int32_t hWnd, int32_t index, int32_t newValue, int32_t fRedraw);
void SetFlatScrollBarsAvailable(bool available);

// The last position nPos may take: nMax less a page plus one, not below nMin.
int64_t ScrollPosLimit(const SCROLLINFO& info);

// What a view draws of one bar.
struct ScrollBarState {
    SCROLLINFO info;  // all fields
    bool shown = false;
    bool enabled = true;
    bool flat = false;
    int32_t style = 0;
    bool tracking = false;  // the user drags the thumb; info.nTrackPos is where
};
// False for an unknown window or bar.
bool GetScrollBarState(int32_t hWnd, int32_t nBar, ScrollBarState& state);
// Called with the window's handle after anything a view shows of its bars
// changed; empty removes it.
void SetScrollBarObserver(std::function<void(int32_t hWnd)> observer);

// The user's actions on a shown, enabled bar, sent to the window as
// WM_HSCROLL (SB_HORZ) or WM_VSCROLL (SB_VERT). Each gives false, and sends
// nothing, for a bar that is unknown, hidden or disabled.
// A click on an arrow or a page area, or a key: one code (SB_LINEUP ...
// SB_BOTTOM), followed by SB_ENDSCROLL.
bool ScrollBarClick(int32_t hWnd, int32_t nBar, int32_t code);
// The thumb dragged to nPos (kept inside the bar): SB_THUMBTRACK.
bool ScrollBarTrack(int32_t hWnd, int32_t nBar, int32_t nPos);
// The thumb let go: SB_THUMBPOSITION at the last tracked position, the drag
// ends, then SB_ENDSCROLL.
bool ScrollBarRelease(int32_t hWnd, int32_t nBar);
// The wheel turned by delta (120 a notch, away from the user positive): three
// lines a notch up or down the vertical bar, or the horizontal one when the
// vertical is not shown, then SB_ENDSCROLL. Parts of a notch add up across
// calls; at most 32 notches count at once.
bool ScrollBarWheel(int32_t hWnd, int32_t delta);
