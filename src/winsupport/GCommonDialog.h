#pragma once
// The working half of the common dialog object: it builds the platform's
// dialog record, calls the platform and copies the results back into the
// arguments, which is how its caller receives them. While a hooked dialog
// runs, it holds the dialog object whose events the hook raises.
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/LateBound.h"
#include "platform/Variant.h"

class cCommonDialog;

// The font object of the font dialog.
struct StdFont {
    std::string Name = "MS Sans Serif";
    int32_t Size = 8;
    bool Bold = false;
    bool Italic = false;
    bool Strikethru = false;
    bool Underline = false;
};

// The arguments that VBGetOpenFileName and VBGetSaveFileName share, with the
// defaults a direct caller gets. Results come back in the same fields.
struct FileNameArgs {
    std::string Filename;
    std::string FileTitle;
    std::string Filter = "All (*.*)| *.*";
    int32_t FilterIndex = 1;
    std::string InitDir;
    std::string DlgTitle;
    std::string DefaultExt;
    int32_t Owner = -1;
    int32_t Flags = 0;
    bool Hook = false;
    cCommonDialog* DialogObject = nullptr;
};

struct OpenFileNameArgs : FileNameArgs {
    bool FileMustExist = true;
    bool MultiSelect = false;
    bool ReadOnly = false;
    bool HideReadOnly = false;
};

struct SaveFileNameArgs : FileNameArgs {
    bool OverWritePrompt = true;
};

struct ChooseColorArgs {
    int32_t Color = 0;  // in: the colour first selected; out: the choice, or -1
    bool AnyColor = true;
    bool FullOpen = false;
    bool DisableFullOpen = false;
    int32_t Owner = -1;
    int32_t Flags = 0;
    bool Hook = false;
    cCommonDialog* DialogObject = nullptr;
};

struct ChooseFontArgs {
    std::shared_ptr<StdFont> Font;  // in and out; must be set
    // The printer's device context; -1 takes it from Printer ("hDC") when the
    // flags ask for printer fonts.
    int32_t PrinterDC = -1;
    int32_t Owner = -1;
    int32_t Color = 0;    // black; another colour asks for the effects
    int32_t MinSize = 0;  // points; 0 for no limit
    int32_t MaxSize = 0;
    int32_t Flags = 0;
    bool Hook = false;
    cCommonDialog* DialogObject = nullptr;
    std::shared_ptr<ILateBound> Printer;
};

enum EPrintRange : int32_t { eprAll = 0, eprSelection = 1, eprPageNumbers = 2 };

struct PrintDlgArgs {
    int32_t hDC = 0;  // out
    EPrintRange PrintRange = eprAll;
    bool DisablePageNumbers = false;
    int32_t FromPage = 1;
    int32_t ToPage = 0xFFFF;
    // The page range allowed; equal values disable the page range.
    int32_t MinPage = 1;
    int32_t MaxPage = 0xFFFF;
    bool DisableSelection = false;
    int32_t Copies = 1;
    bool ShowPrintToFile = false;
    bool DisablePrintToFile = true;
    bool PrintToFile = false;
    bool Collate = false;
    bool PreventWarning = false;
    int32_t Owner = -1;
    // Read for the dialog's first settings and written with its choice, by the
    // names DeviceName, Copies, Orientation, PaperSize and PrintQuality; a
    // name the object lacks is passed over.
    std::shared_ptr<ILateBound> Printer;
    int32_t Flags = 0;
    bool Hook = false;
    cCommonDialog* DialogObject = nullptr;
};

// The caller's unit of the page setup's sizes, as the runtime's scale modes.
enum EPageSetupUnits : int32_t { epsuTwips = 1, epsuPoints = 2, epsuInches = 5, epsuMillimeters = 6, epsuCentimeters = 7 };

struct PageSetupArgs {
    int32_t Owner = -1;
    bool DisableMargins = false;
    bool DisableOrientation = false;
    bool DisablePaper = false;
    bool DisablePrinter = false;
    // Margins in the caller's unit; all 0 leaves the platform's own. The
    // minimum margins likewise: all 0 sets none.
    double LeftMargin = 0;
    double MinLeftMargin = 0;
    double RightMargin = 0;
    double MinRightMargin = 0;
    double TopMargin = 0;
    double MinTopMargin = 0;
    double BottomMargin = 0;
    double MinBottomMargin = 0;
    int16_t PaperSize = 1;    // the platform's paper code; 1 is Letter
    int16_t Orientation = 1;  // 1 portrait, 2 landscape
    EPageSetupUnits Units = epsuInches;
    double PaperWidth = 0;  // out, as the paper is turned
    double PaperHeight = 0;
    // VBPageSetupDlg2 only: read and written as VBPrintDlg's printer is.
    std::shared_ptr<ILateBound> Printer;
    int32_t Flags = 0;
    bool Hook = false;
    cCommonDialog* DialogObject = nullptr;
};

class GCommonDialog : public std::enable_shared_from_this<GCommonDialog> {
    struct Key {
        explicit Key() = default;
    };

public:
    // Always owned by a shared pointer, so that the hook can hold it while a
    // dialog's event runs.
    static std::shared_ptr<GCommonDialog> Create() { return std::make_shared<GCommonDialog>(Key()); }
    explicit GCommonDialog(Key) {}
    GCommonDialog(const GCommonDialog&) = delete;
    GCommonDialog& operator=(const GCommonDialog&) = delete;

    // A message of the running dialog, turned into an event of the dialog
    // object: WM_INITDIALOG, WM_NCDESTROY, and WM_NOTIFY with CDN_TYPECHANGE,
    // CDN_FILEOK, CDN_FOLDERCHANGE or CDN_SELCHANGE. The result is that of the
    // event's operation, 1 for a refused CDN_FILEOK, and Empty for any other
    // message and while no dialog object is held.
    Variant DialogHook(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam);

    // The result of the last dialog call, and the platform's extended error
    // when that result was neither 0 nor 1.
    int32_t APIReturn() const { return m_lApiReturn; }
    int32_t ExtendedError() const { return m_lExtendedError; }

    // Show the open or the save dialog. True when the user chose a file.
    // A Filename longer than the dialog's buffer raises error 5 before the
    // dialog opens, and a Filter of more than 32767 characters error 6.
    bool VBGetOpenFileName(OpenFileNameArgs& args);
    bool VBGetSaveFileName(SaveFileNameArgs& args);
    // The colour, font, print and page setup dialogs. True when the user chose.
    bool VBChooseColor(ChooseColorArgs& args);
    bool VBChooseFont(ChooseFontArgs& args);
    bool VBPrintDlg(PrintDlgArgs& args);
    bool VBPageSetupDlg(PageSetupArgs& args);
    bool VBPageSetupDlg2(PageSetupArgs& args);
    // The name of a file without its folder; empty when the path names none.
    std::string VBGetFileTitle(const std::string& sFile) const;

    // The 16 custom colours of the colour dialog, filled with the first 16
    // system colours at their first use; an index outside 0 to 15 raises
    // error 9.
    int32_t CustomColor(int16_t i);
    void SetCustomColor(int16_t i, int32_t color);

    // The dialog object whose hook runs while a hooked dialog is up.
    cCommonDialog* DialogObject() const { return m_oDialogObject; }

    // The filter pair numbered `lIndex` (from 1) of a zero-separated filter
    // text: its name, a zero character and its pattern. Empty when there is
    // no such pair.
    static std::string FilterEntry(const std::string& sFilter, int32_t lIndex);
    // A text up to its first zero character.
    static std::string CutAtZero(const std::string& s);
    // The platform's filter text: each ":" and "|" becomes a zero character,
    // and two zero characters end it.
    static std::string PlatformFilter(const std::string& sFilter);

private:
    class HookScope;

    // The open and the save dialog, from the record's flags on.
    bool ShowFileDialog(FileNameArgs& args, uint32_t flags, bool save);
    bool PageSetup(PageSetupArgs& args, bool withPrinter);
    // Clears the results of the last call.
    void StartCall();
    // Takes the platform's result, and its extended error on a failure.
    bool EndCall(int32_t result);
    void FillCustomColors();

    int32_t m_lApiReturn = 0;
    int32_t m_lExtendedError = 0;
    std::array<int32_t, 16> m_alCustomColors{};
    bool m_bCustomColorsFilled = false;
    cCommonDialog* m_oDialogObject = nullptr;
};
