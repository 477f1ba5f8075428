#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <optional>
#include <tuple>

#include "fixtures/ByteWriter.h"
#include "fixtures/ErrorOf.h"
#include "fixtures/ScriptedDialogs.h"
#include "platform/SystemColors.h"
#include "winsupport/cCommonDialog.h"

using fixtures::ErrorOf;

namespace {

// The names of the switches that are on, each after a blank.
std::string On(std::initializer_list<std::pair<bool, const char*>> switches) {
    std::string text;
    for (const auto& [on, name] : switches) text += on ? std::string(" ") + name : "";
    return text;
}

std::string N(int32_t n) { return " " + std::to_string(n); }

// Sets whole-number properties of a dialog object in turn.
using Setter = void (cCommonDialog::*)(int32_t);
void Set(cCommonDialog& dlg, std::initializer_list<std::pair<Setter, int32_t>> values) {
    for (const auto& [set, value] : values) (dlg.*set)(value);
}

}  // namespace

TEST(Dialogs, ShowColor) {
    struct Row {
        int32_t flags, colorIn;
        std::optional<uint32_t> choice;  // none: cancelled
        bool cancelError;
        std::string asked;  // the colour first selected and the dialog's switches
        int32_t colorOut, failure;
    };
    const Row rows[] = {
        {CC_FULLOPEN, 0x112233, 0x445566, false, " 1122867 full solid", 0x445566, 0},
        {CC_PREVENTFULLOPEN | CC_ANYCOLOR, 0, 0x010203, false, " 0 prevent", 0x010203, 0},
        {CC_ANYCOLOR, static_cast<int32_t>(0x80000000u | COLOR_BTNFACE), 1, false, " 12632256", 1, 0},  // translated
        {CC_ANYCOLOR, static_cast<int32_t>(0x81000000u), 1, false, " 16777215", 1, 0},  // untranslatable: -1
        {CC_ANYCOLOR, 0x10, {}, true, " 16", 0x10, kDlgErrCancel},  // a cancel keeps the colour
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.asked);
        fixtures::ScriptedColorDialogs user;
        row.choice ? user.Choose(*row.choice) : user.Cancel();
        cCommonDialog dlg;
        Set(dlg, {{&cCommonDialog::Setflags, row.flags}, {&cCommonDialog::SetColor, row.colorIn}, {&cCommonDialog::Sethwnd, 0x104}});
        dlg.SetCancelError(row.cancelError);
        EXPECT_EQ(ErrorOf([&] { dlg.ShowColor(); }).Number, row.failure);
        const ColorDialogRequest& r = user.Requests().at(0);
        EXPECT_EQ(N(r.color) + On({{r.fullOpen, "full"}, {r.preventFullOpen, "prevent"}, {r.solidOnly, "solid"}}),
                  row.asked);
        EXPECT_EQ(r.hwndOwner, 0x104);
        EXPECT_EQ(dlg.Color(), row.colorOut);
        EXPECT_FALSE(dlg.IsFileDialog());
    }
    // The custom colours start as the system colours and keep the user's changes.
    fixtures::ScriptedColorDialogs user;
    cCommonDialog dlg;
    user.Choose(0x20, std::make_pair(3, 0xABCDEF)).Choose(0x30);
    dlg.ShowColor();
    for (int16_t i = 0; i < 16; ++i) EXPECT_EQ(user.Requests()[0].customColors[i], GetSysColor(i)) << i;
    dlg.SetCustomColor(15, 0x123);
    dlg.ShowColor();
    EXPECT_EQ(user.Requests()[1].customColors[3] + user.Requests()[1].customColors[15], 0xABCDEFu + 0x123u);
    EXPECT_EQ(ErrorOf([&] { dlg.CustomColor(16); }).Number, vbErrSubscript);
    EXPECT_EQ(ErrorOf([&] { dlg.SetCustomColor(-1, 0); }).Number, vbErrSubscript);
    ChooseColorArgs args;  // a direct caller gets -1 for a cancelled dialog
    EXPECT_FALSE(dlg.Dialog().VBChooseColor(args));
    EXPECT_EQ(args.Color, -1);
}

TEST(Dialogs, ShowFont) {
    struct Row {
        StdFont in;
        int32_t fontColor, flags, min, max;
        std::string asked;  // face, tenths of a point, weight and switches
        std::optional<FontDialogAnswer> answer;
        std::string got;  // the font and flags afterwards
    };
    const StdFont arial{"Arial", 10, true, false, false, false};
    const std::string g(40, 'G');
    const Row rows[] = {
        {StdFont{}, 0, 0, 0, 0, "MS Sans Serif 80 400", std::nullopt, "MS Sans Serif 8 0"},  // a cancel raises
        // Without the effects the dialog gives back neither colour nor underline nor strikeout.
        {arial, 0, 0, 0, 0, "Arial 100 700", FontDialogAnswer{true, "Courier New", 125, FW_NORMAL, true, true, true, 0xFF},
         "Courier New 12 i 0 init screen"},
        {StdFont{"MS Sans Serif", 8, false, true}, 0x0000FF, 0, 0, 0, "MS Sans Serif 80 400 i effects",
         FontDialogAnswer{true, "Tahoma", 90, FW_BOLD, false, true, true, 0x00FF00}, "Tahoma 9 b u s 65280 init screen"},
        {arial, 0, 0, 8, 12, "Arial 100 700 8-12", FontDialogAnswer{true, "Arial", 200, FW_BOLD},
         "Arial 12 b 0 init screen limit"},
        {arial, 0, CF_PRINTERFONTS, 0, 0, "Arial 100 700 printer dc77", FontDialogAnswer{true, "Arial", 100, FW_BOLD},
         "Arial 10 b 0 init"},
        // A face name is cut to the record's 31 characters.
        {StdFont{std::string(40, 'F'), 10}, 0, CF_SCALABLEONLY, 0, 0, std::string(31, 'F') + " 100 400 scalable",
         FontDialogAnswer{true, g, 100}, g.substr(9) + " 10 0 init screen"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.asked);
        fixtures::ScriptedFontDialogs user;
        row.answer ? user.Choose(*row.answer) : user.Cancel();
        cCommonDialog dlg;
        dlg.SetFont(std::make_shared<StdFont>(row.in));
        Set(dlg, {{&cCommonDialog::SetFontColor, row.fontColor}, {&cCommonDialog::Setflags, row.flags},
                  {&cCommonDialog::SetMin, row.min}, {&cCommonDialog::SetMax, row.max}});
        dlg.SetCancelError(true);
        dlg.SetObject(std::make_shared<PropertyBag>(PropertyBag{{"hDC", Variant(int32_t{77})}}));
        EXPECT_EQ(ErrorOf([&] { dlg.ShowFont(); }).Number, row.answer ? 0 : kDlgErrCancel);
        const FontDialogRequest& r = user.Requests().at(0);
        EXPECT_EQ(r.faceName + N(r.pointSize) + N(r.weight) +
                      On({{r.italic, "i"}, {r.underline, "u"}, {r.strikeOut, "s"}, {r.effects, "effects"},
                          {r.printerFonts, "printer"}, {r.scalableOnly, "scalable"}}) +
                      (r.sizeMax ? N(r.sizeMin) + "-" + std::to_string(r.sizeMax) : "") +
                      (r.printerDC ? " dc" + std::to_string(r.printerDC) : ""),
                  row.asked);
        const uint32_t f = row.answer ? static_cast<uint32_t>(dlg.flags()) : 0;  // the flags as the dialog had them
        EXPECT_EQ(dlg.FontName() + N(dlg.FontSize()) +
                      On({{dlg.FontBold(), "b"}, {dlg.FontItalic(), "i"}, {dlg.FontUnderline(), "u"},
                          {dlg.FontStrikethru(), "s"}}) +
                      N(dlg.FontColor()) +
                      On({{(f & CF_INITTOLOGFONTSTRUCT) != 0, "init"}, {(f & CF_SCREENFONTS) != 0, "screen"},
                          {(f & CF_LIMITSIZE) != 0, "limit"}}),
                  row.got);
    }
}

TEST(Dialogs, ShowPrinter) {
    struct Row {
        int32_t flags, fromPage, toPage, min, max, copies;
        std::string asked;
        std::optional<PrintDialogAnswer> answer;
        std::string got;  // copies, pages and the page-number flag afterwards
    };
    const int32_t all = static_cast<int32_t>(PD_PAGENUMS | PD_NOSELECTION | PD_HIDEPRINTTOFILE |
                                             PD_DISABLEPRINTTOFILE | PD_PRINTTOFILE | PD_COLLATE | PD_NOWARNING);
    const Row rows[] = {
        // Equal limits disable the page range.
        {0, 0, 0, 0, 0, 0, "all nopages 1 0-0",
         PrintDialogAnswer{true, "", 3, false, DMORIENT_PORTRAIT, DMPAPER_A4, PrintRange::PageNumbers, 2, 5},
         " 3 2-5 pages"},
        {all, 3, 4, 1, 10, 2, "pages nosel hidefile nofile tofile collate 2 3-4",
         PrintDialogAnswer{true, "", 2, true, DMORIENT_PORTRAIT, DMPAPER_A4, PrintRange::All, 0, 99}, " 2 1-10"},
        {0, 1, 1, 1, 9, 6, "all 6 1-1", std::nullopt, " 6 1-1"},  // a cancel never raises
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.asked);
        fixtures::ScriptedPrintDialogs user;
        row.answer ? user.Print(*row.answer) : user.CancelPrint();
        cCommonDialog dlg;
        Set(dlg, {{&cCommonDialog::Setflags, row.flags}, {&cCommonDialog::SetFromPage, row.fromPage},
                  {&cCommonDialog::SetToPage, row.toPage}, {&cCommonDialog::SetMin, row.min},
                  {&cCommonDialog::SetMax, row.max}, {&cCommonDialog::SetCopies, row.copies}});
        dlg.SetCancelError(true);
        EXPECT_EQ(ErrorOf([&] { dlg.ShowPrinter(); }).Number, 0);
        const PrintDialogRequest& r = user.PrintRequests().at(0);
        EXPECT_EQ(std::string(r.range == PrintRange::PageNumbers ? "pages" : "all") +
                      On({{r.noPageNumbers, "nopages"}, {r.noSelection, "nosel"}, {r.hidePrintToFile, "hidefile"},
                          {r.disablePrintToFile, "nofile"}, {r.printToFile, "tofile"}, {r.collate, "collate"}}) +
                      N(r.copies) + N(r.fromPage) + "-" + std::to_string(r.toPage),
                  row.asked);
        EXPECT_EQ(N(dlg.Copies()) + N(dlg.FromPage()) + "-" + std::to_string(dlg.ToPage()) +
                      On({{(dlg.flags() & PD_PAGENUMS) != 0, "pages"}}),
                  row.got);
    }
    // The printer object is read and written by name; a value beyond the
    // setting's 16 bits is passed over like a missing one, and goes back as
    // the setting it left.
    fixtures::ScriptedPrintDialogs user;
    auto printer = std::make_shared<PropertyBag>(PropertyBag{
        {"DeviceName", Variant("Laser")}, {"Copies", Variant(4)}, {"PrintQuality", Variant(70000)},
        {"Orientation", Variant(2)}, {"PaperSize", Variant(9)}});
    user.Print(PrintDialogAnswer{true, "Ink", 1, false, DMORIENT_LANDSCAPE, DMPAPER_LETTER});
    cCommonDialog dlg;
    dlg.SetObject(printer);
    dlg.ShowPrinter();
    const PrintDialogRequest& r = user.PrintRequests().at(0);
    EXPECT_EQ(r.printerName + N(r.copies) + N(r.paperSize) + N(r.orientation), "Laser 4 9 2");
    EXPECT_EQ(printer->GetProperty("devicename").ToString(), "Ink");
    for (const auto& [name, value] : {std::pair{"Copies", 1}, {"Orientation", int(DMORIENT_LANDSCAPE)},
                                      {"PaperSize", int(DMPAPER_LETTER)}, {"PrintQuality", 0}})
        EXPECT_EQ(printer->GetProperty(name).ToLong(), value) << name;
    EXPECT_EQ(dlg.Copies(), 1);
    PrintDlgArgs args;  // collation comes back to a direct caller
    user.Print(PrintDialogAnswer{true, "Ink", 2, true});
    ASSERT_TRUE(dlg.Dialog().VBPrintDlg(args));
    EXPECT_TRUE(args.Collate && !user.PrintRequests().at(1).collate);
    EXPECT_EQ(args.Copies, 2);
}

TEST(Dialogs, PageSetupConvertsToAndFromTheCallersUnit) {
    struct Row {
        EPageSetupUnits units;
        double top, others, min;  // the caller's margins
        std::string asked;        // left, top and least top margin, in hundredths of a millimetre
        double marginOut, paperWidthOut;
    };
    const Row rows[] = {
        {epsuMillimeters, 10, 10, 0, " 1001 1001 0", 12.7, 210.01},
        {epsuTwips, 720, 720, 360, " 1270 1270 635", 720, 11905},
        {epsuInches, 0, 0, 0, " 2540 2540 0", 0.5, 8.268},  // none given: an inch
        {epsuInches, 0.5, 0, 0, " 0 1270 0", 0.5, 8.268},   // one given gives all four
        {epsuInches, 1, 1, 1, " 2540 2540 2540", 1, 8.268},  // the least margins hold
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.asked);
        fixtures::ScriptedPrintDialogs user;
        user.SetUp(PageSetupAnswer{.accepted = true, .paper = POINT{21000, 29700},
                                   .margins = RECT{1270, 1270, 1270, 1270}});
        PageSetupArgs args;
        args.Owner = 0x104;
        args.DisableOrientation = true;
        args.Units = row.units;
        args.TopMargin = row.top;
        args.LeftMargin = args.RightMargin = args.BottomMargin = row.others;
        args.MinLeftMargin = args.MinTopMargin = args.MinRightMargin = args.MinBottomMargin = row.min;
        ASSERT_TRUE(cCommonDialog().Dialog().VBPageSetupDlg(args));
        const PageSetupRequest& r = user.PageSetupRequests().at(0);
        EXPECT_EQ(N(r.margins.left) + N(r.margins.top) + N(r.minMargins.top) + N(r.hwndOwner) +
                      On({{r.disableOrientation, "orientation"}, {r.disablePaper, "paper"}}),
                  row.asked + " 260 orientation");
        EXPECT_NEAR(args.LeftMargin, row.marginOut, 0.01 * row.marginOut);
        EXPECT_NEAR(args.BottomMargin, row.marginOut, 0.01 * row.marginOut);
        EXPECT_NEAR(args.PaperWidth, row.paperWidthOut, 0.001 * row.paperWidthOut);
    }
}

TEST(Dialogs, ShowHelp) {
    App::SetExecutable("/opt/quarrin", "quarrin");
    fixtures::TempDir dir;
    fixtures::WriteFile(dir / "quarrin.hlp", "help");
    const std::string refused = "quarrin.cCommonDialogInvalid WinHelp Command Passed to ShowHelp function.";
    const std::string missing = "quarrin.cCommonDialogThe system cannot find the file specified.\r\n";
    struct Row {
        uint32_t command;
        std::string name;  // the help file in the test's folder; none: ""
        bool opens, asked;  // whether a viewer opens the file, and whether it was asked
        int32_t failure;
        std::string text;
    };
    const Row rows[] = {
        {HELP_CONTEXT, "quarrin.hlp", true, true, 0, ""},
        {HELP_QUIT, "", true, false, 0, ""},  // nothing to close
        {HELP_MULTIKEY, "quarrin.hlp", true, false, kDlgErrHelpCommand, refused},
        {HELP_SETWINPOS, "quarrin.hlp", true, false, kDlgErrHelpCommand, refused},
        {HELP_CONTENTS, "none.hlp", true, false, 2, missing},
        {HELP_CONTENTS, ".", true, false, 2, missing},  // a folder is no file
        {HELP_CONTENTS, "quarrin.hlp", false, true, 1155,
         "quarrin.cCommonDialogNo application is associated with the specified file for this operation.\r\n"},
    };
    for (const auto& [command, name, opens, asked, failure, text] : rows) {
        SCOPED_TRACE(name + N(command));
        fixtures::ScriptedFileDialogs files;
        fixtures::HelpRecorder viewer;
        viewer.Opens = opens;
        cCommonDialog dlg;
        dlg.ShowOpen();  // cancelled; ShowHelp is not a file dialog
        Set(dlg, {{&cCommonDialog::SetHelpCommand, static_cast<int32_t>(command)}, {&cCommonDialog::Sethwnd, 0x104}});
        const std::string file = name.empty() ? "" : dir / name;
        dlg.SetHelpFile(file);
        const RuntimeError raised = ErrorOf([&] { dlg.ShowHelp(); });
        EXPECT_EQ(raised.Number, failure);
        EXPECT_EQ(raised.Source + raised.Description, text);
        EXPECT_FALSE(dlg.IsFileDialog());
        ASSERT_EQ(viewer.Requests.size(), asked ? 1u : 0u);
        for (const HelpRequest& h : viewer.Requests)
            EXPECT_EQ(h.file + N(h.command) + N(h.hwnd) + N(h.data), file + N(command) + " 260 0");
    }
}
