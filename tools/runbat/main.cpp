// quarrin-runbat: carries out the command file _unpak_.bat that the batch
// unpack dialog writes. It knows exactly the three line forms of that file
// and carries out only what the program itself would have written: a cd to
// the command file's own folder, the archiver of the settings (or the one
// built beside it, which it runs in its own process), and plain ".zip" names
// inside that folder. It reports every line and its outcome, and refuses
// everything else.
#include <unistd.h>

#include <iostream>
#include <string>

#include "identify/modGlobal.h"
#include "pak/BatchScript.h"
#include "platform/Files.h"
#include "platform/Runtime.h"
#include "winsupport/cRegistry.h"

namespace {

// The archiver that the settings name, read from the same registry files
// as the program reads.
std::string ConfiguredArchiver() {
    return PassOver([] {
        cRegistry registry;
        registry.SetValueType(REG_SZ);
        registry.SetClassKey(HKEY_CURRENT_USER);
        registry.SetSectionKey("Software\\Corvane\\Quarrin");
        registry.SetValueKey("PkzipPath");
        return registry.Value().ToString();
    }, std::string());
}

}  // namespace

int main(int argc, char** argv) {
    App::Init(argv[0]);
    if (argc != 2) {
        std::cerr << "Usage: quarrin-runbat COMMAND-FILE\n";
        return 2;
    }
    const std::string path = NormaliseFolder(argv[1]);
    HFILE h = _lopen(path, OF_READ);
    if (h <= 0) {
        std::cerr << "quarrin-runbat: " << PrintableLine(argv[1]) << ": can't be opened\n";
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
    const BatchPolicy policy = MakeBatchPolicy(path, ConfiguredArchiver());
    // Every line works in the command file's folder, as its cd line says.
    if (::chdir(policy.Folder.c_str()) != 0) {
        std::cerr << "quarrin-runbat: " << PrintableLine(policy.Folder) << ": can't be entered\n";
        return 2;
    }
    bool ok = RunBatchScript(text, policy, std::cout, std::cerr);
    std::cout << (ok ? "Done.\n" : "Done, with lines that failed or were refused.\n");
    return ok ? 0 : 1;
}
