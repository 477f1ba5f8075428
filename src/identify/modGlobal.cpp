#include "identify/modGlobal.h"

#include <cstdio>

#include "platform/Files.h"
#include "platform/Runtime.h"

std::string g_sGameFolder;
bool g_bWin9x = false;
std::string g_sPkzipPath;
std::string g_sUnpakPath;
std::string g_sShortCutPath;
int16_t g_vPrintFile = 0;

int32_t GetOSPlatform() { return 2; }

namespace {
// The scan shared by the three name helpers: from the last character to the
// first, stopping at the first that equals the separator.
size_t LastOf(const std::string& s, char c) { return s.rfind(c); }
}  // namespace

std::string GetFileExt(const std::string& sPath) {
    size_t p = LastOf(sPath, '.');
    return p == std::string::npos ? std::string() : sPath.substr(p + 1);
}

std::string GetFileName(const std::string& sPath) {
    size_t p = LastOf(sPath, g_cPathSep);
    return p == std::string::npos ? sPath : sPath.substr(p + 1);
}

std::string GetFolderName(const std::string& sPath) {
    size_t p = LastOf(sPath, g_cPathSep);
    return p == std::string::npos ? sPath : sPath.substr(0, p + 1);
}

bool FileExists(const std::string& sPath) {
    return PassOver([&] {
        // A path without wildcards is answered by one stat: the scan could
        // only find the same entry, and the attributes answer for any entry
        // that exists. Only a pattern needs the directory scan.
        if (sPath.find_first_of("*?") == std::string::npos) return PathExists(sPath);
        if (!Dir(sPath, vbNormal).empty()) return true;
        return GetAttr(sPath) > 0;
    }, false);
}

bool OpenPrintFile(const std::string& sPath) {
    return PassOver([&] {
        g_vPrintFile = FreeFile();
        VbOpen(g_vPrintFile, sPath, VbOpenMode::Output);
    });
}

bool PrintToFile(const std::string& sLine) {
    return PassOver([&] { VbPrintLine(g_vPrintFile, sLine); });
}

bool ClosePrintFile() {
    return PassOver([&] { VbClose(g_vPrintFile); });
}

std::string PadSize(int32_t value) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%16d", value);
    return buf;
}
