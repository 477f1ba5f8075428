#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "fixtures/ErrorOf.h"
#include "fixtures/ScriptedDialogs.h"
#include "platform/Runtime.h"
#include "platform/Windows.h"
#include "winsupport/cCommonDialog.h"
#include "winsupport/mDialogHook.h"

using fixtures::ScriptedFileDialogs;
using Lines = std::vector<std::string>;

namespace {

// Writes down each event of a dialog object as "Name(argument)".
struct EventLog {
    explicit EventLog(cCommonDialog& dlg) {
        auto& e = dlg.Events;
        for (const auto& [event, name] : {std::pair{&e.InitDialog, "InitDialog"}, {&e.FileChange, "FileChange"},
                                          {&e.FolderChange, "FolderChange"}, {&e.TypeChange, "TypeChange"}})
            event->Connect([this, name = name](int32_t hDlg) { lines.push_back(name + ("(" + std::to_string(hDlg) + ")")); });
        e.ConfirmOK.Connect([this](bool& bRefuse) {
            lines.push_back("ConfirmOK");
            bRefuse = refuse;
        });
        e.DialogClose.Connect([this] { lines.push_back("DialogClose"); });
    }
    Lines lines;
    bool refuse = false;
};

// A file chooser that runs `body` while it is up, and then cancels.
struct RunningDialog : fixtures::Installed<IFileDialogService, GetFileDialogService, SetFileDialogService> {
    explicit RunningDialog(std::function<void(const FileDialogRequest&)> b) : body(std::move(b)) {}
    FileDialogAnswer Show(const FileDialogRequest& request) override {
        body(request);
        return {};
    }
    std::function<void(const FileDialogRequest&)> body;
};

}  // namespace

// Each message and notification code reaches its event with its argument and
// gives its result; the rest are ignored. The table runs while a hooked dialog
// is up, through the file dialog's hook procedure.
TEST(DialogHook, EachMessageReachesItsEvent) {
    struct Row {
        uint32_t msg;
        std::optional<uint32_t> code;  // WM_NOTIFY's code; none: lParam 0
        bool refuse;
        std::string event;
        intptr_t result;
        int32_t msgResult;  // DWL_MSGRESULT afterwards; -7 where it is not touched
    };
    const int32_t h = CreateDialogWindow(0);
    const std::string hs = "(" + std::to_string(h) + ")";
    const Row rows[] = {
        {WM_INITDIALOG, {}, false, "InitDialog" + hs, 0, -7},
        {WM_NCDESTROY, {}, false, "DialogClose", 0, -7},
        {WM_NOTIFY, CDN_TYPECHANGE, false, "TypeChange" + hs, 0, -7},
        {WM_NOTIFY, CDN_FILEOK, false, "ConfirmOK", 0, 0},
        {WM_NOTIFY, CDN_FILEOK, true, "ConfirmOK", 1, 1},
        {WM_NOTIFY, CDN_FOLDERCHANGE, false, "FolderChange" + hs, 0, -7},
        {WM_NOTIFY, CDN_SELCHANGE, false, "FileChange" + hs, 0, -7},
        {WM_NOTIFY, CDN_INITDONE, false, "", 0, -7},
        {WM_NOTIFY, 0u - 605u, false, "", 0, -7},  // CDN_HELP
        {WM_NOTIFY, {}, false, "", 0, -7},
        {273, {}, false, "", 0, -7},  // WM_COMMAND
        {0, {}, false, "", 0, -7},
    };
    using Proc = intptr_t (*)(int32_t, uint32_t, uintptr_t, intptr_t);
    const Proc others[] = {mDialogHook::PrintHookProc, mDialogHook::PrintSetupHookProc, mDialogHook::PageSetupHookProc,
                           mDialogHook::ColorHookProc, mDialogHook::FontHookProc};
    cCommonDialog dlg;
    EventLog log(dlg);
    dlg.SetHookDialog(true);
    // No dialog is up: nothing is held, nothing is raised.
    EXPECT_EQ(mDialogHook::FileDialogHookProc(7, WM_INITDIALOG, 0, 0), 0);
    EXPECT_TRUE(log.lines.empty());
    bool ran = false;
    RunningDialog running([&](const FileDialogRequest& request) {
        ran = true;
        ASSERT_TRUE(request.events);
        EXPECT_EQ(mDialogHook::GetDialogObject().get(), &dlg.Dialog());
        EXPECT_EQ(dlg.Dialog().DialogObject(), &dlg);
        for (const Row& row : rows) {
            SCOPED_TRACE(std::to_string(row.msg) + " " + std::to_string(row.code.value_or(0)));
            log.lines.clear();
            log.refuse = row.refuse;
            SetWindowLongA(h, DWL_MSGRESULT, -7);
            NMHDR header;
            header.code = row.code.value_or(0);
            const intptr_t lParam = row.code ? reinterpret_cast<intptr_t>(&header) : 0;
            EXPECT_EQ(mDialogHook::FileDialogHookProc(h, row.msg, 0, lParam), row.result);
            EXPECT_EQ(log.lines, row.event.empty() ? Lines{} : Lines{row.event});
            EXPECT_EQ(GetWindowLongA(h, DWL_MSGRESULT), row.msgResult);
        }
        // Every hook procedure forwards to the dialog held.
        log.lines.clear();
        for (Proc proc : others) proc(7, WM_INITDIALOG, 0, 0);
        EXPECT_EQ(log.lines, Lines(5, "InitDialog(7)"));
    });
    dlg.ShowOpen();
    EXPECT_TRUE(ran);
    DestroyDialogWindow(h);
    // Both are cleared right after the dialog, also when a handler fails.
    EXPECT_EQ(mDialogHook::GetDialogObject(), nullptr);
    dlg.Events.InitDialog.Connect([](int32_t) { RaiseError(vbErrInvalidCall); });
    EXPECT_EQ(fixtures::ErrorOf([&] { dlg.ShowOpen(); }).Number, vbErrInvalidCall);
    EXPECT_EQ(mDialogHook::GetDialogObject(), nullptr);
    EXPECT_EQ(dlg.Dialog().DialogObject(), nullptr);
}

// A running file dialog's changes reach the events in the order the user
// made them, on the hook's child window of the dialog. A ConfirmOK handler
// that sets bRefuse keeps the dialog open: the refused choice is not taken,
// and the user's next choice is.
TEST(DialogHook, ARunningFileDialogReportsToTheEvents) {
    ScriptedFileDialogs user;
    cCommonDialog dlg;
    EventLog log(dlg);
    int32_t asked = 0;
    dlg.Events.ConfirmOK.Connect([&](bool& bRefuse) { bRefuse = ++asked == 1; });
    int32_t parent = -1;
    dlg.Events.InitDialog.Connect([&](int32_t hDlg) { parent = GetParent(hDlg); });
    dlg.SetHookDialog(true);
    dlg.SetFilter("Pak|*.pak|All|*.*");
    user.Report(DialogEvent::TypeChanged)
        .Report(DialogEvent::FolderChanged)
        .Report(DialogEvent::SelectionChanged)
        .Choose("/games/refused.pak")
        .Choose("/games/world.pak");
    dlg.ShowOpen();
    EXPECT_EQ(user.Refused, (std::vector<Lines>{{"/games/refused.pak"}}));
    const int32_t hDialog = user.Requests.at(0).hwndDialog;
    EXPECT_NE(hDialog, 0);
    EXPECT_EQ(parent, hDialog);
    ASSERT_EQ(log.lines.size(), 7u);
    const std::string child = log.lines[0].substr(11, log.lines[0].size() - 12);
    const std::string c = "(" + child + ")";
    EXPECT_EQ(log.lines, (Lines{"InitDialog" + c, "TypeChange" + c, "FolderChange" + c, "FileChange" + c, "ConfirmOK",
                                "ConfirmOK", "DialogClose"}));
    EXPECT_EQ(dlg.Filename(), "/games/world.pak");
    EXPECT_EQ(GetParent(std::stoi(child)), 0);  // the dialog's windows are gone with it

    // Refusing every choice leaves the user only the cancel.
    dlg.Events.ConfirmOK.Connect([](bool& bRefuse) { bRefuse = true; });
    dlg.SetCancelError(true);
    user.Choose("/out/never.dat");
    EXPECT_EQ(fixtures::ErrorOf([&] { dlg.ShowSave(); }).Number, kDlgErrCancel);
    EXPECT_EQ(dlg.Filename(), "");
    // Unhooked, a dialog reports nothing and has no window.
    dlg.SetHookDialog(false);
    log.lines.clear();
    user.Report(DialogEvent::TypeChanged).Choose("/games/other.pak");
    dlg.ShowOpen();
    EXPECT_TRUE(log.lines.empty());
    EXPECT_FALSE(user.Requests.back().events);
    EXPECT_EQ(user.Requests.back().hwndDialog, 0);
    EXPECT_EQ(dlg.Filename(), "/games/other.pak");
}

// The colour, font and print dialogs hook their own window, not a child.
TEST(DialogHook, TheOtherDialogsReportTheirStartAndEnd) {
    fixtures::ScriptedColorDialogs colours;
    fixtures::ScriptedFontDialogs fonts;
    fixtures::ScriptedPrintDialogs prints;
    cCommonDialog dlg;
    EventLog log(dlg);
    dlg.SetHookDialog(true);
    const std::pair<std::function<void()>, std::function<int32_t()>> rows[] = {
        {[&] { dlg.ShowColor(); }, [&] { return colours.Requests().back().hwndDialog; }},
        {[&] { dlg.ShowFont(); }, [&] { return fonts.Requests().back().hwndDialog; }},
        {[&] { dlg.ShowPrinter(); }, [&] { return prints.PrintRequests().back().hwndDialog; }},
    };
    for (const auto& [show, dialogWindow] : rows) {
        log.lines.clear();
        show();
        EXPECT_EQ(log.lines, (Lines{"InitDialog(" + std::to_string(dialogWindow()) + ")", "DialogClose"}));
    }
    EXPECT_EQ(mDialogHook::GetDialogObject(), nullptr);
}

// CentreDialog centres on the window named by the object, else on the work
// area, else on the screen; the dialog is the parent of hDlg after a file
// dialog. GetDialogSize reads the same window.
TEST(DialogHook, CentreDialogAndItsFallbacks) {
    const int32_t dialog = CreateDialogWindow(0);
    const int32_t child = CreateDialogWindow(dialog);
    enum Object { Window, Unknown, NoHwnd, None };
    struct Row {
        bool fileDialog;
        Object object;
        bool workArea, screen;
        std::vector<int32_t> to;  // left, top, width, height; where it was when it didn't move
    };
    const Row rows[] = {
        {false, Window, true, true, {125, 110, 50, 80}}, {true, Window, true, true, {125, 110, 50, 80}},
        {false, NoHwnd, true, true, {25, 75, 50, 80}},   {false, None, true, true, {25, 75, 50, 80}},
        {false, None, false, true, {375, 260, 50, 80}},  {false, None, false, false, {10, 20, 50, 80}},
        {false, Unknown, true, true, {10, 20, 50, 80}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.object) + (row.fileDialog ? " file" : "") + (row.workArea ? " work" : "") +
                     (row.screen ? " screen" : ""));
        fixtures::ScriptedWindows screen;
        screen.Windows[dialog] = screen.Windows[child] = RECT{10, 20, 60, 100};  // 50 by 80
        screen.Windows[0x104] = RECT{100, 100, 201, 200};                         // odd width: the half truncates
        if (row.workArea) screen.Work = RECT{0, 30, 100, 200};
        if (row.screen) screen.ScreenWidth = 800, screen.ScreenHeight = 600;
        ScriptedFileDialogs user;
        cCommonDialog dlg;
        if (row.fileDialog) dlg.ShowOpen();  // cancelled; the object is now a file dialog's
        PropertyBag withoutHwnd;
        WindowObject window(row.object == Window ? 0x104 : 0x9990);
        dlg.CentreDialog(child, row.object == None ? nullptr : row.object == NoHwnd ? static_cast<const ILateBound*>(&withoutHwnd) : &window);
        const bool moves = row.to[0] != 10;
        ASSERT_EQ(screen.Moves.size(), moves ? 1u : 0u);
        for (const auto& m : screen.Moves) {
            EXPECT_EQ(m.hWnd, row.fileDialog ? dialog : child);
            EXPECT_EQ(std::vector<int32_t>({m.rect.left, m.rect.top, m.rect.right - m.rect.left, m.rect.bottom - m.rect.top}), row.to);
            EXPECT_TRUE(m.repaint);
        }
        std::vector<int32_t> size(4, -1);
        dlg.GetDialogSize(child, size[0], size[1], size[2], size[3]);
        EXPECT_EQ(size, row.to);
    }
    // A window that can't be read gives all 0.
    fixtures::ScriptedWindows empty;
    std::vector<int32_t> size(4, -1);
    cCommonDialog().GetDialogSize(child, size[0], size[1], size[2], size[3]);
    EXPECT_EQ(size, std::vector<int32_t>(4, 0));
    DestroyDialogWindow(child);
    DestroyDialogWindow(dialog);
}
