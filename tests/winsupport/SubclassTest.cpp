#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fixtures/ErrorOf.h"
#include "platform/Runtime.h"
#include "platform/ScrollBars.h"
#include "platform/Windows.h"
#include "winsupport/GSubclass.h"
#include "winsupport/MSubclass.h"
#include "winsupport/cScrollBars.h"

using Log = std::vector<std::string>;

namespace {

constexpr int32_t kOldResult = 100;

// A window whose own procedure logs "old" and answers kOldResult.
struct LoggedWindow {
    LoggedWindow() { SetWindowLongA(hWnd, GWL_WNDPROC, proc); }
    ~LoggedWindow() {
        DestroyWindow(hWnd);
        UnregisterWindowProc(proc);
    }
    const int32_t hWnd = CreatePlatformWindow();
    Log log;
    const int32_t proc = RegisterWindowProc([this](int32_t, uint32_t, int32_t, int32_t) {
        log.push_back("old");
        return kOldResult;
    });
};

// Client n logs "cN" and answers n; it may act inside its call.
struct Client : ISubclass {
    Client(Log& l, int32_t number, int32_t r) : log(l), n(number), response(r) {}
    int32_t MsgResponse() override { return response; }
    void SetMsgResponse(int32_t) override {}
    int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t, int32_t) override {
        log.push_back("c" + std::to_string(n));
        const int32_t result = n;  // the action may end this client
        if (const auto action = during) action(hwnd, iMsg);
        return result;
    }
    Log& log;
    int32_t n, response;
    std::function<void(int32_t, int32_t)> during;
};

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
    Log events;
};

}  // namespace

TEST(SubclassTest, ClientsAndTheOldProcedureRunInTheOrderTheirResponsesAsk) {
    struct Case {
        std::vector<int32_t> responses;
        Log order;
        int32_t result;
    };
    const int32_t B = MsgResponseBefore, A = MsgResponseAfter, N = MsgResponseNone;
    const Case cases[] = {
        {{}, {"old"}, kOldResult}, {{B}, {"old", "c1"}, 1}, {{A}, {"c1", "old"}, kOldResult}, {{N}, {"c1"}, 1},
        {{N, N}, {"c1", "c2"}, 2}, {{A, B}, {"c1", "c2"}, 2}, {{B, A}, {"old", "c1", "c2"}, 2},
        // Only the first and the last client are asked.
        {{N, B, A}, {"c1", "c2", "c3", "old"}, kOldResult}, {{N, A, N}, {"c1", "c2", "c3"}, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.order.size());
        LoggedWindow window;
        std::vector<std::unique_ptr<Client>> clients;
        // Another message keeps the window subclassed when this one has no clients.
        Client other(window.log, 9, N);
        MSubclass::AttachMessage(other, window.hWnd, WM_VSCROLL);
        for (const int32_t response : c.responses) {
            clients.push_back(std::make_unique<Client>(window.log, int32_t(clients.size() + 1), response));
            MSubclass::AttachMessage(*clients.back(), window.hWnd, MM_WOM_DONE);
        }
        EXPECT_EQ(SendMessageA(window.hWnd, MM_WOM_DONE, 0, 0), c.result);
        EXPECT_EQ(window.log, c.order);
        for (auto& client : clients) MSubclass::DetachMessage(*client, window.hWnd, MM_WOM_DONE);
        MSubclass::DetachMessage(other, window.hWnd, WM_VSCROLL);
        EXPECT_EQ(GetWindowLongA(window.hWnd, GWL_WNDPROC), window.proc);
    }
}

TEST(SubclassTest, RefusesWindowsAndClientsItCantServe) {
    LoggedWindow window;
    Log log;
    Client a(log, 1, MsgResponseNone);
    const int32_t foreign = CreatePlatformWindow(0, GetCurrentProcessId() + 8);
    const int32_t gone = CreatePlatformWindow();
    DestroyWindow(gone);
    const int32_t noProcedure = CreatePlatformWindow();
    SetWindowLongA(noProcedure, GWL_WNDPROC, 0);
    MSubclass::AttachMessage(a, window.hWnd, MM_WOM_DONE);
    const std::tuple<int32_t, uint32_t, const char*> cases[] = {
        {noProcedure, 0x80043319u, "Can't subclass window"},
        {window.hWnd, 0x8004331Au, "Message already handled by another class"},
        {gone, 0x8004331Bu, "Invalid window"},
        {foreign, 0x8004331Cu, "Can't modify external window"},
    };
    for (const auto& [hWnd, number, description] : cases) {
        const RuntimeError e = fixtures::ErrorOf([&] { MSubclass::AttachMessage(a, hWnd, MM_WOM_DONE); });
        EXPECT_EQ(static_cast<uint32_t>(e.Number), number);
        EXPECT_EQ(e.Description, description);
        EXPECT_EQ(e.Source, App::EXEName() + ".WindowProc");
    }
    DestroyWindow(foreign);
    DestroyWindow(noProcedure);
}

TEST(SubclassTest, AClientMayLeaveOrEndInsideItsOwnCall) {
    LoggedWindow window;
    GSubclass service;
    auto first = std::make_unique<Client>(window.log, 1, MsgResponseAfter);
    Client second(window.log, 2, MsgResponseAfter);
    int32_t current = 0, oldResult = 0;
    first->during = [&](int32_t hwnd, int32_t iMsg) {
        current = service.CurrentMessage();
        oldResult = service.CallOldWindowProc(hwnd, iMsg, 0, 0);
        service.DetachMessage(*first, hwnd, iMsg);
        first.reset();
    };
    service.AttachMessage(*first, window.hWnd, WM_DESTROY);
    service.AttachMessage(second, window.hWnd, WM_DESTROY);
    // The second client moved to number 1 meanwhile: number 2 is empty, so the
    // old procedure answers in its place for this message.
    EXPECT_EQ(SendMessageA(window.hWnd, WM_DESTROY, 0, 0), kOldResult);
    EXPECT_EQ(window.log, (Log{"c1", "old", "old"}));
    EXPECT_EQ(current, int32_t(WM_DESTROY));
    EXPECT_EQ(oldResult, kOldResult);
    window.log.clear();
    EXPECT_EQ(SendMessageA(window.hWnd, WM_DESTROY, 0, 0), kOldResult);
    EXPECT_EQ(window.log, (Log{"c2", "old"}));
    service.DetachMessage(second, window.hWnd, WM_DESTROY);
}

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
    // The same value again reaches no listener.
    b.bars.SetValue(1, 30);
    b.bars.SetValue(1, 30);
    EXPECT_EQ(b.events, (Log{"C1"}));
    EXPECT_THROW(b.bars.SmallChange(2), RuntimeError);
}

TEST(cScrollBarsTest, TurnsScrollCodesIntoValuesAndEvents) {
    struct Case {
        int32_t eBar, start, wParam, value;
        Log events;
    };
    // Bars: LargeChange 10, Max 100, SmallChange 5; the last position is 101.
    const Case cases[] = {
        {1, 3, SB_LINEUP, 0, {"C1"}},
        {1, 97, SB_LINEDOWN, 100, {"C1"}},
        {1, 100, SB_LINEDOWN | (7 << 16), 100, {}},
        {1, 5, SB_PAGEUP, 0, {"C1"}},
        {0, 95, SB_PAGEDOWN, 101, {"C0"}},
        {1, 40, SB_THUMBPOSITION | (60 << 16), 40, {}},
        {1, 40, SB_TOP, 0, {"C1"}},
        {0, 40, SB_BOTTOM, 100, {"C0"}},
        {1, 40, 9, 40, {}},
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
    EXPECT_EQ(b.events, (Log{"C1"}));
    // A change behind the object's back comes out at the end of a scroll.
    SCROLLINFO info{sizeof(SCROLLINFO), SIF_POS, 0, 0, 0, 70, 0};
    SetScrollInfo(b.window.hWnd(), 1, &info, 1);
    b.Send(1, SB_ENDSCROLL);
    EXPECT_EQ(b.events, (Log{"C1", "C1"}));
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
    EXPECT_EQ(b.events, (Log{"C1", "C1"}));
}

TEST(cScrollBarsTest, ServesTheBarsFlatOrRegularAndLetsTheWindowGo) {
    for (const bool flat : {true, false}) {
        SCOPED_TRACE(flat);
        BoundBars b(flat);
        b.bars.SetStyle(2);
        b.bars.SetEnabled(0, false);
        b.bars.SetVisible(0, true);
        b.bars.SetOrientation(efsoVertical);
        EXPECT_EQ(b.bars.Style(), flat ? 2 : 0);
        const ScrollBarState horizontal = b.State(0);
        EXPECT_EQ(horizontal.flat, flat);
        EXPECT_EQ(horizontal.style, flat ? 2 : 0);
        EXPECT_FALSE(horizontal.enabled);
        EXPECT_FALSE(horizontal.shown);  // Orientation hides it again
        EXPECT_TRUE(b.State(1).shown);
        // A second Create lets the first window go: its own procedure is back.
        const int32_t before = GetWindowLongA(b.window.hWnd(), GWL_WNDPROC);
        PlatformWindow other;
        b.bars.Create(other.hWnd());
        EXPECT_NE(GetWindowLongA(b.window.hWnd(), GWL_WNDPROC), before);
        EXPECT_EQ(GetPropA(other.hWnd(), "C" + std::to_string(other.hWnd())), 2);
    }
}
