#include "pictures/DibSection.h"

#include <algorithm>

bool CDibSection::CreateDIB(HDC lHDC, int32_t lWidth, int32_t lHeight, HBITMAP& hDib) {
    BITMAPINFOHEADER& h = m_tBI.bmiHeader;
    h = BITMAPINFOHEADER{};
    h.biSize = 40;
    h.biWidth = lWidth;
    h.biHeight = lHeight;
    h.biPlanes = 1;
    h.biBitCount = m_iBitCount;
    h.biCompression = BI_RGB;
    h.biSizeImage = static_cast<uint32_t>(int64_t{BytesPerScanLine()} * lHeight);
    for (int i = 0; i < 256; ++i) {
        const auto grey = static_cast<uint8_t>(i);
        m_tBI.bmiColors[i] = RGBQUAD{grey, grey, grey, 0};
    }
    // The rows are bottom-up: a height of 0 or below makes no section here.
    hDib = 0;
    m_lBits = nullptr;
    if (lWidth <= 0 || lHeight <= 0) return false;
    void* bits = nullptr;
    hDib = m_iBitCount == 8 ? CreateDIBSection(lHDC, &m_tBI, DIB_RGB_COLORS, &bits)
                            : CreateDIBSection(lHDC, &m_tBI.bmiHeader, DIB_RGB_COLORS, &bits);
    m_lBits = static_cast<uint8_t*>(bits);
    return hDib != 0;
}

bool CDibSection::Create(int32_t lWidth, int32_t lHeight) {
    ClearUp();
    if (m_iBitCount == 8) {
        HDC hDisplay = CreateDCA("DISPLAY");
        m_hDC = CreateCompatibleDC(hDisplay);
        DeleteDC(hDisplay);
    } else {
        m_hDC = CreateCompatibleDC(0);
    }
    if (m_hDC == 0) return false;
    if (CreateDIB(m_hDC, lWidth, lHeight, m_hDib)) {
        m_hBmpOld = SelectObject(m_hDC, m_hDib);
        return true;
    }
    DeleteDC(m_hDC);
    m_hDC = 0;
    return false;
}

int32_t CDibSection::BytesPerScanLine() const {
    const int64_t bytes = int64_t{m_tBI.bmiHeader.biWidth} * (m_iBitCount / 8);
    return static_cast<int32_t>(std::clamp<int64_t>((bytes + 3) & ~int64_t{3}, INT32_MIN, INT32_MAX));
}

void CDibSection::PaintPicture(HDC lHDC, int32_t lDestLeft, int32_t lDestTop, int32_t lDestWidth, int32_t lDestHeight,
                               int32_t lSrcLeft, int32_t lSrcTop, uint32_t eRop) const {
    if (lDestWidth < 0) lDestWidth = m_tBI.bmiHeader.biWidth;
    if (lDestHeight < 0) lDestHeight = m_tBI.bmiHeader.biHeight;
    BitBlt(lHDC, lDestLeft, lDestTop, lDestWidth, lDestHeight, m_hDC, lSrcLeft, lSrcTop, eRop);
}

void CDibSection::ClearUp() {
    if (m_hDC != 0) {
        if (m_hDib != 0) {
            SelectObject(m_hDC, m_hBmpOld);
            DeleteObject(m_hDib);
        }
        DeleteDC(m_hDC);
    }
    m_hDC = 0;
    m_hDib = 0;
    m_hBmpOld = 0;
    m_lBits = nullptr;
}
