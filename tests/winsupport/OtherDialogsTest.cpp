#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/ScriptedDialogs.h"
#include "winsupport/WinsupportTestSupport.h"
#include "platform/CommonDialogs.h"
#include "platform/Help.h"
#include "platform/Runtime.h"
#include "platform/SystemColors.h"
#include "winsupport/cCommonDialog.h"

using fixtures::ScriptedColorDialogs;
using fixtures::ScriptedFontDialogs;
using fixtures::ScriptedPrintDialogs;

using fixtures::ErrorOf;

namespace {

constexpr int32_t Sys(int32_t element) { return static_cast<int32_t>(0x80000000u | static_cast<uint32_t>(element)); }

class Dialogs : public ::testing::Test {
protected:
    void SetUp() override { App::SetExecutable("/opt/quarrin", "quarrin"); }
};

}  // namespace

TEST_F(Dialogs, ShowColor) {
    struct Row {
        const char* name;
        int32_t flags;
        int32_t colorIn;
        std::optional<uint32_t> choice;  // none: cancelled
        bool cancelError;
        uint32_t shown;  // the colour first selected
        bool fullOpen, preventFullOpen, solidOnly;
        int32_t colorOut;
        int32_t failure;
    };
    const Row rows[] = {
        {"any colour", CC_ANYCOLOR, 0x0000FF, 0x00FF00, false, 0x0000FF, false, false, false, 0x00FF00, 0},
        {"solid colours only, opened full", CC_FULLOPEN, 0x112233, 0x445566, false, 0x112233, true, false, true,
         0x445566, 0},
        {"no full opening", CC_PREVENTFULLOPEN | CC_ANYCOLOR, 0, 0x010203, false, 0, false, true, false, 0x010203, 0},
        {"a system colour is translated", CC_ANYCOLOR, Sys(COLOR_WINDOW), 1, false, 0xFFFFFF, false, false, false, 1,
         0},
        {"the button face", CC_ANYCOLOR, Sys(COLOR_BTNFACE), 1, false, 0xC0C0C0, false, false, false, 1, 0},
        {"an untranslatable colour goes as -1", CC_ANYCOLOR, static_cast<int32_t>(0x81000000u), 1, false, 0xFFFFFF,
         false, false, false, 1, 0},
        {"a cancel keeps the colour", CC_ANYCOLOR, 0x10, {}, false, 0x10, false, false, false, 0x10, 0},
        {"a cancel raises when asked", CC_ANYCOLOR, 0x10, {}, true, 0x10, false, false, false, 0x10, kDlgErrCancel},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedColorDialogs user;
        row.choice ? user.Choose(*row.choice) : user.Cancel();
        cCommonDialog dlg;
        dlg.Setflags(row.flags);
        dlg.SetColor(row.colorIn);
        dlg.SetCancelError(row.cancelError);
        dlg.Sethwnd(0x104);
        EXPECT_EQ(ErrorOf([&] { dlg.ShowColor(); }).Number, row.failure);
        ASSERT_EQ(user.Requests().size(), 1u);
        const ColorDialogRequest& r = user.Requests()[0];
        EXPECT_EQ(r.color, row.shown);
        EXPECT_EQ(r.fullOpen, row.fullOpen);
        EXPECT_EQ(r.preventFullOpen, row.preventFullOpen);
        EXPECT_EQ(r.solidOnly, row.solidOnly);
        EXPECT_EQ(r.hwndOwner, 0x104);
        EXPECT_EQ(dlg.Color(), row.colorOut);
        EXPECT_FALSE(dlg.IsFileDialog());
    }
}

TEST_F(Dialogs, TheCustomColoursStartAsTheSystemColoursAndKeepTheUsersChanges) {
    ScriptedColorDialogs user;
    cCommonDialog dlg;
    user.ChooseWithCustom(0x20, 3, 0xABCDEF).Choose(0x30);
    dlg.ShowColor();
    for (int16_t i = 0; i < 16; ++i) EXPECT_EQ(user.Requests()[0].customColors[i], GetSysColor(i)) << i;
    EXPECT_EQ(dlg.CustomColor(3), 0xABCDEF);
    dlg.SetCustomColor(15, 0x123);
    dlg.ShowColor();
    EXPECT_EQ(user.Requests()[1].customColors[3], 0xABCDEFu);
    EXPECT_EQ(user.Requests()[1].customColors[15], 0x123u);
    EXPECT_EQ(ErrorOf([&] { dlg.CustomColor(16); }).Number, vbErrSubscript);
    EXPECT_EQ(ErrorOf([&] { dlg.SetCustomColor(-1, 0); }).Number, vbErrSubscript);

    // A direct caller gets -1 for a cancelled dialog.
    ChooseColorArgs args;
    args.Color = 0x55;
    EXPECT_FALSE(dlg.Dialog().VBChooseColor(args));
    EXPECT_EQ(args.Color, -1);
}

TEST_F(Dialogs, ShowFont) {
    const auto printer = std::make_shared<PropertyBag>(PropertyBag{{"hDC", Variant(int32_t{77})}});
    struct Row {
        const char* name;
        StdFont in;
        int32_t fontColor, flags, min, max;
        bool withPrinter;
        // What the dialog is asked.
        std::string face;
        int32_t pointSize, weight;
        bool effects;
        int32_t sizeMin, sizeMax, printerDC;
        bool printerFonts;
        // What the user does and what comes back.
        std::optional<FontDialogAnswer> answer;
        bool cancelError;
        StdFont out;
        int32_t fontColorOut;
        int32_t failure;
    };
    const StdFont arial{"Arial", 10, true, false, false, false};
    const Row rows[] = {
        {"a plain font",
         arial, 0, 0, 0, 0, false,
         "Arial", 100, FW_BOLD, false, 0, 0, 0, false,
         FontDialogAnswer{true, "Courier New", 125, FW_NORMAL, true, true, true, 0xFF},
         false, StdFont{"Courier New", 12, false, true, false, false}, 0, 0},
        {"a colour asks for the effects",
         StdFont{"MS Sans Serif", 8, false, true, false, false}, 0x0000FF, 0, 0, 0, false,
         "MS Sans Serif", 80, FW_NORMAL, true, 0, 0, 0, false,
         FontDialogAnswer{true, "Tahoma", 90, FW_BOLD, false, true, true, 0x00FF00},
         false, StdFont{"Tahoma", 9, true, false, true, true}, 0x00FF00, 0},
        {"Min and Max limit the size",
         arial, 0, 0, 8, 12, false,
         "Arial", 100, FW_BOLD, false, 8, 12, 0, false,
         FontDialogAnswer{true, "Arial", 200, FW_BOLD},
         false, StdFont{"Arial", 12, true, false, false, false}, 0, 0},
        {"printer fonts on the printer's device context",
         arial, 0, static_cast<int32_t>(CF_PRINTERFONTS), 0, 0, true,
         "Arial", 100, FW_BOLD, false, 0, 0, 77, true,
         FontDialogAnswer{true, "Arial", 100, FW_BOLD},
         false, arial, 0, 0},
        {"a face name is cut to the record's 31 characters",
         StdFont{std::string(40, 'F'), 10, true, false, false, false}, 0, static_cast<int32_t>(CF_SCALABLEONLY), 0, 0,
         false, std::string(31, 'F'), 100, FW_BOLD, false, 0, 0, 0, false,
         FontDialogAnswer{true, std::string(40, 'G'), 100, FW_BOLD},
         false, StdFont{std::string(31, 'G'), 10, true, false, false, false}, 0, 0},
        {"a cancel leaves the font",
         arial, 0, 0, 0, 0, false,
         "Arial", 100, FW_BOLD, false, 0, 0, 0, false,
         std::nullopt, false, arial, 0, 0},
        {"a cancel raises when asked",
         arial, 0, 0, 0, 0, false,
         "Arial", 100, FW_BOLD, false, 0, 0, 0, false,
         std::nullopt, true, arial, 0, kDlgErrCancel},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedFontDialogs user;
        row.answer ? user.Choose(*row.answer) : user.Cancel();
        cCommonDialog dlg;
        dlg.SetFont(std::make_shared<StdFont>(row.in));
        dlg.SetFontColor(row.fontColor);
        dlg.Setflags(row.flags);
        dlg.SetMin(row.min);
        dlg.SetMax(row.max);
        dlg.SetCancelError(row.cancelError);
        if (row.withPrinter) dlg.SetObject(printer);
        EXPECT_EQ(ErrorOf([&] { dlg.ShowFont(); }).Number, row.failure);
        ASSERT_EQ(user.Requests().size(), 1u);
        const FontDialogRequest& r = user.Requests()[0];
        EXPECT_EQ(r.faceName, row.face);
        EXPECT_EQ(r.pointSize, row.pointSize);
        EXPECT_EQ(r.weight, row.weight);
        EXPECT_EQ(r.italic, row.in.Italic);
        EXPECT_EQ(r.effects, row.effects);
        EXPECT_EQ(r.sizeMin, row.sizeMin);
        EXPECT_EQ(r.sizeMax, row.sizeMax);
        EXPECT_EQ(r.printerDC, row.printerDC);
        EXPECT_EQ(r.printerFonts, row.printerFonts);
        EXPECT_EQ(r.scalableOnly, (row.flags & CF_SCALABLEONLY) != 0);
        EXPECT_EQ(dlg.FontName(), row.out.Name);
        EXPECT_EQ(dlg.FontSize(), row.out.Size);
        EXPECT_EQ(dlg.FontBold(), row.out.Bold);
        EXPECT_EQ(dlg.FontItalic(), row.out.Italic);
        EXPECT_EQ(dlg.FontUnderline(), row.out.Underline);
        EXPECT_EQ(dlg.FontStrikethru(), row.out.Strikethru);
        EXPECT_EQ(dlg.FontColor(), row.fontColorOut);
        if (row.answer) {
            // The flags come back with what the dialog was given.
            EXPECT_TRUE(dlg.flags() & CF_INITTOLOGFONTSTRUCT);
            EXPECT_EQ((dlg.flags() & CF_SCREENFONTS) != 0, !row.printerFonts);
            EXPECT_EQ((dlg.flags() & CF_LIMITSIZE) != 0, row.sizeMax != 0);
        }
    }
    // A font object as it is made: MS Sans Serif, 8 points, plain.
    ScriptedFontDialogs user;
    user.Cancel();
    cCommonDialog dlg;
    dlg.SetFont(std::make_shared<StdFont>());
    dlg.ShowFont();
    ASSERT_EQ(user.Requests().size(), 1u);
    const FontDialogRequest& r = user.Requests()[0];
    EXPECT_EQ(r.faceName, "MS Sans Serif");
    EXPECT_EQ(r.pointSize, 80);
    EXPECT_EQ(r.weight, FW_NORMAL);
    EXPECT_FALSE(r.italic || r.underline || r.strikeOut);
}

TEST_F(Dialogs, ShowPrinter) {
    struct Row {
        const char* name;
        int32_t flags, fromPage, toPage, min, max, copies;
        // What the dialog is asked.
        PrintRange range;
        bool noPageNumbers, noSelection, hidePrintToFile, disablePrintToFile, printToFile, collate;
        std::optional<PrintDialogAnswer> answer;
        // What comes back.
        int32_t copiesOut, fromOut, toOut;
        bool pageNumbersOut;
    };
    const int32_t all = static_cast<int32_t>(PD_PAGENUMS | PD_NOSELECTION | PD_HIDEPRINTTOFILE |
                                             PD_DISABLEPRINTTOFILE | PD_PRINTTOFILE | PD_COLLATE | PD_NOWARNING);
    const Row rows[] = {
        {"no flags: equal limits disable the page range", 0, 0, 0, 0, 0, 0,
         PrintRange::All, true, false, false, false, false, false,
         PrintDialogAnswer{true, "", 3, false, DMORIENT_PORTRAIT, DMPAPER_A4, PrintRange::PageNumbers, 2, 5},
         3, 2, 5, true},
        {"every flag the dialog reads", all, 3, 4, 1, 10, 2,
         PrintRange::PageNumbers, false, true, true, true, true, true,
         PrintDialogAnswer{true, "", 2, true, DMORIENT_PORTRAIT, DMPAPER_A4, PrintRange::All, 0, 99},
         2, 1, 10, false},
        {"a cancel never raises", 0, 1, 1, 1, 9, 6,
         PrintRange::All, false, false, false, false, false, false,
         std::nullopt, 6, 1, 1, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedPrintDialogs user;
        row.answer ? user.Print(*row.answer) : user.CancelPrint();
        cCommonDialog dlg;
        dlg.Setflags(row.flags);
        dlg.SetFromPage(row.fromPage);
        dlg.SetToPage(row.toPage);
        dlg.SetMin(row.min);
        dlg.SetMax(row.max);
        dlg.SetCopies(row.copies);
        dlg.SetCancelError(true);
        EXPECT_EQ(ErrorOf([&] { dlg.ShowPrinter(); }).Number, 0);
        ASSERT_EQ(user.PrintRequests().size(), 1u);
        const PrintDialogRequest& r = user.PrintRequests()[0];
        EXPECT_EQ(r.range, row.range);
        EXPECT_EQ(r.noPageNumbers, row.noPageNumbers);
        EXPECT_EQ(r.noSelection, row.noSelection);
        EXPECT_EQ(r.hidePrintToFile, row.hidePrintToFile);
        EXPECT_EQ(r.disablePrintToFile, row.disablePrintToFile);
        EXPECT_EQ(r.printToFile, row.printToFile);
        EXPECT_EQ(r.collate, row.collate);
        EXPECT_EQ(r.copies, std::max(1, row.copies));
        EXPECT_EQ(r.fromPage, row.fromPage);
        EXPECT_EQ(r.toPage, row.toPage);
        EXPECT_EQ(dlg.Copies(), row.copiesOut);
        EXPECT_EQ(dlg.FromPage(), row.fromOut);
        EXPECT_EQ(dlg.ToPage(), row.toOut);
        EXPECT_EQ((dlg.flags() & PD_PAGENUMS) != 0, row.pageNumbersOut);
    }
}

TEST_F(Dialogs, ThePrinterObjectIsReadAndWrittenByName) {
    ScriptedPrintDialogs user;
    // A value beyond the setting's 16 bits is passed over like a missing one.
    auto printer = std::make_shared<PropertyBag>(PropertyBag{{"DeviceName", Variant("Laser")},
                                                             {"Copies", Variant(int32_t{4})},
                                                             {"PrintQuality", Variant(int32_t{70000})},
                                                             {"Orientation", Variant(int32_t{2})},
                                                             {"PaperSize", Variant(int32_t{9})}});
    user.Print(PrintDialogAnswer{true, "Ink", 1, false, DMORIENT_LANDSCAPE, DMPAPER_LETTER});
    cCommonDialog dlg;
    dlg.SetObject(printer);
    dlg.ShowPrinter();
    const PrintDialogRequest& r = user.PrintRequests().at(0);
    EXPECT_EQ(r.printerName, "Laser");
    EXPECT_EQ(r.copies, 4);
    EXPECT_EQ(r.paperSize, DMPAPER_A4);
    EXPECT_EQ(r.orientation, DMORIENT_LANDSCAPE);
    EXPECT_EQ(printer->GetProperty("devicename").ToString(), "Ink");
    EXPECT_EQ(printer->GetProperty("Copies").ToLong(), 1);
    EXPECT_EQ(printer->GetProperty("Orientation").ToLong(), DMORIENT_LANDSCAPE);
    EXPECT_EQ(printer->GetProperty("PaperSize").ToLong(), DMPAPER_LETTER);
    // PrintQuality, which did not fit, goes back as the setting it left.
    EXPECT_EQ(printer->GetProperty("PrintQuality").ToLong(), 0);
    EXPECT_EQ(dlg.Copies(), 1);

    // Collation comes back to a direct caller.
    PrintDlgArgs args;
    user.Print(PrintDialogAnswer{true, "Ink", 2, true});
    ASSERT_TRUE(dlg.Dialog().VBPrintDlg(args));
    EXPECT_TRUE(args.Collate);
    EXPECT_EQ(args.Copies, 2);
    EXPECT_FALSE(user.PrintRequests().at(1).collate);
}

TEST_F(Dialogs, PageSetupConvertsToAndFromTheCallersUnit) {
    struct Row {
        const char* name;
        EPageSetupUnits units;
        double margin, minMargin;  // all four sides alike
        RECT asked, askedMin;      // hundredths of a millimetre
        int32_t answeredMargin;    // hundredths of a millimetre, all four sides
        double marginOut, paperWidthOut;
    };
    const Row rows[] = {
        {"inches", epsuInches, 1, 0, {2540, 2540, 2540, 2540}, {}, 1270, 0.5, 8.268},
        {"millimetres", epsuMillimeters, 10, 0, {1001, 1001, 1001, 1001}, {}, 2000, 19.99, 210.01},
        {"twips", epsuTwips, 720, 0, {1270, 1270, 1270, 1270}, {}, 2540, 1440, 11905},
        {"no margins: an inch all round", epsuInches, 0, 0, {2540, 2540, 2540, 2540}, {}, 1270, 0.5, 8.268},
        {"the minimum margins hold", epsuInches, 1, 1, {2540, 2540, 2540, 2540}, {2540, 2540, 2540, 2540}, 0, 1,
         8.268},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedPrintDialogs user;
        PageSetupAnswer answer;
        answer.margins = RECT{row.answeredMargin, row.answeredMargin, row.answeredMargin, row.answeredMargin};
        answer.paper = POINT{21000, 29700};
        user.SetUp(answer);
        cCommonDialog dlg;
        PageSetupArgs args;
        args.Owner = 0x104;
        args.DisableOrientation = true;
        args.Units = row.units;
        args.LeftMargin = args.TopMargin = args.RightMargin = args.BottomMargin = row.margin;
        args.MinLeftMargin = args.MinTopMargin = args.MinRightMargin = args.MinBottomMargin = row.minMargin;
        ASSERT_TRUE(dlg.Dialog().VBPageSetupDlg(args));
        const PageSetupRequest& r = user.PageSetupRequests().at(0);
        EXPECT_EQ(r.margins.left, row.asked.left);
        EXPECT_EQ(r.margins.bottom, row.asked.bottom);
        EXPECT_EQ(r.minMargins.top, row.askedMin.top);
        EXPECT_EQ(r.hwndOwner, 0x104);
        EXPECT_TRUE(r.disableOrientation);
        EXPECT_FALSE(r.disablePaper);
        EXPECT_NEAR(args.LeftMargin, row.marginOut, 0.01 * row.marginOut + 0.001);
        EXPECT_NEAR(args.BottomMargin, row.marginOut, 0.01 * row.marginOut + 0.001);
        EXPECT_NEAR(args.PaperWidth, row.paperWidthOut, 0.001 * row.paperWidthOut);
    }
}

TEST_F(Dialogs, OneMarginGivenGivesAllFour) {
    ScriptedPrintDialogs user;
    user.SetUp(PageSetupAnswer{});
    PageSetupArgs args;
    args.TopMargin = 0.5;
    cCommonDialog dlg;
    ASSERT_TRUE(dlg.Dialog().VBPageSetupDlg(args));
    const RECT& asked = user.PageSetupRequests().at(0).margins;
    EXPECT_EQ(std::vector<int32_t>({asked.left, asked.top, asked.right, asked.bottom}),
              std::vector<int32_t>({0, 1270, 0, 0}));
}

TEST_F(Dialogs, PageSetupWithThePrinterObject) {
    auto printer = std::make_shared<PropertyBag>(PropertyBag{
        {"DeviceName", Variant("Laser")}, {"PaperSize", Variant(int32_t{9})}, {"Orientation", Variant(int32_t{2})}});
    PageSetupAnswer answer;
    answer.printerName = "Ink";
    answer.paperSize = DMPAPER_LETTER;
    answer.orientation = DMORIENT_PORTRAIT;
    cCommonDialog dlg;
    for (const bool second : {false, true}) {
        SCOPED_TRACE(second ? "VBPageSetupDlg2" : "VBPageSetupDlg");
        ScriptedPrintDialogs user;
        user.SetUp(answer).CancelSetUp();
        PageSetupArgs args;
        args.Printer = printer;
        args.PaperSize = 5;
        ASSERT_TRUE(second ? dlg.Dialog().VBPageSetupDlg2(args) : dlg.Dialog().VBPageSetupDlg(args));
        const PageSetupRequest& r = user.PageSetupRequests().at(0);
        // Only the second reads and writes the printer.
        EXPECT_EQ(r.printerName, second ? "Laser" : "");
        EXPECT_EQ(r.paperSize, second ? 9 : 5);
        EXPECT_EQ(r.orientation, second ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT);
        EXPECT_EQ(printer->GetProperty("DeviceName").ToString(), second ? "Ink" : "Laser");
        EXPECT_EQ(args.PaperSize, DMPAPER_LETTER);
        // A cancel changes nothing.
        args.LeftMargin = 3;
        EXPECT_FALSE(dlg.Dialog().VBPageSetupDlg(args));
        EXPECT_EQ(args.LeftMargin, 3);
        EXPECT_EQ(dlg.Dialog().APIReturn(), 0);
    }
}

TEST_F(Dialogs, VBGetFileTitle) {
    const std::pair<std::string, std::string> rows[] = {
        {"/games/data/world.pak", "world.pak"},
        {"world.pak", "world.pak"},
        {"/games/data/", ""},
        {"", ""},
        {"/games/*.pak", ""},
        {"/games/w?rld.pak", ""},
        {"/" + std::string(259, 'n'), std::string(259, 'n')},
        {"/" + std::string(260, 'n'), ""},  // no room for its zero
    };
    cCommonDialog dlg;
    for (const auto& [path, title] : rows) EXPECT_EQ(dlg.Dialog().VBGetFileTitle(path), title) << path;
}

TEST_F(Dialogs, ShowHelp) {
    fixtures::TempDir dir;
    const std::string file = dir / "quarrin.hlp";
    fixtures::WriteFile(file, "help");
    struct Row {
        const char* name;
        uint32_t command;
        std::string file;
        bool viewerOpens;
        bool viewerAsked;
        int32_t failure;
        std::string text;
    };
    const Row rows[] = {
        {"contents", HELP_CONTENTS, file, true, true, 0, ""},
        {"a context", HELP_CONTEXT, file, true, true, 0, ""},
        {"quit has nothing to close", HELP_QUIT, "", true, false, 0, ""},
        {"multikey is refused", HELP_MULTIKEY, file, true, false, kDlgErrHelpCommand,
         "Invalid WinHelp Command Passed to ShowHelp function."},
        {"setwinpos is refused", HELP_SETWINPOS, file, true, false, kDlgErrHelpCommand,
         "Invalid WinHelp Command Passed to ShowHelp function."},
        {"a missing file", HELP_CONTENTS, dir / "none.hlp", true, false, 2,
         "The system cannot find the file specified.\r\n"},
        {"no help file", HELP_CONTENTS, "", true, false, 2, "The system cannot find the file specified.\r\n"},
        {"a folder is no file", HELP_CONTENTS, dir.Path(), true, false, 2,
         "The system cannot find the file specified.\r\n"},
        {"no viewer opens it", HELP_CONTENTS, file, false, true, 1155,
         "No application is associated with the specified file for this operation.\r\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        fixtures::ScriptedFileDialogs files;
        fixtures::HelpRecorder viewer;
        viewer.Opens = row.viewerOpens;
        cCommonDialog dlg;
        dlg.ShowOpen();  // cancelled; ShowHelp is not a file dialog
        dlg.SetHelpCommand(static_cast<int32_t>(row.command));
        dlg.SetHelpFile(row.file);
        dlg.Sethwnd(0x104);
        const RuntimeError raised = ErrorOf([&] { dlg.ShowHelp(); });
        EXPECT_EQ(raised.Number, row.failure);
        EXPECT_FALSE(dlg.IsFileDialog());
        if (row.failure != 0) {
            EXPECT_EQ(raised.Source, "quarrin.cCommonDialog");
            EXPECT_EQ(raised.Description, row.text);
        }
        ASSERT_EQ(viewer.Requests.size(), row.viewerAsked ? 1u : 0u);
        if (row.viewerAsked) {
            EXPECT_EQ(viewer.Requests[0].file, row.file);
            EXPECT_EQ(viewer.Requests[0].command, row.command);
            EXPECT_EQ(viewer.Requests[0].hwnd, 0x104);
            EXPECT_EQ(viewer.Requests[0].data, 0u);
        }
    }
}
