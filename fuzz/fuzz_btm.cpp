// Reads a Planar Bitmap of arbitrary bytes, paints it twice into a small pane
// and runs the palette toolkit over what it decoded.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzFile.h"
#include "PictureHost.h"
#include "pictures/CBtm.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFilePair files;
    FileHost& host = PictureHost();
    const std::string& path = files.Write(data, size);

    CBtm btm(host);
    // A file refused by Initialize stays open, and Show still reads it.
    btm.Initialize(path, 0, &host.oListView);
    btm.Information();
    const bool shown = btm.Show(host.oPicture.hDC);
    // A picture shows only with a size and all of its pixel data in the file.
    if (shown && (btm.Width() <= 0 || btm.Height() <= 0 || !btm.Loaded() ||
                  btm.Header().lDataSize > static_cast<int64_t>(size) - 56))
        std::abort();
    if (shown != btm.Show(host.oPicture.hDC)) std::abort();
    if (shown) {
        btm.Fade(200);
        btm.AdjustLightness(150);
        btm.GrayScale();
        btm.Invert();
        if (btm.Color(255) < 0 || btm.Color(256) != -1) std::abort();
    }
    return 0;
}
