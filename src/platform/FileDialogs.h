#pragma once
// The common dialogs' open and save calls. GetOpenFileNameA and
// GetSaveFileNameA take the platform's record as the program fills it and
// hand what it asks for to a service: the front end fills the service with
// real file choosers, tests with scripted answers. Without a service every
// dialog is cancelled.
#include <cstdint>
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

using LPOFNHOOKPROC = intptr_t (*)(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam);

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

// What a file chooser is asked.
struct FileDialogRequest {
    bool save = false;
    int32_t hwndOwner = 0;
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
// CommDlgExtendedError then tells which (0 for a cancel).
int32_t GetOpenFileNameA(OPENFILENAME* lpofn);
int32_t GetSaveFileNameA(OPENFILENAME* lpofn);
uint32_t CommDlgExtendedError();

// The pairs of a zero-separated filter text, up to the empty name that ends it.
std::vector<std::pair<std::string, std::string>> SplitFilterPairs(const std::string& lpstrFilter);
