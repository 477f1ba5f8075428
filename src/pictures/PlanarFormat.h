#pragma once
// The records of the game's picture files: the 56-byte header that a Planar
// Bitmap and its palette block both start with, and the 12-byte palette entry.
#include <cstdint>
#include <string>

#include "platform/Files.h"

inline constexpr int32_t kPlanarBitmapId = 0x04023750;
inline constexpr int32_t kPlanarPaletteId = 0x0682CEF5;

// A palette block always holds 256 entries of 12 bytes behind its header.
inline constexpr int32_t kPaletteEntries = 256;
inline constexpr int32_t kPaletteBytes = 3072;

struct PlanarFileHeader {
    int32_t lSignature = 0;
    int32_t lFormatId = 0;
    int32_t lField2 = 0;
    int32_t lField3 = 0;
    int32_t lField4 = 0;
    int32_t lField5 = 0;
    int32_t lField6 = 0;
    int32_t lField7 = 0;
    int32_t lField8 = 0;
    int32_t lWidth = 0;
    int32_t lHeight = 0;
    int32_t lBytesPerPixel = 0;
    int32_t lDataSize = 0;
    int32_t lField13 = 0;
};
static_assert(sizeof(PlanarFileHeader) == 56);

// Three colour words (red in the low byte); a bitmap shows the third.
struct PlanarPaletteEntry {
    uint32_t lColor0 = 0;
    uint32_t lColor1 = 0;
    uint32_t lColor2 = 0;
};
static_assert(sizeof(PlanarPaletteEntry) == 12);

// Reads the fourteen fields one after the other; gives the bytes read.
int32_t ReadPlanarHeader(HFILE hFile, PlanarFileHeader& tHeader);
// Closes the file that hFile holds (where it holds one), opens lpPathName for
// reading in its place and reads its header; gives the header's bytes read,
// or -1 (with hFile 0) when the file can't be opened.
int32_t OpenPlanarFile(const std::string& lpPathName, HFILE& hFile, PlanarFileHeader& tHeader);
// Reads the 3072 bytes of a palette into 256 entries; gives the bytes read.
// Entries the file doesn't reach keep what they held.
int32_t ReadPlanarPalette(HFILE hFile, PlanarPaletteEntry (&atPalette)[kPaletteEntries]);
