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
    // Only whole colour words that arrived are taken; a word cut by the end of
    // the file keeps its bytes that came, the rest as before.
    for (int32_t i = 0; i < lRead; ++i) {
        PlanarPaletteEntry& entry = atPalette[i / 12];
        uint32_t* const words[3] = {&entry.lColor0, &entry.lColor1, &entry.lColor2};
        uint32_t& word = *words[(i % 12) / 4];
        const uint32_t shift = static_cast<uint32_t>(i % 4) * 8;
        word = (word & ~(0xFFu << shift)) | static_cast<uint32_t>(abBlock[i]) << shift;
    }
    return lRead;
}
