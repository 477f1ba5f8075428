#pragma once
// The system's colours and the translation of the runtime's colour values.
// The colours are those of the platform's classic scheme, as colour words
// (red in the low byte).
#include <cstdint>

inline constexpr int32_t COLOR_SCROLLBAR = 0;
inline constexpr int32_t COLOR_WINDOW = 5;
inline constexpr int32_t COLOR_WINDOWTEXT = 8;
inline constexpr int32_t COLOR_BTNFACE = 15;
inline constexpr int32_t COLOR_GRADIENTINACTIVECAPTION = 28;

// The colour of a display element, 0 to 28; 0 for any other index.
uint32_t GetSysColor(int32_t nIndex);

inline constexpr int32_t S_OK = 0;
inline constexpr int32_t E_INVALIDARG = static_cast<int32_t>(0x80070057);

// The runtime's colour value as a colour word: a plain colour (high byte 0)
// stands as it is, a palette-relative one (high byte 2) loses its high byte,
// and a system colour (high byte 0x80, the display element in the low word)
// becomes that element's colour. Anything else, and a system colour beyond the
// elements, gives E_INVALIDARG and leaves *pcolorref alone.
int32_t OleTranslateColor(uint32_t clr, int32_t hpal, uint32_t* pcolorref);
