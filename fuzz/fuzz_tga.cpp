// Reads a TGA picture of arbitrary bytes and paints it twice into a small pane.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzFile.h"
#include "PictureHost.h"
#include "pictures/CTGAFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFilePair files;
    FileHost& host = PictureHost();
    const std::string& path = files.Write(data, size);

    CTGAFile tga;
    // A file refused by Initialize stays open, and Show still reads it.
    tga.Initialize(path);
    tga.Information();
    const bool shown = tga.Show(host.oPicture.hDC);
    // The data of a shown picture lies whole in the file behind the header.
    if (shown && (static_cast<int64_t>(tga.Width()) * tga.Height() * (tga.Header().bPixelDepth / 8) >
                                static_cast<int64_t>(size) - 18))
        std::abort();
    if (shown != tga.Show(host.oPicture.hDC)) std::abort();
    return 0;
}
