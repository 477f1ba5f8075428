#pragma once
// The common dialogs' open and save calls. GetOpenFileNameA and
// GetSaveFileNameA take the platform's record as the program fills it and
// hand what it asks for to a service: the front end fills the service with
// real file choosers, tests with scripted answers. Without a service every
// dialog is cancelled.
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// Flags of the record, in and out.
inline constexpr uint32_t OFN_READONLY = 0x1;
inline constexpr uint32_t OFN_OVERWRITEPROMPT = 0x2;
inline constexpr uint32_t OFN_HIDEREADONLY = 0x4;
inline constexpr uint32_t OFN_NOCHANGEDIR = 0x8;
inline constexpr uint32_t OFN_SHOWHELP = 0x10;
inline constexpr uint32_t OFN_ENABLEHOOK = 0x20;
inline constexpr uint32_t OFN_ENABLETEMPLATE = 0x40;
inline constexpr uint32_t OFN_ENABLETEMPLATEHANDLE = 0x80;
inline constexpr uint32_t OFN_NOVALIDATE = 0x100;
inline constexpr uint32_t OFN_ALLOWMULTISELECT = 0x200;
inline constexpr uint32_t OFN_EXTENSIONDIFFERENT = 0x400;
inline constexpr uint32_t OFN_PATHMUSTEXIST = 0x800;
inline constexpr uint32_t OFN_FILEMUSTEXIST = 0x1000;
inline constexpr uint32_t OFN_CREATEPROMPT = 0x2000;
inline constexpr uint32_t OFN_NOREADONLYRETURN = 0x8000;
inline constexpr uint32_t OFN_EXPLORER = 0x80000;

// Extended errors, as CommDlgExtendedError gives them.
inline constexpr uint32_t CDERR_STRUCTSIZE = 0x0001;
inline constexpr uint32_t CDERR_INITIALIZATION = 0x0002;
inline constexpr uint32_t FNERR_BUFFERTOOSMALL = 0x3003;

// The size the record declares of itself.
inline constexpr uint32_t kOpenFileNameSize = 76;

// A dialog's hook procedure; every common dialog's hook has this shape.
using LPOFNHOOKPROC = intptr_t (*)(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam);

// The head of a WM_NOTIFY message, which lParam points at.
struct NMHDR {
    int32_t hwndFrom = 0;
    uintptr_t idFrom = 0;
    uint32_t code = 0;
};

// Notification codes of the Explorer-style file dialogs.
inline constexpr uint32_t CDN_INITDONE = 0u - 601u;
inline constexpr uint32_t CDN_SELCHANGE = 0u - 602u;
inline constexpr uint32_t CDN_FOLDERCHANGE = 0u - 603u;
inline constexpr uint32_t CDN_FILEOK = 0u - 606u;
inline constexpr uint32_t CDN_TYPECHANGE = 0u - 607u;

// The platform's dialog record. The texts that the platform reads are byte
// texts; the two buffers that it writes, lpstrFile and lpstrFileTitle, are
// texts of their buffer's length (nMaxFile, nMaxFileTitle), padded with zero
// characters, whose content runs to the first zero.
struct OPENFILENAME {
    uint32_t lStructSize = 0;
    int32_t hwndOwner = 0;
    int32_t hInstance = 0;
    // Pairs of a name and a pattern, each ended by a zero character; a second
    // zero character ends the list.
    std::string lpstrFilter;
    std::string lpstrCustomFilter;
    uint32_t nMaxCustFilter = 0;
    // 1-based index of the filter, in and out.
    uint32_t nFilterIndex = 0;
    std::string lpstrFile;
    uint32_t nMaxFile = 0;
    std::string lpstrFileTitle;
    uint32_t nMaxFileTitle = 0;
    std::string lpstrInitialDir;
    std::string lpstrTitle;
    uint32_t Flags = 0;
    // Out: where the name and its extension begin in lpstrFile.
    uint16_t nFileOffset = 0;
    uint16_t nFileExtension = 0;
    std::string lpstrDefExt;
    intptr_t lCustData = 0;
    LPOFNHOOKPROC lpfnHook = nullptr;
    std::string lpTemplateName;
};

// What a running dialog reports while the user works in it.
enum class DialogEvent {
    Shown,             // the dialog is built and about to show
    TypeChanged,       // another filter was chosen
    FolderChanged,     // another folder is shown
    SelectionChanged,  // another file is selected
    OkPressed,         // the user confirmed a choice
};
// Gives false only to refuse an OkPressed: the dialog then stays open and the
// choice is not taken.
using DialogEventSink = std::function<bool(DialogEvent)>;

// What a file chooser is asked.
struct FileDialogRequest {
    bool save = false;
    int32_t hwndOwner = 0;
    // While the dialog is hooked: the handle its window goes by while it runs,
    // and where it reports what the user does. Otherwise 0 and empty.
    int32_t hwndDialog = 0;
    DialogEventSink events;
    std::string title;       // empty: the chooser's own title
    std::string initialDir;  // empty: the chooser's choice
    std::string fileName;    // the proposed name, possibly with a folder
    // Name and pattern of each filter; a pattern may hold several, separated by ";".
    std::vector<std::pair<std::string, std::string>> filters;
    int32_t filterIndex = 1;  // 1-based, within the filters when there are any
    std::string defaultExt;   // without a point; empty for none
    bool multiSelect = false;
    bool fileMustExist = false;
    bool pathMustExist = false;
    bool overwritePrompt = false;
    bool readOnlyChecked = false;
    bool hideReadOnly = false;
};

// What the user chose.
struct FileDialogAnswer {
    bool accepted = false;
    // The chosen path; several with multi-select, all in one folder.
    std::vector<std::string> paths;
    int32_t filterIndex = 1;
    bool readOnly = false;
};

class IFileDialogService {
public:
    virtual ~IFileDialogService() = default;
    virtual FileDialogAnswer Show(const FileDialogRequest& request) = 0;
};

// Installs the service; nullptr removes it, and every dialog is then cancelled.
void SetFileDialogService(IFileDialogService* service);
IFileDialogService* GetFileDialogService();

// Give 1 when the user chose, 0 when the user cancelled or the dialog failed;
// CommDlgExtendedError then tells which (0 for a cancel). With OFN_ENABLEHOOK
// and a hook procedure, the hook gets WM_INITDIALOG when the dialog shows, a
// WM_NOTIFY with an OFNOTIFY for each change of filter, folder and selection
// and for the user's OK, and WM_NCDESTROY when the dialog has closed. Its
// window is a child of the dialog's window, as with the Explorer-style
// dialogs. A hook that answers CDN_FILEOK with a result and a DWL_MSGRESULT
// other than 0 refuses the user's OK, and the dialog stays open.
int32_t GetOpenFileNameA(OPENFILENAME* lpofn);
int32_t GetSaveFileNameA(OPENFILENAME* lpofn);
uint32_t CommDlgExtendedError();
// The common dialogs' calls set the extended error through this.
void SetCommDlgExtendedError(uint32_t error);

// The body of a WM_NOTIFY that a file dialog sends its hook.
struct OFNOTIFY {
    NMHDR hdr;
    OPENFILENAME* lpOFN = nullptr;
    const char* pszFile = nullptr;
};

// The run of one dialog whose hook is enabled, for the common dialogs' calls:
// it makes the dialog's window (and, for a file dialog, the hook's child
// window), turns the events that the dialog reports into the hook's messages,
// sends WM_NCDESTROY at Close, and removes the windows when it ends. Without a
// hook it does nothing: no window, and an empty sink.
class DialogHookRun {
public:
    // `record` is what WM_INITDIALOG carries in lParam: the dialog's record.
    DialogHookRun(LPOFNHOOKPROC hook, int32_t hwndOwner, bool fileDialog, intptr_t record);
    ~DialogHookRun();
    DialogHookRun(const DialogHookRun&) = delete;
    DialogHookRun& operator=(const DialogHookRun&) = delete;

    // The handle of the dialog's window, 0 without a hook.
    int32_t Dialog() const { return hwndDialog_; }
    DialogEventSink Sink();
    // The dialog has closed: WM_NCDESTROY, if it ever showed.
    void Close();

private:
    bool Report(DialogEvent event);

    LPOFNHOOKPROC hook_;
    intptr_t record_;
    bool fileDialog_;
    int32_t hwndDialog_ = 0;
    int32_t hDlg_ = 0;
    bool shown_ = false;
};

// The pairs of a zero-separated filter text, up to the empty name that ends it.
std::vector<std::pair<std::string, std::string>> SplitFilterPairs(const std::string& lpstrFilter);
