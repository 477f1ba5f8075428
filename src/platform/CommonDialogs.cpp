#include "platform/CommonDialogs.h"

#include <algorithm>
#include <cstring>

namespace {

IColorDialogService* g_colors = nullptr;
IFontDialogService* g_fonts = nullptr;
IPrintDialogService* g_prints = nullptr;

int32_t Fail(uint32_t error) {
    SetCommDlgExtendedError(error);
    return 0;
}

LPOFNHOOKPROC HookOf(uint32_t flags, uint32_t enable, LPOFNHOOKPROC hook) {
    return (flags & enable) != 0 ? hook : nullptr;
}

// a * b / c, rounded half away from zero, as the platform's MulDiv.
int32_t MulDiv(int32_t a, int32_t b, int32_t c) {
    const int64_t product = static_cast<int64_t>(a) * b;
    const int64_t half = c / 2;
    return static_cast<int32_t>(product >= 0 ? (product + half) / c : (product - half) / c);
}

// The screen the character heights are measured on.
constexpr int32_t kPixelsPerInch = 96;

// Hundredths of a millimetre and the record's unit, which is thousandths of an
// inch with PSD_INTHOUSANDTHSOFINCHES.
int32_t ToHundredthsOfMm(int32_t value, bool inches) { return inches ? MulDiv(value, 254, 100) : value; }
int32_t FromHundredthsOfMm(int32_t value, bool inches) { return inches ? MulDiv(value, 100, 254) : value; }

RECT ConvertRect(const RECT& r, int32_t (*convert)(int32_t, bool), bool inches) {
    return RECT{convert(r.left, inches), convert(r.top, inches), convert(r.right, inches), convert(r.bottom, inches)};
}

}  // namespace

void SetColorDialogService(IColorDialogService* service) { g_colors = service; }
IColorDialogService* GetColorDialogService() { return g_colors; }
void SetFontDialogService(IFontDialogService* service) { g_fonts = service; }
IFontDialogService* GetFontDialogService() { return g_fonts; }
void SetPrintDialogService(IPrintDialogService* service) { g_prints = service; }
IPrintDialogService* GetPrintDialogService() { return g_prints; }

int32_t ChooseColorA(CHOOSECOLOR* lpcc) {
    SetCommDlgExtendedError(0);
    if (lpcc == nullptr || lpcc->lStructSize != kChooseColorSize) return Fail(CDERR_STRUCTSIZE);
    if (lpcc->lpCustColors == nullptr) return Fail(CDERR_INITIALIZATION);
    if (g_colors == nullptr) return 0;

    const uint32_t flags = lpcc->Flags;
    DialogHookRun run(HookOf(flags, CC_ENABLEHOOK, lpcc->lpfnHook), lpcc->hwndOwner, false,
                      reinterpret_cast<intptr_t>(lpcc));
    ColorDialogRequest request;
    request.hwndOwner = lpcc->hwndOwner;
    request.hwndDialog = run.Dialog();
    request.events = run.Sink();
    request.color = (flags & CC_RGBINIT) != 0 ? lpcc->rgbResult & 0xFFFFFF : 0;
    std::copy_n(lpcc->lpCustColors, 16, request.customColors.begin());
    request.fullOpen = (flags & CC_FULLOPEN) != 0;
    request.preventFullOpen = (flags & CC_PREVENTFULLOPEN) != 0;
    request.solidOnly = (flags & CC_SOLIDCOLOR) != 0 && (flags & CC_ANYCOLOR) == 0;

    const ColorDialogAnswer answer = g_colors->Show(request);
    run.Close();
    if (!answer.accepted) return 0;
    lpcc->rgbResult = answer.color & 0xFFFFFF;
    std::copy(answer.customColors.begin(), answer.customColors.end(), lpcc->lpCustColors);
    return 1;
}

int32_t ChooseFontA(CHOOSEFONT* lpcf) {
    SetCommDlgExtendedError(0);
    if (lpcf == nullptr || lpcf->lStructSize != kChooseFontSize) return Fail(CDERR_STRUCTSIZE);
    if (lpcf->lpLogFont == nullptr) return Fail(CDERR_INITIALIZATION);
    const uint32_t flags = lpcf->Flags;
    if ((flags & (CF_SCREENFONTS | CF_PRINTERFONTS)) == 0) return Fail(CFERR_NOFONTS);
    if (g_fonts == nullptr) return 0;

    LOGFONT& font = *lpcf->lpLogFont;
    DialogHookRun run(HookOf(flags, CF_ENABLEHOOK, lpcf->lpfnHook), lpcf->hwndOwner, false,
                      reinterpret_cast<intptr_t>(lpcf));
    FontDialogRequest request;
    request.hwndOwner = lpcf->hwndOwner;
    request.hwndDialog = run.Dialog();
    request.events = run.Sink();
    if ((flags & CF_INITTOLOGFONTSTRUCT) != 0) {
        request.faceName.assign(font.lfFaceName, strnlen(font.lfFaceName, LF_FACESIZE));
        const int32_t height = font.lfHeight < 0 ? -font.lfHeight : font.lfHeight;
        // Whole points, as the dialog's list of sizes shows them.
        request.pointSize = MulDiv(height, 72, kPixelsPerInch) * 10;
        request.weight = font.lfWeight != 0 ? font.lfWeight : FW_NORMAL;
        request.italic = font.lfItalic != 0;
        request.underline = font.lfUnderline != 0;
        request.strikeOut = font.lfStrikeOut != 0;
    }
    request.color = lpcf->rgbColors & 0xFFFFFF;
    request.effects = (flags & CF_EFFECTS) != 0;
    if ((flags & CF_LIMITSIZE) != 0) {
        request.sizeMin = lpcf->nSizeMin;
        request.sizeMax = lpcf->nSizeMax;
    }
    request.fixedPitchOnly = (flags & CF_FIXEDPITCHONLY) != 0;
    request.scalableOnly = (flags & CF_SCALABLEONLY) != 0;
    request.printerFonts = (flags & CF_PRINTERFONTS) != 0 && (flags & CF_SCREENFONTS) == 0;
    request.printerDC = lpcf->hDC;

    const FontDialogAnswer answer = g_fonts->Show(request);
    run.Close();
    if (!answer.accepted) return 0;

    int32_t size = answer.pointSize;
    if (request.sizeMin > 0) size = std::max(size, request.sizeMin * 10);
    if (request.sizeMax > 0) size = std::min(size, request.sizeMax * 10);
    font = LOGFONT{};
    font.lfHeight = -MulDiv(size, kPixelsPerInch, 720);
    font.lfWeight = answer.weight;
    font.lfItalic = answer.italic ? 1 : 0;
    // Underline, strike-out and colour are offered only with the effects.
    font.lfUnderline = (request.effects ? answer.underline : request.underline) ? 1 : 0;
    font.lfStrikeOut = (request.effects ? answer.strikeOut : request.strikeOut) ? 1 : 0;
    const size_t length = std::min(answer.faceName.size(), LF_FACESIZE - 1);
    std::memcpy(font.lfFaceName, answer.faceName.data(), length);
    lpcf->iPointSize = size;
    if (request.effects) lpcf->rgbColors = answer.color & 0xFFFFFF;
    uint16_t type = answer.weight >= 600 ? BOLD_FONTTYPE : REGULAR_FONTTYPE;
    if (answer.italic) type |= ITALIC_FONTTYPE;
    type |= request.printerFonts ? PRINTER_FONTTYPE : SCREEN_FONTTYPE;
    lpcf->nFontType = type;
    return 1;
}

int32_t PrintDlgA(PRINTDLG* lppd) {
    SetCommDlgExtendedError(0);
    if (lppd == nullptr || lppd->lStructSize != kPrintDlgSize) return Fail(CDERR_STRUCTSIZE);
    if (g_prints == nullptr) return 0;

    const uint32_t flags = lppd->Flags;
    const bool setup = (flags & PD_PRINTSETUP) != 0;
    const LPOFNHOOKPROC hook = setup ? HookOf(flags, PD_ENABLESETUPHOOK, lppd->lpfnSetupHook)
                                     : HookOf(flags, PD_ENABLEPRINTHOOK, lppd->lpfnPrintHook);
    DialogHookRun run(hook, lppd->hwndOwner, false, reinterpret_cast<intptr_t>(lppd));
    DEVMODE* mode = lppd->hDevMode;
    // Copies and collation stand in the printer's settings when the caller
    // asks for them there and gives the settings.
    const bool modeCopies = (flags & PD_USEDEVMODECOPIESANDCOLLATE) != 0 && mode != nullptr;
    PrintDialogRequest request;
    request.hwndOwner = lppd->hwndOwner;
    request.hwndDialog = run.Dialog();
    request.events = run.Sink();
    request.setup = setup;
    if (mode != nullptr) {
        request.printerName = mode->dmDeviceName;
        request.orientation = mode->dmOrientation;
        request.paperSize = mode->dmPaperSize;
    }
    request.copies = std::max<int32_t>(1, modeCopies ? mode->dmCopies : lppd->nCopies);
    request.collate = modeCopies ? mode->dmCollate == DMCOLLATE_TRUE : (flags & PD_COLLATE) != 0;
    request.range = (flags & PD_PAGENUMS) != 0   ? PrintRange::PageNumbers
                    : (flags & PD_SELECTION) != 0 ? PrintRange::Selection
                                                  : PrintRange::All;
    request.fromPage = lppd->nFromPage;
    request.toPage = lppd->nToPage;
    request.minPage = lppd->nMinPage;
    request.maxPage = lppd->nMaxPage;
    // Equal limits leave no page range to choose.
    request.noPageNumbers = (flags & PD_NOPAGENUMS) != 0 || lppd->nMinPage == lppd->nMaxPage;
    request.noSelection = (flags & PD_NOSELECTION) != 0;
    request.printToFile = (flags & PD_PRINTTOFILE) != 0;
    request.hidePrintToFile = (flags & PD_HIDEPRINTTOFILE) != 0;
    request.disablePrintToFile = (flags & PD_DISABLEPRINTTOFILE) != 0;

    const PrintDialogAnswer answer = g_prints->Show(request);
    run.Close();
    if (!answer.accepted) return 0;

    uint32_t out = flags & ~(PD_SELECTION | PD_PAGENUMS | PD_PRINTTOFILE | PD_COLLATE);
    if (answer.range == PrintRange::PageNumbers) out |= PD_PAGENUMS;
    if (answer.range == PrintRange::Selection) out |= PD_SELECTION;
    if (answer.printToFile) out |= PD_PRINTTOFILE;
    const auto copies = static_cast<int16_t>(std::clamp<int32_t>(answer.copies, 1, 9999));
    if (modeCopies) {
        mode->dmCopies = copies;
        mode->dmCollate = answer.collate ? DMCOLLATE_TRUE : DMCOLLATE_FALSE;
        lppd->nCopies = 1;
    } else {
        lppd->nCopies = static_cast<uint16_t>(copies);
        if (answer.collate) out |= PD_COLLATE;
    }
    if (mode != nullptr) {
        mode->dmDeviceName = answer.printerName;
        mode->dmOrientation = answer.orientation;
        mode->dmPaperSize = answer.paperSize;
    }
    const auto page = [&](int32_t value) {
        if (lppd->nMaxPage > lppd->nMinPage) value = std::clamp<int32_t>(value, lppd->nMinPage, lppd->nMaxPage);
        return static_cast<uint16_t>(std::clamp<int32_t>(value, 0, 0xFFFF));
    };
    lppd->nFromPage = page(answer.fromPage);
    lppd->nToPage = page(answer.toPage);
    lppd->Flags = out;
    lppd->hDC = 0;
    return 1;
}

int32_t PageSetupDlgA(PAGESETUPDLG* lppsd) {
    SetCommDlgExtendedError(0);
    if (lppsd == nullptr || lppsd->lStructSize != kPageSetupDlgSize) return Fail(CDERR_STRUCTSIZE);
    if (g_prints == nullptr) return 0;

    const uint32_t flags = lppsd->Flags;
    const bool inches = (flags & PSD_INTHOUSANDTHSOFINCHES) != 0 && (flags & PSD_INHUNDREDTHSOFMILLIMETERS) == 0;
    DialogHookRun run(HookOf(flags, PSD_ENABLEPAGESETUPHOOK, lppsd->lpfnPageSetupHook), lppsd->hwndOwner, false,
                      reinterpret_cast<intptr_t>(lppsd));
    DEVMODE* mode = lppsd->hDevMode;
    PageSetupRequest request;
    request.hwndOwner = lppsd->hwndOwner;
    request.hwndDialog = run.Dialog();
    request.events = run.Sink();
    if (mode != nullptr) {
        request.printerName = mode->dmDeviceName;
        request.orientation = mode->dmOrientation;
        request.paperSize = mode->dmPaperSize;
    }
    // The platform's margins when the caller gives none: an inch all round.
    request.margins = (flags & PSD_MARGINS) != 0 ? ConvertRect(lppsd->rtMargin, ToHundredthsOfMm, inches)
                                                 : RECT{2540, 2540, 2540, 2540};
    if ((flags & PSD_MINMARGINS) != 0) request.minMargins = ConvertRect(lppsd->rtMinMargin, ToHundredthsOfMm, inches);
    request.disableMargins = (flags & PSD_DISABLEMARGINS) != 0;
    request.disableOrientation = (flags & PSD_DISABLEORIENTATION) != 0;
    request.disablePaper = (flags & PSD_DISABLEPAPER) != 0;
    request.disablePrinter = (flags & PSD_DISABLEPRINTER) != 0;

    const PageSetupAnswer answer = g_prints->ShowPageSetup(request);
    run.Close();
    if (!answer.accepted) return 0;

    RECT margins = answer.margins;
    if ((flags & PSD_MINMARGINS) != 0) {
        margins.left = std::max(margins.left, request.minMargins.left);
        margins.top = std::max(margins.top, request.minMargins.top);
        margins.right = std::max(margins.right, request.minMargins.right);
        margins.bottom = std::max(margins.bottom, request.minMargins.bottom);
    }
    lppsd->rtMargin = ConvertRect(margins, FromHundredthsOfMm, inches);
    lppsd->ptPaperSize = POINT{FromHundredthsOfMm(answer.paper.x, inches), FromHundredthsOfMm(answer.paper.y, inches)};
    if (mode != nullptr) {
        mode->dmDeviceName = answer.printerName;
        mode->dmOrientation = answer.orientation;
        mode->dmPaperSize = answer.paperSize;
    }
    return 1;
}

int16_t GetFileTitleA(const std::string& lpszFile, char* lpszTitle, uint16_t cchSize) {
    const size_t sep = lpszFile.rfind('/');
    const std::string name = sep == std::string::npos ? lpszFile : lpszFile.substr(sep + 1);
    if (name.empty() || name.find_first_of("*?") != std::string::npos) return -1;
    const size_t needed = name.size() + 1;
    if (lpszTitle == nullptr || needed > cchSize) return static_cast<int16_t>(std::min<size_t>(needed, 0x7FFF));
    std::memcpy(lpszTitle, name.c_str(), needed);
    return 0;
}
