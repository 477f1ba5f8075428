#pragma once
// Planar Bitmap files (a 56-byte header, palette indices, and a palette block
// behind them) and Planar Bitmap Palette files, built in code.
#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "samples/GameFiles.h"

namespace samples {

// A colour word: red in bits 0 to 7, green in 8 to 15, blue in 16 to 23.
constexpr uint32_t ColorWord(uint8_t red, uint8_t green, uint8_t blue) {
    return static_cast<uint32_t>(red) | static_cast<uint32_t>(green) << 8 | static_cast<uint32_t>(blue) << 16;
}

// One palette record: three colour words; a bitmap shows the third.
using PlanarPaletteRecord = std::array<uint32_t, 3>;
using PlanarPalette = std::array<PlanarPaletteRecord, 256>;

// Index i in grey level i in all three colours.
PlanarPalette GreyPalette();
// A smooth palette: the third colour runs through a rainbow of hues, the
// first is a dark and the second a light variant of it.
PlanarPalette RainbowPalette();

// The 56-byte header: signature, id, seven unused fields (each set to
// 0x100 + its number so they are told apart), width, height, bytes per pixel,
// data size and the last field.
std::string PlanarHeader(uint32_t formatId, int32_t width, int32_t height, int32_t bytesPerPixel,
                         int32_t dataSize, int32_t field13, uint32_t signature = 0x6E71);

// The palette block: its header (id 0x0682CEF5, field13 255 unless told) and
// the 256 records, 3128 bytes. It is also the whole of a palette file.
std::string PaletteBlock(const PlanarPalette& palette, int32_t field13 = 255, uint32_t formatId = kIdPlanarPalette);
// A Planar Bitmap Palette file; the same bytes as PaletteBlock.
std::string PaletteFile(const PlanarPalette& palette, int32_t field13 = 255);

enum class PaletteShape {
    Full,     // the 3128-byte block
    Missing,  // the file ends behind the pixel data
    Short,    // the block is cut to ShortLength bytes
    WrongId,  // a full block whose header has another format id
};

struct BtmSpec {
    int32_t Width = 0;
    int32_t Height = 0;
    int32_t BytesPerPixel = 1;
    // The pixel data as it stands, rows top to bottom, unpadded.
    std::string Pixels;
    PlanarPalette Palette = GreyPalette();
    PaletteShape Shape = PaletteShape::Full;
    size_t ShortLength = 100;
    // Replaces the data size written in the header; the pixels are still
    // written as they are.
    std::optional<int32_t> DataSize;
    int32_t Field13 = 0;
};

std::string BuildBtm(const BtmSpec& recipe);

// Pixel data for a picture: pixel (x, y) takes `bytesPerPixel` bytes, the
// first being index(x, y) and the others 0xB0 + their position.
template <typename IndexFn>
std::string PlanarPixels(int32_t width, int32_t height, int32_t bytesPerPixel, IndexFn index) {
    std::string data;
    data.reserve(static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(bytesPerPixel));
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            data.push_back(static_cast<char>(index(x, y)));
            for (int32_t b = 1; b < bytesPerPixel; ++b) data.push_back(static_cast<char>(0xB0 + b));
        }
    return data;
}

// A Planar Bitmap of a diagonal gradient of indices with a rainbow palette.
std::string GradientBtm(int32_t width, int32_t height, int32_t bytesPerPixel = 1);

}  // namespace samples
