#include "winsupport/GCommonDialog.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "platform/CommonDialogs.h"
#include "platform/FileDialogs.h"
#include "platform/Runtime.h"
#include "platform/SystemColors.h"
#include "platform/Windows.h"
#include "winsupport/cCommonDialog.h"
#include "winsupport/mDialogHook.h"

namespace {

constexpr uint32_t kHookFlags = OFN_ENABLEHOOK | OFN_EXPLORER;
// A caller's own hook or template never reaches the platform.
constexpr uint32_t kCallerHookFlags = OFN_ENABLEHOOK | OFN_ENABLETEMPLATE;
constexpr uint32_t kCallerColorHookFlags = CC_ENABLEHOOK | CC_ENABLETEMPLATE | CC_ENABLETEMPLATEHANDLE;
constexpr uint32_t kCallerFontHookFlags = CF_APPLY | CF_ENABLEHOOK | CF_ENABLETEMPLATE;
constexpr uint32_t kCallerPrintHookFlags =
    PD_ENABLEPRINTHOOK | PD_ENABLEPRINTTEMPLATE | PD_ENABLESETUPHOOK | PD_ENABLESETUPTEMPLATE;
constexpr uint32_t kCallerPageSetupHookFlags =
    PSD_ENABLEPAGESETUPHOOK | PSD_ENABLEPAGESETUPTEMPLATE | PSD_ENABLEPAGEPAINTHOOK;

constexpr size_t kFileBuffer = 260;
constexpr size_t kMultiFileBuffer = 8192;
// A point is 20 twips, and the screen has 15 twips to the pixel.
constexpr int32_t kTwipsPerPoint = 20;
constexpr int32_t kTwipsPerPixel = 15;

// A buffer of `size` characters holding `text`; a text longer than the buffer
// leaves no room to pad, which the runtime refuses as an invalid argument.
std::string Padded(const std::string& text, size_t size) {
    if (text.size() > size) RaiseError(vbErrInvalidCall);
    return text + std::string(size - text.size(), '\0');
}

// The runtime's conversion to a whole number: halves go to the even neighbour.
int32_t RoundToLong(double value) { return VbToLong(static_cast<int64_t>(std::nearbyint(value))); }

// The caller's unit in thousandths of an inch.
double ThousandthsOfInchPer(EPageSetupUnits units) {
    switch (units) {
        case epsuTwips: return 1000.0 / 1440.0;
        case epsuPoints: return 1000.0 / 72.0;
        case epsuInches: return 1000.0;
        case epsuMillimeters: return 1000.0 / 25.4;
        case epsuCentimeters: return 1000.0 / 2.54;
    }
    RaiseError(vbErrInvalidCall);
}

// The printer's settings from the printer object, by name; a name the object
// lacks, a value that does not fit, or a null object leaves the setting as it
// was.
void ReadPrinter(const ILateBound* printer, DEVMODE& mode) {
    const auto read = [printer](const char* name, int16_t& setting) {
        int32_t value = 0;
        if (TryGetLong(printer, name, value)) PassOver([&] { setting = VbToInteger(value); });
    };
    TryGetText(printer, "DeviceName", mode.dmDeviceName);
    read("Copies", mode.dmCopies);
    read("Orientation", mode.dmOrientation);
    read("PaperSize", mode.dmPaperSize);
    read("PrintQuality", mode.dmPrintQuality);
}

// The dialog's choice back into the printer object, likewise.
void WritePrinter(ILateBound* printer, const DEVMODE& mode) {
    TryLetProperty(printer, "DeviceName", Variant(mode.dmDeviceName));
    TryLetProperty(printer, "Copies", Variant(mode.dmCopies));
    TryLetProperty(printer, "Orientation", Variant(mode.dmOrientation));
    TryLetProperty(printer, "PaperSize", Variant(mode.dmPaperSize));
    TryLetProperty(printer, "PrintQuality", Variant(mode.dmPrintQuality));
}

}  // namespace

// Holds the dialog object for the hook while one platform call runs, and drops
// it and clears the module's address when the call has returned, on every path.
class GCommonDialog::HookScope {
public:
    HookScope(GCommonDialog& owner, bool hook, cCommonDialog* dialogObject) : owner_(owner) {
        if (!hook) return;
        mDialogHook::SetDialogObject(&owner_);
        owner_.m_oDialogObject = dialogObject;
    }
    ~HookScope() { End(); }
    HookScope(const HookScope&) = delete;
    HookScope& operator=(const HookScope&) = delete;
    void End() {
        owner_.m_oDialogObject = nullptr;
        mDialogHook::ClearDialogObject();
    }

private:
    GCommonDialog& owner_;
};

Variant GCommonDialog::DialogHook(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    cCommonDialog* dialog = m_oDialogObject;
    if (dialog == nullptr) return {};
    switch (msg) {
        case WM_INITDIALOG: return dialog->InitDialog(hDlg);
        case WM_NCDESTROY: dialog->DialogClose(); return {};
        case WM_NOTIFY: break;
        default: return {};
    }
    if (lParam == 0) return {};
    switch (reinterpret_cast<const NMHDR*>(lParam)->code) {
        case CDN_TYPECHANGE: return dialog->TypeChange(hDlg);
        case CDN_FILEOK:
            if (!dialog->ConfirmOK()) {
                // Refuses the user's OK: the dialog stays open.
                SetWindowLongA(hDlg, DWL_MSGRESULT, 1);
                return int32_t{1};
            }
            SetWindowLongA(hDlg, DWL_MSGRESULT, 0);
            return {};
        case CDN_FOLDERCHANGE: return dialog->FolderChange(hDlg);
        case CDN_SELCHANGE: return dialog->FileChange(hDlg);
        default: return {};
    }
}

void GCommonDialog::StartCall() {
    m_lApiReturn = 0;
    m_lExtendedError = 0;
}

bool GCommonDialog::EndCall(int32_t result) {
    m_lApiReturn = result;
    if (result != 0 && result != 1) m_lExtendedError = static_cast<int32_t>(CommDlgExtendedError());
    return result == 1;
}

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

bool GCommonDialog::ShowFileDialog(FileNameArgs& args, uint32_t flags, bool save) {
    StartCall();
    OPENFILENAME record;
    record.lStructSize = kOpenFileNameSize;
    if (args.Owner != -1) record.hwndOwner = args.Owner;
    record.lpstrInitialDir = args.InitDir;
    record.lpstrDefExt = args.DefaultExt;
    record.lpstrTitle = args.DlgTitle;
    HookScope hook(*this, args.Hook, args.DialogObject);
    if (args.Hook) {
        flags |= kHookFlags;
        record.lpfnHook = mDialogHook::FileDialogHookProc;
    }
    record.Flags = flags;
    const std::string platformFilter = PlatformFilter(args.Filter);
    record.lpstrFilter = platformFilter;
    record.nFilterIndex = static_cast<uint32_t>(args.FilterIndex);
    // Only the open dialog selects several files, into the larger buffer.
    const bool multi = !save && (flags & OFN_ALLOWMULTISELECT) != 0;
    const size_t size = multi ? kMultiFileBuffer : kFileBuffer;
    record.lpstrFile = Padded(args.Filename, size);
    record.nMaxFile = static_cast<uint32_t>(size);
    record.lpstrFileTitle = Padded(args.FileTitle, size);
    record.nMaxFileTitle = static_cast<uint32_t>(size);

    const int32_t result = save ? GetSaveFileNameA(&record) : GetOpenFileNameA(&record);
    hook.End();
    if (EndCall(result)) {
        if (multi) {
            args.Filename = record.lpstrFile;
        } else {
            args.Filename = CutAtZero(record.lpstrFile);
            args.FileTitle = CutAtZero(record.lpstrFileTitle);
        }
        args.Flags = static_cast<int32_t>(record.Flags);
        args.FilterIndex = static_cast<int32_t>(record.nFilterIndex);
        args.Filter = FilterEntry(platformFilter, args.FilterIndex);
        return true;
    }
    args.Filename.clear();
    args.FileTitle.clear();
    args.Filter.clear();
    args.Flags = 0;
    args.FilterIndex = save ? 0 : -1;
    return false;
}

bool GCommonDialog::VBGetOpenFileName(OpenFileNameArgs& args) {
    uint32_t flags = static_cast<uint32_t>(args.Flags) & ~kCallerHookFlags;
    if (args.MultiSelect) flags |= OFN_ALLOWMULTISELECT;
    if (args.ReadOnly) flags |= OFN_READONLY;
    if (args.HideReadOnly) flags |= OFN_HIDEREADONLY;
    if (args.FileMustExist) flags |= OFN_FILEMUSTEXIST;
    const bool chosen = ShowFileDialog(args, flags, false);
    if (chosen && (args.Flags & OFN_READONLY) != 0) args.ReadOnly = true;
    return chosen;
}

bool GCommonDialog::VBGetSaveFileName(SaveFileNameArgs& args) {
    uint32_t flags = static_cast<uint32_t>(args.Flags) & ~kCallerHookFlags;
    if (args.OverWritePrompt) flags |= OFN_OVERWRITEPROMPT;
    flags |= OFN_HIDEREADONLY;
    const bool chosen = ShowFileDialog(args, flags, true);
    // The chosen pair's pattern gives the extension: what follows its first
    // point, without wildcards.
    const size_t zero = args.Filter.find('\0');
    if (zero != std::string::npos) {
        std::string ext = args.Filter.substr(zero + 1);
        const size_t dot = ext.find('.');
        if (dot != std::string::npos) ext = ext.substr(dot + 1);
        args.DefaultExt = VbReplace(ext, "*", "");
    }
    return chosen;
}

void GCommonDialog::FillCustomColors() {
    if (m_bCustomColorsFilled) return;
    for (int32_t i = 0; i < 16; ++i) m_alCustomColors[static_cast<size_t>(i)] = static_cast<int32_t>(GetSysColor(i));
    m_bCustomColorsFilled = true;
}

int32_t GCommonDialog::CustomColor(int16_t i) {
    if (i < 0 || i > 15) RaiseError(vbErrSubscript);
    FillCustomColors();
    return m_alCustomColors[static_cast<size_t>(i)];
}

void GCommonDialog::SetCustomColor(int16_t i, int32_t color) {
    if (i < 0 || i > 15) RaiseError(vbErrSubscript);
    FillCustomColors();
    m_alCustomColors[static_cast<size_t>(i)] = color;
}

bool GCommonDialog::VBChooseColor(ChooseColorArgs& args) {
    StartCall();
    CHOOSECOLOR record;
    record.lStructSize = kChooseColorSize;
    if (args.Owner != -1) record.hwndOwner = args.Owner;
    record.rgbResult = static_cast<uint32_t>(args.Color);
    uint32_t flags = (static_cast<uint32_t>(args.Flags) & ~kCallerColorHookFlags) | CC_RGBINIT;
    flags |= args.AnyColor ? CC_ANYCOLOR : CC_SOLIDCOLOR;
    if (args.FullOpen) flags |= CC_FULLOPEN;
    if (args.DisableFullOpen) flags |= CC_PREVENTFULLOPEN;
    FillCustomColors();
    std::array<uint32_t, 16> custom{};
    for (size_t i = 0; i < custom.size(); ++i) custom[i] = static_cast<uint32_t>(m_alCustomColors[i]);
    record.lpCustColors = custom.data();
    HookScope hook(*this, args.Hook, args.DialogObject);
    if (args.Hook) {
        flags |= CC_ENABLEHOOK;
        record.lpfnHook = mDialogHook::ColorHookProc;
    }
    record.Flags = flags;

    const int32_t result = ChooseColorA(&record);
    hook.End();
    for (size_t i = 0; i < custom.size(); ++i) m_alCustomColors[i] = static_cast<int32_t>(custom[i]);
    if (!EndCall(result)) {
        args.Color = -1;
        return false;
    }
    args.Color = static_cast<int32_t>(record.rgbResult);
    return true;
}

bool GCommonDialog::VBChooseFont(ChooseFontArgs& args) {
    StartCall();
    if (!args.Font) RaiseError(vbErrObjectNotSet);
    StdFont& font = *args.Font;
    uint32_t flags = static_cast<uint32_t>(args.Flags);
    int32_t printerDC = args.PrinterDC;
    if (printerDC == -1) {
        printerDC = 0;
        if ((flags & CF_PRINTERFONTS) != 0) TryGetLong(args.Printer.get(), "hDC", printerDC);
    } else {
        flags |= CF_PRINTERFONTS;
    }
    // Some fonts must be offered.
    if ((flags & CF_PRINTERFONTS) == 0) flags |= CF_SCREENFONTS;
    // A colour other than black can only be shown with the effects.
    if (args.Color != 0) flags |= CF_EFFECTS;
    if (args.MinSize != 0 || args.MaxSize != 0) flags |= CF_LIMITSIZE;
    flags = (flags | CF_INITTOLOGFONTSTRUCT) & ~kCallerFontHookFlags;

    LOGFONT logFont;
    logFont.lfHeight = -RoundToLong(static_cast<double>(font.Size) * kTwipsPerPoint / kTwipsPerPixel);
    logFont.lfWeight = font.Bold ? FW_BOLD : FW_NORMAL;
    logFont.lfItalic = font.Italic ? 1 : 0;
    logFont.lfUnderline = font.Underline ? 1 : 0;
    logFont.lfStrikeOut = font.Strikethru ? 1 : 0;
    std::memcpy(logFont.lfFaceName, font.Name.data(), std::min(font.Name.size(), LF_FACESIZE - 1));

    CHOOSEFONT record;
    record.lStructSize = kChooseFontSize;
    if (args.Owner != -1) record.hwndOwner = args.Owner;
    record.hDC = printerDC;
    record.lpLogFont = &logFont;
    record.iPointSize = VbToLong(static_cast<int64_t>(font.Size) * 10);
    record.rgbColors = static_cast<uint32_t>(args.Color);
    record.nSizeMin = args.MinSize;
    record.nSizeMax = args.MaxSize;
    HookScope hook(*this, args.Hook, args.DialogObject);
    if (args.Hook) {
        flags |= CF_ENABLEHOOK;
        record.lpfnHook = mDialogHook::FontHookProc;
    }
    record.Flags = flags;

    const int32_t result = ChooseFontA(&record);
    hook.End();
    if (!EndCall(result)) return false;
    args.Flags = static_cast<int32_t>(record.Flags);
    args.Color = static_cast<int32_t>(record.rgbColors);
    font.Bold = (record.nFontType & BOLD_FONTTYPE) != 0;
    font.Italic = logFont.lfItalic != 0;
    font.Strikethru = logFont.lfStrikeOut != 0;
    font.Underline = logFont.lfUnderline != 0;
    font.Size = RoundToLong(record.iPointSize / 10.0);
    font.Name.assign(logFont.lfFaceName, strnlen(logFont.lfFaceName, LF_FACESIZE));
    return true;
}

bool GCommonDialog::VBPrintDlg(PrintDlgArgs& args) {
    StartCall();
    uint32_t flags = (static_cast<uint32_t>(args.Flags) & ~kCallerPrintHookFlags) | PD_USEDEVMODECOPIESANDCOLLATE |
                     PD_RETURNDC;
    if (args.DisablePageNumbers) flags |= PD_NOPAGENUMS;
    if (args.DisablePrintToFile) flags |= PD_DISABLEPRINTTOFILE;
    if (args.DisableSelection) flags |= PD_NOSELECTION;
    if (args.PrintToFile) flags |= PD_PRINTTOFILE;
    if (!args.ShowPrintToFile) flags |= PD_HIDEPRINTTOFILE;
    if (args.PreventWarning) flags |= PD_NOWARNING;
    if (args.Collate) flags |= PD_COLLATE;
    if (args.PrintRange == eprPageNumbers) flags |= PD_PAGENUMS;
    if (args.PrintRange == eprSelection) flags |= PD_SELECTION;

    // The printer's settings start from the printer object's.
    ILateBound* printer = args.Printer.get();
    DEVMODE mode;
    ReadPrinter(printer, mode);
    if (args.Copies > 0) mode.dmCopies = VbToInteger(args.Copies);
    mode.dmCollate = args.Collate ? DMCOLLATE_TRUE : DMCOLLATE_FALSE;

    PRINTDLG record;
    record.lStructSize = kPrintDlgSize;
    if (args.Owner != -1) record.hwndOwner = args.Owner;
    record.hDevMode = &mode;
    const auto page = [](int32_t p) { return static_cast<uint16_t>(p); };
    record.nFromPage = page(args.FromPage);
    record.nToPage = page(args.ToPage);
    record.nMinPage = page(args.MinPage);
    record.nMaxPage = page(args.MaxPage);
    record.nCopies = static_cast<uint16_t>(mode.dmCopies);
    HookScope hook(*this, args.Hook, args.DialogObject);
    if (args.Hook) {
        flags |= PD_ENABLEPRINTHOOK | PD_ENABLESETUPHOOK;
        record.lpfnPrintHook = mDialogHook::PrintHookProc;
        record.lpfnSetupHook = mDialogHook::PrintSetupHookProc;
    }
    record.Flags = flags;

    const int32_t result = PrintDlgA(&record);
    hook.End();
    if (!EndCall(result)) return false;
    args.hDC = record.hDC;
    args.PrintRange = (record.Flags & PD_PAGENUMS) != 0   ? eprPageNumbers
                      : (record.Flags & PD_SELECTION) != 0 ? eprSelection
                                                           : eprAll;
    args.FromPage = record.nFromPage;
    args.ToPage = record.nToPage;
    args.PrintToFile = (record.Flags & PD_PRINTTOFILE) != 0;
    args.Copies = mode.dmCopies;
    args.Collate = mode.dmCollate == DMCOLLATE_TRUE;
    args.Flags = static_cast<int32_t>(record.Flags);
    WritePrinter(printer, mode);
    return true;
}

bool GCommonDialog::VBPageSetupDlg(PageSetupArgs& args) { return PageSetup(args, false); }

bool GCommonDialog::VBPageSetupDlg2(PageSetupArgs& args) { return PageSetup(args, true); }

bool GCommonDialog::PageSetup(PageSetupArgs& args, bool withPrinter) {
    StartCall();
    // The record's sizes are in thousandths of an inch.
    const double perUnit = ThousandthsOfInchPer(args.Units);
    const auto toRecord = [perUnit](double v) { return RoundToLong(v * perUnit); };
    const auto fromRecord = [perUnit](int32_t v) { return v / perUnit; };

    uint32_t flags = (static_cast<uint32_t>(args.Flags) & ~(kCallerPageSetupHookFlags | PSD_INHUNDREDTHSOFMILLIMETERS)) |
                     PSD_INTHOUSANDTHSOFINCHES;
    if (args.DisableMargins) flags |= PSD_DISABLEMARGINS;
    if (args.DisableOrientation) flags |= PSD_DISABLEORIENTATION;
    if (args.DisablePaper) flags |= PSD_DISABLEPAPER;
    if (args.DisablePrinter) flags |= PSD_DISABLEPRINTER;

    PAGESETUPDLG record;
    record.lStructSize = kPageSetupDlgSize;
    if (args.Owner != -1) record.hwndOwner = args.Owner;
    if (args.LeftMargin != 0 || args.TopMargin != 0 || args.RightMargin != 0 || args.BottomMargin != 0) {
        flags |= PSD_MARGINS;
        record.rtMargin = RECT{toRecord(args.LeftMargin), toRecord(args.TopMargin), toRecord(args.RightMargin),
                               toRecord(args.BottomMargin)};
    }
    if (args.MinLeftMargin != 0 || args.MinTopMargin != 0 || args.MinRightMargin != 0 || args.MinBottomMargin != 0) {
        flags |= PSD_MINMARGINS;
        record.rtMinMargin = RECT{toRecord(args.MinLeftMargin), toRecord(args.MinTopMargin),
                                  toRecord(args.MinRightMargin), toRecord(args.MinBottomMargin)};
    }
    ILateBound* printer = withPrinter ? args.Printer.get() : nullptr;
    DEVMODE mode;
    mode.dmPaperSize = args.PaperSize;
    mode.dmOrientation = args.Orientation;
    ReadPrinter(printer, mode);
    record.hDevMode = &mode;
    HookScope hook(*this, args.Hook, args.DialogObject);
    if (args.Hook) {
        flags |= PSD_ENABLEPAGESETUPHOOK;
        record.lpfnPageSetupHook = mDialogHook::PageSetupHookProc;
    }
    record.Flags = flags;

    const int32_t result = PageSetupDlgA(&record);
    hook.End();
    if (!EndCall(result)) return false;
    args.LeftMargin = fromRecord(record.rtMargin.left);
    args.TopMargin = fromRecord(record.rtMargin.top);
    args.RightMargin = fromRecord(record.rtMargin.right);
    args.BottomMargin = fromRecord(record.rtMargin.bottom);
    args.PaperWidth = fromRecord(record.ptPaperSize.x);
    args.PaperHeight = fromRecord(record.ptPaperSize.y);
    args.PaperSize = mode.dmPaperSize;
    args.Orientation = mode.dmOrientation;
    args.Flags = static_cast<int32_t>(record.Flags);
    WritePrinter(printer, mode);
    return true;
}

std::string GCommonDialog::VBGetFileTitle(const std::string& sFile) const {
    std::string title(kFileBuffer, '\0');
    if (GetFileTitleA(sFile, title.data(), static_cast<uint16_t>(kFileBuffer)) != 0) return {};
    return CutAtZero(title);
}
