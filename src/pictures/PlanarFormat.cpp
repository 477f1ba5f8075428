#include "pictures/PlanarFormat.h"

#include "platform/LittleEndian.h"

int32_t ReadPlanarHeader(HFILE hFile, PlanarFileHeader& tHeader) {
    int32_t* fields[] = {&tHeader.lSignature, &tHeader.lFormatId,  &tHeader.lField2,        &tHeader.lField3,
                         &tHeader.lField4,    &tHeader.lField5,    &tHeader.lField6,        &tHeader.lField7,
                         &tHeader.lField8,    &tHeader.lWidth,     &tHeader.lHeight,        &tHeader.lBytesPerPixel,
                         &tHeader.lDataSize,  &tHeader.lField13};
    int32_t lRead = 0;
    for (int32_t* field : fields) lRead += ReadLong(hFile, *field);
    return lRead;
}

int32_t OpenPlanarFile(const std::string& lpPathName, HFILE& hFile, PlanarFileHeader& tHeader) {
    if (hFile != 0) _lclose(hFile);
    hFile = _lopen(lpPathName, OF_READ);
    if (hFile <= 0) {
        hFile = 0;
        return -1;
    }
    return ReadPlanarHeader(hFile, tHeader);
}

int32_t ReadPlanarPalette(HFILE hFile, PlanarPaletteEntry (&atPalette)[kPaletteEntries]) {
    uint8_t abBlock[kPaletteBytes];
    const int32_t lRead = _lread(hFile, abBlock, kPaletteBytes);
    if (lRead <= 0) return 0;
    // The colour words that arrived whole are taken; a word cut by the end of
    // the file keeps its bytes that came, the rest as before.
    auto word = [&](int32_t w) -> uint32_t& {
        PlanarPaletteEntry& entry = atPalette[w / 3];
        return w % 3 == 0 ? entry.lColor0 : w % 3 == 1 ? entry.lColor1 : entry.lColor2;
    };
    const int32_t lWhole = lRead / 4;
    for (int32_t w = 0; w < lWhole; ++w) {
        const uint8_t* b = abBlock + 4 * w;
        word(w) = static_cast<uint32_t>(b[0]) | static_cast<uint32_t>(b[1]) << 8 | static_cast<uint32_t>(b[2]) << 16 |
                  static_cast<uint32_t>(b[3]) << 24;
    }
    for (int32_t i = lWhole * 4; i < lRead; ++i) {
        const uint32_t shift = static_cast<uint32_t>(i % 4) * 8;
        word(lWhole) = (word(lWhole) & ~(0xFFu << shift)) | static_cast<uint32_t>(abBlock[i]) << shift;
    }
    return lRead;
}
