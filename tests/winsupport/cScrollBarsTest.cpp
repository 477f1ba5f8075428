#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Runtime.h"
#include "platform/ScrollBars.h"
#include "platform/Windows.h"
#include "winsupport/cScrollBars.h"

using Events = std::vector<std::string>;

namespace {

// A window with a scroll-bar object bound to it, logging the object's events
// as "C0" (Change of bar 0) or "S1" (Scroll of bar 1).
struct BoundBars {
    explicit BoundBars(bool flatAvailable = true) {
        SetFlatScrollBarsAvailable(flatAvailable);
        bars.Create(window.hWnd());
        SetFlatScrollBarsAvailable(true);
        bars.Change.Connect([this](int32_t& eBar) { events.push_back("C" + std::to_string(eBar)); });
        bars.Scroll.Connect([this](int32_t& eBar) { events.push_back("S" + std::to_string(eBar)); });
    }
    // The bar as the layout sets it up: LargeChange, then Max, then Visible.
    void Setup(int32_t eBar, int32_t largeChange, int32_t max, int32_t value) {
        bars.SetLargeChange(eBar, largeChange);
        bars.SetMax(eBar, max);
        bars.SetVisible(eBar, true);
        bars.SetValue(eBar, value);
        events.clear();
    }
    void Send(int32_t eBar, int32_t wParam) { SendMessageA(window.hWnd(), eBar == 0 ? WM_HSCROLL : WM_VSCROLL, wParam, 0); }
    ScrollBarState State(int32_t eBar) const {
        ScrollBarState state;
        EXPECT_TRUE(GetScrollBarState(window.hWnd(), eBar, state));
        return state;
    }
    PlatformWindow window;
    cScrollBars bars;
    Events events;
};

}  // namespace

TEST(cScrollBarsTest, KeepsMaxAsTheRecordsRangeLessThePage) {
    BoundBars b;
    b.bars.SetMax(1, 50);
    EXPECT_EQ(b.State(1).info.nMax, 50);  // LargeChange 0: Max is nMax
    b.bars.SetLargeChange(1, 10);
    b.bars.SetMax(1, 100);
    EXPECT_EQ(b.State(1).info.nMax, 110);
    b.bars.SetLargeChange(1, 20);
    b.bars.SetMin(1, 5);
    EXPECT_EQ(b.State(1).info.nMax, 120);
    EXPECT_EQ(b.bars.Min(1) * 1000 + b.bars.Max(1), 5100);
    EXPECT_EQ(b.State(0).info.nMax, 0);  // the other bar is untouched
    // The same value again reaches neither the platform nor a listener.
    b.bars.SetValue(1, 30);
    b.bars.SetValue(1, 30);
    EXPECT_EQ(b.events, (Events{"C1"}));
    // The platform keeps the value inside the range.
    b.bars.SetValue(1, 1000);
    EXPECT_EQ(b.bars.Value(1), 120 - 20 + 1);
    EXPECT_THROW(b.bars.SmallChange(2), RuntimeError);
}

TEST(cScrollBarsTest, TurnsScrollCodesIntoValuesAndEvents) {
    struct Case {
        int32_t eBar, start, wParam, value;
        Events events;
    };
    // Bars: LargeChange 10, Max 100, SmallChange 5; the last position is 101.
    const Case cases[] = {
        {1, 0, SB_LINEUP, 0, {}},
        {1, 3, SB_LINEUP, 0, {"C1"}},
        {0, 50, SB_LINEDOWN, 55, {"C0"}},
        {1, 97, SB_LINEDOWN, 100, {"C1"}},
        {1, 100, SB_LINEDOWN | (7 << 16), 100, {}},
        {1, 5, SB_PAGEUP, 0, {"C1"}},
        {0, 95, SB_PAGEDOWN, 101, {"C0"}},
        {1, 40, SB_THUMBPOSITION | (60 << 16), 40, {}},
        {1, 40, SB_TOP, 0, {"C1"}},
        {0, 40, SB_BOTTOM, 100, {"C0"}},
        {1, 40, SB_ENDSCROLL, 40, {}},
        {1, 40, 9, 40, {}},
        {1, 40, 0xFFFF, 40, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.wParam) + " from " + std::to_string(c.start));
        BoundBars b;
        b.Setup(c.eBar, 10, 100, c.start);
        b.bars.SetSmallChange(c.eBar, 5);
        b.Send(c.eBar, c.wParam);
        EXPECT_EQ(b.bars.Value(c.eBar), c.value);
        EXPECT_EQ(b.events, c.events);
    }
}

TEST(cScrollBarsTest, ReportsTrackingAndUnreportedChanges) {
    BoundBars b;
    b.Setup(1, 10, 100, 0);
    // A tracked thumb sets Value, which reports the change itself.
    EXPECT_TRUE(ScrollBarTrack(b.window.hWnd(), 1, 40));
    EXPECT_TRUE(ScrollBarRelease(b.window.hWnd(), 1));
    EXPECT_EQ(b.bars.Value(1), 40);
    EXPECT_EQ(b.events, (Events{"C1"}));
    // A change behind the object's back comes out at the end of a scroll.
    SCROLLINFO info{sizeof(SCROLLINFO), SIF_POS, 0, 0, 0, 70, 0};
    SetScrollInfo(b.window.hWnd(), 1, &info, 1);
    b.Send(1, SB_ENDSCROLL);
    EXPECT_EQ(b.events, (Events{"C1", "C1"}));
    // A listener that moves the value again gets an event for that, and the
    // latest value is the one remembered.
    b.events.clear();
    bool moved = false;
    b.bars.Change.Connect([&](int32_t& eBar) {
        if (!moved) b.bars.SetValue(eBar, 10);
        moved = true;
    });
    b.Send(1, SB_TOP);
    b.Send(1, SB_ENDSCROLL);
    EXPECT_EQ(b.bars.Value(1), 10);
    EXPECT_EQ(b.events, (Events{"C1", "C1"}));
}

TEST(cScrollBarsTest, ServesTheBarsFlatOrRegularAndLetsTheWindowGo) {
    for (const bool flat : {true, false}) {
        SCOPED_TRACE(flat);
        BoundBars b(flat);
        EXPECT_EQ(b.bars.CanBeFlat(), flat);
        b.bars.SetStyle(2);
        b.bars.SetEnabled(0, false);
        b.bars.SetVisible(0, true);
        b.bars.SetOrientation(efsoVertical);
        EXPECT_EQ(b.bars.Style(), flat ? 2 : 0);
        EXPECT_TRUE(b.bars.Visible(0));
        const ScrollBarState horizontal = b.State(0);
        EXPECT_EQ(horizontal.flat, flat);
        EXPECT_EQ(horizontal.style, flat ? 2 : 0);
        EXPECT_FALSE(horizontal.enabled);
        EXPECT_FALSE(horizontal.shown);  // Orientation hides it again
        EXPECT_TRUE(b.State(1).shown);
        // A second Create releases the first window.
        const int32_t before = GetWindowLongA(b.window.hWnd(), GWL_WNDPROC);
        PlatformWindow other;
        b.bars.Create(other.hWnd());
        EXPECT_NE(GetWindowLongA(b.window.hWnd(), GWL_WNDPROC), before);
        EXPECT_EQ(CountProps(b.window.hWnd()), 2u);  // the message counts at 0
        EXPECT_EQ(GetPropA(other.hWnd(), "C" + std::to_string(other.hWnd())), 2);
    }
    // Unbound, the bars have no platform behind them.
    cScrollBars unbound;
    unbound.SetLargeChange(1, 10);
    unbound.SetMax(1, 100);
    EXPECT_EQ(unbound.Max(1), 0);
    EXPECT_FALSE(unbound.Attached());
    const int32_t foreign = CreatePlatformWindow(0, GetCurrentProcessId() + 4);
    EXPECT_THROW(unbound.Create(foreign), RuntimeError);
    DestroyWindow(foreign);
}
