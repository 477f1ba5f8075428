#pragma once
// Our own writer of Windows BMP files in their uncompressed 24-bit form, behind
// the runtime's SavePicture. The file starts with the two standard headers
// (BITMAPFILEHEADER, 14 bytes, and BITMAPINFOHEADER, 40 bytes) and holds the
// rows bottom-up, each pixel blue, green, red, each row padded with zeros to a
// multiple of 4 bytes. The file is written under a temporary name and takes
// its own only when it is complete, so a failed write leaves no half file and
// an older file as it was.
#include <cstdint>
#include <functional>
#include <string>

constexpr int32_t kBmpHeaderSize = 54;

// Bytes of one row of a 24-bit BMP.
int64_t Bmp24Stride(int32_t width);
// The two headers of a 24-bit BMP of this size; empty when no BMP can hold it
// (a size of 0 or less, or a file beyond 4 GiB).
std::string Bmp24Headers(int32_t width, int32_t height);

// Fills `rows` rows of the pixel data in the file's order, from row `first`
// on (row 0 is the picture's bottom row): each row Bmp24Stride bytes of blue,
// green and red, its spare bytes left as they are (zero). False stops the
// write.
using BmpRowSource = std::function<bool(int32_t first, int32_t rows, uint8_t* out)>;
// Writes the BMP; false when it could not be written whole.
bool WriteBmp24(const std::string& path, int32_t width, int32_t height, const BmpRowSource& rows);
