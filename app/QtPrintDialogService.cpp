#include "QtPrintDialogService.h"

#include <QPageLayout>
#include <QPageSetupDialog>
#include <QPageSize>
#include <QPrintDialog>
#include <cmath>

#include "QtWindowService.h"
#include "Text1252.h"

namespace {

QPageSize PageSizeOf(int16_t paperCode) {
    const QPageSize::PageSizeId id = QPageSize::id(paperCode);
    return QPageSize(id == QPageSize::Custom ? QPageSize::A4 : id);
}

int16_t PaperCodeOf(const QPageLayout& layout) { return static_cast<int16_t>(layout.pageSize().windowsId()); }

QPageLayout::Orientation OrientationOf(int16_t orientation) {
    return orientation == DMORIENT_LANDSCAPE ? QPageLayout::Landscape : QPageLayout::Portrait;
}

int16_t OrientationCode(const QPageLayout& layout) {
    return layout.orientation() == QPageLayout::Landscape ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
}

// Millimetres and the requests' hundredths of a millimetre.
int32_t Hundredths(qreal mm) { return static_cast<int32_t>(std::lround(mm * 100)); }

}  // namespace

void QtPrintDialogService::SetUp(QPrinter& printer, const PrintDialogRequest& request) {
    if (!request.printerName.empty()) printer.setPrinterName(FromBytes(request.printerName));
    printer.setCopyCount(request.copies);
    printer.setCollateCopies(request.collate);
    printer.setPageOrientation(OrientationOf(request.orientation));
    printer.setPageSize(PageSizeOf(request.paperSize));
    if (request.fromPage > 0 && request.toPage >= request.fromPage) printer.setFromTo(request.fromPage, request.toPage);
    printer.setPrintRange(request.range == PrintRange::PageNumbers ? QPrinter::PageRange
                          : request.range == PrintRange::Selection ? QPrinter::Selection
                                                                   : QPrinter::AllPages);
}

void QtPrintDialogService::SetUp(QPrinter& printer, const PageSetupRequest& request) {
    if (!request.printerName.empty()) printer.setPrinterName(FromBytes(request.printerName));
    printer.setPageOrientation(OrientationOf(request.orientation));
    printer.setPageSize(PageSizeOf(request.paperSize));
    const RECT& m = request.margins;
    printer.setPageMargins(QMarginsF(m.left / 100.0, m.top / 100.0, m.right / 100.0, m.bottom / 100.0),
                           QPageLayout::Millimeter);
}

std::unique_ptr<QPrintDialog> QtPrintDialogService::BuildPrint(QPrinter& printer, const PrintDialogRequest& request) {
    auto dialog = std::make_unique<QPrintDialog>(&printer, QtWindowService::OwnerOf(request.hwndOwner));
    dialog->setObjectName(QStringLiteral("CommonDialog"));
    QAbstractPrintDialog::PrintDialogOptions options = QAbstractPrintDialog::PrintCollateCopies;
    if (!request.noPageNumbers) options |= QAbstractPrintDialog::PrintPageRange;
    if (!request.noSelection) options |= QAbstractPrintDialog::PrintSelection;
    if (!request.hidePrintToFile && !request.disablePrintToFile) options |= QAbstractPrintDialog::PrintToFile;
    dialog->setOptions(options);
    if (request.maxPage > request.minPage) dialog->setMinMax(request.minPage, request.maxPage);
    return dialog;
}

std::unique_ptr<QPageSetupDialog> QtPrintDialogService::BuildPageSetup(QPrinter& printer, int32_t hwndOwner) {
    auto dialog = std::make_unique<QPageSetupDialog>(&printer, QtWindowService::OwnerOf(hwndOwner));
    dialog->setObjectName(QStringLiteral("CommonDialog"));
    return dialog;
}

PrintDialogAnswer QtPrintDialogService::Answer(const QPrinter& printer, const PrintDialogRequest& request) {
    PrintDialogAnswer answer;
    answer.accepted = true;
    answer.printerName = ToBytes(printer.printerName());
    answer.copies = printer.copyCount();
    answer.collate = printer.collateCopies();
    answer.orientation = OrientationCode(printer.pageLayout());
    answer.paperSize = PaperCodeOf(printer.pageLayout());
    answer.range = printer.printRange() == QPrinter::PageRange   ? PrintRange::PageNumbers
                   : printer.printRange() == QPrinter::Selection ? PrintRange::Selection
                                                                 : PrintRange::All;
    answer.fromPage = printer.fromPage() > 0 ? printer.fromPage() : request.fromPage;
    answer.toPage = printer.toPage() > 0 ? printer.toPage() : request.toPage;
    answer.printToFile = !printer.outputFileName().isEmpty();
    return answer;
}

PageSetupAnswer QtPrintDialogService::PageAnswer(const QPrinter& printer) {
    const QPageLayout layout = printer.pageLayout();
    PageSetupAnswer answer;
    answer.accepted = true;
    answer.printerName = ToBytes(printer.printerName());
    answer.orientation = OrientationCode(layout);
    answer.paperSize = PaperCodeOf(layout);
    const QRectF paper = layout.fullRect(QPageLayout::Millimeter);
    answer.paper = POINT{Hundredths(paper.width()), Hundredths(paper.height())};
    const QMarginsF m = layout.margins(QPageLayout::Millimeter);
    answer.margins = RECT{Hundredths(m.left()), Hundredths(m.top()), Hundredths(m.right()), Hundredths(m.bottom())};
    return answer;
}

PrintDialogAnswer QtPrintDialogService::Show(const PrintDialogRequest& request) {
    QPrinter printer;
    SetUp(printer, request);
    int result = QDialog::Rejected;
    // The print setup dialog chooses the paper and its turn only.
    if (request.setup) {
        std::unique_ptr<QPageSetupDialog> dialog = BuildPageSetup(printer, request.hwndOwner);
        const QtWindowBinding binding(request.hwndDialog, dialog.get());
        if (request.events) request.events(DialogEvent::Shown);
        result = dialog->exec();
    } else {
        std::unique_ptr<QPrintDialog> dialog = BuildPrint(printer, request);
        const QtWindowBinding binding(request.hwndDialog, dialog.get());
        if (request.events) request.events(DialogEvent::Shown);
        result = dialog->exec();
    }
    if (result != QDialog::Accepted) return {};
    return Answer(printer, request);
}

PageSetupAnswer QtPrintDialogService::ShowPageSetup(const PageSetupRequest& request) {
    QPrinter printer;
    SetUp(printer, request);
    std::unique_ptr<QPageSetupDialog> dialog = BuildPageSetup(printer, request.hwndOwner);
    const QtWindowBinding binding(request.hwndDialog, dialog.get());
    if (request.events) request.events(DialogEvent::Shown);
    if (dialog->exec() != QDialog::Accepted) return {};
    return PageAnswer(printer);
}
