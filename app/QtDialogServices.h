#pragma once
// The Qt services of the colour, font, print and help dialogs and of the
// windows' rectangles, installed for the life of this object; at its end the
// services installed before come back.
#include "QtColorDialogService.h"
#include "QtFontDialogService.h"
#include "QtHelpService.h"
#include "QtPrintDialogService.h"
#include "QtWindowService.h"

class QtDialogServices {
public:
    QtDialogServices();
    ~QtDialogServices();
    QtDialogServices(const QtDialogServices&) = delete;
    QtDialogServices& operator=(const QtDialogServices&) = delete;

private:
    QtWindowService windows_;
    QtColorDialogService colors_;
    QtFontDialogService fonts_;
    QtPrintDialogService prints_;
    QtHelpService help_;
    IWindowGeometryService* previousWindows_;
    IColorDialogService* previousColors_;
    IFontDialogService* previousFonts_;
    IPrintDialogService* previousPrints_;
    IHelpService* previousHelp_;
};
