#include "pictures/CPLTFile.h"

#include <algorithm>

CPLTFile::~CPLTFile() {
    ClearUp();
    if (m_hFile != 0) _lclose(m_hFile);
}

bool CPLTFile::Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) {
    m_oLv = oLv;
    m_hDesDC = hDesDC;
    if (lpPathName == m_sPathName) return true;
    m_bLoaded = false;
    m_sPathName = lpPathName;
    // The recogniser has tested the head: any file that opens is taken.
    return OpenPlanarFile(lpPathName, m_hFile, m_tHeader) >= 0;
}

bool CPLTFile::Show(int32_t) {
    if (m_hFile == 0) return false;
    std::fill(std::begin(m_atPalette), std::end(m_atPalette), PlanarPaletteEntry{});
    // A short palette is no failure: the entries that did not arrive stay 0.
    if (_llseek(m_hFile, 56, FILE_BEGIN) == 56) ReadPlanarPalette(m_hFile, m_atPalette);
    m_bLoaded = true;
    PictureBox& oPicture = host_.PicturePane();
    for (int32_t row = 0; row < 3; ++row)
        for (int32_t i = 0; i < kPaletteEntries; ++i) {
            const PlanarPaletteEntry& e = m_atPalette[i];
            const uint32_t colour = row == 0 ? e.lColor0 : row == 1 ? e.lColor1 : e.lColor2;
            oPicture.PSet(static_cast<float>(i), static_cast<float>(row), colour);
        }
    return false;
}
