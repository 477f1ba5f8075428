#include <gtest/gtest.h>

#include <vector>

#include "Recorder.h"
#include "platform/ScrollBars.h"
#include "platform/Windows.h"

namespace {

SCROLLINFO Info(uint32_t mask, int32_t nMin, int32_t nMax, uint32_t nPage, int32_t nPos) {
    return SCROLLINFO{sizeof(SCROLLINFO), mask, nMin, nMax, nPage, nPos, 0};
}

}  // namespace

TEST(ScrollBarsTest, KeepsThePageInTheRangeAndThePositionInTheBar) {
    struct Case {
        SCROLLINFO set;
        int32_t nPos;
        uint32_t nPage;
    };
    const Case cases[] = {
        {Info(SIF_ALL, 0, 110, 10, 50), 50, 10},
        {Info(SIF_ALL, 0, 110, 10, 500), 101, 10},
        {Info(SIF_ALL, 0, 110, 0, 500), 110, 0},
        {Info(SIF_ALL, 0, 110, 10, -5), 0, 10},
        {Info(SIF_ALL, 0, 9, 500, 3), 0, 10},
        {Info(SIF_ALL, 20, 10, 5, 3), 20, 0},
        {Info(SIF_ALL, INT32_MIN, INT32_MAX, 0xFFFFFFFFu, 7), INT32_MIN + 1, 0xFFFFFFFFu},
        {Info(SIF_ALL, INT32_MIN, INT32_MAX, 0, INT32_MAX), INT32_MAX, 0},
    };
    const PlatformWindow window;
    for (const Case& c : cases) {
        EXPECT_EQ(SetScrollInfo(window.hWnd(), SB_VERT, &c.set, 1), c.nPos);
        SCROLLINFO got = Info(SIF_ALL, 0, 0, 0, 0);
        ASSERT_EQ(GetScrollInfo(window.hWnd(), SB_VERT, &got), 1);
        EXPECT_EQ(got.nPos, c.nPos) << c.set.nMax;
        EXPECT_EQ(got.nPage, c.nPage) << c.set.nMax;
        EXPECT_EQ(got.nTrackPos, c.nPos);
    }
    // Bars and windows that are not there are refused.
    SCROLLINFO none = Info(SIF_ALL, 0, 0, 0, 0);
    EXPECT_EQ(GetScrollInfo(window.hWnd(), 2, &none), 0);
    EXPECT_EQ(ShowScrollBar(-4, SB_BOTH, 1), 0);
}

TEST(ScrollBarsTest, SendsTheUsersActionsAsScrollMessages) {
    const PlatformWindow window;
    Recorder recorder;
    recorder.Attach(window.hWnd());
    const SCROLLINFO range = Info(SIF_ALL, 0, 110, 10, 0);
    SetScrollInfo(window.hWnd(), SB_HORZ, &range, 1);

    // A hidden bar takes nothing.
    EXPECT_FALSE(ScrollBarClick(window.hWnd(), SB_HORZ, SB_LINEDOWN));
    EXPECT_FALSE(ScrollBarWheel(window.hWnd(), -120));
    ShowScrollBar(window.hWnd(), SB_HORZ, 1);
    EXPECT_FALSE(ScrollBarClick(window.hWnd(), SB_HORZ, SB_THUMBTRACK));
    EXPECT_TRUE(ScrollBarClick(window.hWnd(), SB_HORZ, SB_PAGEDOWN));
    EXPECT_TRUE(ScrollBarTrack(window.hWnd(), SB_HORZ, 500));
    EXPECT_TRUE(ScrollBarRelease(window.hWnd(), SB_HORZ));
    // The wheel goes to the horizontal bar while the vertical one is hidden,
    // three lines a notch; half a notch waits for the other half.
    EXPECT_TRUE(ScrollBarWheel(window.hWnd(), -120));
    EXPECT_TRUE(ScrollBarWheel(window.hWnd(), 60));
    EXPECT_TRUE(ScrollBarWheel(window.hWnd(), 60));
    EnableScrollBar(window.hWnd(), SB_HORZ, ESB_DISABLE_BOTH);
    EXPECT_FALSE(ScrollBarClick(window.hWnd(), SB_HORZ, SB_LINEUP));
    std::vector<int32_t> sent;  // bar * 1000 + code, the position in the high word apart
    for (const Delivered& d : recorder.seen) sent.push_back((d.uMsg == WM_VSCROLL ? 1000 : 0) + (d.wParam & 0xFFFF));
    EXPECT_EQ(sent, (std::vector<int32_t>{SB_PAGEDOWN, SB_ENDSCROLL, SB_THUMBTRACK, SB_THUMBPOSITION, SB_ENDSCROLL,
                                          SB_LINEDOWN, SB_LINEDOWN, SB_LINEDOWN, SB_ENDSCROLL, SB_LINEUP,
                                          SB_ENDSCROLL, SB_LINEUP, SB_LINEUP, SB_ENDSCROLL}));
}
