#include "platform/FileDialogs.h"

#include <algorithm>

#include "platform/Windows.h"

namespace {

constexpr char kSep = '/';

IFileDialogService* g_service = nullptr;
uint32_t g_extendedError = 0;

std::string UpToZero(const std::string& s, size_t limit) {
    const std::string head = s.substr(0, std::min(limit, s.size()));
    return head.substr(0, head.find('\0'));
}

// Writes `text` into a buffer of `capacity` characters, padded with zeros.
bool Fill(std::string& buffer, uint32_t capacity, const std::string& text) {
    if (text.size() + 1 > capacity) return false;
    buffer.assign(capacity, '\0');
    buffer.replace(0, text.size(), text);
    return true;
}

int32_t Fail(uint32_t error) {
    g_extendedError = error;
    return 0;
}

std::string FolderOf(const std::string& path) {
    const size_t sep = path.rfind(kSep);
    if (sep == std::string::npos) return {};
    return sep == 0 ? std::string(1, kSep) : path.substr(0, sep);
}

std::string NameOf(const std::string& path) {
    const size_t sep = path.rfind(kSep);
    return sep == std::string::npos ? path : path.substr(sep + 1);
}

int32_t RunDialog(OPENFILENAME* ofn, bool save) {
    g_extendedError = 0;
    if (ofn == nullptr || ofn->lStructSize != kOpenFileNameSize) return Fail(CDERR_STRUCTSIZE);
    const uint32_t capacity = std::min<uint32_t>(ofn->nMaxFile, static_cast<uint32_t>(ofn->lpstrFile.size()));
    if (capacity == 0) return Fail(CDERR_INITIALIZATION);
    if (g_service == nullptr) return 0;

    const bool hooked = (ofn->Flags & OFN_ENABLEHOOK) != 0 && ofn->lpfnHook != nullptr;
    DialogHookRun run(hooked ? ofn->lpfnHook : nullptr, ofn->hwndOwner, true, reinterpret_cast<intptr_t>(ofn));
    FileDialogRequest request;
    request.save = save;
    request.hwndOwner = ofn->hwndOwner;
    request.hwndDialog = run.Dialog();
    request.events = run.Sink();
    request.title = ofn->lpstrTitle.substr(0, ofn->lpstrTitle.find('\0'));
    request.initialDir = ofn->lpstrInitialDir.substr(0, ofn->lpstrInitialDir.find('\0'));
    request.fileName = UpToZero(ofn->lpstrFile, capacity);
    request.filters = SplitFilterPairs(ofn->lpstrFilter);
    const auto count = static_cast<uint32_t>(request.filters.size());
    request.filterIndex = (ofn->nFilterIndex >= 1 && ofn->nFilterIndex <= count) ? static_cast<int32_t>(ofn->nFilterIndex) : 1;
    request.defaultExt = ofn->lpstrDefExt.substr(0, ofn->lpstrDefExt.find('\0'));
    const uint32_t flags = ofn->Flags;
    request.multiSelect = !save && (flags & OFN_ALLOWMULTISELECT) != 0;
    request.fileMustExist = (flags & OFN_FILEMUSTEXIST) != 0;
    request.pathMustExist = (flags & (OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST)) != 0;
    request.overwritePrompt = save && (flags & OFN_OVERWRITEPROMPT) != 0;
    request.readOnlyChecked = (flags & OFN_READONLY) != 0;
    request.hideReadOnly = (flags & OFN_HIDEREADONLY) != 0;

    const FileDialogAnswer answer = g_service->Show(request);
    run.Close();
    if (!answer.accepted || answer.paths.empty() || answer.paths.front().empty()) return 0;

    // One path is the path itself; several are their folder and then each
    // name, every piece ended by a zero and the list by a second one.
    const std::string& first = answer.paths.front();
    std::string text;
    uint16_t offset = 0;
    if (answer.paths.size() == 1) {
        text = first;
        offset = static_cast<uint16_t>(std::min<size_t>(first.size() - NameOf(first).size(), 0xFFFF));
        if (request.multiSelect) text += '\0';
    } else {
        const std::string folder = FolderOf(first);
        text = folder + '\0';
        offset = static_cast<uint16_t>(std::min<size_t>(text.size(), 0xFFFF));
        for (const auto& p : answer.paths) text += (FolderOf(p) == folder ? NameOf(p) : p) + '\0';
    }
    if (!Fill(ofn->lpstrFile, capacity, text)) {
        // The platform tells the size it needed in the buffer's first two bytes.
        const size_t needed = std::min<size_t>(text.size() + 1, 0xFFFF);
        if (capacity >= 2) {
            ofn->lpstrFile[0] = static_cast<char>(needed & 0xFF);
            ofn->lpstrFile[1] = static_cast<char>(needed >> 8);
        }
        return Fail(FNERR_BUFFERTOOSMALL);
    }
    ofn->nFileOffset = offset;
    const std::string name = NameOf(first);
    const size_t dot = name.rfind('.');
    ofn->nFileExtension = answer.paths.size() == 1 && dot != std::string::npos
                              ? static_cast<uint16_t>(std::min<size_t>(offset + dot + 1, 0xFFFF))
                              : 0;

    const uint32_t titleCapacity =
        std::min<uint32_t>(ofn->nMaxFileTitle, static_cast<uint32_t>(ofn->lpstrFileTitle.size()));
    if (titleCapacity > 0 && answer.paths.size() == 1) {
        ofn->lpstrFileTitle.assign(titleCapacity, '\0');
        ofn->lpstrFileTitle.replace(0, std::min<size_t>(name.size(), titleCapacity - 1), name, 0, titleCapacity - 1);
    }

    uint32_t out = flags & ~(OFN_READONLY | OFN_EXTENSIONDIFFERENT);
    if (answer.readOnly) out |= OFN_READONLY;
    if (!request.defaultExt.empty() && answer.paths.size() == 1) {
        const std::string ext = dot == std::string::npos ? std::string() : name.substr(dot + 1);
        if (ext != request.defaultExt) out |= OFN_EXTENSIONDIFFERENT;
    }
    ofn->Flags = out;
    if (count > 0) {
        ofn->nFilterIndex = static_cast<uint32_t>(std::clamp<int32_t>(answer.filterIndex, 1, static_cast<int32_t>(count)));
    }
    return 1;
}

}  // namespace

void SetFileDialogService(IFileDialogService* service) { g_service = service; }
IFileDialogService* GetFileDialogService() { return g_service; }

int32_t GetOpenFileNameA(OPENFILENAME* lpofn) { return RunDialog(lpofn, false); }
int32_t GetSaveFileNameA(OPENFILENAME* lpofn) { return RunDialog(lpofn, true); }
uint32_t CommDlgExtendedError() { return g_extendedError; }
void SetCommDlgExtendedError(uint32_t error) { g_extendedError = error; }

DialogHookRun::DialogHookRun(LPOFNHOOKPROC hook, int32_t hwndOwner, bool fileDialog, intptr_t record)
    : hook_(hook), record_(record), fileDialog_(fileDialog) {
    if (hook_ == nullptr) return;
    hwndDialog_ = CreateDialogWindow(hwndOwner);
    // The Explorer-style file dialog gives its hook a child window of its own.
    hDlg_ = fileDialog_ ? CreateDialogWindow(hwndDialog_) : hwndDialog_;
}

DialogHookRun::~DialogHookRun() {
    if (hook_ == nullptr) return;
    if (hDlg_ != hwndDialog_) DestroyDialogWindow(hDlg_);
    DestroyDialogWindow(hwndDialog_);
}

DialogEventSink DialogHookRun::Sink() {
    if (hook_ == nullptr) return {};
    return [this](DialogEvent event) { return Report(event); };
}

bool DialogHookRun::Report(DialogEvent event) {
    if (event == DialogEvent::Shown) {
        if (!shown_) {
            shown_ = true;
            hook_(hDlg_, WM_INITDIALOG, 0, record_);
        }
        return true;
    }
    // Only the file dialogs notify their hook of what the user does.
    if (!shown_ || !fileDialog_) return true;
    uint32_t code = 0;
    switch (event) {
        case DialogEvent::TypeChanged: code = CDN_TYPECHANGE; break;
        case DialogEvent::FolderChanged: code = CDN_FOLDERCHANGE; break;
        case DialogEvent::SelectionChanged: code = CDN_SELCHANGE; break;
        case DialogEvent::OkPressed: code = CDN_FILEOK; break;
        case DialogEvent::Shown: return true;
    }
    OFNOTIFY notify;
    notify.hdr.hwndFrom = hwndDialog_;
    notify.hdr.code = code;
    notify.lpOFN = reinterpret_cast<OPENFILENAME*>(record_);
    SetWindowLongA(hDlg_, DWL_MSGRESULT, 0);
    const intptr_t result = hook_(hDlg_, WM_NOTIFY, 0, reinterpret_cast<intptr_t>(&notify));
    if (code != CDN_FILEOK) return true;
    return result == 0 || GetWindowLongA(hDlg_, DWL_MSGRESULT) == 0;
}

void DialogHookRun::Close() {
    if (hook_ == nullptr || !shown_) return;
    shown_ = false;
    hook_(hDlg_, WM_NCDESTROY, 0, 0);
}

std::vector<std::pair<std::string, std::string>> SplitFilterPairs(const std::string& lpstrFilter) {
    std::vector<std::pair<std::string, std::string>> pairs;
    size_t pos = 0;
    while (pos < lpstrFilter.size()) {
        size_t end = lpstrFilter.find('\0', pos);
        if (end == std::string::npos) end = lpstrFilter.size();
        std::string name = lpstrFilter.substr(pos, end - pos);
        if (name.empty()) break;
        pos = end + 1;
        std::string pattern;
        if (pos < lpstrFilter.size()) {
            end = lpstrFilter.find('\0', pos);
            if (end == std::string::npos) end = lpstrFilter.size();
            pattern = lpstrFilter.substr(pos, end - pos);
            pos = end + 1;
        }
        pairs.emplace_back(std::move(name), std::move(pattern));
    }
    return pairs;
}
