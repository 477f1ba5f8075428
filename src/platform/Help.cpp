#include "platform/Help.h"

#include <sys/stat.h>

#include "platform/LastError.h"

namespace {

IHelpService* g_help = nullptr;

int32_t Failed(uint32_t error) {
    SetLastError(error);
    return 0;
}

}  // namespace

void SetHelpService(IHelpService* service) { g_help = service; }
IHelpService* GetHelpService() { return g_help; }

int32_t WinHelpA(int32_t hWndMain, const std::string& lpszHelp, uint32_t uCommand, uintptr_t dwData) {
    if (uCommand == HELP_QUIT) return 1;
    if ((uCommand == HELP_MULTIKEY || uCommand == HELP_SETWINPOS) && dwData == 0) {
        return Failed(ERROR_INVALID_PARAMETER);
    }
    struct stat st {};
    if (lpszHelp.empty() || stat(lpszHelp.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) {
        return Failed(ERROR_FILE_NOT_FOUND);
    }
    if (g_help == nullptr || !g_help->Open(HelpRequest{hWndMain, lpszHelp, uCommand, dwData})) {
        return Failed(ERROR_NO_ASSOCIATION);
    }
    return 1;
}
