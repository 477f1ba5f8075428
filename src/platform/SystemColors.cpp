#include "platform/SystemColors.h"

#include <array>
#include <cstddef>

namespace {

constexpr uint32_t Rgb(uint32_t r, uint32_t g, uint32_t b) { return r | (g << 8) | (b << 16); }

// The classic scheme, element by element; 25 is unused.
constexpr std::array<uint32_t, 29> kClassicScheme = {
    Rgb(192, 192, 192),  //  0 scroll bar
    Rgb(0, 128, 128),    //  1 desktop
    Rgb(0, 0, 128),      //  2 active caption
    Rgb(128, 128, 128),  //  3 inactive caption
    Rgb(192, 192, 192),  //  4 menu
    Rgb(255, 255, 255),  //  5 window
    Rgb(0, 0, 0),        //  6 window frame
    Rgb(0, 0, 0),        //  7 menu text
    Rgb(0, 0, 0),        //  8 window text
    Rgb(255, 255, 255),  //  9 caption text
    Rgb(192, 192, 192),  // 10 active border
    Rgb(192, 192, 192),  // 11 inactive border
    Rgb(128, 128, 128),  // 12 application workspace
    Rgb(0, 0, 128),      // 13 highlight
    Rgb(255, 255, 255),  // 14 highlight text
    Rgb(192, 192, 192),  // 15 button face
    Rgb(128, 128, 128),  // 16 button shadow
    Rgb(128, 128, 128),  // 17 grey text
    Rgb(0, 0, 0),        // 18 button text
    Rgb(192, 192, 192),  // 19 inactive caption text
    Rgb(255, 255, 255),  // 20 button highlight
    Rgb(0, 0, 0),        // 21 3D dark shadow
    Rgb(223, 223, 223),  // 22 3D light
    Rgb(0, 0, 0),        // 23 tooltip text
    Rgb(255, 255, 225),  // 24 tooltip background
    0,                   // 25
    Rgb(0, 0, 255),      // 26 hot-tracked item
    Rgb(16, 132, 208),   // 27 active caption gradient
    Rgb(181, 181, 181),  // 28 inactive caption gradient
};

}  // namespace

uint32_t GetSysColor(int32_t nIndex) {
    if (nIndex < 0 || nIndex > COLOR_GRADIENTINACTIVECAPTION) return 0;
    return kClassicScheme[static_cast<size_t>(nIndex)];
}

int32_t OleTranslateColor(uint32_t clr, int32_t hpal, uint32_t* pcolorref) {
    uint32_t result = 0;
    switch (clr >> 24) {
        case 0x00: result = clr; break;
        case 0x02: result = clr & 0xFFFFFF; break;
        case 0x80:
            if ((clr & 0xFFFFFF) > static_cast<uint32_t>(COLOR_GRADIENTINACTIVECAPTION)) return E_INVALIDARG;
            result = GetSysColor(static_cast<int32_t>(clr & 0xFFFF));
            break;
        default: return E_INVALIDARG;
    }
    if (pcolorref != nullptr) *pcolorref = result;
    return S_OK;
}
