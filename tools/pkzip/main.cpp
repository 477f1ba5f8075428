// quarrin-pkzip: the archiver that unpacks the program's ZIP wrappers. It
// takes the calling form of the command file, `quarrin-pkzip -Extract
// NAME.zip`, and writes every entry of NAME.zip into the current folder.
#include <iostream>
#include <string>

#include "pak/Archiver.h"
#include "platform/Runtime.h"

namespace {
const char kUsage[] =
    "Usage: quarrin-pkzip -Extract NAME.zip\n"
    "\n"
    "Writes every entry of NAME.zip into the current folder. Entries may be\n"
    "stored, deflated or imploded (PKWare DCL). Names that would leave the\n"
    "current folder are refused, and so is an archive whose entries share\n"
    "their bytes. Names are shown with control bytes and bytes from 0x7F up\n"
    "written as \\xNN.\n";
}  // namespace

int main(int argc, char** argv) {
    App::Init(argv[0]);
    if (argc == 2 && (std::string(argv[1]) == "--help" || std::string(argv[1]) == "-h")) {
        std::cout << kUsage;
        return 0;
    }
    if (argc != 3 || std::string(argv[1]) != "-Extract") {
        std::cerr << kUsage;
        return 2;
    }
    // The command-file runner unpacks through the same call in its own
    // process, so both report the same and end the same.
    return RunArchiverExtract(argv[2], ".", std::cout, std::cerr);
}
