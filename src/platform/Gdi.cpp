#include "platform/Gdi.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unordered_map>

namespace {

struct FreeDeleter {
    void operator()(uint8_t* p) const { std::free(p); }
};

struct Bitmap {
    int32_t width = 0;
    int32_t height = 0;  // rows, always positive
    int32_t bitCount = 32;
    bool bottomUp = false;
    int32_t stride = 0;
    // calloc: a large buffer comes as zero pages from the system without
    // being written first.
    std::unique_ptr<uint8_t, FreeDeleter> bits;
    std::array<RGBQUAD, 256> colors{};
    bool hasTable = false;
    HDC selectedIn = 0;
    bool stock = false;

    uint8_t* Row(int32_t y) const {
        int32_t r = bottomUp ? height - 1 - y : y;
        return bits.get() + static_cast<size_t>(r) * static_cast<size_t>(stride);
    }
};

struct DeviceContext {
    bool display = false;
    HBITMAP bitmap = 0;
};

struct Gdi {
    std::unordered_map<int32_t, Bitmap> bitmaps;
    std::unordered_map<int32_t, DeviceContext> contexts;
    int32_t nextHandle = 0x100;
    HBITMAP stockBitmap = 0;

    int32_t NewHandle() { return nextHandle++; }

    Bitmap* FindBitmap(HGDIOBJ h) {
        auto it = bitmaps.find(h);
        return it == bitmaps.end() ? nullptr : &it->second;
    }
    DeviceContext* FindContext(HDC h) {
        auto it = contexts.find(h);
        return it == contexts.end() ? nullptr : &it->second;
    }
    Bitmap* SelectedIn(HDC h) {
        DeviceContext* dc = FindContext(h);
        return dc == nullptr ? nullptr : FindBitmap(dc->bitmap);
    }
};

Gdi& State() {
    static Gdi gdi;
    return gdi;
}

int64_t StrideOf(int64_t width, int32_t bitCount) { return ((width * bitCount + 31) / 32) * 4; }

HBITMAP MakeBitmap(int32_t width, int32_t height, int32_t bitCount, const RGBQUAD* colors, bool stock = false) {
    if (width <= 0 || height == 0) return 0;
    if (bitCount != 8 && bitCount != 24 && bitCount != 32) return 0;
    int64_t rows = height < 0 ? -int64_t{height} : int64_t{height};
    int64_t stride = StrideOf(width, bitCount);
    if (stride * rows > MaxBitmapBytes()) return 0;
    Bitmap b;
    b.width = width;
    b.height = static_cast<int32_t>(rows);
    b.bitCount = bitCount;
    b.bottomUp = height > 0;
    b.stride = static_cast<int32_t>(stride);
    b.bits.reset(static_cast<uint8_t*>(std::calloc(static_cast<size_t>(stride * rows), 1)));
    if (!b.bits) return 0;
    if (bitCount == 8) {
        b.hasTable = true;
        if (colors != nullptr) std::copy(colors, colors + 256, b.colors.begin());
    }
    b.stock = stock;
    Gdi& gdi = State();
    HBITMAP h = gdi.NewHandle();
    gdi.bitmaps.emplace(h, std::move(b));
    return h;
}

HBITMAP StockBitmap() {
    Gdi& gdi = State();
    if (gdi.stockBitmap == 0) gdi.stockBitmap = MakeBitmap(1, 1, 32, nullptr, true);
    return gdi.stockBitmap;
}

constexpr COLORREF ToColor(const RGBQUAD& q) {
    return static_cast<COLORREF>(q.rgbRed) | static_cast<COLORREF>(q.rgbGreen) << 8 |
           static_cast<COLORREF>(q.rgbBlue) << 16;
}

// The index of the table's colour nearest to `color`, by squared distance; the
// first of equals wins.
uint8_t NearestIndex(const std::array<RGBQUAD, 256>& table, COLORREF color) {
    int32_t r = static_cast<int32_t>(color & 0xFF), g = static_cast<int32_t>((color >> 8) & 0xFF),
            b = static_cast<int32_t>((color >> 16) & 0xFF);
    int32_t best = 0;
    int32_t bestDistance = INT32_MAX;
    for (int32_t i = 0; i < 256; ++i) {
        int32_t dr = table[i].rgbRed - r, dg = table[i].rgbGreen - g, db = table[i].rgbBlue - b;
        int32_t d = dr * dr + dg * dg + db * db;
        if (d < bestDistance) {
            bestDistance = d;
            best = i;
            if (d == 0) break;
        }
    }
    return static_cast<uint8_t>(best);
}

// Turns colours into indices of one table, remembering the colours it has met.
class IndexMatcher {
public:
    explicit IndexMatcher(const std::array<RGBQUAD, 256>& table) : table_(table) {}
    uint8_t operator()(COLORREF color) {
        auto it = cache_.find(color);
        if (it != cache_.end()) return it->second;
        uint8_t index = NearestIndex(table_, color);
        cache_.emplace(color, index);
        return index;
    }

private:
    const std::array<RGBQUAD, 256>& table_;
    std::unordered_map<COLORREF, uint8_t> cache_;
};

COLORREF ReadPixel(const Bitmap& b, int32_t x, const uint8_t* row) {
    switch (b.bitCount) {
        case 8: return ToColor(b.colors[row[x]]);
        case 24: {
            const uint8_t* p = row + static_cast<size_t>(x) * 3;
            return p[2] | static_cast<COLORREF>(p[1]) << 8 | static_cast<COLORREF>(p[0]) << 16;
        }
        default: {
            const uint8_t* p = row + static_cast<size_t>(x) * 4;
            return p[2] | static_cast<COLORREF>(p[1]) << 8 | static_cast<COLORREF>(p[0]) << 16;
        }
    }
}

void WriteColorAt(uint8_t* p, int32_t bitCount, COLORREF color) {
    p[0] = static_cast<uint8_t>(color >> 16);
    p[1] = static_cast<uint8_t>(color >> 8);
    p[2] = static_cast<uint8_t>(color);
    if (bitCount == 32) p[3] = 0;
}

bool NeedsSource(uint32_t rop) { return rop != DSTINVERT && rop != BLACKNESS && rop != WHITENESS; }

bool Combine(uint32_t rop, COLORREF s, COLORREF d, COLORREF& out) {
    switch (rop) {
        case SRCCOPY: out = s; break;
        case SRCPAINT: out = s | d; break;
        case SRCAND: out = s & d; break;
        case SRCINVERT: out = s ^ d; break;
        case SRCERASE: out = s & ~d; break;
        case NOTSRCCOPY: out = ~s; break;
        case NOTSRCERASE: out = ~(s | d); break;
        case DSTINVERT: out = ~d; break;
        case BLACKNESS: out = 0; break;
        case WHITENESS: out = 0xFFFFFF; break;
        default: return false;
    }
    out &= 0xFFFFFF;
    return true;
}

// Converts one row of `count` pixels of src (from column sx) into dst (from
// column dx) by copy: the fast paths of SRCCOPY.
void CopyRow(const Bitmap& src, const uint8_t* srow, int32_t sx, Bitmap& dst, uint8_t* drow, int32_t dx,
             int32_t count, const std::array<uint32_t, 256>& lut, IndexMatcher* matcher, bool sameTable) {
    if (src.bitCount == dst.bitCount && (dst.bitCount != 8 || sameTable)) {
        size_t bpp = static_cast<size_t>(dst.bitCount / 8);
        std::memmove(drow + dx * bpp, srow + sx * bpp, count * bpp);
        return;
    }
    if (src.bitCount == 24 && dst.bitCount == 32) {
        uint8_t* out = drow + static_cast<size_t>(dx) * 4;
        const uint8_t* in = srow + static_cast<size_t>(sx) * 3;
        // Four bytes are read for each pixel but the last, whose fourth byte
        // may lie past the row.
        int32_t i = 0;
        for (; i + 1 < count; ++i, out += 4, in += 3) {
            uint32_t v;
            std::memcpy(&v, in, 4);
            v &= 0x00FFFFFF;
            std::memcpy(out, &v, 4);
        }
        if (i < count) {
            out[0] = in[0];
            out[1] = in[1];
            out[2] = in[2];
            out[3] = 0;
        }
        return;
    }
    if (src.bitCount == 8 && dst.bitCount == 32) {
        auto* out = drow + static_cast<size_t>(dx) * 4;
        const uint8_t* in = srow + sx;
        for (int32_t i = 0; i < count; ++i) std::memcpy(out + static_cast<size_t>(i) * 4, &lut[in[i]], 4);
        return;
    }
    for (int32_t i = 0; i < count; ++i) {
        COLORREF c = ReadPixel(src, sx + i, srow);
        if (dst.bitCount == 8)
            drow[dx + i] = (*matcher)(c);
        else
            WriteColorAt(drow + static_cast<size_t>(dx + i) * (dst.bitCount / 8), dst.bitCount, c);
    }
}

}  // namespace

namespace {
int64_t g_maxBitmapBytes = kMaxBitmapBytes;
}  // namespace

int64_t MaxBitmapBytes() { return g_maxBitmapBytes; }
void SetMaxBitmapBytes(int64_t bytes) { g_maxBitmapBytes = bytes; }

HDC CreateDCA(const char* lpszDriver, const char*, const char*, const void*) {
    if (lpszDriver == nullptr || std::strcmp(lpszDriver, "DISPLAY") != 0) return 0;
    Gdi& gdi = State();
    HDC h = gdi.NewHandle();
    gdi.contexts.emplace(h, DeviceContext{true, 0});
    return h;
}

HDC CreateCompatibleDC(HDC hdc) {
    Gdi& gdi = State();
    if (hdc != 0 && gdi.FindContext(hdc) == nullptr) return 0;
    HBITMAP stock = StockBitmap();
    if (stock == 0) return 0;
    HDC h = gdi.NewHandle();
    gdi.contexts.emplace(h, DeviceContext{false, stock});
    return h;
}

bool DeleteDC(HDC hdc) {
    Gdi& gdi = State();
    DeviceContext* dc = gdi.FindContext(hdc);
    if (dc == nullptr) return false;
    if (Bitmap* b = gdi.FindBitmap(dc->bitmap); b != nullptr && !b->stock) b->selectedIn = 0;
    gdi.contexts.erase(hdc);
    return true;
}

namespace {

HBITMAP SectionFrom(const BITMAPINFOHEADER& h, const RGBQUAD* colors, uint32_t iUsage, void** ppvBits) {
    if (ppvBits != nullptr) *ppvBits = nullptr;
    if (iUsage != DIB_RGB_COLORS || h.biCompression != BI_RGB || h.biPlanes > 1) return 0;
    HBITMAP hbm = MakeBitmap(h.biWidth, h.biHeight, h.biBitCount, colors);
    if (hbm != 0 && ppvBits != nullptr) *ppvBits = State().FindBitmap(hbm)->bits.get();
    return hbm;
}

}  // namespace

HBITMAP CreateDIBSection(HDC, const BITMAPINFO* pbmi, uint32_t iUsage, void** ppvBits, int32_t, uint32_t) {
    if (pbmi == nullptr) {
        if (ppvBits != nullptr) *ppvBits = nullptr;
        return 0;
    }
    return SectionFrom(pbmi->bmiHeader, pbmi->bmiColors, iUsage, ppvBits);
}

HBITMAP CreateDIBSection(HDC, const BITMAPINFOHEADER* pbmih, uint32_t iUsage, void** ppvBits, int32_t, uint32_t) {
    if (pbmih == nullptr || pbmih->biBitCount == 8) {
        if (ppvBits != nullptr) *ppvBits = nullptr;
        return 0;
    }
    return SectionFrom(*pbmih, nullptr, iUsage, ppvBits);
}

HBITMAP CreateTopDownSection(int32_t width, int32_t height, void** ppvBits) {
    BITMAPINFOHEADER h;
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height > 0 ? -height : 0;
    h.biPlanes = 1;
    h.biBitCount = 32;
    return CreateDIBSection(0, &h, DIB_RGB_COLORS, ppvBits);
}

HGDIOBJ SelectObject(HDC hdc, HGDIOBJ h) {
    Gdi& gdi = State();
    DeviceContext* dc = gdi.FindContext(hdc);
    Bitmap* b = gdi.FindBitmap(h);
    if (dc == nullptr || dc->display || b == nullptr) return 0;
    if (dc->bitmap == h) return h;
    if (!b->stock && b->selectedIn != 0) return 0;
    HGDIOBJ old = dc->bitmap;
    if (Bitmap* o = gdi.FindBitmap(old); o != nullptr && !o->stock) o->selectedIn = 0;
    if (!b->stock) b->selectedIn = hdc;
    dc->bitmap = h;
    return old;
}

bool DeleteObject(HGDIOBJ ho) {
    Gdi& gdi = State();
    Bitmap* b = gdi.FindBitmap(ho);
    if (b == nullptr || b->stock || b->selectedIn != 0) return false;
    gdi.bitmaps.erase(ho);
    return true;
}

bool BitBlt(HDC hdc, int32_t x, int32_t y, int32_t cx, int32_t cy, HDC hdcSrc, int32_t x1, int32_t y1,
            uint32_t rop) {
    Gdi& gdi = State();
    Bitmap* dst = gdi.SelectedIn(hdc);
    if (dst == nullptr) return false;
    COLORREF probe = 0;
    if (!Combine(rop, 0, 0, probe)) return false;
    bool withSource = NeedsSource(rop);
    Bitmap* src = withSource ? gdi.SelectedIn(hdcSrc) : nullptr;
    if (withSource && src == nullptr) return false;

    // Clip the rectangle to the destination and, where there is one, the
    // source; work in 64 bits so that no sum of coordinates overflows.
    int64_t left = x, top = y, right = int64_t{x} + cx, bottom = int64_t{y} + cy;
    int64_t offX = int64_t{x1} - x, offY = int64_t{y1} - y;
    left = std::max<int64_t>(left, 0);
    top = std::max<int64_t>(top, 0);
    right = std::min<int64_t>(right, dst->width);
    bottom = std::min<int64_t>(bottom, dst->height);
    if (src != nullptr) {
        left = std::max(left, -offX);
        top = std::max(top, -offY);
        right = std::min(right, src->width - offX);
        bottom = std::min(bottom, src->height - offY);
    }
    if (left >= right || top >= bottom) return true;
    int32_t count = static_cast<int32_t>(right - left);

    std::array<uint32_t, 256> lut{};
    bool sameTable = false;
    if (src != nullptr && src->bitCount == 8) {
        for (size_t i = 0; i < 256; ++i) {
            const RGBQUAD& q = src->colors[i];
            lut[i] = q.rgbBlue | static_cast<uint32_t>(q.rgbGreen) << 8 | static_cast<uint32_t>(q.rgbRed) << 16;
        }
        sameTable = dst->bitCount == 8 &&
                    std::memcmp(src->colors.data(), dst->colors.data(), sizeof(RGBQUAD) * 256) == 0;
    }
    IndexMatcher matcher(dst->colors);
    // A copy within one bitmap runs against the direction of the shift, so no
    // row is read after it was written.
    bool upwards = src == dst && offY < 0;
    for (int64_t i = 0; i < bottom - top; ++i) {
        int32_t row = static_cast<int32_t>(upwards ? bottom - 1 - i : top + i);
        uint8_t* drow = dst->Row(row);
        int32_t dx = static_cast<int32_t>(left);
        if (rop == SRCCOPY) {
            CopyRow(*src, src->Row(static_cast<int32_t>(row + offY)), static_cast<int32_t>(left + offX), *dst, drow,
                    dx, count, lut, &matcher, sameTable);
            continue;
        }
        const uint8_t* srow = src != nullptr ? src->Row(static_cast<int32_t>(row + offY)) : nullptr;
        for (int32_t k = 0; k < count; ++k) {
            COLORREF s = srow != nullptr ? ReadPixel(*src, static_cast<int32_t>(left + offX) + k, srow) : 0;
            COLORREF d = ReadPixel(*dst, dx + k, drow);
            COLORREF out = 0;
            Combine(rop, s, d, out);
            if (dst->bitCount == 8)
                drow[dx + k] = matcher(out);
            else
                WriteColorAt(drow + static_cast<size_t>(dx + k) * (dst->bitCount / 8), dst->bitCount, out);
        }
    }
    return true;
}

uint32_t GetDIBColorTable(HDC hdc, uint32_t iStart, uint32_t cEntries, RGBQUAD* prgbq) {
    Bitmap* b = State().SelectedIn(hdc);
    if (b == nullptr || !b->hasTable || prgbq == nullptr || iStart >= 256) return 0;
    uint32_t n = std::min<uint32_t>(cEntries, 256 - iStart);
    std::copy_n(b->colors.begin() + iStart, n, prgbq);
    return n;
}

uint32_t SetDIBColorTable(HDC hdc, uint32_t iStart, uint32_t cEntries, const RGBQUAD* prgbq) {
    Bitmap* b = State().SelectedIn(hdc);
    if (b == nullptr || !b->hasTable || prgbq == nullptr || iStart >= 256) return 0;
    uint32_t n = std::min<uint32_t>(cEntries, 256 - iStart);
    std::copy_n(prgbq, n, b->colors.begin() + iStart);
    return n;
}

int32_t GetDIBits(HDC, HBITMAP hbm, uint32_t start, uint32_t cLines, void* lpvBits, BITMAPINFO* lpbmi,
                  uint32_t usage) {
    Bitmap* b = State().FindBitmap(hbm);
    if (b == nullptr || lpbmi == nullptr || usage != DIB_RGB_COLORS) return 0;
    BITMAPINFOHEADER& h = lpbmi->bmiHeader;
    if (lpvBits == nullptr) {
        h.biWidth = b->width;
        h.biHeight = b->bottomUp ? b->height : -b->height;
        h.biPlanes = 1;
        h.biBitCount = static_cast<uint16_t>(b->bitCount);
        h.biCompression = BI_RGB;
        h.biSizeImage = static_cast<uint32_t>(b->stride) * static_cast<uint32_t>(b->height);
        return 1;
    }
    int32_t bitCount = h.biBitCount;
    if (bitCount != 8 && bitCount != 24 && bitCount != 32) return 0;
    if (start >= static_cast<uint32_t>(b->height)) return 0;
    uint32_t lines = std::min<uint32_t>(cLines, static_cast<uint32_t>(b->height) - start);
    bool targetBottomUp = h.biHeight > 0;
    size_t stride = static_cast<size_t>(StrideOf(b->width, bitCount));
    auto* out = static_cast<uint8_t*>(lpvBits);
    bool indices = bitCount == 8 && b->bitCount == 8;
    if (indices) std::copy(b->colors.begin(), b->colors.end(), lpbmi->bmiColors);
    std::array<RGBQUAD, 256> table{};
    std::copy(lpbmi->bmiColors, lpbmi->bmiColors + 256, table.begin());
    IndexMatcher matcher(table);
    for (uint32_t i = 0; i < lines; ++i) {
        // Line i of the target counts from its first row in memory; the rows
        // asked for count from the bottom of the picture.
        uint32_t fromBottom = targetBottomUp ? start + i : static_cast<uint32_t>(b->height) - 1 - (start + i);
        int32_t y = b->height - 1 - static_cast<int32_t>(fromBottom);
        const uint8_t* srow = b->Row(y);
        uint8_t* drow = out + stride * i;
        if (indices) {
            std::memcpy(drow, srow, static_cast<size_t>(b->width));
            continue;
        }
        for (int32_t x = 0; x < b->width; ++x) {
            COLORREF c = ReadPixel(*b, x, srow);
            if (bitCount == 8)
                drow[x] = matcher(c);
            else
                WriteColorAt(drow + static_cast<size_t>(x) * (bitCount / 8), bitCount, c);
        }
    }
    return static_cast<int32_t>(lines);
}

int32_t GetObjectA(HGDIOBJ h, int32_t c, void* pv) {
    Bitmap* b = State().FindBitmap(h);
    if (b == nullptr) return 0;
    if (pv == nullptr) return static_cast<int32_t>(sizeof(BITMAP));
    if (c <= 0) return 0;
    BITMAP record;
    record.bmWidth = b->width;
    record.bmHeight = b->height;
    record.bmWidthBytes = b->stride;
    record.bmPlanes = 1;
    record.bmBitsPixel = static_cast<uint16_t>(b->bitCount);
    record.bmBits = b->bits.get();
    size_t n = std::min(static_cast<size_t>(c), sizeof(BITMAP));
    std::memcpy(pv, &record, n);
    return static_cast<int32_t>(n);
}

COLORREF GetPixel(HDC hdc, int32_t x, int32_t y) {
    Bitmap* b = State().SelectedIn(hdc);
    if (b == nullptr || x < 0 || y < 0 || x >= b->width || y >= b->height) return CLR_INVALID;
    return ReadPixel(*b, x, b->Row(y));
}

COLORREF SetPixel(HDC hdc, int32_t x, int32_t y, COLORREF color) {
    Bitmap* b = State().SelectedIn(hdc);
    if (b == nullptr || b->stock || x < 0 || y < 0 || x >= b->width || y >= b->height) return CLR_INVALID;
    color &= 0xFFFFFF;
    uint8_t* row = b->Row(y);
    if (b->bitCount == 8) {
        row[x] = NearestIndex(b->colors, color);
        return ToColor(b->colors[row[x]]);
    }
    WriteColorAt(row + static_cast<size_t>(x) * (b->bitCount / 8), b->bitCount, color);
    return color;
}

HBITMAP GetSelectedBitmap(HDC hdc) {
    DeviceContext* dc = State().FindContext(hdc);
    return dc == nullptr ? 0 : dc->bitmap;
}

size_t GdiObjectCount() {
    Gdi& gdi = State();
    return gdi.bitmaps.size() + gdi.contexts.size() - (gdi.stockBitmap != 0 ? 1 : 0);
}
