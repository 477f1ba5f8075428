#include "winsupport/GCommonDialog.h"

#include <cstring>

#include "platform/FileDialogs.h"
#include "platform/Runtime.h"

namespace {

constexpr uint32_t kHookFlags = OFN_ENABLEHOOK | OFN_EXPLORER;
// A caller's own hook or template never reaches the platform.
constexpr uint32_t kCallerHookFlags = OFN_ENABLEHOOK | OFN_ENABLETEMPLATE;

// A buffer of `size` characters holding `text`; a text longer than the buffer
// leaves no room to pad, which the runtime refuses as an invalid argument.
std::string Padded(const std::string& text, size_t size) {
    if (text.size() > size) RaiseError(vbErrInvalidCall);
    return text + std::string(size - text.size(), '\0');
}

// The result fields shared by both dialogs; `record` has been shown.
template <typename Args>
void TakeResult(const OPENFILENAME& record, const std::string& platformFilter, bool wholeBuffer, Args& args) {
    if (wholeBuffer) {
        args.Filename = record.lpstrFile;
    } else {
        args.Filename = GCommonDialog::CutAtZero(record.lpstrFile);
        args.FileTitle = GCommonDialog::CutAtZero(record.lpstrFileTitle);
    }
    args.Flags = static_cast<int32_t>(record.Flags);
    args.FilterIndex = static_cast<int32_t>(record.nFilterIndex);
    args.Filter = GCommonDialog::FilterEntry(platformFilter, args.FilterIndex);
}

}  // namespace

std::string GCommonDialog::PlatformFilter(const std::string& sFilter) {
    // The loop over the filter counts in 16 bits.
    const int16_t length = VbToInteger(static_cast<int64_t>(sFilter.size()));
    std::string out;
    out.reserve(static_cast<size_t>(length) + 2);
    for (int16_t i = 0; i < length; ++i) {
        const char c = sFilter[static_cast<size_t>(i)];
        out += (c == ':' || c == '|') ? '\0' : c;
    }
    out += '\0';
    out += '\0';
    return out;
}

std::string GCommonDialog::CutAtZero(const std::string& s) {
    // The platform measures the text to its terminating zero.
    return s.substr(0, std::strlen(s.c_str()));
}

std::string GCommonDialog::FilterEntry(const std::string& sFilter, int32_t lIndex) {
    if (sFilter.empty()) return {};
    size_t start = 0;
    for (;;) {
        const size_t nameEnd = sFilter.find('\0', start);
        if (nameEnd == std::string::npos) return {};
        const size_t patternEnd = sFilter.find('\0', nameEnd + 1);
        if (lIndex == 1) return sFilter.substr(start, patternEnd == std::string::npos ? std::string::npos : patternEnd - start);
        if (patternEnd == std::string::npos) return {};
        --lIndex;
        start = patternEnd + 1;
    }
}

bool GCommonDialog::VBGetOpenFileName(OpenFileNameArgs& args) {
    m_lApiReturn = 0;
    m_lExtendedError = 0;
    OPENFILENAME record;
    record.lStructSize = kOpenFileNameSize;
    uint32_t flags = static_cast<uint32_t>(args.Flags) & ~kCallerHookFlags;
    if (args.MultiSelect) flags |= OFN_ALLOWMULTISELECT;
    if (args.ReadOnly) flags |= OFN_READONLY;
    if (args.HideReadOnly) flags |= OFN_HIDEREADONLY;
    if (args.FileMustExist) flags |= OFN_FILEMUSTEXIST;
    if (args.Owner != -1) record.hwndOwner = args.Owner;
    record.lpstrInitialDir = args.InitDir;
    record.lpstrDefExt = args.DefaultExt;
    record.lpstrTitle = args.DlgTitle;
    if (args.Hook) {
        flags |= kHookFlags;
        m_oDialogObject = args.DialogObject;
    }
    record.Flags = flags;
    const std::string platformFilter = PlatformFilter(args.Filter);
    record.lpstrFilter = platformFilter;
    record.nFilterIndex = static_cast<uint32_t>(args.FilterIndex);
    const bool multi = (flags & OFN_ALLOWMULTISELECT) != 0;
    const size_t size = multi ? 8192 : 260;
    record.lpstrFile = Padded(args.Filename, size);
    record.nMaxFile = static_cast<uint32_t>(size);
    record.lpstrFileTitle = Padded(args.FileTitle, size);
    record.nMaxFileTitle = static_cast<uint32_t>(size);

    m_lApiReturn = GetOpenFileNameA(&record);
    m_oDialogObject = nullptr;

    if (m_lApiReturn == 1) {
        TakeResult(record, platformFilter, multi, args);
        if ((record.Flags & OFN_READONLY) != 0) args.ReadOnly = true;
        return true;
    }
    if (m_lApiReturn != 0) m_lExtendedError = static_cast<int32_t>(CommDlgExtendedError());
    args.Filename.clear();
    args.FileTitle.clear();
    args.Filter.clear();
    args.Flags = 0;
    args.FilterIndex = -1;
    return false;
}

bool GCommonDialog::VBGetSaveFileName(SaveFileNameArgs& args) {
    m_lApiReturn = 0;
    m_lExtendedError = 0;
    OPENFILENAME record;
    record.lStructSize = kOpenFileNameSize;
    uint32_t flags = static_cast<uint32_t>(args.Flags) & ~kCallerHookFlags;
    if (args.OverWritePrompt) flags |= OFN_OVERWRITEPROMPT;
    flags |= OFN_HIDEREADONLY;
    if (args.Owner != -1) record.hwndOwner = args.Owner;
    record.lpstrInitialDir = args.InitDir;
    record.lpstrDefExt = args.DefaultExt;
    record.lpstrTitle = args.DlgTitle;
    if (args.Hook) {
        flags |= kHookFlags;
        m_oDialogObject = args.DialogObject;
    }
    record.Flags = flags;
    const std::string platformFilter = PlatformFilter(args.Filter);
    record.lpstrFilter = platformFilter;
    record.nFilterIndex = static_cast<uint32_t>(args.FilterIndex);
    record.lpstrFile = Padded(args.Filename, 260);
    record.nMaxFile = 260;
    record.lpstrFileTitle = Padded(args.FileTitle, 260);
    record.nMaxFileTitle = 260;

    m_lApiReturn = GetSaveFileNameA(&record);
    m_oDialogObject = nullptr;

    bool chosen = false;
    if (m_lApiReturn == 1) {
        TakeResult(record, platformFilter, false, args);
        chosen = true;
    } else {
        if (m_lApiReturn != 0) m_lExtendedError = static_cast<int32_t>(CommDlgExtendedError());
        args.Filename.clear();
        args.FileTitle.clear();
        args.Filter.clear();
        args.Flags = 0;
        args.FilterIndex = 0;
    }
    // The chosen pair's pattern gives the extension: what follows its first
    // point, without wildcards.
    const size_t zero = args.Filter.find('\0');
    if (zero != std::string::npos) {
        std::string ext = args.Filter.substr(zero + 1);
        const size_t dot = ext.find('.');
        if (dot != std::string::npos) ext = ext.substr(dot + 1);
        ext = VbReplace(ext, "*", "");
        args.DefaultExt = ext;
    }
    return chosen;
}

int32_t GCommonDialog::CustomColor(int16_t i) const {
    if (i < 0 || i > 15) RaiseError(vbErrSubscript);
    return m_alCustomColors[static_cast<size_t>(i)];
}

void GCommonDialog::SetCustomColor(int16_t i, int32_t color) {
    if (i < 0 || i > 15) RaiseError(vbErrSubscript);
    m_alCustomColors[static_cast<size_t>(i)] = color;
}
