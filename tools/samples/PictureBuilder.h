#pragma once
// Common picture files built in code from one picture in memory: TGA (types 2
// and 3) and BMP (8-bit with a palette, 24-bit), so that any decoder shows the
// same picture.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace samples {

// Red, green, blue bytes per pixel, rows from top to bottom.
struct RgbImage {
    int Width = 0;
    int Height = 0;
    std::vector<uint8_t> Rgb;

    RgbImage() = default;
    RgbImage(int width, int height);
    uint8_t* At(int x, int y) { return &Rgb[(static_cast<size_t>(y) * Width + x) * 3]; }
    const uint8_t* At(int x, int y) const { return &Rgb[(static_cast<size_t>(y) * Width + x) * 3]; }
};

// Palette indices, rows from top to bottom, and up to 256 colours.
struct IndexedImage {
    int Width = 0;
    int Height = 0;
    std::vector<uint8_t> Indices;
    std::vector<std::array<uint8_t, 3>> Palette;
};

// Red grows to the right, green downwards, blue along the other diagonal: every
// corner has its own colour, so a flipped or mirrored picture shows.
RgbImage GradientImage(int width, int height);
// Eight vertical bars (white, yellow, cyan, green, magenta, red, blue, black)
// over a grey ramp in the lowest quarter.
RgbImage ColourBars(int width, int height);
// The grey level of a pixel: (299 R + 587 G + 114 B) / 1000.
uint8_t GreyOf(const uint8_t* rgb);
// The picture in the 256 colours of a 3-3-2 palette (red and green in eight
// steps, blue in four).
IndexedImage Quantise332(const RgbImage& image);

struct TgaOptions {
    uint8_t ImageType = 2;   // 2 true colour, 3 grey; any other value is written as it is
    uint8_t PixelDepth = 24; // 8 (grey levels), 24 (B, G, R) or 32 (B, G, R, 255)
    bool TopDown = false;    // bit 5 of the descriptor: the first row is the top row
    uint8_t IdLength = 0;    // an image id of this many bytes ('I') follows the header
    // A colour map of this many 24-bit entries (map type 1) follows the id.
    uint16_t ColorMapEntries = 0;
    // Cuts the built file to this many bytes when it is longer.
    std::optional<size_t> Truncate;
};
std::string BuildTga(const RgbImage& image, const TgaOptions& options = {});

// An uncompressed bottom-up BMP of 24 bits per pixel.
std::string BuildBmp24(const RgbImage& image);
// An uncompressed bottom-up BMP of 8 bits per pixel with a 256-entry colour table.
std::string BuildBmp8(const IndexedImage& image);

// A JFIF file of the picture by Qt's writer, in colour or in grey levels.
std::string JpegFile(const RgbImage& image, bool grey = false);

}  // namespace samples
