// Selecting a file reads its head and the first hex page. These benchmarks set
// that against the least any program must do for it: open the file, read
// twice, close.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "fixtures/ByteWriter.h"
#include "hexview/CBINFile.h"
#include "hexview/HexPage.h"
#include "identify/CNerhaltFiles.h"
#include "identify/IFileHost.h"
#include "shell/GameFileClasses.h"
#include "shell/frmMain.h"

namespace {

const fixtures::TempDir& Dir() {
    static fixtures::TempDir dir;
    static bool written = false;
    if (!written) {
        std::string bytes = fixtures::ByteWriter().U32(0x6E71).U32(0x0289FCF5).Data();
        for (int i = 0; i < 64 * 1024; ++i) bytes.push_back(static_cast<char>(i * 7));
        fixtures::WriteFile(dir / "a.ftl", bytes);
        fixtures::WriteFile(dir / "b.ftl", bytes);
        written = true;
    }
    return dir;
}

void BareOpenReadClose(benchmark::State& state) {
    std::string paths[2] = {Dir() / "a.ftl", Dir() / "b.ftl"};
    char head[8], page[256];
    int i = 0;
    for (auto _ : state) {
        int fd = ::open(paths[i++ & 1].c_str(), O_RDONLY);
        benchmark::DoNotOptimize(::read(fd, head, sizeof head));
        benchmark::DoNotOptimize(::pread(fd, page, sizeof page, 0));
        ::close(fd);
    }
}
BENCHMARK(BareOpenReadClose);

// Recognition and the first hex page of a file, alternating between two paths
// so that every round really reads (the same path again costs nothing).
void RecogniseAndFirstPage(benchmark::State& state) {
    std::string paths[2] = {Dir() / "a.ftl", Dir() / "b.ftl"};
    FileHost form;
    CNerhaltFiles files{GameFileClasses(form)};
    CBINFile bin(form);
    int i = 0;
    for (auto _ : state) {
        const std::string& path = paths[i++ & 1];
        benchmark::DoNotOptimize(files.Initialize(path, 0, &form.oListView));
        if (bin.Initialize(path, 0, &form.oListView)) bin.Show(0);
    }
}
BENCHMARK(RecogniseAndFirstPage);

// The whole selection handler, status bar and offers included.
void SelectionHandler(benchmark::State& state) {
    frmMain form;
    form.oDir.SetPath(Dir().Path());
    int i = 0;
    for (auto _ : state) form.oFile.SetListIndex(i++ & 1);
}
BENCHMARK(SelectionHandler);

void FormatOnePage(benchmark::State& state) {
    unsigned char page[256];
    for (int i = 0; i < 256; ++i) page[i] = static_cast<unsigned char>(i);
    for (auto _ : state) benchmark::DoNotOptimize(FormatHexPage(page, 0, 1 << 20));
}
BENCHMARK(FormatOnePage);

}  // namespace
