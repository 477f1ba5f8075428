// Recognises a file of arbitrary bytes and shows its first hex page.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fixtures/ByteWriter.h"
#include "hexview/CBINFile.h"
#include "identify/CNerhaltFiles.h"
#include "shell/frmMain.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fixtures::TempDir dir;
    static frmMain form;
    static int round = 0;
    // Two paths in turn, so that every input is really read.
    std::string path = dir / (round++ & 1 ? "a" : "b");
    fixtures::WriteFile(path, std::string(reinterpret_cast<const char*>(data), size));
    CNerhaltFiles files;
    files.Initialize(path, 0, &form.oListView);
    files.Information();
    files.Show(0);
    if (!form.m_oBinFile) form.m_oBinFile = std::make_unique<CBINFile>(form);
    if (form.m_oBinFile->Initialize(path, 0, nullptr)) form.m_oBinFile->Show(0);
    return 0;
}
