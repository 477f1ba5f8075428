// Reads a Planar Bitmap Palette of arbitrary bytes and draws its strip twice;
// both strips must be the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "FuzzFile.h"
#include "identify/IFileHost.h"
#include "pictures/CPLTFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFilePair files;
    static FileHost host;
    if (host.oPicture.ImageWidth() == 0) host.oPicture.Move(0, 0, 256, 3);
    const std::string& path = files.Write(data, size);

    CPLTFile plt(host);
    if (!plt.Initialize(path, 0, &host.oListView)) std::abort();
    if (plt.Information() != "Planar Bitmap Palette" || plt.Width() != 256 || plt.Height() != 3) std::abort();
    // A colour that can't be set (a system colour beyond the elements) leaves
    // the pixel as it was: both strips start from a cleared pane.
    host.oPicture.Cls();
    plt.Show(0);
    const size_t bytes = static_cast<size_t>(host.oPicture.ImageWidth()) * 3 * 4;
    const std::vector<uint8_t> first(host.oPicture.ImageBits(), host.oPicture.ImageBits() + bytes);
    host.oPicture.Cls();
    plt.Show(0);
    if (std::memcmp(first.data(), host.oPicture.ImageBits(), bytes) != 0) std::abort();
    return 0;
}
