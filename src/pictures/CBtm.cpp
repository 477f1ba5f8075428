#include "pictures/CBtm.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <ctime>

#include "pictures/SavePicture.h"
#include "platform/LittleEndian.h"
#include "platform/Runtime.h"

namespace {

constexpr int32_t kHeaderSize = 56;

// Single-precision rounding to the nearest integer, a tie to the even one; a
// value beyond the 32-bit range stops at its end.
int32_t RoundEven(float v) {
    if (std::isnan(v)) return 0;
    if (v >= 2147483520.0f) return INT32_MAX;
    if (v <= -2147483648.0f) return INT32_MIN;
    return static_cast<int32_t>(std::nearbyint(v));
}

uint8_t ClampByte(int32_t v) { return static_cast<uint8_t>(std::clamp(v, 0, 255)); }

void Maximum(const float& a, const float& b, const float& c, float& result) { result = std::max({a, b, c}); }
void Minimum(const float& a, const float& b, const float& c, float& result) { result = std::min({a, b, c}); }

}  // namespace

CBtm::~CBtm() {
    ClearUp();
    if (m_hFile != 0) _lclose(m_hFile);
}

bool CBtm::Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) {
    m_oLv = oLv;
    m_hDesDC = hDesDC;
    if (lpPathName == m_sPathName) return true;
    m_bLoaded = false;
    m_sPathName = lpPathName;
    const int32_t lRead = OpenPlanarFile(lpPathName, m_hFile, m_tHeader);
    return lRead == kHeaderSize && m_tHeader.lSignature == kNerhaltSignature &&
           m_tHeader.lFormatId == kPlanarBitmapId;
}

std::string CBtm::Information() {
    return "PPlanarBitmap : " + std::to_string(m_tHeader.lWidth) + "x" + std::to_string(m_tHeader.lHeight) + " (" +
           std::to_string(m_tHeader.lBytesPerPixel) + " Bytes/Pixel)";
}

bool CBtm::Show(int32_t hDesDC) {
    if (m_hFile == 0) return false;
    if (m_bLoaded) {
        PaintPicture(hDesDC, 0, 0, -1, -1, 0, 0, SRCCOPY);
        return true;
    }
    const int32_t lDataSize = m_tHeader.lDataSize;
    // A size that the file can't hold would come short anyway: it ends here,
    // before memory is taken for it.
    const int32_t lEnd = _llseek(m_hFile, 0, FILE_END);
    if (lDataSize < 0 || lEnd < kHeaderSize || lDataSize > lEnd - kHeaderSize) return false;
    // The bytes are read over at once; only the one behind them starts as 0.
    m_abData = std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(lDataSize) + 1);
    m_abData[static_cast<size_t>(lDataSize)] = 0;
    if (_llseek(m_hFile, kHeaderSize, FILE_BEGIN) != kHeaderSize) return false;
    if (_lread(m_hFile, m_abData.get(), lDataSize) != lDataSize) return false;

    ReadPlanarHeader(m_hFile, m_tPaletteHeader);
    std::fill(std::begin(m_atPalette), std::end(m_atPalette), PlanarPaletteEntry{});
    const int32_t lPaletteRead = ReadPlanarPalette(m_hFile, m_atPalette);
    m_bHasPalette = lPaletteRead == kPaletteBytes && m_tPaletteHeader.lSignature == kNerhaltSignature &&
                    m_tPaletteHeader.lFormatId == kPlanarPaletteId;

    if (!Create(m_tHeader.lWidth, m_tHeader.lHeight)) return false;
    DecodePixels();
    // The picture lives in the section from here on; the data is not read again.
    m_abData.reset();
    PaintPicture(hDesDC, 0, 0, -1, -1, 0, 0, SRCCOPY);
    m_bLoaded = true;
    return true;
}

void CBtm::DecodePixels() {
    // The 256 colours go into the table in one write, as the Color property
    // would put them one by one.
    for (int32_t i = 0; i < 256; ++i) {
        const auto grey = static_cast<uint32_t>(i);
        const uint32_t lColor = m_bHasPalette ? m_atPalette[i].lColor2 : grey | grey << 8 | grey << 16;
        m_atColors[i] = RGBQUAD{static_cast<uint8_t>(lColor >> 16), static_cast<uint8_t>(lColor >> 8),
                                static_cast<uint8_t>(lColor), 0};
    }
    WriteColors();
    // Pixel p starts at source index p x lBytesPerPixel; its first byte is the
    // index, its second (where a pixel has one) goes to a plane that nothing
    // shows and that this build doesn't keep. The data is m_abData, indices 0
    // to lDataSize. When the last pixel's bytes lie beyond it the split fails
    // there and no pixel reaches the section, which stays all 0.
    const int64_t W = m_tHeader.lWidth, H = m_tHeader.lHeight, D = m_tHeader.lDataSize;
    const int64_t bpp = m_tHeader.lBytesPerPixel;
    const int64_t pixels = W * H;
    const int64_t second = bpp != 1 ? 1 : 0;
    bool whole = false;
    if (bpp >= 1)
        whole = (pixels - 1) * bpp + second <= D;
    else if (bpp == 0)
        whole = second <= D;
    else
        whole = pixels == 1 && second <= D;
    if (!whole) return;

    // Row y of the section's memory is row H - 1 - y of the file: the file's
    // first row ends at the top of the bottom-up section.
    const size_t stride = static_cast<size_t>(BytesPerScanLine());
    const uint8_t* data = m_abData.get();
    for (int64_t y = 0; y < H; ++y) {
        uint8_t* row = m_lBits + static_cast<size_t>(y) * stride;
        const int64_t first = (H - 1 - y) * W;
        if (bpp == 1) {
            std::memcpy(row, data + first, static_cast<size_t>(W));
        } else if (bpp <= 0) {
            std::memset(row, data[0], static_cast<size_t>(W));
        } else {
            const uint8_t* in = data + first * bpp;
            for (int64_t x = 0; x < W; ++x) row[x] = in[x * bpp];
        }
    }
}

bool CBtm::SaveAs() { return SavePaneAs(m_sPathName, host_.PicturePane(), host_.OwnerWindow()); }

Variant CBtm::CreateFromPicture(const Picture& picThis) {
    if (!picThis) RaiseError(vbErrObjectNotSet);
    BITMAP tBM;
    GetObjectA(picThis->Handle(), 24, &tBM);
    if (!Create(tBM.bmWidth, tBM.bmHeight)) return {};
    HDC hDisplay = CreateDCA("DISPLAY");
    HDC hDC = CreateCompatibleDC(hDisplay);
    DeleteDC(hDisplay);
    if (hDC == 0) return {};
    HGDIOBJ hOld = SelectObject(hDC, picThis->Handle());
    const uint32_t n = GetDIBColorTable(hDC, 0, 256, m_atColors);
    GetDIBits(hDC, picThis->Handle(), 0, static_cast<uint32_t>(tBM.bmHeight), m_lBits, &m_tBI, DIB_RGB_COLORS);
    if (n > 0) SetDIBColorTable(m_hDC, 0, 256, m_atColors);
    SelectObject(hDC, hOld);
    DeleteDC(hDC);
    return {};
}

void CBtm::LoadPictureBlt(HDC lHDC, int32_t lSrcLeft, int32_t lSrcTop, int32_t lSrcWidth, int32_t lSrcHeight,
                          uint32_t eRop) {
    const uint32_t n = GetDIBColorTable(lHDC, 0, 256, m_atColors);
    if (n > 0) SetDIBColorTable(m_hDC, 0, n, m_atColors);
    if (lSrcWidth < 0) lSrcWidth = m_tBI.bmiHeader.biWidth;
    if (lSrcHeight < 0) lSrcHeight = m_tBI.bmiHeader.biHeight;
    BitBlt(m_hDC, 0, 0, lSrcWidth, lSrcHeight, lHDC, lSrcLeft, lSrcTop, eRop);
}

void CBtm::RandomiseBits() { std::srand(static_cast<unsigned>(std::time(nullptr))); }

uint32_t CBtm::ReadColors() { return GetDIBColorTable(m_hDC, 0, 256, m_atColors); }

void CBtm::WriteColors() { SetDIBColorTable(m_hDC, 0, 256, m_atColors); }

void CBtm::Fade(int32_t lAmount) {
    ReadColors();
    auto fade = [lAmount](uint8_t v) {
        const int64_t faded = int64_t{v} * lAmount / 255;
        if (faded < 0 || faded > 255) RaiseError(vbErrOverflow);
        return static_cast<uint8_t>(faded);
    };
    for (int i = 0; i < 256; ++i) {
        RGBQUAD& q = m_atColors[i];
        q = RGBQUAD{fade(q.rgbBlue), fade(q.rgbGreen), fade(q.rgbRed), 0};
    }
    WriteColors();
}

void CBtm::AdjustLightness(int32_t lAmount) {
    if (ReadColors() == 0) return;
    const float factor = static_cast<float>(lAmount) / 100.0f;
    for (int i = 0; i < 256; ++i) {
        RGBQUAD& q = m_atColors[i];
        float h = 0, s = 0, l = 0;
        RGBToHLS(q.rgbRed, q.rgbGreen, q.rgbBlue, h, s, l);
        l = l * factor;
        int32_t r = 0, g = 0, b = 0;
        HLSToRGB(h, s, l, r, g, b);
        q = RGBQUAD{ClampByte(b), ClampByte(g), ClampByte(r), 0};
    }
    WriteColors();
}

void CBtm::GrayScale() {
    if (ReadColors() == 0) return;
    for (int i = 0; i < 256; ++i) {
        RGBQUAD& q = m_atColors[i];
        const int32_t n = 222 * q.rgbRed + 707 * q.rgbGreen + 71 * q.rgbBlue;
        int32_t grey = n / 1000;
        const int32_t rest = n % 1000;
        if (rest > 500 || (rest == 500 && grey % 2 == 1)) ++grey;
        const auto v = static_cast<uint8_t>(grey);
        q = RGBQUAD{v, v, v, 0};
    }
    WriteColors();
}

void CBtm::Invert() {
    ReadColors();
    for (int i = 0; i < 256; ++i) {
        RGBQUAD& q = m_atColors[i];
        q = RGBQUAD{static_cast<uint8_t>(255 - q.rgbBlue), static_cast<uint8_t>(255 - q.rgbGreen),
                    static_cast<uint8_t>(255 - q.rgbRed), 0};
    }
    WriteColors();
}

void CBtm::CopyPalette(const CBtm& cDib) {
    if (GetDIBColorTable(cDib.hdc(), 0, 256, m_atColors) > 0) WriteColors();
}

int32_t CBtm::Color(int32_t nIndex) const {
    RGBQUAD q;
    if (GetDIBColorTable(m_hDC, static_cast<uint32_t>(nIndex), 1, &q) != 1) return -1;
    return q.rgbRed + q.rgbGreen * 256 + q.rgbBlue * 65536;
}

void CBtm::SetColor(int32_t nIndex, uint32_t lColor) {
    const RGBQUAD q{static_cast<uint8_t>(lColor >> 16), static_cast<uint8_t>(lColor >> 8),
                    static_cast<uint8_t>(lColor), 0};
    SetDIBColorTable(m_hDC, static_cast<uint32_t>(nIndex), 1, &q);
}

void CBtm::RGBToHLS(int32_t r, int32_t g, int32_t b, float& h, float& s, float& l) {
    const float fr = static_cast<float>(r) / 255.0f, fg = static_cast<float>(g) / 255.0f,
                fb = static_cast<float>(b) / 255.0f;
    float Max = 0, Min = 0;
    Maximum(fr, fg, fb, Max);
    Minimum(fr, fg, fb, Min);
    l = (Max + Min) / 2.0f;
    if (Max == Min) {
        s = 0;
        h = 0;
        return;
    }
    s = l > 0.5f ? (Max - Min) / (2.0f - Max - Min) : (Max - Min) / (Max + Min);
    const float d = Max - Min;
    if (fr == Max)
        h = (fg - fb) / d;
    else if (fg == Max)
        h = 2.0f + (fb - fr) / d;
    else
        h = 4.0f + (fr - fg) / d;
}

void CBtm::HLSToRGB(float& h, float& s, float& l, int32_t& r, int32_t& g, int32_t& b) {
    float fr = l, fg = l, fb = l;
    if (s != 0) {
        const float Min = l > 0.5f ? l - (1.0f - l) * s : (1.0f - s) * l;
        const float Max = 2.0f * l - Min;
        const float d = Max - Min;
        if (h < 0) {
            fr = Max, fg = Min, fb = Min - d * h;
        } else if (h < 1) {
            fr = Max, fg = Min + d * h, fb = Min;
        } else if (h < 2) {
            fr = Min - d * (h - 2.0f), fg = Max, fb = Min;
        } else if (h < 3) {
            fr = Min, fg = Max, fb = Min + d * (h - 2.0f);
        } else if (h < 4) {
            fr = Min, fg = Min - d * (h - 4.0f), fb = Max;
        } else {
            fr = Min + d * (h - 4.0f), fg = Min, fb = Max;
        }
    }
    r = RoundEven(fr * 255.0f);
    g = RoundEven(fg * 255.0f);
    b = RoundEven(fb * 255.0f);
}
