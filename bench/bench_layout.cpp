// The main window's layout: one Form_Resize, and a resize by the user that
// changes the window's width, so that every pane moves and oImg's bars are fitted.
#include <benchmark/benchmark.h>

#include "shell/frmMain.h"

namespace {

void FormResize(benchmark::State& state) {
    frmMain form;
    form.Move(0, 0, 12000, 9000);
    for (auto _ : state) form.Form_Resize();
}
BENCHMARK(FormResize);

void UserResize(benchmark::State& state) {
    frmMain form;
    form.oScroll.Create(form.oImg.hWnd());
    form.oPicture.Move(0, 0, 2000, 1500);
    int32_t width = 12000;
    for (auto _ : state) {
        width = width == 12000 ? 12015 : 12000;
        form.Move(0, 0, width, 9000);
    }
}
BENCHMARK(UserResize);

}  // namespace
