#pragma once
// The common dialogs behind one property-style object. A caller sets the
// properties a dialog needs, calls its Show operation and reads the results
// back from the same properties. Nothing resets a property between dialogs:
// on the shared instance a setting stays until it is set again or a dialog
// changes it. A cancelled dialog raises failure 20001 when CancelError is
// set; failures carry the source App::EXEName() + ".cCommonDialog".
//
// With HookDialog set, a running dialog reports to the object's events: its
// start, the user's changes of filter, folder and file, the user's OK, which
// a handler may refuse, and its end.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "controls/Event.h"
#include "platform/FileDialogs.h"
#include "platform/LateBound.h"
#include "winsupport/GCommonDialog.h"

inline constexpr int32_t kDlgErrCancel = 20001;
// Added to the platform's extended error of a dialog that failed.
inline constexpr int32_t kDlgErrBase = 0x348A;
// ShowHelp with a command that needs a structure as its data.
inline constexpr int32_t kDlgErrHelpCommand = 13705;

class cCommonDialog {
public:
    cCommonDialog() = default;
    cCommonDialog(const cCommonDialog&) = delete;
    cCommonDialog& operator=(const cCommonDialog&) = delete;

    // Splits the Filename that a multi-select dialog left into its folder and
    // its names. asFiles[k] is the name numbered k + 1; lFileCount counts on
    // from the value it holds.
    void ParseMultiFileName(std::string& sFolder, std::vector<std::string>& asFiles, int32_t& lFileCount) const;

    // What the hook sees, each raising the event of its name; those with a
    // window give 0.
    void DialogClose();
    int32_t TypeChange(int32_t hDlg);
    int32_t InitDialog(int32_t hDlg);
    int32_t FileChange(int32_t hDlg);
    int32_t FolderChange(int32_t hDlg);
    // Raises ConfirmOK with bRefuse false at first; true unless a handler
    // refused.
    bool ConfirmOK();
    // Centres the dialog on the window that oCentreTo names by its "hWnd"
    // property; without one, on the work area, or else on the screen. While
    // m_bFileDialog is set the dialog is the parent of hDlg, the hook's child
    // window of an Explorer-style file dialog.
    void CentreDialog(int32_t hDlg, const ILateBound* oCentreTo);
    // The dialog's left, top, width and height (the parent of hDlg while
    // m_bFileDialog is set); all 0 when its rectangle can't be read.
    void GetDialogSize(int32_t hDlg, int32_t& lL, int32_t& lT, int32_t& lW, int32_t& lH);
    // Does nothing.
    void SetHelpPosition(int32_t& X, int32_t& Y, int32_t& dx, int32_t& dy, int32_t& eWindowType) {}

    // The events, numbered 1 to 6 in this order.
    struct EventSet {
        Event<int32_t> InitDialog;    // hDlg
        Event<int32_t> FileChange;    // hDlg
        Event<int32_t> FolderChange;  // hDlg
        Event<bool&> ConfirmOK;       // bRefuse: set it to keep the dialog open
        Event<int32_t> TypeChange;    // hDlg
        Event<> DialogClose;
    };
    EventSet Events;

    bool CancelError() const { return m_bCancelError; }
    void SetCancelError(bool b) { m_bCancelError = b; }
    const std::string& Filename() const { return m_sFileName; }
    void SetFilename(const std::string& s) { m_sFileName = s; }
    const std::string& Filter() const { return m_sFilter; }
    void SetFilter(const std::string& s) { m_sFilter = s; }
    int32_t FilterIndex() const { return m_lFilterIndex; }
    void SetFilterIndex(int32_t l) { m_lFilterIndex = l; }
    int32_t Color() const { return m_lColor; }
    void SetColor(int32_t l) { m_lColor = l; }
    int32_t Copies() const { return m_lCopies; }
    void SetCopies(int32_t l) { m_lCopies = l; }
    const std::string& DefaultExt() const { return m_sDefaultExt; }
    void SetDefaultExt(const std::string& s) { m_sDefaultExt = s; }
    const std::string& DialogTitle() const { return m_sDialogTitle; }
    void SetDialogTitle(const std::string& s) { m_sDialogTitle = s; }
    int32_t flags() const { return m_lFlags; }
    void Setflags(int32_t l) { m_lFlags = l; }
    bool FontBold() { return Font()->Bold; }
    void SetFontBold(bool b) { Font()->Bold = b; }
    bool FontItalic() { return Font()->Italic; }
    void SetFontItalic(bool b) { Font()->Italic = b; }
    const std::string& FontName() { return Font()->Name; }
    void SetFontName(const std::string& s) { Font()->Name = s; }
    int32_t FontSize() { return Font()->Size; }
    void SetFontSize(int32_t l) { Font()->Size = l; }
    bool FontStrikethru() { return Font()->Strikethru; }
    void SetFontStrikethru(bool b) { Font()->Strikethru = b; }
    bool FontUnderline() { return Font()->Underline; }
    void SetFontUnderline(bool b) { Font()->Underline = b; }
    // The font object, created at first use.
    const std::shared_ptr<StdFont>& Font();
    void SetFont(std::shared_ptr<StdFont> f) { m_oFont = std::move(f); }
    int32_t FontColor() const { return m_lFontColor; }
    void SetFontColor(int32_t l) { m_lFontColor = l; }
    int32_t FromPage() const { return m_lFromPage; }
    void SetFromPage(int32_t l) { m_lFromPage = l; }
    int32_t hwnd() const { return m_lHwnd; }
    void Sethwnd(int32_t l) { m_lHwnd = l; }
    int32_t HelpCommand() const { return m_lHelpCommand; }
    void SetHelpCommand(int32_t l) { m_lHelpCommand = l; }
    const std::string& HelpContext() const { return m_sHelpContext; }
    void SetHelpContext(const std::string& s) { m_sHelpContext = s; }
    const std::string& HelpFile() const { return m_sHelpFile; }
    void SetHelpFile(const std::string& s) { m_sHelpFile = s; }
    const std::string& HelpKey() const { return m_sHelpKey; }
    void SetHelpKey(const std::string& s) { m_sHelpKey = s; }
    const std::string& InitDir() const { return m_sInitDir; }
    void SetInitDir(const std::string& s) { m_sInitDir = s; }
    int32_t Max() const { return m_lMax; }
    void SetMax(int32_t l) { m_lMax = l; }
    int32_t MaxFileSize() const { return m_lMaxFileSize; }
    void SetMaxFileSize(int32_t l) { m_lMaxFileSize = l; }
    int32_t Min() const { return m_lMin; }
    void SetMin(int32_t l) { m_lMin = l; }
    // The printer that the print dialog works on, reached by the names of its
    // properties; the other dialogs keep it only.
    const std::shared_ptr<ILateBound>& Object() const { return m_oObject; }
    void SetObject(std::shared_ptr<ILateBound> o) { m_oObject = std::move(o); }
    int16_t PrinterDefault() const { return m_iPrinterDefault; }
    void SetPrinterDefault(int16_t i) { m_iPrinterDefault = i; }
    int32_t ToPage() const { return m_lToPage; }
    void SetToPage(int32_t l) { m_lToPage = l; }
    const std::string& FileTitle() const { return m_sFileTitle; }
    void SetFileTitle(const std::string& s) { m_sFileTitle = s; }
    int32_t CustomColor(int16_t i) { return Dialog().CustomColor(i); }
    void SetCustomColor(int16_t i, int32_t l) { Dialog().SetCustomColor(i, l); }

    // The open and save dialogs.
    void ShowOpen();
    void ShowSave();
    // The colour dialog: Color in and out. A cancel raises 20001 with
    // CancelError set.
    void ShowColor();
    // The font dialog: the Font properties, FontColor, flags, and Min and Max
    // as size limits. A cancel raises 20001 with CancelError set.
    void ShowFont();
    // The print dialog: Copies, FromPage, ToPage, flags and the printer in
    // Object. A cancel raises nothing.
    void ShowPrinter();
    // Opens HelpFile for HelpCommand. HELP_MULTIKEY and HELP_SETWINPOS raise
    // 13705; a help file that does not open raises the platform's last error
    // with its text.
    void ShowHelp();

    bool HookDialog() const { return m_bHookDialog; }
    void SetHookDialog(bool b) { m_bHookDialog = b; }

    // Whether the last Show operation was one of the file dialogs.
    bool IsFileDialog() const { return m_bFileDialog; }
    // The working object, created at first need.
    GCommonDialog& Dialog();

private:
    void PutArgs(FileNameArgs& args);
    void TakeArgs(const FileNameArgs& args);
    // The platform's text of an error number, and of its last error.
    static std::string ApiErrorText(int32_t lErr);
    static std::string LastApiErrorText();
    // All the bits of the mask are set in the flags.
    static bool FlagSet(int32_t lFlags, int32_t lMask) { return (lFlags & lMask) == lMask; }
    // The runtime's colour value as a colour word; -1 when it is none.
    static int32_t TranslateColor(int32_t lColor);
    std::string ErrorSource() const;
    void RaiseDialogError();
    // The window that CentreDialog and GetDialogSize work on.
    int32_t DialogWindow(int32_t hDlg) const;

    bool m_bCancelError = false;
    std::string m_sFileName;
    std::string m_sFilter;
    int32_t m_lFilterIndex = 1;
    int32_t m_lColor = 0;
    int32_t m_lCopies = 0;
    std::string m_sDefaultExt;
    std::string m_sDialogTitle;
    int32_t m_lFlags = 0;
    std::shared_ptr<StdFont> m_oFont;
    int32_t m_lFontColor = 0;
    int32_t m_lFromPage = 0;
    int32_t m_lHwnd = 0;
    int32_t m_lHelpCommand = 0;
    std::string m_sHelpContext;
    std::string m_sHelpFile;
    std::string m_sHelpKey;
    std::string m_sInitDir;
    int32_t m_lMax = 0;
    int32_t m_lMaxFileSize = 0;
    int32_t m_lMin = 0;
    std::shared_ptr<ILateBound> m_oObject;
    int16_t m_iPrinterDefault = 0;
    int32_t m_lToPage = 0;
    std::string m_sFileTitle;
    bool m_bHookDialog = false;
    bool m_bFileDialog = false;
    std::shared_ptr<GCommonDialog> m_oDialog;
};
