// Recognises a file of arbitrary bytes and shows its first hex page.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzFile.h"
#include "hexview/CBINFile.h"
#include "identify/CNerhaltFiles.h"
#include "PictureHost.h"
#include "shell/GameFileClasses.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFilePair inputs;
    FileHost& host = PictureHost();
    static CBINFile binFile(host);
    // A small pane, as in the mesh target: a mesh's report stops at its end.
    host.tReport.SetCapacity(8 * 1024);
    const std::string& path = inputs.Write(data, size);
    CNerhaltFiles recogniser(GameFileClasses(host));
    recogniser.Initialize(path, 0, &host.oListView);
    recogniser.Information();
    recogniser.Show(0);
    if (binFile.Initialize(path, 0, nullptr)) binFile.Show(0);
    return 0;
}
