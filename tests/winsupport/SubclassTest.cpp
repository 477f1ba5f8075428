#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "WinsupportTestSupport.h"
#include "platform/Windows.h"
#include "winsupport/GSubclass.h"
#include "winsupport/MSubclass.h"

namespace {

using winsupporttest::Raised;

constexpr int32_t kOldResult = 100;

// A window whose own procedure logs "old" and answers kOldResult.
class LoggedWindow {
public:
    LoggedWindow()
        : hWnd(CreatePlatformWindow()), proc(RegisterWindowProc([this](int32_t, uint32_t, int32_t, int32_t) {
              log.push_back("old");
              return kOldResult;
          })) {
        SetWindowLongA(hWnd, GWL_WNDPROC, proc);
    }
    ~LoggedWindow() {
        DestroyWindow(hWnd);
        UnregisterWindowProc(proc);
    }
    std::string Key(const std::string& suffix = {}) const { return std::to_string(hWnd) + suffix; }
    int32_t Prop(const std::string& key) const { return GetPropA(hWnd, key); }

    const int32_t hWnd;
    const int32_t proc;
    std::vector<std::string> log;
};

// Client n logs "cN" and answers n; it may act inside its call.
class Client : public ISubclass {
public:
    Client(std::vector<std::string>& log, int32_t n, int32_t response) : log_(log), n_(n), response_(response) {}
    int32_t MsgResponse() override { return response_; }
    void SetMsgResponse(int32_t) override {}
    int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) override {
        log_.push_back("c" + std::to_string(n_));
        // Copies: the action may end this client.
        const int32_t n = n_;
        if (const auto action = during) action(hwnd, iMsg);
        return n;
    }
    std::function<void(int32_t, int32_t)> during;

private:
    std::vector<std::string>& log_;
    int32_t n_;
    int32_t response_;
};

}  // namespace

TEST(SubclassTest, ClientsAndTheOldProcedureRunInTheOrderTheirResponsesAsk) {
    struct Case {
        std::vector<int32_t> responses;
        std::vector<std::string> order;
        int32_t result;
    };
    const Case cases[] = {
        {{}, {"old"}, kOldResult},
        {{MsgResponseBefore}, {"old", "c1"}, 1},
        {{MsgResponseAfter}, {"c1", "old"}, kOldResult},
        {{MsgResponseNone}, {"c1"}, 1},
        {{MsgResponseNone, MsgResponseNone}, {"c1", "c2"}, 2},
        {{MsgResponseAfter, MsgResponseBefore}, {"c1", "c2"}, 2},
        {{MsgResponseBefore, MsgResponseAfter}, {"old", "c1", "c2"}, 2},
        // Only the first and the last client are asked.
        {{MsgResponseNone, MsgResponseBefore, MsgResponseAfter}, {"c1", "c2", "c3", "old"}, kOldResult},
        {{MsgResponseNone, MsgResponseAfter, MsgResponseNone}, {"c1", "c2", "c3"}, 3},
    };
    for (const Case& c : cases) {
        LoggedWindow window;
        std::vector<std::unique_ptr<Client>> clients;
        // Another message keeps the window subclassed when this one has no clients.
        Client other(window.log, 9, MsgResponseNone);
        MSubclass::AttachMessage(other, window.hWnd, WM_VSCROLL);
        for (const int32_t response : c.responses) {
            clients.push_back(std::make_unique<Client>(window.log, int32_t(clients.size() + 1), response));
            MSubclass::AttachMessage(*clients.back(), window.hWnd, MM_WOM_DONE);
        }
        EXPECT_EQ(SendMessageA(window.hWnd, MM_WOM_DONE, 0, 0), c.result) << c.responses.size();
        EXPECT_EQ(window.log, c.order) << c.responses.size();
        for (auto& client : clients) MSubclass::DetachMessage(*client, window.hWnd, MM_WOM_DONE);
        MSubclass::DetachMessage(other, window.hWnd, WM_VSCROLL);
        EXPECT_EQ(GetWindowLongA(window.hWnd, GWL_WNDPROC), window.proc);
    }
}

TEST(SubclassTest, KeepsItsBookkeepingInTheWindowsProperties) {
    LoggedWindow window;
    const int32_t subclassedBy = GetWindowLongA(window.hWnd, GWL_WNDPROC);
    std::vector<std::string> log;
    Client a(log, 1, MsgResponseNone), b(log, 2, MsgResponseNone), c(log, 3, MsgResponseNone);
    for (Client* client : {&a, &b, &c}) MSubclass::AttachMessage(*client, window.hWnd, MM_WOM_DONE);
    MSubclass::AttachMessage(a, window.hWnd, WM_DESTROY);
    const std::string m = "#957";

    struct Expect {
        std::string key;
        int32_t value;
    };
    const auto check = [&](const char* step, const std::vector<Expect>& expects, size_t props) {
        for (const Expect& e : expects) EXPECT_EQ(window.Prop(e.key), e.value) << step << " " << e.key;
        EXPECT_EQ(CountProps(window.hWnd), props) << step;
    };
    check("attached",
          {{window.Key(), subclassedBy},
           {"C" + window.Key(), 4},
           {window.Key(m + "C"), 3},
           {window.Key(m + "#1"), a.Address()},
           {window.Key(m + "#2"), b.Address()},
           {window.Key(m + "#3"), c.Address()},
           {window.Key("#2C"), 1},
           {window.Key("#2#1"), a.Address()}},
          8);
    EXPECT_NE(GetWindowLongA(window.hWnd, GWL_WNDPROC), subclassedBy);

    MSubclass::DetachMessage(b, window.hWnd, MM_WOM_DONE);
    check("middle detached",
          {{"C" + window.Key(), 3},
           {window.Key(m + "C"), 2},
           {window.Key(m + "#1"), a.Address()},
           {window.Key(m + "#2"), c.Address()},
           {window.Key(m + "#3"), 0}},
          7);
    SendMessageA(window.hWnd, MM_WOM_DONE, 0, 0);
    EXPECT_EQ(log, (std::vector<std::string>{"c1", "c3"}));

    MSubclass::DetachMessage(a, window.hWnd, MM_WOM_DONE);
    MSubclass::DetachMessage(c, window.hWnd, MM_WOM_DONE);
    check("one left", {{"C" + window.Key(), 1}, {window.Key(m + "C"), 0}, {window.Key(m + "#1"), 0}}, 5);
    EXPECT_NE(GetWindowLongA(window.hWnd, GWL_WNDPROC), window.proc);
    MSubclass::DetachMessage(a, window.hWnd, WM_DESTROY);
    // The counts of the messages stay behind at 0.
    check("all detached", {{window.Key(), 0}, {"C" + window.Key(), 0}, {window.Key(m + "C"), 0}}, 2);
    EXPECT_EQ(GetWindowLongA(window.hWnd, GWL_WNDPROC), window.proc);
}

TEST(SubclassTest, RefusesWindowsAndClientsItCantServe) {
    LoggedWindow window;
    std::vector<std::string> log;
    Client a(log, 1, MsgResponseNone);
    const int32_t foreign = CreatePlatformWindow(0, GetCurrentProcessId() + 8);
    const int32_t gone = CreatePlatformWindow();
    DestroyWindow(gone);
    const int32_t noProcedure = CreatePlatformWindow();
    SetWindowLongA(noProcedure, GWL_WNDPROC, 0);
    MSubclass::AttachMessage(a, window.hWnd, MM_WOM_DONE);

    struct Case {
        int32_t hWnd;
        int32_t number;
        const char* description;
    };
    const Case cases[] = {
        {noProcedure, kSubclassErrCantSubclass, "Can't subclass window"},
        {window.hWnd, kSubclassErrAlreadyHandled, "Message already handled by another class"},
        {gone, kSubclassErrInvalidWindow, "Invalid window"},
        {foreign, kSubclassErrExternalWindow, "Can't modify external window"},
    };
    for (const Case& c : cases) {
        const RuntimeError e = Raised([&] { MSubclass::AttachMessage(a, c.hWnd, MM_WOM_DONE); });
        EXPECT_EQ(e.Number, c.number);
        EXPECT_EQ(e.Description, c.description);
        EXPECT_EQ(e.Source, App::EXEName() + ".WindowProc");
    }
    EXPECT_EQ(uint32_t(kSubclassErrCantSubclass), 0x80043319u);
    EXPECT_EQ(CountProps(foreign), 0u);
    EXPECT_EQ(CountProps(noProcedure), 0u);
    // The failed second attachment left the window's count raised.
    EXPECT_EQ(window.Prop("C" + window.Key()), 2);
    EXPECT_EQ(window.Prop(window.Key("#957C")), 1);
    DestroyWindow(foreign);
    DestroyWindow(noProcedure);
}

TEST(SubclassTest, AClientMayLeaveOrEndInsideItsOwnCall) {
    LoggedWindow window;
    GSubclass service;
    auto first = std::make_unique<Client>(window.log, 1, MsgResponseAfter);
    Client second(window.log, 2, MsgResponseAfter);
    int32_t current = 0;
    int32_t oldResult = 0;
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
    EXPECT_EQ(window.log, (std::vector<std::string>{"c1", "old", "old"}));
    EXPECT_EQ(current, int32_t(WM_DESTROY));
    EXPECT_EQ(oldResult, kOldResult);
    window.log.clear();
    EXPECT_EQ(SendMessageA(window.hWnd, WM_DESTROY, 0, 0), kOldResult);
    EXPECT_EQ(window.log, (std::vector<std::string>{"c2", "old"}));
    service.DetachMessage(second, window.hWnd, WM_DESTROY);
}
