#pragma once
// The shared module: string and file helpers, the print-file channel, and the
// global state that several parts of the program read.
#include <cstdint>
#include <memory>
#include <string>

class cCommonDialog;

// The folder separator of paths. A drive's root is the platform's root.
inline constexpr char g_cPathSep = '/';
inline constexpr const char* g_sPathSep = "/";
inline constexpr const char* g_sRootPath = "/";
// The drive that a failed drive change falls back to.
inline constexpr const char* g_sSystemDrive = "/";

// Settings, read at start-up and written by the options dialog.
extern std::string g_sGameFolder;
extern bool g_bWin9x;
extern std::string g_sPkzipPath;
extern std::string g_sUnpakPath;
extern std::string g_sShortCutPath;
// The file number of the print-file channel (a 16-bit integer; 0 before the
// first open).
extern int16_t g_vPrintFile;

// The shared common dialog object, created on first use.
extern std::unique_ptr<cCommonDialog> g_oCommonDialog;
cCommonDialog& CommonDialog();

// The platform id that the system reports: 1 on the 9x family, 2 on NT. This
// platform is of the NT kind.
int32_t GetOSPlatform();

// Text behind the last "."; empty if there is none.
std::string GetFileExt(const std::string& sPath);
// Text behind the last separator; the whole text if there is none.
std::string GetFileName(const std::string& sPath);
// Text up to and with the last separator; the whole text if there is none.
std::string GetFolderName(const std::string& sPath);
// True for an existing file or folder; never raises.
bool FileExists(const std::string& sPath);

// The one text-output channel: a file opened for output, lines ended by CR LF.
bool OpenPrintFile(const std::string& sPath);
bool PrintToFile(const std::string& sLine);
bool ClosePrintFile();

// The text of a 32-bit number right-aligned in 16 characters, as the PAK list
// shows sizes.
std::string PadSize(int32_t value);
