// Reads a Planar Bitmap Palette of arbitrary bytes and draws its strip. Every
// colour of the file that names no system colour stands in the strip as the
// file gives it, and a colour missing from a short file is black.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzFile.h"
#include "identify/IFileHost.h"
#include "pictures/CPLTFile.h"

namespace {

// The colour word of entry `i`, row `row`, as the file holds it: its bytes
// from 56 on, twelve to an entry, little-endian; bytes past the end are 0.
uint32_t FileColour(const uint8_t* data, size_t size, int i, int row) {
    uint32_t word = 0;
    const size_t at = 56 + static_cast<size_t>(i) * 12 + static_cast<size_t>(row) * 4;
    for (size_t b = 0; b < 4; ++b)
        if (at + b < size) word |= static_cast<uint32_t>(data[at + b]) << (8 * b);
    return word;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFilePair files;
    static FileHost host;
    if (host.oPicture.ImageWidth() == 0) host.oPicture.Move(0, 0, 256, 3);
    const std::string& path = files.Write(data, size);

    CPLTFile plt(host);
    if (!plt.Initialize(path, 0, &host.oListView)) std::abort();
    if (plt.Information() != "Planar Bitmap Palette" || plt.Width() != 256 || plt.Height() != 3) std::abort();
    host.oPicture.Cls();
    plt.Show(0);
    // The pane's pixels are 32-bit, blue first, 256 to a row.
    const uint8_t* pixel = host.oPicture.ImageBits();
    for (int row = 0; row < 3; ++row)
        for (int i = 0; i < 256; ++i, pixel += 4) {
            const uint32_t colour = FileColour(data, size, i, row);
            if ((colour & 0x80000000u) != 0) continue;  // a system colour, or none
            if (pixel[2] != (colour & 0xFF) || pixel[1] != ((colour >> 8) & 0xFF) || pixel[0] != ((colour >> 16) & 0xFF))
                std::abort();
        }
    return 0;
}
