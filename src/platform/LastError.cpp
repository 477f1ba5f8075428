#include "platform/LastError.h"

#include <cstring>

namespace {

// One user-interface thread: the thread's last error is one value.
uint32_t g_lastError = ERROR_SUCCESS;

const char* SystemText(uint32_t error) {
    switch (error) {
        case ERROR_SUCCESS: return "The operation completed successfully.";
        case ERROR_FILE_NOT_FOUND: return "The system cannot find the file specified.";
        case ERROR_PATH_NOT_FOUND: return "The system cannot find the path specified.";
        case ERROR_ACCESS_DENIED: return "Access is denied.";
        case ERROR_INVALID_PARAMETER: return "The parameter is incorrect.";
        case ERROR_NO_ASSOCIATION: return "No application is associated with the specified file for this operation.";
        case ERROR_INVALID_WINDOW_HANDLE: return "Invalid window handle.";
        default: return nullptr;
    }
}

}  // namespace

uint32_t GetLastError() { return g_lastError; }

void SetLastError(uint32_t dwErrCode) { g_lastError = dwErrCode; }

uint32_t FormatMessageA(uint32_t dwFlags, const void* lpSource, uint32_t dwMessageId, uint32_t dwLanguageId,
                        char* lpBuffer, uint32_t nSize, void* Arguments) {
    const char* text = (dwFlags & FORMAT_MESSAGE_FROM_SYSTEM) != 0 ? SystemText(dwMessageId) : nullptr;
    if (text == nullptr || lpBuffer == nullptr) return 0;
    const size_t length = std::strlen(text) + 2;
    if (length + 1 > nSize) return 0;
    std::memcpy(lpBuffer, text, length - 2);
    std::memcpy(lpBuffer + length - 2, "\r\n", 3);
    return static_cast<uint32_t>(length);
}
