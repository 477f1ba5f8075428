#include "hexview/HexPage.h"

#include <algorithm>

std::string FormatHexPage(const unsigned char* page, int64_t offset, int64_t fileLength) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    // 16 lines of at most 65 characters and 15 line ends.
    char out[16 * 65 + 15 * 2];
    size_t n = 0;
    for (int32_t r = 0; r < 16; ++r) {
        char chars[16];
        size_t c = 0;
        for (int32_t col = 0; col < 16; ++col, ++offset) {
            unsigned char b = page[r * 16 + col];
            if (offset < fileLength) {
                out[n++] = kDigits[b >> 4];
                out[n++] = kDigits[b & 15];
                out[n++] = ' ';
                chars[c++] = b > 32 ? static_cast<char>(b) : '.';
            } else {
                out[n++] = ' ';
                out[n++] = ' ';
                out[n++] = ' ';
            }
        }
        out[n++] = ' ';
        std::copy(chars, chars + c, out + n);
        n += c;
        if (r != 15) {
            out[n++] = '\r';
            out[n++] = '\n';
        }
    }
    return std::string(out, n);
}

int32_t HexLastPage(int64_t fileLength) {
    if (fileLength <= 0) return 0;
    int64_t last = (fileLength - 1) / kHexPageBytes;
    return static_cast<int32_t>(std::min<int64_t>(last, kHexMaxPage));
}
