// Recognises a file of arbitrary bytes as a common picture: the heads of BMP,
// GIF and JPEG files, the JPEG's frame scan, and the header of a TGA.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzFile.h"
#include "identify/IFileHost.h"
#include "pictures/CImageFiles.h"
#include "platform/Files.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFilePair inputs;
    static FileHost host;
    static CImageFiles images(host);
    const std::string& path = inputs.Write(data, size);
    const int32_t handles = OpenHandleCount();
    const bool valid = images.Initialize(path);
    // Only the TGA reader keeps its file open; the recogniser keeps none.
    if (OpenHandleCount() > handles + 1) std::abort();
    // Showing and saving are offered only for a picture that was recognised.
    if (!valid && (images.IsAble2Show() || images.IsAble2Save())) std::abort();
    images.Information();
    return 0;
}
