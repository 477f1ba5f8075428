#pragma once
// A DIB section held in a memory device context: a pixel buffer the program
// writes directly, rows bottom-up and padded to 4 bytes, which it copies into
// any device context by block transfer. The 8-bit form (with a 256-entry
// colour table) is behind the Planar Bitmap, the 24-bit form (blue, green,
// red) behind TGA pictures and, unused, behind the palette files.
#include <cstdint>

#include "platform/Gdi.h"

class CDibSection {
public:
    // 8 or 24 bits per pixel.
    explicit CDibSection(uint16_t bitCount) : m_iBitCount(bitCount) {}
    ~CDibSection() { ClearUp(); }
    CDibSection(const CDibSection&) = delete;
    CDibSection& operator=(const CDibSection&) = delete;

    // Makes the section of lWidth x lHeight (both above 0) compatible with
    // lHDC; an 8-bit section starts with the grey ramp as its table. The
    // handle goes to hDib; true when it exists.
    bool CreateDIB(HDC lHDC, int32_t lWidth, int32_t lHeight, HBITMAP& hDib);
    // Releases the old section and makes a new one in a memory context of its
    // own; false (holding nothing) when either can't be made.
    bool Create(int32_t lWidth, int32_t lHeight);
    // Bytes of one row: the row's bytes rounded up to a multiple of 4.
    int32_t BytesPerScanLine() const;
    // Block transfer of the section into lHDC at (lDestLeft, lDestTop) from
    // (lSrcLeft, lSrcTop); a negative width or height stands for the
    // section's own. No stretching.
    void PaintPicture(HDC lHDC, int32_t lDestLeft = 0, int32_t lDestTop = 0, int32_t lDestWidth = -1,
                      int32_t lDestHeight = -1, int32_t lSrcLeft = 0, int32_t lSrcTop = 0,
                      uint32_t eRop = SRCCOPY) const;
    HDC hdc() const { return m_hDC; }
    HBITMAP hDib() const { return m_hDib; }
    // Releases the section and its context; all four handles become 0.
    void ClearUp();

    // The size in the section's header; 0 before the first CreateDIB.
    int32_t DibWidth() const { return m_tBI.bmiHeader.biWidth; }
    int32_t DibHeight() const { return m_tBI.bmiHeader.biHeight; }

protected:
    HBITMAP m_hDib = 0;
    HBITMAP m_hBmpOld = 0;
    HDC m_hDC = 0;
    uint8_t* m_lBits = nullptr;
    BITMAPINFO m_tBI{};

private:
    uint16_t m_iBitCount;
};
