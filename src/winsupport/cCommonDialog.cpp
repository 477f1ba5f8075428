#include "winsupport/cCommonDialog.h"

#include "identify/modGlobal.h"
#include "platform/Runtime.h"

std::unique_ptr<cCommonDialog> g_oCommonDialog;

cCommonDialog& CommonDialog() {
    if (!g_oCommonDialog) g_oCommonDialog = std::make_unique<cCommonDialog>();
    return *g_oCommonDialog;
}

GCommonDialog& cCommonDialog::Dialog() {
    if (!m_oDialog) m_oDialog = std::make_unique<GCommonDialog>();
    return *m_oDialog;
}

const std::shared_ptr<StdFont>& cCommonDialog::Font() {
    if (!m_oFont) m_oFont = std::make_shared<StdFont>();
    return m_oFont;
}

// The open and save dialogs take the same properties in and give them back.
template <typename Args>
void cCommonDialog::PutArgs(Args& args) {
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

template <typename Args>
void cCommonDialog::TakeArgs(const Args& args) {
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

void cCommonDialog::RaiseDialogError() {
    const std::string source = App::EXEName() + ".cCommonDialog";
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
