#pragma once
// The text of one page of the hex dump: a pure function of the page's bytes,
// where the page starts and how long the file is.
#include <cstdint>
#include <string>

inline constexpr int32_t kHexPageBytes = 256;
inline constexpr int32_t kHexLineBytes = 16;
// The scroll bar's Value is 16-bit, and pages past this one are never shown.
inline constexpr int32_t kHexMaxPage = 32256;

// Sixteen lines of sixteen bytes: two upper-case hex digits and a blank per
// byte ("   " past the end of the file), a blank, then the characters of the
// bytes inside the file (bytes up to 32 as "."). Lines end in CR LF except the
// last. `page` holds 256 bytes; `offset` is where the page starts in the file.
std::string FormatHexPage(const unsigned char* page, int64_t offset, int64_t fileLength);

// The last page the scroll bar reaches for a file of this length: the page
// that holds the file's last byte, 0 for an empty file, at most kHexMaxPage.
int32_t HexLastPage(int64_t fileLength);
