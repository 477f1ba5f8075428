#include "pictures/CTGAFile.h"

#include <cstring>
#include <memory>

#include "platform/LittleEndian.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"

namespace {
constexpr int32_t kTgaHeaderSize = 18;
constexpr uint8_t kTopDown = 32;
}  // namespace

CTGAFile::~CTGAFile() {
    ClearUp();
    if (m_hFile != 0) _lclose(m_hFile);
}

bool CTGAFile::Initialize(const std::string& lpPathName) {
    m_bLoaded = false;
    m_sPathName = lpPathName;
    if (m_hFile != 0) _lclose(m_hFile);
    m_hFile = _lopen(lpPathName, OF_READ);
    if (m_hFile <= 0) {
        m_hFile = 0;
        return false;
    }
    TgaHeader& t = m_tHeader;
    int32_t lRead = 0;
    lRead += ReadByte(m_hFile, t.bIdLength);
    lRead += ReadByte(m_hFile, t.bColorMapType);
    lRead += ReadByte(m_hFile, t.bImageType);
    lRead += ReadWord(m_hFile, t.iColorMapOrigin);
    lRead += ReadWord(m_hFile, t.iColorMapLength);
    lRead += ReadByte(m_hFile, t.bColorMapDepth);
    lRead += ReadWord(m_hFile, t.iXOrigin);
    lRead += ReadWord(m_hFile, t.iYOrigin);
    lRead += ReadWord(m_hFile, t.iWidth);
    lRead += ReadWord(m_hFile, t.iHeight);
    lRead += ReadByte(m_hFile, t.bPixelDepth);
    lRead += ReadByte(m_hFile, t.bDescriptor);
    return lRead == kTgaHeaderSize && t.bIdLength == 0 && (t.bColorMapType == 0 || t.bColorMapType == 1) &&
           (t.bImageType == 2 || t.bImageType == 3) && (t.bPixelDepth == 8 || t.bPixelDepth == 24);
}

std::string CTGAFile::Information() const {
    return "TGA Bitmap : " + std::to_string(m_tHeader.iWidth) + "x" + std::to_string(m_tHeader.iHeight) + " (" +
           std::to_string(m_tHeader.bPixelDepth) + " Bits/Pixel)";
}

bool CTGAFile::Show(int32_t hDesDC) {
    if (m_hFile == 0) return false;
    if (m_bLoaded) {
        PaintPicture(hDesDC, 0, 0, -1, -1, 0, 0, SRCCOPY);
        return true;
    }
    const uint8_t depth = m_tHeader.bPixelDepth;
    if (depth != 8 && depth != 24) {
        PassOver([] { MsgBox("TGA Format not supported", vbInformation); });
        return false;
    }
    // A negative width or height gives a size below 0, which no file holds;
    // a size beyond what the file holds ends before memory is taken for it.
    const int64_t lSize = int64_t{m_tHeader.iWidth} * m_tHeader.iHeight * (depth / 8);
    const int32_t lEnd = _llseek(m_hFile, 0, FILE_END);
    if (lSize < 0 || lEnd < kTgaHeaderSize || lSize > lEnd - kTgaHeaderSize) return false;
    // The bytes are read over at once; only the one behind them starts as 0.
    m_abData = std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(lSize) + 1);
    m_abData[static_cast<size_t>(lSize)] = 0;
    if (_llseek(m_hFile, kTgaHeaderSize, FILE_BEGIN) != kTgaHeaderSize) return false;
    if (_lread(m_hFile, m_abData.get(), static_cast<int32_t>(lSize)) != lSize) return false;
    if (!Create(m_tHeader.iWidth, m_tHeader.iHeight)) return false;
    DecodePixels(depth == 8);
    // The picture lives in the section from here on; the data is not read again.
    m_abData.reset();
    PaintPicture(hDesDC, 0, 0, -1, -1, 0, 0, SRCCOPY);
    m_bLoaded = true;
    return true;
}

void CTGAFile::DecodePixels(bool b8Bits) {
    const int32_t W = m_tHeader.iWidth, H = m_tHeader.iHeight;
    const size_t stride = static_cast<size_t>(BytesPerScanLine());
    const bool topDown = (m_tHeader.bDescriptor & kTopDown) != 0;
    const uint8_t* s = m_abData.get();
    for (int32_t y = 0; y < H; ++y) {
        // Row 0 of the section is the bottom of the picture, where a TGA's
        // first row lies unless its descriptor says it is the top.
        const int32_t r = topDown ? H - 1 - y : y;
        uint8_t* row = m_lBits + static_cast<size_t>(r) * stride;
        if (!b8Bits) {
            std::memcpy(row, s, static_cast<size_t>(W) * 3);
            s += static_cast<size_t>(W) * 3;
            continue;
        }
        for (int32_t x = 0; x < W; ++x, ++s) row[x * 3] = row[x * 3 + 1] = row[x * 3 + 2] = *s;
    }
}
