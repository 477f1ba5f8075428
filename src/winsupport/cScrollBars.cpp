#include "winsupport/cScrollBars.h"

#include "platform/Runtime.h"
#include "platform/Windows.h"
#include "winsupport/MSubclass.h"

namespace {

// The index of a bar in the object's arrays; any other raises error 9.
size_t BarIndex(int32_t eBar) {
    if (eBar != SB_HORZ && eBar != SB_VERT) RaiseError(vbErrSubscript);
    return static_cast<size_t>(eBar);
}

int32_t ShowFlag(bool shown) { return shown ? 1 : 0; }

// The platform's functions of one mode.
struct ScrollFunctions {
    int32_t (*show)(int32_t hWnd, int32_t nBar, int32_t bShow);
    int32_t (*enable)(int32_t hWnd, int32_t nBar, uint32_t wArrows);
    int32_t (*get)(int32_t hWnd, int32_t nBar, SCROLLINFO* lpsi);
    int32_t (*set)(int32_t hWnd, int32_t nBar, const SCROLLINFO* lpsi, int32_t bRedraw);
};

constexpr ScrollFunctions kFlatFunctions{FlatSB_ShowScrollBar, FlatSB_EnableScrollBar, FlatSB_GetScrollInfo,
                                         FlatSB_SetScrollInfo};
constexpr ScrollFunctions kRegularFunctions{
    ShowScrollBar,
    [](int32_t hWnd, int32_t nBar, uint32_t wArrows) {
        return EnableScrollBar(hWnd, static_cast<uint32_t>(nBar), wArrows);
    },
    GetScrollInfo, SetScrollInfo};

const ScrollFunctions& Functions(bool noFlatBars) { return noFlatBars ? kRegularFunctions : kFlatFunctions; }

}  // namespace

cScrollBars::~cScrollBars() { ReleaseWindow(); }

bool cScrollBars::Visible(int32_t eBar) const { return m_abVisible[BarIndex(eBar)]; }

void cScrollBars::SetVisible(int32_t eBar, bool bState) {
    m_abVisible[BarIndex(eBar)] = bState;
    Functions(m_bNoFlatBars).show(m_hWnd, eBar, ShowFlag(bState));
}

void cScrollBars::SetOrientation(int32_t EOrientation) {
    m_eOrientation = EOrientation;
    ApplyOrientation();
}

void cScrollBars::SetStyle(int32_t eStyle) {
    if (eStyle != 0 && m_bNoFlatBars) return;
    if (m_eOrientation == efsoHorizontal || m_eOrientation == efsoBoth) {
        FlatSB_SetScrollProp(m_hWnd, WSB_PROP_HSTYLE, eStyle, -1);
    }
    if (m_eOrientation == efsoVertical || m_eOrientation == efsoBoth) {
        FlatSB_SetScrollProp(m_hWnd, WSB_PROP_VSTYLE, eStyle, -1);
    }
    m_eStyle = eStyle;
}

int32_t cScrollBars::SmallChange(int32_t eBar) const { return m_alSmallChange[BarIndex(eBar)]; }

void cScrollBars::SetSmallChange(int32_t eBar, int32_t lSmallChange) { m_alSmallChange[BarIndex(eBar)] = lSmallChange; }

bool cScrollBars::Enabled(int32_t eBar) const { return m_abEnabled[BarIndex(eBar)]; }

void cScrollBars::SetEnabled(int32_t eBar, bool bEnabled) {
    m_abEnabled[BarIndex(eBar)] = bEnabled;
    Functions(m_bNoFlatBars).enable(m_hWnd, eBar, bEnabled ? ESB_ENABLE_BOTH : ESB_DISABLE_BOTH);
}

int32_t cScrollBars::Min(int32_t eBar) const { return ScrollData(eBar, SIF_RANGE).nMin; }

int32_t cScrollBars::Max(int32_t eBar) const {
    const SCROLLINFO tSI = ScrollData(eBar, SIF_RANGE | SIF_PAGE);
    return VbToLong(int64_t(tSI.nMax) - int64_t(static_cast<int32_t>(tSI.nPage)));
}

int32_t cScrollBars::Value(int32_t eBar) const { return ScrollData(eBar, SIF_POS).nPos; }

int32_t cScrollBars::LargeChange(int32_t eBar) const { return static_cast<int32_t>(ScrollData(eBar, SIF_PAGE).nPage); }

void cScrollBars::SetMin(int32_t eBar, int32_t iMin) {
    SCROLLINFO tSI;
    tSI.nMin = iMin;
    tSI.nMax = VbAdd32(Max(eBar), LargeChange(eBar));
    SetScrollData(eBar, tSI, SIF_RANGE);
}

void cScrollBars::SetMax(int32_t eBar, int32_t iMax) {
    SCROLLINFO tSI;
    tSI.nMax = VbAdd32(iMax, LargeChange(eBar));
    tSI.nMin = Min(eBar);
    SetScrollData(eBar, tSI, SIF_RANGE);
    NotifyValue(eBar, false);
}

void cScrollBars::SetValue(int32_t eBar, int32_t iValue) {
    if (iValue == Value(eBar)) return;
    SCROLLINFO tSI;
    tSI.nPos = iValue;
    SetScrollData(eBar, tSI, SIF_POS);
    NotifyValue(eBar, false);
}

void cScrollBars::SetLargeChange(int32_t eBar, int32_t iLargeChange) {
    SCROLLINFO tSI;
    GetScrollData(eBar, tSI, SIF_ALL);
    tSI.nMax = VbAdd32(int64_t(tSI.nMax) - int64_t(static_cast<int32_t>(tSI.nPage)), iLargeChange);
    tSI.nPage = static_cast<uint32_t>(iLargeChange);
    SetScrollData(eBar, tSI, SIF_RANGE | SIF_PAGE);
}

void cScrollBars::Create(int32_t hWndA) {
    ReleaseWindow();
    m_hWnd = hWndA;
    InitFlatBars();
    AttachWindow();
}

int32_t cScrollBars::WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) {
    if (iMsg != static_cast<int32_t>(WM_HSCROLL) && iMsg != static_cast<int32_t>(WM_VSCROLL)) return 0;
    const int32_t eBar = iMsg == static_cast<int32_t>(WM_HSCROLL) ? SB_HORZ : SB_VERT;
    // A sum beyond the 32-bit range fails this message only; the window's
    // dispatch goes on.
    PassOver([&] { Scrolled(eBar, wParam & 0xFFFF); });
    return 0;
}

void cScrollBars::Scrolled(int32_t eBar, int32_t code) {
    bool bScroll = false;
    switch (code) {
        case SB_LINEUP: {
            const int64_t lValue = int64_t(Value(eBar)) - SmallChange(eBar);
            const int32_t lMin = Min(eBar);
            SetValue(eBar, lValue < lMin ? lMin : VbToLong(lValue));
            break;
        }
        case SB_LINEDOWN: {
            const int64_t lValue = int64_t(Value(eBar)) + SmallChange(eBar);
            const int32_t lMax = Max(eBar);
            SetValue(eBar, lValue > lMax ? lMax : VbToLong(lValue));
            break;
        }
        case SB_PAGEUP: SetValue(eBar, VbAdd32(Value(eBar), -int64_t(LargeChange(eBar)))); break;
        case SB_PAGEDOWN: SetValue(eBar, VbAdd32(Value(eBar), LargeChange(eBar))); break;
        case SB_THUMBTRACK:
            SetValue(eBar, ScrollData(eBar, SIF_TRACKPOS).nTrackPos);
            bScroll = true;
            break;
        case SB_TOP: SetValue(eBar, Min(eBar)); break;
        case SB_BOTTOM: SetValue(eBar, Max(eBar)); break;
        case SB_ENDSCROLL: break;
        default: return;  // SB_THUMBPOSITION and unknown codes
    }
    NotifyValue(eBar, bScroll);
}

void cScrollBars::ApplyOrientation() {
    ShowScrollBar(m_hWnd, SB_HORZ, ShowFlag(m_eOrientation == efsoHorizontal || m_eOrientation == efsoBoth));
    ShowScrollBar(m_hWnd, SB_VERT, ShowFlag(m_eOrientation == efsoVertical || m_eOrientation == efsoBoth));
}

void cScrollBars::GetScrollData(int32_t eBar, SCROLLINFO& tSI, uint32_t fMask) const {
    tSI.cbSize = sizeof(SCROLLINFO);
    tSI.fMask = fMask;
    Functions(m_bNoFlatBars).get(m_hWnd, eBar, &tSI);
}

SCROLLINFO cScrollBars::ScrollData(int32_t eBar, uint32_t fMask) const {
    SCROLLINFO tSI;
    GetScrollData(eBar, tSI, fMask);
    return tSI;
}

void cScrollBars::SetScrollData(int32_t eBar, SCROLLINFO& tSI, uint32_t fMask) {
    tSI.cbSize = sizeof(SCROLLINFO);
    tSI.fMask = fMask;
    Functions(m_bNoFlatBars).set(m_hWnd, eBar, &tSI, 1);
}

void cScrollBars::InitFlatBars() {
    SetParent(m_hWnd, GetParent(m_hWnd));
    SetWindowPos(m_hWnd, HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED);
    try {
        InitializeFlatSB(m_hWnd);
    } catch (...) {
        m_bNoFlatBars = true;
        return;
    }
    SetStyle(m_eStyle);
}

void cScrollBars::ReleaseWindow() {
    if (m_hWnd != 0) {
        if (!m_bNoFlatBars) PassOver([this] { UninitializeFlatSB(m_hWnd); });
        MSubclass::DetachMessage(*this, m_hWnd, WM_HSCROLL);
        MSubclass::DetachMessage(*this, m_hWnd, WM_VSCROLL);
    }
    m_hWnd = 0;
    m_bAttached = false;
}

void cScrollBars::AttachWindow() {
    if (m_hWnd == 0) return;
    MSubclass::AttachMessage(*this, m_hWnd, WM_HSCROLL);
    MSubclass::AttachMessage(*this, m_hWnd, WM_VSCROLL);
    m_bAttached = true;
}

void cScrollBars::NotifyValue(int32_t eBar, bool bScroll) {
    const size_t i = BarIndex(eBar);
    if (Value(eBar) == m_alLastValue[i]) return;
    int32_t eBarArg = eBar;
    if (bScroll) {
        Scroll.Raise(eBarArg);
    } else {
        Change.Raise(eBarArg);
    }
    m_alLastValue[i] = Value(eBar);
}
