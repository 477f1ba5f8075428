// Takes arbitrary bytes as a dialog's filter text and as the Filename that a
// multi-select dialog leaves, and walks them as the dialog objects do.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/FileDialogs.h"
#include "winsupport/cCommonDialog.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (size <= 32767) {
        const std::string platform = GCommonDialog::PlatformFilter(text);
        const auto pairs = SplitFilterPairs(platform);
        for (int32_t i = -1; i <= static_cast<int32_t>(pairs.size()) + 1; ++i) {
            const std::string entry = GCommonDialog::FilterEntry(platform, i);
            // A pair found by its index is that pair's name and pattern.
            if (i >= 1 && i <= static_cast<int32_t>(pairs.size()) &&
                entry != pairs[static_cast<size_t>(i - 1)].first + '\0' + pairs[static_cast<size_t>(i - 1)].second)
                std::abort();
        }
    }
    GCommonDialog::FilterEntry(text, 3);
    cCommonDialog dialog;
    dialog.SetFilename(text);
    std::string folder;
    std::vector<std::string> files;
    int32_t count = 0;
    dialog.ParseMultiFileName(folder, files, count);
    if (count < 0 || files.size() != static_cast<size_t>(count)) std::abort();
    return 0;
}
