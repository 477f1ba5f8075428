#pragma once
// The colour, font, print and page setup dialogs, and GetFileTitleA. Each
// dialog call takes the platform's record as the program fills it and hands
// what it asks for to a service: the front end fills the services with Qt's
// dialogs, tests with scripted answers. Without a service every dialog is
// cancelled. Each gives 1 when the user chose and 0 when the user cancelled or
// the dialog failed; CommDlgExtendedError then tells which (0 for a cancel).
// A record whose hook is enabled gets its hook called with WM_INITDIALOG when
// the dialog shows and WM_NCDESTROY when it has closed.
#include <array>
#include <cstdint>
#include <string>

#include "platform/FileDialogs.h"
#include "platform/Windows.h"

// Extended errors of these dialogs.
inline constexpr uint32_t PDERR_NODEFAULTPRN = 0x1008;
inline constexpr uint32_t CFERR_NOFONTS = 0x2001;

// ---- Colour -----------------------------------------------------------------

inline constexpr uint32_t CC_RGBINIT = 0x1;
inline constexpr uint32_t CC_FULLOPEN = 0x2;
inline constexpr uint32_t CC_PREVENTFULLOPEN = 0x4;
inline constexpr uint32_t CC_SHOWHELP = 0x8;
inline constexpr uint32_t CC_ENABLEHOOK = 0x10;
inline constexpr uint32_t CC_ENABLETEMPLATE = 0x20;
inline constexpr uint32_t CC_ENABLETEMPLATEHANDLE = 0x40;
inline constexpr uint32_t CC_SOLIDCOLOR = 0x80;
inline constexpr uint32_t CC_ANYCOLOR = 0x100;

inline constexpr uint32_t kChooseColorSize = 36;

struct CHOOSECOLOR {
    uint32_t lStructSize = 0;
    int32_t hwndOwner = 0;
    int32_t hInstance = 0;
    // In with CC_RGBINIT: the colour first selected. Out: the colour chosen.
    uint32_t rgbResult = 0;
    // The 16 custom colours, in and out.
    uint32_t* lpCustColors = nullptr;
    uint32_t Flags = 0;
    intptr_t lCustData = 0;
    LPOFNHOOKPROC lpfnHook = nullptr;
    std::string lpTemplateName;
};

struct ColorDialogRequest {
    int32_t hwndOwner = 0;
    int32_t hwndDialog = 0;  // while hooked, the handle its window goes by
    DialogEventSink events;  // while hooked
    uint32_t color = 0;      // the colour first selected
    std::array<uint32_t, 16> customColors{};
    bool fullOpen = false;         // the custom colour part shows at once
    bool preventFullOpen = false;  // the custom colour part can't be opened
    bool solidOnly = false;        // only solid colours may be chosen
};

struct ColorDialogAnswer {
    bool accepted = false;
    uint32_t color = 0;
    std::array<uint32_t, 16> customColors{};
};

class IColorDialogService {
public:
    virtual ~IColorDialogService() = default;
    virtual ColorDialogAnswer Show(const ColorDialogRequest& request) = 0;
};

void SetColorDialogService(IColorDialogService* service);
IColorDialogService* GetColorDialogService();

int32_t ChooseColorA(CHOOSECOLOR* lpcc);

// ---- Font -------------------------------------------------------------------

inline constexpr uint32_t CF_SCREENFONTS = 0x1;
inline constexpr uint32_t CF_PRINTERFONTS = 0x2;
inline constexpr uint32_t CF_SHOWHELP = 0x4;
inline constexpr uint32_t CF_ENABLEHOOK = 0x8;
inline constexpr uint32_t CF_ENABLETEMPLATE = 0x10;
inline constexpr uint32_t CF_ENABLETEMPLATEHANDLE = 0x20;
inline constexpr uint32_t CF_INITTOLOGFONTSTRUCT = 0x40;
inline constexpr uint32_t CF_USESTYLE = 0x80;
inline constexpr uint32_t CF_EFFECTS = 0x100;
inline constexpr uint32_t CF_APPLY = 0x200;
inline constexpr uint32_t CF_LIMITSIZE = 0x2000;
inline constexpr uint32_t CF_FIXEDPITCHONLY = 0x4000;
inline constexpr uint32_t CF_FORCEFONTEXIST = 0x10000;
inline constexpr uint32_t CF_SCALABLEONLY = 0x20000;

// Out: the kind of font chosen.
inline constexpr uint16_t BOLD_FONTTYPE = 0x100;
inline constexpr uint16_t ITALIC_FONTTYPE = 0x200;
inline constexpr uint16_t REGULAR_FONTTYPE = 0x400;
inline constexpr uint16_t SCREEN_FONTTYPE = 0x2000;
inline constexpr uint16_t PRINTER_FONTTYPE = 0x4000;

inline constexpr int32_t FW_NORMAL = 400;
inline constexpr int32_t FW_BOLD = 700;
inline constexpr size_t LF_FACESIZE = 32;

struct LOGFONT {
    int32_t lfHeight = 0;  // negative: the character height in pixels
    int32_t lfWidth = 0;
    int32_t lfEscapement = 0;
    int32_t lfOrientation = 0;
    int32_t lfWeight = 0;
    uint8_t lfItalic = 0;
    uint8_t lfUnderline = 0;
    uint8_t lfStrikeOut = 0;
    uint8_t lfCharSet = 0;
    uint8_t lfOutPrecision = 0;
    uint8_t lfClipPrecision = 0;
    uint8_t lfQuality = 0;
    uint8_t lfPitchAndFamily = 0;
    char lfFaceName[LF_FACESIZE] = {};
};
static_assert(sizeof(LOGFONT) == 60);

inline constexpr uint32_t kChooseFontSize = 60;

struct CHOOSEFONT {
    uint32_t lStructSize = 0;
    int32_t hwndOwner = 0;
    int32_t hDC = 0;  // the printer's device context, for printer fonts
    LOGFONT* lpLogFont = nullptr;
    int32_t iPointSize = 0;  // out: tenths of a point
    uint32_t Flags = 0;
    uint32_t rgbColors = 0;  // with CF_EFFECTS, in and out
    intptr_t lCustData = 0;
    LPOFNHOOKPROC lpfnHook = nullptr;
    std::string lpTemplateName;
    int32_t hInstance = 0;
    std::string lpszStyle;
    uint16_t nFontType = 0;
    int32_t nSizeMin = 0;  // with CF_LIMITSIZE, in points
    int32_t nSizeMax = 0;
};

struct FontDialogRequest {
    int32_t hwndOwner = 0;
    int32_t hwndDialog = 0;
    DialogEventSink events;
    std::string faceName;  // empty: the dialog's own first choice
    int32_t pointSize = 0;  // tenths of a point; 0 for none
    int32_t weight = FW_NORMAL;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    uint32_t color = 0;
    bool effects = false;  // underline, strike-out and colour can be chosen
    int32_t sizeMin = 0;   // points; 0 for no limit
    int32_t sizeMax = 0;
    bool fixedPitchOnly = false;
    bool scalableOnly = false;
    bool printerFonts = false;
    int32_t printerDC = 0;  // the printer's device context, for its fonts
};

struct FontDialogAnswer {
    bool accepted = false;
    std::string faceName;
    int32_t pointSize = 0;  // tenths of a point
    int32_t weight = FW_NORMAL;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    uint32_t color = 0;
};

class IFontDialogService {
public:
    virtual ~IFontDialogService() = default;
    virtual FontDialogAnswer Show(const FontDialogRequest& request) = 0;
};

void SetFontDialogService(IFontDialogService* service);
IFontDialogService* GetFontDialogService();

// A size outside nSizeMin to nSizeMax under CF_LIMITSIZE comes back as the
// nearer limit. The character height is that of a screen of 96 pixels per inch.
int32_t ChooseFontA(CHOOSEFONT* lpcf);

// ---- Printer's settings -----------------------------------------------------

inline constexpr int16_t DMORIENT_PORTRAIT = 1;
inline constexpr int16_t DMORIENT_LANDSCAPE = 2;
inline constexpr int16_t DMPAPER_LETTER = 1;
inline constexpr int16_t DMPAPER_A4 = 9;
inline constexpr int16_t DMCOLLATE_FALSE = 0;
inline constexpr int16_t DMCOLLATE_TRUE = 1;

// The settings of a printer, as the dialogs read and write them.
struct DEVMODE {
    std::string dmDeviceName;
    int16_t dmOrientation = DMORIENT_PORTRAIT;
    int16_t dmPaperSize = DMPAPER_A4;
    int16_t dmCopies = 1;
    int16_t dmPrintQuality = 0;
    int16_t dmCollate = DMCOLLATE_FALSE;
};

// ---- Print ------------------------------------------------------------------

inline constexpr uint32_t PD_ALLPAGES = 0x0;
inline constexpr uint32_t PD_SELECTION = 0x1;
inline constexpr uint32_t PD_PAGENUMS = 0x2;
inline constexpr uint32_t PD_NOSELECTION = 0x4;
inline constexpr uint32_t PD_NOPAGENUMS = 0x8;
inline constexpr uint32_t PD_COLLATE = 0x10;
inline constexpr uint32_t PD_PRINTTOFILE = 0x20;
inline constexpr uint32_t PD_PRINTSETUP = 0x40;
inline constexpr uint32_t PD_NOWARNING = 0x80;
inline constexpr uint32_t PD_RETURNDC = 0x100;
inline constexpr uint32_t PD_RETURNIC = 0x200;
inline constexpr uint32_t PD_RETURNDEFAULT = 0x400;
inline constexpr uint32_t PD_SHOWHELP = 0x800;
inline constexpr uint32_t PD_ENABLEPRINTHOOK = 0x1000;
inline constexpr uint32_t PD_ENABLESETUPHOOK = 0x2000;
inline constexpr uint32_t PD_ENABLEPRINTTEMPLATE = 0x4000;
inline constexpr uint32_t PD_ENABLESETUPTEMPLATE = 0x8000;
inline constexpr uint32_t PD_USEDEVMODECOPIESANDCOLLATE = 0x40000;
inline constexpr uint32_t PD_DISABLEPRINTTOFILE = 0x80000;
inline constexpr uint32_t PD_HIDEPRINTTOFILE = 0x100000;

inline constexpr uint32_t kPrintDlgSize = 66;

struct PRINTDLG {
    uint32_t lStructSize = 0;
    int32_t hwndOwner = 0;
    // The printer's settings, in and out; null for the default printer's.
    DEVMODE* hDevMode = nullptr;
    int32_t hDevNames = 0;
    int32_t hDC = 0;  // out with PD_RETURNDC; printing has no device contexts here, so 0
    uint32_t Flags = 0;
    uint16_t nFromPage = 0;
    uint16_t nToPage = 0;
    uint16_t nMinPage = 0;
    uint16_t nMaxPage = 0;
    uint16_t nCopies = 0;  // without PD_USEDEVMODECOPIESANDCOLLATE
    int32_t hInstance = 0;
    intptr_t lCustData = 0;
    LPOFNHOOKPROC lpfnPrintHook = nullptr;
    LPOFNHOOKPROC lpfnSetupHook = nullptr;
    std::string lpPrintTemplateName;
    std::string lpSetupTemplateName;
    int32_t hPrintTemplate = 0;
    int32_t hSetupTemplate = 0;
};

enum class PrintRange { All, Selection, PageNumbers };

struct PrintDialogRequest {
    int32_t hwndOwner = 0;
    int32_t hwndDialog = 0;
    DialogEventSink events;
    bool setup = false;  // the print setup dialog instead of the print dialog
    std::string printerName;  // empty: the default printer
    int32_t copies = 1;
    bool collate = false;
    int16_t orientation = DMORIENT_PORTRAIT;
    int16_t paperSize = DMPAPER_A4;
    PrintRange range = PrintRange::All;
    int32_t fromPage = 0;
    int32_t toPage = 0;
    int32_t minPage = 0;
    int32_t maxPage = 0;
    bool noPageNumbers = false;
    bool noSelection = false;
    bool printToFile = false;
    bool hidePrintToFile = false;
    bool disablePrintToFile = false;
};

struct PrintDialogAnswer {
    bool accepted = false;
    std::string printerName;
    int32_t copies = 1;
    bool collate = false;
    int16_t orientation = DMORIENT_PORTRAIT;
    int16_t paperSize = DMPAPER_A4;
    PrintRange range = PrintRange::All;
    int32_t fromPage = 0;
    int32_t toPage = 0;
    bool printToFile = false;
};

// ---- Page setup -------------------------------------------------------------

inline constexpr uint32_t PSD_MINMARGINS = 0x1;
inline constexpr uint32_t PSD_MARGINS = 0x2;
inline constexpr uint32_t PSD_INTHOUSANDTHSOFINCHES = 0x4;
inline constexpr uint32_t PSD_INHUNDREDTHSOFMILLIMETERS = 0x8;
inline constexpr uint32_t PSD_DISABLEMARGINS = 0x10;
inline constexpr uint32_t PSD_DISABLEPRINTER = 0x20;
inline constexpr uint32_t PSD_DISABLEORIENTATION = 0x100;
inline constexpr uint32_t PSD_DISABLEPAPER = 0x200;
inline constexpr uint32_t PSD_ENABLEPAGESETUPHOOK = 0x2000;
inline constexpr uint32_t PSD_ENABLEPAGESETUPTEMPLATE = 0x8000;
inline constexpr uint32_t PSD_ENABLEPAGEPAINTHOOK = 0x40000;

inline constexpr uint32_t kPageSetupDlgSize = 84;

struct POINT {
    int32_t x = 0;
    int32_t y = 0;
};

struct PAGESETUPDLG {
    uint32_t lStructSize = 0;
    int32_t hwndOwner = 0;
    DEVMODE* hDevMode = nullptr;
    int32_t hDevNames = 0;
    uint32_t Flags = 0;
    // Sizes in the unit the flags name: thousandths of an inch or hundredths
    // of a millimetre; without either flag, hundredths of a millimetre.
    POINT ptPaperSize;  // out
    RECT rtMinMargin;   // with PSD_MINMARGINS
    RECT rtMargin;      // in with PSD_MARGINS, out
    int32_t hInstance = 0;
    intptr_t lCustData = 0;
    LPOFNHOOKPROC lpfnPageSetupHook = nullptr;
    LPOFNHOOKPROC lpfnPagePaintHook = nullptr;
    std::string lpPageSetupTemplateName;
    int32_t hPageSetupTemplate = 0;
};

// Sizes in hundredths of a millimetre.
struct PageSetupRequest {
    int32_t hwndOwner = 0;
    int32_t hwndDialog = 0;
    DialogEventSink events;
    std::string printerName;
    int16_t orientation = DMORIENT_PORTRAIT;
    int16_t paperSize = DMPAPER_A4;
    RECT margins;
    RECT minMargins;
    bool disableMargins = false;
    bool disableOrientation = false;
    bool disablePaper = false;
    bool disablePrinter = false;
};

struct PageSetupAnswer {
    bool accepted = false;
    std::string printerName;
    int16_t orientation = DMORIENT_PORTRAIT;
    int16_t paperSize = DMPAPER_A4;
    POINT paper;  // the paper's width and height, as it is turned
    RECT margins;
};

class IPrintDialogService {
public:
    virtual ~IPrintDialogService() = default;
    virtual PrintDialogAnswer Show(const PrintDialogRequest& request) = 0;
    virtual PageSetupAnswer ShowPageSetup(const PageSetupRequest& request) = 0;
};

void SetPrintDialogService(IPrintDialogService* service);
IPrintDialogService* GetPrintDialogService();

// The page range is kept within nMinPage to nMaxPage; equal limits disable it.
int32_t PrintDlgA(PRINTDLG* lppd);
// Margins below the minimum margins under PSD_MINMARGINS come back raised to them.
int32_t PageSetupDlgA(PAGESETUPDLG* lppsd);

// ---- File title -------------------------------------------------------------

// The name of a file without its folder into lpszTitle: 0 on success, the
// buffer's size needed when cchSize is too small, and a negative value for a
// path that names no file (empty, ending in a separator, or holding a
// wildcard).
int16_t GetFileTitleA(const std::string& lpszFile, char* lpszTitle, uint16_t cchSize);
