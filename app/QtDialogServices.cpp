#include "QtDialogServices.h"

QtDialogServices::QtDialogServices()
    : previousWindows_(GetWindowGeometryService()),
      previousColors_(GetColorDialogService()),
      previousFonts_(GetFontDialogService()),
      previousPrints_(GetPrintDialogService()),
      previousHelp_(GetHelpService()) {
    SetWindowGeometryService(&windows_);
    SetColorDialogService(&colors_);
    SetFontDialogService(&fonts_);
    SetPrintDialogService(&prints_);
    SetHelpService(&help_);
}

QtDialogServices::~QtDialogServices() {
    SetHelpService(previousHelp_);
    SetPrintDialogService(previousPrints_);
    SetFontDialogService(previousFonts_);
    SetColorDialogService(previousColors_);
    SetWindowGeometryService(previousWindows_);
}
