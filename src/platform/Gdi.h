#pragma once
// The graphics device interface over plain pixel buffers: device contexts,
// bitmaps and DIB sections, block transfers, colour tables. A device context
// is a slot that holds one selected bitmap; a bitmap is a buffer of 8, 24 or
// 32 bits per pixel (blue, green, red order), bottom-up for a positive height
// and top-down for a negative one, rows padded to 4 bytes. Coordinates count
// from the top-left corner whatever the row order in memory.
//
// Handles are small positive numbers, unique for the run; 0 is no object.
// Everything runs on the user-interface thread.
#include <cstddef>
#include <cstdint>

using HDC = int32_t;
using HBITMAP = int32_t;
using HGDIOBJ = int32_t;
using COLORREF = uint32_t;

inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;

inline constexpr uint32_t DIB_RGB_COLORS = 0;
inline constexpr uint32_t BI_RGB = 0;

// Raster operations of BitBlt that need no brush.
inline constexpr uint32_t SRCCOPY = 0x00CC0020;
inline constexpr uint32_t SRCPAINT = 0x00EE0086;
inline constexpr uint32_t SRCAND = 0x008800C6;
inline constexpr uint32_t SRCINVERT = 0x00660046;
inline constexpr uint32_t SRCERASE = 0x00440328;
inline constexpr uint32_t NOTSRCCOPY = 0x00330008;
inline constexpr uint32_t NOTSRCERASE = 0x001100A6;
inline constexpr uint32_t DSTINVERT = 0x00550009;
inline constexpr uint32_t BLACKNESS = 0x00000042;
inline constexpr uint32_t WHITENESS = 0x00FF0062;

// The largest pixel buffer a bitmap may take. A header read from a damaged
// file can claim any size; beyond this the section is refused.
inline constexpr int64_t kMaxBitmapBytes = int64_t{256} * 1024 * 1024;
// The limit in force, kMaxBitmapBytes unless lowered: the fuzz targets lower
// it, so that an input claiming a huge picture stays quick to run.
int64_t MaxBitmapBytes();
void SetMaxBitmapBytes(int64_t bytes);

struct RGBQUAD {
    uint8_t rgbBlue = 0;
    uint8_t rgbGreen = 0;
    uint8_t rgbRed = 0;
    uint8_t rgbReserved = 0;
};
static_assert(sizeof(RGBQUAD) == 4);

struct BITMAPINFOHEADER {
    uint32_t biSize = 0;
    int32_t biWidth = 0;
    int32_t biHeight = 0;
    uint16_t biPlanes = 0;
    uint16_t biBitCount = 0;
    uint32_t biCompression = 0;
    uint32_t biSizeImage = 0;
    int32_t biXPelsPerMeter = 0;
    int32_t biYPelsPerMeter = 0;
    uint32_t biClrUsed = 0;
    uint32_t biClrImportant = 0;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);

// The header and a full colour table of 256 entries; only bitmaps of 8 bits
// per pixel read the table.
struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[256];
};

// What GetObjectA gives for a bitmap. The first 20 bytes are those of the
// platform's record; the buffer address follows at the pointer's own size.
struct BITMAP {
    int32_t bmType = 0;
    int32_t bmWidth = 0;
    int32_t bmHeight = 0;
    int32_t bmWidthBytes = 0;
    uint16_t bmPlanes = 0;
    uint16_t bmBitsPixel = 0;
    void* bmBits = nullptr;
};
static_assert(offsetof(BITMAP, bmPlanes) == 16);

// A device context for the screen; only "DISPLAY" is known. The screen has
// no pixels of its own here: it serves as the model of memory contexts.
HDC CreateDCA(const char* lpszDriver, const char* lpszDevice = nullptr, const char* lpszOutput = nullptr,
              const void* lpInitData = nullptr);
// A memory device context holding the stock 1 x 1 bitmap; hdc 0 or a display
// context.
HDC CreateCompatibleDC(HDC hdc);
// Releases a device context; the bitmap in it stays.
bool DeleteDC(HDC hdc);

// A DIB section of 8, 24 or 32 bits per pixel, BI_RGB. The pixel buffer
// starts all 0 and its address goes to *ppvBits. Gives 0 (and a null
// address) for a width or height of 0 or below (a negative height asks for
// top-down rows), another depth or compression, or a buffer beyond
// kMaxBitmapBytes. An 8-bit section takes its colour table from pbmi.
HBITMAP CreateDIBSection(HDC hdc, const BITMAPINFO* pbmi, uint32_t iUsage, void** ppvBits, int32_t hSection = 0,
                         uint32_t dwOffset = 0);
// The same for a header alone: a section without a colour table.
HBITMAP CreateDIBSection(HDC hdc, const BITMAPINFOHEADER* pbmih, uint32_t iUsage, void** ppvBits,
                         int32_t hSection = 0, uint32_t dwOffset = 0);

// A top-down section of 32 bits per pixel, the layout of a screen's image:
// rows from the top, each pixel blue, green, red and an unused byte, no
// padding. 0 for a size of 0 or below or beyond the limit.
HBITMAP CreateTopDownSection(int32_t width, int32_t height, void** ppvBits);

// Puts a bitmap into a memory device context and gives the one it replaced;
// 0 when either handle is unknown or the bitmap is selected elsewhere.
HGDIOBJ SelectObject(HDC hdc, HGDIOBJ h);
// Releases a bitmap; refused while it is selected into a context.
bool DeleteObject(HGDIOBJ ho);

// Copies a rectangle from the bitmap of hdcSrc to that of hdc with a raster
// operation, clipped to both bitmaps. Colours convert between depths; an
// 8-bit destination takes the nearest colour of its table, or the index
// itself where both tables agree. Operations that combine colours work on
// the colour words. False for an unknown context or operation.
bool BitBlt(HDC hdc, int32_t x, int32_t y, int32_t cx, int32_t cy, HDC hdcSrc, int32_t x1, int32_t y1,
            uint32_t rop);

// Reads or writes a run of entries of the colour table of the section
// selected in hdc; gives how many entries it touched, 0 when the section has
// no table. Written colours show at once in every pixel that uses them.
uint32_t GetDIBColorTable(HDC hdc, uint32_t iStart, uint32_t cEntries, RGBQUAD* prgbq);
uint32_t SetDIBColorTable(HDC hdc, uint32_t iStart, uint32_t cEntries, const RGBQUAD* prgbq);

// Copies `cLines` rows of a bitmap, from row `start` counted from the bottom,
// into lpvBits in the format of lpbmi (8, 24 or 32 bits, rows in the order of
// the sign of biHeight) and gives the number of rows copied. The bitmap's own
// width stands. For an 8-bit format an 8-bit bitmap gives its indices and its
// table (written into lpbmi), any other the nearest colour of lpbmi's table.
// With no buffer, fills lpbmi's header with the bitmap's format and gives 1.
int32_t GetDIBits(HDC hdc, HBITMAP hbm, uint32_t start, uint32_t cLines, void* lpvBits, BITMAPINFO* lpbmi,
                  uint32_t usage);

// Copies up to c bytes of a bitmap's BITMAP record to pv and gives the count;
// with no pv, the record's size; 0 for an unknown handle.
int32_t GetObjectA(HGDIOBJ h, int32_t c, void* pv);

// The colour of one pixel, or CLR_INVALID outside the bitmap.
COLORREF GetPixel(HDC hdc, int32_t x, int32_t y);
// Sets one pixel (an 8-bit bitmap takes the nearest colour of its table);
// gives the colour set, or CLR_INVALID outside the bitmap.
COLORREF SetPixel(HDC hdc, int32_t x, int32_t y, COLORREF color);

// The bitmap selected into a memory context; 0 for none.
HBITMAP GetSelectedBitmap(HDC hdc);
// The number of bitmaps and device contexts alive: a leak shows here.
size_t GdiObjectCount();
