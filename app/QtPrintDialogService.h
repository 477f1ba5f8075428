#pragma once
// The print, print setup and page setup dialogs as Qt's print dialog and page
// setup dialog, on a printer set up from the request. Paper sizes go by the
// platform's paper codes, which Qt's page sizes know.
#include <QPrinter>
#include <memory>

#include "platform/CommonDialogs.h"

class QPageSetupDialog;
class QPrintDialog;

class QtPrintDialogService : public IPrintDialogService {
public:
    PrintDialogAnswer Show(const PrintDialogRequest& request) override;
    PageSetupAnswer ShowPageSetup(const PageSetupRequest& request) override;

    // The printer a request starts from, the dialogs on it, not yet shown, and
    // the answers that an accepted dialog's printer gives.
    static void SetUp(QPrinter& printer, const PrintDialogRequest& request);
    static void SetUp(QPrinter& printer, const PageSetupRequest& request);
    static std::unique_ptr<QPrintDialog> BuildPrint(QPrinter& printer, const PrintDialogRequest& request);
    static std::unique_ptr<QPageSetupDialog> BuildPageSetup(QPrinter& printer, int32_t hwndOwner);
    static PrintDialogAnswer Answer(const QPrinter& printer, const PrintDialogRequest& request);
    static PageSetupAnswer PageAnswer(const QPrinter& printer);
};
