#pragma once
// WinHelpA: a help file shown by the desktop's viewer for files of its type,
// through a service that the front end fills. The viewer runs on its own, so
// the commands that steer a running help window have nothing to steer.
#include <cstdint>
#include <string>

inline constexpr uint32_t HELP_CONTEXT = 0x1;
inline constexpr uint32_t HELP_QUIT = 0x2;
inline constexpr uint32_t HELP_CONTENTS = 0x3;
inline constexpr uint32_t HELP_HELPONHELP = 0x4;
inline constexpr uint32_t HELP_SETINDEX = 0x5;
inline constexpr uint32_t HELP_CONTEXTPOPUP = 0x8;
inline constexpr uint32_t HELP_FORCEFILE = 0x9;
inline constexpr uint32_t HELP_FINDER = 0xB;
inline constexpr uint32_t HELP_KEY = 0x101;
inline constexpr uint32_t HELP_COMMAND = 0x102;
inline constexpr uint32_t HELP_PARTIALKEY = 0x105;
inline constexpr uint32_t HELP_MULTIKEY = 0x201;
inline constexpr uint32_t HELP_SETWINPOS = 0x203;

struct HelpRequest {
    int32_t hwnd = 0;
    std::string file;  // an existing file
    uint32_t command = 0;
    uintptr_t data = 0;
};

class IHelpService {
public:
    virtual ~IHelpService() = default;
    // Opens the file in the desktop's viewer; false when none would open it.
    virtual bool Open(const HelpRequest& request) = 0;
};

// Installs the service; nullptr removes it, and no help file opens.
void SetHelpService(IHelpService* service);
IHelpService* GetHelpService();

// Gives 1 when the help file was opened, and for HELP_QUIT, which has no
// window to close. Otherwise 0, with the last error: ERROR_INVALID_PARAMETER
// for HELP_MULTIKEY and HELP_SETWINPOS without their structure,
// ERROR_FILE_NOT_FOUND for a file that is not there, ERROR_NO_ASSOCIATION when
// no viewer opened it.
int32_t WinHelpA(int32_t hWndMain, const std::string& lpszHelp, uint32_t uCommand, uintptr_t dwData);
