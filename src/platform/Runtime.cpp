#include "platform/Runtime.h"

#include <unistd.h>

#include <climits>
#include <filesystem>
#include <utility>

RuntimeError::RuntimeError(int32_t number, std::string source, std::string description)
    : Number(number), Source(std::move(source)), Description(std::move(description)) {}

std::string VbErrorDescription(int32_t number) {
    switch (number) {
        case vbErrInvalidCall: return "Invalid procedure call or argument";
        case vbErrOverflow: return "Overflow";
        case vbErrOutOfMemory: return "Out of memory";
        case vbErrSubscript: return "Subscript out of range";
        case vbErrDivisionByZero: return "Division by zero";
        case vbErrTypeMismatch: return "Type mismatch";
        case vbErrBadFileNumber: return "Bad file name or number";
        case vbErrFileNotFound: return "File not found";
        case vbErrBadFileMode: return "Bad file mode";
        case vbErrFileAlreadyOpen: return "File already open";
        case vbErrDiskFull: return "Disk full";
        case vbErrInputPastEnd: return "Input past end of file";
        case vbErrTooManyFiles: return "Too many files";
        case vbErrPermissionDenied: return "Permission denied";
        case vbErrPathFileAccess: return "Path/File access error";
        case vbErrPathNotFound: return "Path not found";
        case vbErrObjectNotSet: return "Object variable or With block variable not set";
        default: return "Application-defined or object-defined error";
    }
}

void RaiseError(int32_t number, const std::string& source, const std::string& description) {
    throw RuntimeError(number, source.empty() ? App::EXEName() : source,
                       description.empty() ? VbErrorDescription(number) : description);
}

namespace {
std::string g_exeFolder;
std::string g_exeName;
std::function<void()> g_doEvents;

void SetFromPath(const std::filesystem::path& p) {
    g_exeFolder = p.parent_path().string();
    g_exeName = p.stem().string();
}
}  // namespace

namespace App {
void Init(const char* argv0) {
    std::error_code ec;
    auto self = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (!ec && !self.empty()) {
        SetFromPath(self);
        return;
    }
    if (argv0 != nullptr) SetFromPath(std::filesystem::absolute(argv0, ec));
}

std::string EXEName() {
    if (g_exeName.empty()) Init(nullptr);
    return g_exeName;
}

std::string Path() {
    if (g_exeFolder.empty()) Init(nullptr);
    return g_exeFolder;
}

void SetExecutable(const std::string& folder, const std::string& name) {
    g_exeFolder = folder;
    g_exeName = name;
}
}  // namespace App

void DoEvents() {
    if (g_doEvents) g_doEvents();
}

void SetDoEventsHook(std::function<void()> hook) { g_doEvents = std::move(hook); }

int16_t VbToInteger(int64_t v) {
    if (v < INT16_MIN || v > INT16_MAX) RaiseError(vbErrOverflow);
    return static_cast<int16_t>(v);
}

int32_t VbToLong(int64_t v) {
    if (v < INT32_MIN || v > INT32_MAX) RaiseError(vbErrOverflow);
    return static_cast<int32_t>(v);
}

int16_t VbAdd16(int32_t a, int32_t b) { return VbToInteger(static_cast<int64_t>(a) + b); }
int32_t VbAdd32(int64_t a, int64_t b) { return VbToLong(a + b); }

int32_t VbIntDiv(int32_t a, int32_t b) {
    if (b == 0) RaiseError(vbErrDivisionByZero);
    return VbToLong(static_cast<int64_t>(a) / b);
}

int32_t VbCLng(const std::string& text) {
    size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
    int64_t value = 0;
    bool any = false;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        any = true;
        value = value * 10 + (text[i] - '0');
        if (value > static_cast<int64_t>(INT32_MAX) + 1) RaiseError(vbErrOverflow);
    }
    if (!any) RaiseError(vbErrTypeMismatch);
    return VbToLong(negative ? -value : value);
}

std::string VbTrim(const std::string& s) {
    size_t b = s.find_first_not_of(' ');
    if (b == std::string::npos) return {};
    size_t e = s.find_last_not_of(' ');
    return s.substr(b, e - b + 1);
}

char VbUCaseChar(char c) {
    const auto b = static_cast<unsigned char>(c);
    if ((b >= 'a' && b <= 'z') || (b >= 0xE0 && b <= 0xFE && b != 0xF7)) return static_cast<char>(b - 0x20);
    switch (b) {
        case 0x9A: case 0x9C: case 0x9E: return static_cast<char>(b - 0x10);
        case 0xFF: return static_cast<char>(0x9F);
        default: return c;
    }
}

char VbLCaseChar(char c) {
    const auto b = static_cast<unsigned char>(c);
    if ((b >= 'A' && b <= 'Z') || (b >= 0xC0 && b <= 0xDE && b != 0xD7)) return static_cast<char>(b + 0x20);
    switch (b) {
        case 0x8A: case 0x8C: case 0x8E: return static_cast<char>(b + 0x10);
        case 0x9F: return static_cast<char>(0xFF);
        default: return c;
    }
}

std::string VbUCase(std::string s) {
    for (auto& c : s) c = VbUCaseChar(c);
    return s;
}

std::string VbLCase(std::string s) {
    for (auto& c : s) c = VbLCaseChar(c);
    return s;
}

std::string VbReplace(const std::string& s, const std::string& what, const std::string& with) {
    if (what.empty()) return s;
    std::string out;
    out.reserve(s.size());
    size_t pos = 0;
    for (;;) {
        size_t hit = s.find(what, pos);
        if (hit == std::string::npos) break;
        out.append(s, pos, hit - pos);
        out += with;
        pos = hit + what.size();
    }
    out.append(s, pos, std::string::npos);
    return out;
}
