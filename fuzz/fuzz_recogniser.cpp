// Recognises a file of arbitrary bytes and shows its first hex page.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzFile.h"
#include "hexview/CBINFile.h"
#include "identify/CNerhaltFiles.h"
#include "shell/frmMain.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFilePair inputs;
    static frmMain form;
    const std::string& path = inputs.Write(data, size);
    CNerhaltFiles recogniser;
    recogniser.Initialize(path, 0, &form.oListView);
    recogniser.Information();
    recogniser.Show(0);
    if (!form.m_oBinFile) form.m_oBinFile = std::make_unique<CBINFile>(form);
    if (form.m_oBinFile->Initialize(path, 0, nullptr)) form.m_oBinFile->Show(0);
    return 0;
}
