#include "winsupport/cCommonDialog.h"

#include "identify/modGlobal.h"
#include "platform/CommonDialogs.h"
#include "platform/Help.h"
#include "platform/LastError.h"
#include "platform/Runtime.h"
#include "platform/SystemColors.h"
#include "platform/Windows.h"

std::unique_ptr<cCommonDialog> g_oCommonDialog;

cCommonDialog& CommonDialog() {
    if (!g_oCommonDialog) g_oCommonDialog = std::make_unique<cCommonDialog>();
    return *g_oCommonDialog;
}

GCommonDialog& cCommonDialog::Dialog() {
    if (!m_oDialog) m_oDialog = GCommonDialog::Create();
    return *m_oDialog;
}

const std::shared_ptr<StdFont>& cCommonDialog::Font() {
    if (!m_oFont) m_oFont = std::make_shared<StdFont>();
    return m_oFont;
}

// The open and save dialogs take the same properties in and give them back.
void cCommonDialog::PutArgs(FileNameArgs& args) {
    args.Filename = m_sFileName;
    args.FileTitle = m_sFileTitle;
    args.Filter = m_sFilter;
    args.FilterIndex = m_lFilterIndex;
    args.InitDir = m_sInitDir;
    args.DlgTitle = m_sDialogTitle;
    args.DefaultExt = m_sDefaultExt;
    args.Owner = m_lHwnd;
    args.Flags = m_lFlags;
    args.Hook = m_bHookDialog;
    args.DialogObject = this;
}

void cCommonDialog::TakeArgs(const FileNameArgs& args) {
    m_sFileName = args.Filename;
    m_sFileTitle = args.FileTitle;
    m_sFilter = args.Filter;
    m_lFilterIndex = args.FilterIndex;
    m_sInitDir = args.InitDir;
    m_sDialogTitle = args.DlgTitle;
    m_sDefaultExt = args.DefaultExt;
    m_lHwnd = args.Owner;
    m_lFlags = args.Flags;
}

void cCommonDialog::ShowOpen() {
    m_bFileDialog = true;
    OpenFileNameArgs args;
    args.FileMustExist = FlagSet(m_lFlags, OFN_FILEMUSTEXIST);
    args.MultiSelect = FlagSet(m_lFlags, OFN_ALLOWMULTISELECT);
    args.ReadOnly = FlagSet(m_lFlags, OFN_READONLY);
    args.HideReadOnly = FlagSet(m_lFlags, OFN_HIDEREADONLY);
    if (m_lFilterIndex == 0) m_lFilterIndex = 1;
    PutArgs(args);
    const bool chosen = Dialog().VBGetOpenFileName(args);
    TakeArgs(args);
    if (!chosen) RaiseDialogError();
}

void cCommonDialog::ShowSave() {
    m_bFileDialog = true;
    SaveFileNameArgs args;
    args.OverWritePrompt = FlagSet(m_lFlags, OFN_OVERWRITEPROMPT);
    PutArgs(args);
    const bool chosen = Dialog().VBGetSaveFileName(args);
    TakeArgs(args);
    if (!chosen) {
        RaiseDialogError();
        return;
    }
    // The end test has no point in it: a name that merely ends in the
    // extension's letters gets nothing appended.
    m_sDefaultExt = VbTrim(m_sDefaultExt);
    const size_t n = m_sDefaultExt.size();
    if (n > 0) {
        const std::string tail = m_sFileName.size() >= n ? m_sFileName.substr(m_sFileName.size() - n) : m_sFileName;
        if (VbUCase(tail) != VbUCase(m_sDefaultExt)) m_sFileName += "." + m_sDefaultExt;
    }
}

void cCommonDialog::ShowColor() {
    m_bFileDialog = false;
    ChooseColorArgs args;
    args.AnyColor = FlagSet(m_lFlags, CC_ANYCOLOR);
    args.FullOpen = FlagSet(m_lFlags, CC_FULLOPEN);
    args.DisableFullOpen = FlagSet(m_lFlags, CC_PREVENTFULLOPEN);
    args.Color = TranslateColor(m_lColor);
    args.Owner = m_lHwnd;
    args.Flags = m_lFlags;
    args.Hook = m_bHookDialog;
    args.DialogObject = this;
    if (Dialog().VBChooseColor(args)) {
        m_lColor = args.Color;
    } else {
        RaiseDialogError();
    }
}

void cCommonDialog::ShowFont() {
    m_bFileDialog = false;
    ChooseFontArgs args;
    args.Font = Font();
    args.Owner = m_lHwnd;
    args.Color = m_lFontColor;
    args.MinSize = m_lMin;
    args.MaxSize = m_lMax;
    args.Flags = m_lFlags;
    args.Hook = m_bHookDialog;
    args.DialogObject = this;
    args.Printer = m_oObject;
    const bool chosen = Dialog().VBChooseFont(args);
    m_lFontColor = args.Color;
    m_lFlags = args.Flags;
    if (!chosen) RaiseDialogError();
}

void cCommonDialog::ShowPrinter() {
    m_bFileDialog = false;
    PrintDlgArgs args;
    args.PrintRange = FlagSet(m_lFlags, PD_PAGENUMS) ? eprPageNumbers : eprAll;
    args.DisableSelection = FlagSet(m_lFlags, PD_NOSELECTION);
    args.ShowPrintToFile = !FlagSet(m_lFlags, PD_HIDEPRINTTOFILE);
    args.DisablePrintToFile = FlagSet(m_lFlags, PD_DISABLEPRINTTOFILE);
    args.PrintToFile = FlagSet(m_lFlags, PD_PRINTTOFILE);
    args.Collate = FlagSet(m_lFlags, PD_COLLATE);
    args.PreventWarning = FlagSet(m_lFlags, PD_NOWARNING);
    args.FromPage = m_lFromPage;
    args.ToPage = m_lToPage;
    args.MinPage = m_lMin;
    args.MaxPage = m_lMax;
    args.Copies = m_lCopies;
    args.Owner = m_lHwnd;
    args.Printer = m_oObject;
    args.Flags = m_lFlags;
    args.Hook = m_bHookDialog;
    args.DialogObject = this;
    // What the user chose comes back; a cancel leaves everything as it was.
    if (Dialog().VBPrintDlg(args)) {
        m_lFromPage = args.FromPage;
        m_lToPage = args.ToPage;
        m_lFlags = args.Flags;
        m_lCopies = args.Copies;
    }
}

void cCommonDialog::ShowHelp() {
    m_bFileDialog = false;
    const auto command = static_cast<uint32_t>(m_lHelpCommand);
    if (command == HELP_MULTIKEY || command == HELP_SETWINPOS) {
        RaiseError(kDlgErrHelpCommand, ErrorSource(), "Invalid WinHelp Command Passed to ShowHelp function.");
    }
    if (WinHelpA(m_lHwnd, m_sHelpFile, command, 0) == 0) {
        RaiseError(static_cast<int32_t>(GetLastError()), ErrorSource(), LastApiErrorText());
    }
}

void cCommonDialog::DialogClose() { Events.DialogClose.Raise(); }

int32_t cCommonDialog::TypeChange(int32_t hDlg) {
    Events.TypeChange.Raise(hDlg);
    return 0;
}

int32_t cCommonDialog::InitDialog(int32_t hDlg) {
    Events.InitDialog.Raise(hDlg);
    return 0;
}

int32_t cCommonDialog::FileChange(int32_t hDlg) {
    Events.FileChange.Raise(hDlg);
    return 0;
}

int32_t cCommonDialog::FolderChange(int32_t hDlg) {
    Events.FolderChange.Raise(hDlg);
    return 0;
}

bool cCommonDialog::ConfirmOK() {
    bool bRefuse = false;
    Events.ConfirmOK.Raise(bRefuse);
    return !bRefuse;
}

int32_t cCommonDialog::DialogWindow(int32_t hDlg) const { return m_bFileDialog ? GetParent(hDlg) : hDlg; }

void cCommonDialog::CentreDialog(int32_t hDlg, const ILateBound* oCentreTo) {
    const int32_t hWnd = DialogWindow(hDlg);
    RECT dialog;
    GetWindowRect(hWnd, &dialog);
    RECT reference;
    int32_t hWndCentreTo = 0;
    if (TryGetLong(oCentreTo, "hWnd", hWndCentreTo)) {
        GetWindowRect(hWndCentreTo, &reference);
    } else if (SystemParametersInfoA(SPI_GETWORKAREA, 0, &reference, 0) == 0) {
        reference = RECT{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    }
    if (reference.right < 1 || reference.bottom < 1) return;
    const int32_t width = dialog.right - dialog.left;
    const int32_t height = dialog.bottom - dialog.top;
    const int32_t left = reference.left + (reference.right - reference.left - width) / 2;
    const int32_t top = reference.top + (reference.bottom - reference.top - height) / 2;
    MoveWindow(hWnd, left, top, width, height, 1);
}

void cCommonDialog::GetDialogSize(int32_t hDlg, int32_t& lL, int32_t& lT, int32_t& lW, int32_t& lH) {
    RECT rect;
    GetWindowRect(DialogWindow(hDlg), &rect);
    lL = rect.left;
    lT = rect.top;
    lW = rect.right - rect.left;
    lH = rect.bottom - rect.top;
}

std::string cCommonDialog::ApiErrorText(int32_t lErr) {
    std::string text(1024, '\0');
    const uint32_t length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, static_cast<uint32_t>(lErr), 0,
                                           text.data(), static_cast<uint32_t>(text.size()), nullptr);
    text.resize(length);
    return text;
}

std::string cCommonDialog::LastApiErrorText() { return ApiErrorText(static_cast<int32_t>(GetLastError())); }

int32_t cCommonDialog::TranslateColor(int32_t lColor) {
    uint32_t translated = 0;
    if (OleTranslateColor(static_cast<uint32_t>(lColor), 0, &translated) != S_OK) return -1;
    return static_cast<int32_t>(translated);
}

std::string cCommonDialog::ErrorSource() const { return App::EXEName() + ".cCommonDialog"; }

void cCommonDialog::RaiseDialogError() {
    const std::string source = ErrorSource();
    if (Dialog().APIReturn() != 0) RaiseError(Dialog().ExtendedError() | kDlgErrBase, source);
    if (!m_bCancelError) return;
    RaiseError(kDlgErrCancel, source, "User selected cancel.");
}

void cCommonDialog::ParseMultiFileName(std::string& sFolder, std::vector<std::string>& asFiles,
                                       int32_t& lFileCount) const {
    auto add = [&](const std::string& name) {
        lFileCount = VbAdd32(lFileCount, 1);
        asFiles.resize(static_cast<size_t>(lFileCount));
        asFiles[static_cast<size_t>(lFileCount) - 1] = name;
    };
    const size_t end = m_sFileName.find(std::string(2, '\0'));
    if (end != std::string::npos) {
        const std::string list = m_sFileName.substr(0, end);
        size_t start = 0;
        for (;;) {
            const size_t zero = list.find('\0', start);
            if (zero == std::string::npos) {
                add(list.substr(start));
                return;
            }
            const std::string piece = list.substr(start, zero - start);
            if (sFolder.empty()) {
                sFolder = piece;
            } else {
                add(piece);
            }
            start = zero + 1;
        }
    }
    lFileCount = 1;
    const size_t sep = m_sFileName.rfind(g_cPathSep);
    if (sep != std::string::npos && sep >= 1) {
        sFolder = m_sFileName.substr(0, sep);
        asFiles.assign(1, m_sFileName.substr(sep + 1));
    } else {
        sFolder.clear();
        asFiles.assign(1, m_sFileName);
    }
}
