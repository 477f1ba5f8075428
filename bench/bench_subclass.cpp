// A window message through the subclassing layer: the clients of the message
// found in the window's properties and called in turn, with the window's own
// procedure after the last. Also a scroll message through cScrollBars, as a
// click on a bar's arrow sends it.
#include <benchmark/benchmark.h>

#include <vector>

#include "platform/ScrollBars.h"
#include "platform/Windows.h"
#include "winsupport/MSubclass.h"
#include "winsupport/cScrollBars.h"

namespace {

class CountingClient : public ISubclass {
public:
    int32_t MsgResponse() override { return MsgResponseAfter; }
    void SetMsgResponse(int32_t) override {}
    int32_t WindowProc(int32_t, int32_t, int32_t wParam, int32_t) override { return calls += wParam; }
    int32_t calls = 0;
};

void MessageThroughClients(benchmark::State& state) {
    const PlatformWindow window;
    std::vector<CountingClient> clients(static_cast<size_t>(state.range(0)));
    for (CountingClient& client : clients) MSubclass::AttachMessage(client, window.hWnd(), MM_WOM_DONE);
    for (auto _ : state) benchmark::DoNotOptimize(SendMessageA(window.hWnd(), MM_WOM_DONE, 1, 0));
    for (CountingClient& client : clients) MSubclass::DetachMessage(client, window.hWnd(), MM_WOM_DONE);
    if (clients.front().calls == 0) state.SkipWithError("the clients were not called");
}
BENCHMARK(MessageThroughClients)->Arg(1)->Arg(3);

void PostedMessageThroughClients(benchmark::State& state) {
    const PlatformWindow window;
    std::vector<CountingClient> clients(3);
    for (CountingClient& client : clients) MSubclass::AttachMessage(client, window.hWnd(), MM_WOM_DONE);
    for (auto _ : state) {
        PostMessageA(window.hWnd(), MM_WOM_DONE, 1, 0);
        benchmark::DoNotOptimize(DispatchPostedMessages());
    }
    for (CountingClient& client : clients) MSubclass::DetachMessage(client, window.hWnd(), MM_WOM_DONE);
}
BENCHMARK(PostedMessageThroughClients);

void ScrollLineThroughScrollBars(benchmark::State& state) {
    const PlatformWindow window;
    cScrollBars bars;
    bars.Create(window.hWnd());
    bars.SetLargeChange(1, 100);
    bars.SetMax(1, 1000000);
    bars.SetVisible(1, true);
    int32_t changes = 0;
    bars.Change.Connect([&changes](int32_t&) { ++changes; });
    int32_t code = SB_LINEDOWN;
    for (auto _ : state) {
        if (bars.Value(1) == bars.Max(1)) code = SB_LINEUP;
        if (bars.Value(1) == 0) code = SB_LINEDOWN;
        SendMessageA(window.hWnd(), WM_VSCROLL, code, 0);
    }
    benchmark::DoNotOptimize(changes);
}
BENCHMARK(ScrollLineThroughScrollBars);

}  // namespace
