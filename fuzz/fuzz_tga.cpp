// Reads a TGA picture of arbitrary bytes and paints it twice into a small pane.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzFile.h"
#include "identify/IFileHost.h"
#include "pictures/CTGAFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFilePair files;
    static FileHost host;
    // Sections of up to 64 KiB, more than any input holds pixels for: larger
    // ones run the same code for longer.
    SetMaxBitmapBytes(64 << 10);
    if (host.oPicture.ImageWidth() == 0) host.oPicture.Move(0, 0, 64, 64);
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
