#include "pictures/BmpWriter.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/Files.h"

namespace {

// Rows are gathered into blocks of about this size before each write.
constexpr int64_t kWriteBlock = 1 << 20;

void PutLE(std::string& out, uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

}  // namespace

int64_t Bmp24Stride(int32_t width) { return (static_cast<int64_t>(width) * 3 + 3) & ~int64_t{3}; }

std::string Bmp24Headers(int32_t width, int32_t height) {
    if (width <= 0 || height <= 0) return {};
    const int64_t image = Bmp24Stride(width) * height;
    if (image + kBmpHeaderSize > int64_t{0xFFFFFFFF}) return {};
    std::string out;
    out.reserve(kBmpHeaderSize);
    // BITMAPFILEHEADER
    out += "BM";
    PutLE(out, static_cast<uint32_t>(image + kBmpHeaderSize), 4);  // bfSize
    PutLE(out, 0, 4);                                              // bfReserved1, bfReserved2
    PutLE(out, kBmpHeaderSize, 4);                                 // bfOffBits
    // BITMAPINFOHEADER
    PutLE(out, 40, 4);                               // biSize
    PutLE(out, static_cast<uint32_t>(width), 4);     // biWidth
    PutLE(out, static_cast<uint32_t>(height), 4);    // biHeight, positive: bottom-up
    PutLE(out, 1, 2);                                // biPlanes
    PutLE(out, 24, 2);                               // biBitCount
    PutLE(out, 0, 4);                                // biCompression, BI_RGB
    PutLE(out, static_cast<uint32_t>(image), 4);     // biSizeImage
    PutLE(out, 0, 4);                                // biXPelsPerMeter
    PutLE(out, 0, 4);                                // biYPelsPerMeter
    PutLE(out, 0, 4);                                // biClrUsed
    PutLE(out, 0, 4);                                // biClrImportant
    return out;
}

bool WriteBmp24(const std::string& path, int32_t width, int32_t height, const BmpRowSource& source) {
    const std::string headers = Bmp24Headers(width, height);
    if (headers.empty()) return false;
    const HFILE h = CreateReplacement(path);
    if (h <= 0) return false;
    const int64_t stride = Bmp24Stride(width);
    const int64_t rowsPerBlock = std::max<int64_t>(1, kWriteBlock / stride);
    bool ok = true;
    try {
        ok = _lwrite(h, headers.data(), kBmpHeaderSize) == kBmpHeaderSize;
        std::vector<uint8_t> block(static_cast<size_t>(std::min<int64_t>(rowsPerBlock, height) * stride));
        for (int32_t done = 0; ok && done < height;) {
            const auto rows = static_cast<int32_t>(std::min<int64_t>(rowsPerBlock, height - done));
            const auto bytes = static_cast<int32_t>(rows * stride);
            std::memset(block.data(), 0, static_cast<size_t>(bytes));
            ok = source(done, rows, block.data()) && _lwrite(h, block.data(), bytes) == bytes;
            done += rows;
        }
    } catch (...) {
        _lclose(h);
        throw;
    }
    if (!ok) {
        _lclose(h);  // never committed: the temporary goes
        return false;
    }
    return CommitReplacement(h);
}
