#pragma once
// The platform's last error of the calling thread, and FormatMessageA, which
// gives the system's text of an error number. Only the errors that the
// stand-ins here set have a text.
#include <cstdint>

inline constexpr uint32_t ERROR_SUCCESS = 0;
inline constexpr uint32_t ERROR_FILE_NOT_FOUND = 2;
inline constexpr uint32_t ERROR_PATH_NOT_FOUND = 3;
inline constexpr uint32_t ERROR_ACCESS_DENIED = 5;
inline constexpr uint32_t ERROR_INVALID_PARAMETER = 87;
inline constexpr uint32_t ERROR_NO_ASSOCIATION = 1155;
inline constexpr uint32_t ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr uint32_t ERROR_NOT_ENOUGH_QUOTA = 1816;

uint32_t GetLastError();
void SetLastError(uint32_t dwErrCode);

inline constexpr uint32_t FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
inline constexpr uint32_t FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;

// With FORMAT_MESSAGE_FROM_SYSTEM: writes the system's text of dwMessageId,
// ended by a carriage return and a line feed, and a zero character into
// lpBuffer, and gives the number of characters written without the zero. Gives
// 0 for an error it has no text of, or a buffer too small for the text.
uint32_t FormatMessageA(uint32_t dwFlags, const void* lpSource, uint32_t dwMessageId, uint32_t dwLanguageId,
                        char* lpBuffer, uint32_t nSize, void* Arguments);
