#include "pak/MemberPath.h"

#include "identify/modGlobal.h"

namespace {
bool IsSeparator(char c) { return c == '/' || c == '\\'; }
bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
}  // namespace

// A name is joined to the destination folder and nothing else. An absolute
// name, a drive ("c:" or "c:\x", which the command shell would follow), a
// leading separator or a ".." part would let a crafted archive write or
// delete anywhere the user may, so all of them are refused here, once, for
// every writer and for the command-file runner. Both separators count, since
// the archive's own names use the backslash and this platform the slash.
bool IsSafeMemberName(const std::string& sName) {
    if (sName.empty()) return false;
    if (sName.find('\0') != std::string::npos) return false;
    // A line end would split the lines of _unpak_.bat that carry the name, and
    // the part behind it could read as a line of its own.
    if (sName.find_first_of("\r\n") != std::string::npos) return false;
    if (IsSeparator(sName[0])) return false;
    if (sName.size() >= 2 && IsLetter(sName[0]) && sName[1] == ':') return false;
    size_t start = 0;
    for (;;) {
        size_t end = start;
        while (end < sName.size() && !IsSeparator(sName[end])) ++end;
        std::string part = sName.substr(start, end - start);
        if (part == "..") return false;
        if (end == sName.size()) {
            // The last part is the file itself and must be a name.
            return !part.empty() && part != ".";
        }
        start = end + 1;
    }
}

std::string MemberPath(const std::string& sFolder, const std::string& sName) {
    if (!IsSafeMemberName(sName)) return {};
    std::string relative = sName;
    for (char& c : relative)
        if (IsSeparator(c)) c = g_cPathSep;
    return sFolder + relative;
}
