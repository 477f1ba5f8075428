// Formats a hex page of arbitrary bytes at an arbitrary offset and length.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cstdlib>

#include "hexview/HexPage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 16) return 0;
    int64_t offset = 0, length = 0;
    std::memcpy(&offset, data, 8);
    std::memcpy(&length, data + 8, 8);
    unsigned char page[256] = {};
    std::memcpy(page, data + 16, size - 16 < 256 ? size - 16 : 256);
    std::string text = FormatHexPage(page, offset, length);
    // Sixteen lines, fifteen line ends, each line 49 to 65 characters.
    size_t ends = 0;
    for (size_t i = 0; i + 1 < text.size(); ++i) ends += text[i] == '\r' && text[i + 1] == '\n';
    if (ends < 15 || text.size() > 16 * 65 + 30 || text.size() < 16 * 49) std::abort();
    return 0;
}
