#pragma once
// The two scroll bars of an ordinary window under program control, used the
// way a scroll bar control is: range, position, page and visibility of each
// bar, the window's WM_HSCROLL and WM_VSCROLL turned into value changes, and
// an event when a value has changed. Create binds the object to a window and
// decides once whether the flat scroll bar functions serve the bars or, where
// they are missing, the standard ones.
//
// Bars are named by eBar: 0 horizontal, 1 vertical. Min, Max, Value and
// LargeChange live in the platform's record of the bar, where nMax carries the
// page on top of Max.
#include <array>
#include <cstdint>

#include "controls/Event.h"
#include "platform/ScrollBars.h"
#include "winsupport/ISubclass.h"

// Which bars the object manages.
enum EOrientation : int32_t {
    efsoHorizontal = 0,
    efsoVertical = 1,
    efsoBoth = 2,
};

class cScrollBars : public ISubclass {
public:
    cScrollBars() = default;
    // Detaches from the window's messages before the object goes.
    ~cScrollBars() override;

    bool Visible(int32_t eBar) const;
    void SetVisible(int32_t eBar, bool bState);
    int32_t Orientation() const { return m_eOrientation; }
    void SetOrientation(int32_t EOrientation);
    int32_t Style() const { return m_eStyle; }
    void SetStyle(int32_t eStyle);
    int32_t SmallChange(int32_t eBar) const;
    void SetSmallChange(int32_t eBar, int32_t lSmallChange);
    bool Enabled(int32_t eBar) const;
    void SetEnabled(int32_t eBar, bool bEnabled);
    int32_t Min(int32_t eBar) const;
    int32_t Max(int32_t eBar) const;
    int32_t Value(int32_t eBar) const;
    int32_t LargeChange(int32_t eBar) const;
    void SetMin(int32_t eBar, int32_t iMin);
    void SetMax(int32_t eBar, int32_t iMax);
    void SetValue(int32_t eBar, int32_t iValue);
    void SetLargeChange(int32_t eBar, int32_t iLargeChange);
    bool CanBeFlat() const { return !m_bNoFlatBars; }
    // Binds the object to a window, releasing the one before; raises the
    // subclassing layer's failures for a window it can't attach to.
    void Create(int32_t hWndA);

    // A value change seen while the thumb is tracked.
    Event<int32_t&> Scroll;
    // Any other value change.
    Event<int32_t&> Change;

    int32_t hWnd() const { return m_hWnd; }
    bool Attached() const { return m_bAttached; }

    // ISubclass: the window's own procedure runs after this object.
    int32_t MsgResponse() override { return MsgResponseAfter; }
    void SetMsgResponse(int32_t) override {}
    int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) override;

private:
    void ApplyOrientation();
    void GetScrollData(int32_t eBar, SCROLLINFO& tSI, uint32_t fMask) const;
    // GetScrollData into a new record.
    SCROLLINFO ScrollData(int32_t eBar, uint32_t fMask) const;
    void SetScrollData(int32_t eBar, SCROLLINFO& tSI, uint32_t fMask);
    void InitFlatBars();
    void ReleaseWindow();
    void AttachWindow();
    void NotifyValue(int32_t eBar, bool bScroll);
    // The arm of one scroll code.
    void Scrolled(int32_t eBar, int32_t code);

    bool m_bAttached = false;
    int32_t m_eOrientation = efsoBoth;
    int32_t m_eStyle = 0;
    bool m_bNoFlatBars = false;
    int32_t m_hWnd = 0;
    std::array<int32_t, 2> m_alSmallChange{1, 1};
    std::array<bool, 2> m_abEnabled{false, false};
    std::array<bool, 2> m_abVisible{false, false};
    std::array<int32_t, 2> m_alLastValue{0, 0};
};
