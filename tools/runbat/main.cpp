// quarrin-runbat: carries out the command file _unpak_.bat that the batch
// unpack dialog writes. It knows exactly the three line forms of that file,
// starts the archiver directly with its arguments, reports every line and
// its outcome, and executes nothing else.
#include <unistd.h>

#include <iostream>
#include <string>

#include "pak/BatchScript.h"
#include "platform/Files.h"
#include "platform/Runtime.h"

int main(int argc, char** argv) {
    App::Init(argv[0]);
    if (argc != 2) {
        std::cerr << "Usage: quarrin-runbat COMMAND-FILE\n";
        return 2;
    }
    const std::string path = argv[1];
    HFILE h = _lopen(path, OF_READ);
    if (h <= 0) {
        std::cerr << "quarrin-runbat: " << PrintableLine(path) << ": can't be opened\n";
        return 2;
    }
    std::string text;
    char buffer[64 * 1024];
    for (;;) {
        int32_t n = _lread(h, buffer, sizeof buffer);
        if (n <= 0) break;
        text.append(buffer, static_cast<size_t>(n));
    }
    _lclose(h);
    bool ok = RunBatchScript(text, NormaliseFolder("."), std::cout);
    std::cout << (ok ? "Done.\n" : "Done, with lines that failed or were not understood.\n");
    return ok ? 0 : 1;
}
