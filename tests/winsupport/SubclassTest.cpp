#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fixtures/ErrorOf.h"
#include "platform/Windows.h"
#include "winsupport/GSubclass.h"
#include "winsupport/MSubclass.h"

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
    int32_t Prop(const std::string& suffix) const { return GetPropA(hWnd, std::to_string(hWnd) + suffix); }
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

// The bookkeeping lies in the window's properties: H the old procedure, "C"H
// the attachments, H#M"C" a message's clients and H#M#i each client.
TEST(SubclassTest, ADetachedClientLeavesTheOthersInOrder) {
    LoggedWindow window;
    Log log;
    Client a(log, 1, MsgResponseNone), b(log, 2, MsgResponseNone), c(log, 3, MsgResponseNone);
    for (Client* client : {&a, &b, &c}) MSubclass::AttachMessage(*client, window.hWnd, MM_WOM_DONE);
    MSubclass::AttachMessage(a, window.hWnd, WM_DESTROY);
    EXPECT_EQ(CountProps(window.hWnd), 8u);
    EXPECT_EQ(std::vector<int32_t>({GetPropA(window.hWnd, "C" + std::to_string(window.hWnd)), window.Prop(""),
                                    window.Prop("#957#3"), window.Prop("#2#1")}),
              std::vector<int32_t>({4, window.proc, c.Address(), a.Address()}));
    MSubclass::DetachMessage(b, window.hWnd, MM_WOM_DONE);
    EXPECT_EQ(std::vector<int32_t>({window.Prop("#957C"), window.Prop("#957#2"), window.Prop("#957#3")}),
              std::vector<int32_t>({2, c.Address(), 0}));
    SendMessageA(window.hWnd, MM_WOM_DONE, 0, 0);
    EXPECT_EQ(log, (Log{"c1", "c3"}));
    MSubclass::DetachMessage(a, window.hWnd, MM_WOM_DONE);
    MSubclass::DetachMessage(c, window.hWnd, MM_WOM_DONE);
    EXPECT_NE(GetWindowLongA(window.hWnd, GWL_WNDPROC), window.proc);  // WM_DESTROY still has a client
    MSubclass::DetachMessage(a, window.hWnd, WM_DESTROY);
    // The counts of the messages stay behind at 0.
    EXPECT_EQ(CountProps(window.hWnd), 2u);
    EXPECT_EQ(window.Prop("#957C") + window.Prop("#2C"), 0);
    EXPECT_EQ(GetWindowLongA(window.hWnd, GWL_WNDPROC), window.proc);
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
    EXPECT_EQ(CountProps(foreign) + CountProps(noProcedure), 0u);
    // The failed second attachment left the window's count raised.
    EXPECT_EQ(GetPropA(window.hWnd, "C" + std::to_string(window.hWnd)), 2);
    EXPECT_EQ(window.Prop("#957C"), 1);
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
