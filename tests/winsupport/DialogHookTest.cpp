#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "fixtures/ScriptedDialogs.h"
#include "winsupport/WinsupportTestSupport.h"
#include "platform/CommonDialogs.h"
#include "platform/Runtime.h"
#include "platform/Windows.h"
#include "winsupport/cCommonDialog.h"
#include "winsupport/mDialogHook.h"

using fixtures::ScriptedFileDialogs;
using fixtures::ScriptedWindows;

using winsupporttest::Raised;

namespace {

// Writes down each event of a dialog object as "Name(argument)".
struct EventLog {
    explicit EventLog(cCommonDialog& dlg) {
        auto add = [this](const char* name) {
            return [this, name](int32_t hDlg) { Lines.push_back(std::string(name) + "(" + std::to_string(hDlg) + ")"); };
        };
        dlg.Events.InitDialog.Connect(add("InitDialog"));
        dlg.Events.FileChange.Connect(add("FileChange"));
        dlg.Events.FolderChange.Connect(add("FolderChange"));
        dlg.Events.TypeChange.Connect(add("TypeChange"));
        dlg.Events.ConfirmOK.Connect([this](bool& bRefuse) {
            Lines.push_back("ConfirmOK");
            bRefuse = Refuse;
        });
        dlg.Events.DialogClose.Connect([this] { Lines.push_back("DialogClose"); });
    }
    std::vector<std::string> Lines;
    bool Refuse = false;
};

// A file chooser that runs `body` while it is up, and then cancels.
class RunningDialog : public IFileDialogService {
public:
    explicit RunningDialog(std::function<void(const FileDialogRequest&)> body)
        : body_(std::move(body)), previous_(GetFileDialogService()) {
        SetFileDialogService(this);
    }
    ~RunningDialog() override { SetFileDialogService(previous_); }
    FileDialogAnswer Show(const FileDialogRequest& request) override {
        body_(request);
        return {};
    }

private:
    std::function<void(const FileDialogRequest&)> body_;
    IFileDialogService* previous_;
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
        std::vector<std::string> events;
        intptr_t result;
        int32_t msgResult;  // DWL_MSGRESULT afterwards; -7 where it is not touched
    };
    const int32_t h = CreateDialogWindow(0);
    const std::string hs = std::to_string(h);
    const Row rows[] = {
        {WM_INITDIALOG, {}, false, {"InitDialog(" + hs + ")"}, 0, -7},
        {WM_NCDESTROY, {}, false, {"DialogClose"}, 0, -7},
        {WM_NOTIFY, CDN_TYPECHANGE, false, {"TypeChange(" + hs + ")"}, 0, -7},
        {WM_NOTIFY, CDN_FILEOK, false, {"ConfirmOK"}, 0, 0},
        {WM_NOTIFY, CDN_FILEOK, true, {"ConfirmOK"}, 1, 1},
        {WM_NOTIFY, CDN_FOLDERCHANGE, false, {"FolderChange(" + hs + ")"}, 0, -7},
        {WM_NOTIFY, CDN_SELCHANGE, false, {"FileChange(" + hs + ")"}, 0, -7},
        {WM_NOTIFY, CDN_INITDONE, false, {}, 0, -7},
        {WM_NOTIFY, 0u - 605u, false, {}, 0, -7},  // CDN_HELP
        {WM_NOTIFY, {}, false, {}, 0, -7},
        {273, {}, false, {}, 0, -7},  // WM_COMMAND
        {0, {}, false, {}, 0, -7},
    };
    ScriptedFileDialogs none;  // restores the file dialog service after the run
    cCommonDialog dlg;
    EventLog log(dlg);
    dlg.SetHookDialog(true);
    bool ran = false;
    RunningDialog running([&](const FileDialogRequest& request) {
        ran = true;
        ASSERT_TRUE(request.events);
        for (const Row& row : rows) {
            SCOPED_TRACE(std::to_string(row.msg) + " " + std::to_string(row.code.value_or(0)));
            log.Lines.clear();
            log.Refuse = row.refuse;
            SetWindowLongA(h, DWL_MSGRESULT, -7);
            NMHDR header;
            header.code = row.code.value_or(0);
            const intptr_t lParam = row.code ? reinterpret_cast<intptr_t>(&header) : 0;
            EXPECT_EQ(mDialogHook::FileDialogHookProc(h, row.msg, 0, lParam), row.result);
            EXPECT_EQ(log.Lines, row.events);
            EXPECT_EQ(GetWindowLongA(h, DWL_MSGRESULT), row.msgResult);
        }
    });
    dlg.ShowOpen();
    EXPECT_TRUE(ran);
    DestroyDialogWindow(h);
}

TEST(DialogHook, EveryHookProcedureForwardsOnlyWhileADialogIsHeld) {
    using Proc = intptr_t (*)(int32_t, uint32_t, uintptr_t, intptr_t);
    const Proc procs[] = {mDialogHook::FileDialogHookProc, mDialogHook::PrintHookProc,
                          mDialogHook::PrintSetupHookProc, mDialogHook::PageSetupHookProc,
                          mDialogHook::ColorHookProc,      mDialogHook::FontHookProc};
    cCommonDialog dlg;
    EventLog log(dlg);
    dlg.SetHookDialog(true);
    // No dialog is up: nothing is held, nothing is raised.
    for (Proc proc : procs) EXPECT_EQ(proc(7, WM_INITDIALOG, 0, 0), 0);
    EXPECT_TRUE(log.Lines.empty());
    EXPECT_EQ(mDialogHook::GetDialogObject(), nullptr);

    RunningDialog running([&](const FileDialogRequest&) {
        EXPECT_EQ(mDialogHook::GetDialogObject().get(), &dlg.Dialog());
        EXPECT_EQ(dlg.Dialog().DialogObject(), &dlg);
        for (Proc proc : procs) proc(7, WM_INITDIALOG, 0, 0);
    });
    dlg.ShowSave();
    EXPECT_EQ(log.Lines, std::vector<std::string>(6, "InitDialog(7)"));
    // Both are cleared right after the dialog.
    EXPECT_EQ(mDialogHook::GetDialogObject(), nullptr);
    EXPECT_EQ(dlg.Dialog().DialogObject(), nullptr);
}

// A running file dialog's changes reach the events in the order the user
// made them, on the hook's child window of the dialog.
TEST(DialogHook, ARunningFileDialogReportsToTheEvents) {
    ScriptedFileDialogs user;
    cCommonDialog dlg;
    EventLog log(dlg);
    int32_t parent = -1;
    dlg.Events.InitDialog.Connect([&](int32_t hDlg) { parent = GetParent(hDlg); });
    dlg.SetHookDialog(true);
    dlg.SetFilter("Pak|*.pak|All|*.*");
    user.Report(DialogEvent::TypeChanged)
        .Report(DialogEvent::FolderChanged)
        .Report(DialogEvent::SelectionChanged)
        .Choose("/games/world.pak");
    dlg.ShowOpen();
    ASSERT_EQ(user.Requests.size(), 1u);
    const int32_t hDialog = user.Requests[0].hwndDialog;
    EXPECT_NE(hDialog, 0);
    EXPECT_EQ(parent, hDialog);
    ASSERT_EQ(log.Lines.size(), 6u);
    const std::string child = log.Lines[0].substr(11, log.Lines[0].size() - 12);
    EXPECT_EQ(log.Lines, (std::vector<std::string>{"InitDialog(" + child + ")", "TypeChange(" + child + ")",
                                                   "FolderChange(" + child + ")", "FileChange(" + child + ")",
                                                   "ConfirmOK", "DialogClose"}));
    EXPECT_EQ(dlg.Filename(), "/games/world.pak");
    // The dialog's windows are gone with it.
    EXPECT_EQ(GetParent(std::stoi(child)), 0);

    // Unhooked, a dialog reports nothing and has no window.
    dlg.SetHookDialog(false);
    log.Lines.clear();
    user.Report(DialogEvent::TypeChanged).Choose("/games/other.pak");
    dlg.ShowOpen();
    EXPECT_TRUE(log.Lines.empty());
    EXPECT_FALSE(user.Requests[1].events);
    EXPECT_EQ(user.Requests[1].hwndDialog, 0);
    EXPECT_EQ(dlg.Filename(), "/games/other.pak");
}

// A ConfirmOK handler that sets bRefuse keeps the dialog open: the refused
// choice is not taken, and the user's next choice is.
TEST(DialogHook, ARefusedOkKeepsTheDialogOpen) {
    for (const bool save : {false, true}) {
        SCOPED_TRACE(save ? "save" : "open");
        App::SetExecutable("/opt/quarrin", "quarrin");
        ScriptedFileDialogs user;
        cCommonDialog dlg;
        int32_t asked = 0;
        dlg.Events.ConfirmOK.Connect([&](bool& bRefuse) { bRefuse = ++asked == 1; });
        dlg.SetHookDialog(true);
        dlg.SetFilter("All|*.*");
        user.Choose("/out/refused.dat").Choose("/out/taken.dat");
        save ? dlg.ShowSave() : dlg.ShowOpen();
        EXPECT_EQ(asked, 2);
        EXPECT_EQ(user.Requests.size(), 1u);
        EXPECT_EQ(user.Refused, (std::vector<std::vector<std::string>>{{"/out/refused.dat"}}));
        EXPECT_EQ(dlg.Filename(), "/out/taken.dat");

        // Refusing every choice leaves the user only the cancel.
        dlg.Events.ConfirmOK.Connect([](bool& bRefuse) { bRefuse = true; });
        dlg.SetCancelError(true);
        dlg.SetFilter("All|*.*");
        user.Choose("/out/never.dat");
        EXPECT_EQ(Raised([&] { save ? dlg.ShowSave() : dlg.ShowOpen(); }).Number, kDlgErrCancel);
        EXPECT_EQ(dlg.Filename(), "");
    }
}

// A failure raised by a handler reaches the caller of the Show operation,
// and the hook is cleared behind it.
TEST(DialogHook, AFailureInAHandlerEndsTheDialogAndClearsTheHook) {
    ScriptedFileDialogs user;
    cCommonDialog dlg;
    dlg.SetHookDialog(true);
    dlg.Events.InitDialog.Connect([](int32_t) { RaiseError(vbErrInvalidCall); });
    user.Choose("/x");
    EXPECT_EQ(Raised([&] { dlg.ShowOpen(); }).Number, vbErrInvalidCall);
    EXPECT_EQ(mDialogHook::GetDialogObject(), nullptr);
    EXPECT_EQ(dlg.Dialog().DialogObject(), nullptr);
}

// The colour, font and print dialogs hook their own window, not a child.
TEST(DialogHook, TheOtherDialogsReportTheirStartAndEnd) {
    fixtures::ScriptedColorDialogs colours;
    fixtures::ScriptedFontDialogs fonts;
    fixtures::ScriptedPrintDialogs prints;
    cCommonDialog dlg;
    EventLog log(dlg);
    dlg.SetHookDialog(true);
    colours.Choose(0x123456);
    fonts.Choose(FontDialogAnswer{});
    prints.Print(PrintDialogAnswer{});
    struct Row {
        const char* name;
        std::function<void()> show;
        std::function<int32_t()> dialogWindow;
    } rows[] = {
        {"colour", [&] { dlg.ShowColor(); }, [&] { return colours.Requests().back().hwndDialog; }},
        {"font", [&] { dlg.ShowFont(); }, [&] { return fonts.Requests().back().hwndDialog; }},
        {"print", [&] { dlg.ShowPrinter(); }, [&] { return prints.PrintRequests().back().hwndDialog; }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        log.Lines.clear();
        row.show();
        const std::string h = std::to_string(row.dialogWindow());
        EXPECT_EQ(log.Lines, (std::vector<std::string>{"InitDialog(" + h + ")", "DialogClose"}));
        EXPECT_EQ(mDialogHook::GetDialogObject(), nullptr);
    }
}

// CentreDialog centres on the window named by the object, else on the work
// area, else on the screen; the dialog is the parent of hDlg after a file
// dialog. GetDialogSize reads the same window.
TEST(DialogHook, CentreDialogAndItsFallbacks) {
    const int32_t dialog = CreateDialogWindow(0);
    const int32_t child = CreateDialogWindow(dialog);
    constexpr int32_t kOwner = 0x104;
    constexpr int32_t kUnknown = 0x9990;
    struct Row {
        const char* name;
        bool fileDialog;
        std::optional<int32_t> centreTo;  // the object's hWnd; none: an object without one
        bool nullObject;
        bool workArea;
        bool screen;
        int32_t moved;  // the window moved, 0 for none
        RECT to;
    };
    const RECT dialogRect{10, 20, 60, 100};  // 50 by 80
    const Row rows[] = {
        {"on the window", false, kOwner, false, true, true, child, RECT{125, 110, 175, 190}},
        {"parent of a file dialog's hook", true, kOwner, false, true, true, dialog, RECT{125, 110, 175, 190}},
        {"no hWnd: the work area", false, {}, false, true, true, child, RECT{25, 75, 75, 155}},
        {"no object: the work area", false, {}, true, true, true, child, RECT{25, 75, 75, 155}},
        {"no work area: the screen", false, {}, true, false, true, child, RECT{375, 260, 425, 340}},
        {"nothing to centre on", false, {}, true, false, false, 0, {}},
        {"an unknown window", false, kUnknown, false, true, true, 0, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedWindows screen;
        screen.Windows[dialog] = dialogRect;
        screen.Windows[child] = dialogRect;
        screen.Windows[kOwner] = RECT{100, 100, 201, 200};  // odd width: the half truncates
        if (row.workArea) screen.Work = RECT{0, 30, 100, 200};
        if (row.screen) {
            screen.ScreenWidth = 800;
            screen.ScreenHeight = 600;
        }
        ScriptedFileDialogs user;
        cCommonDialog dlg;
        if (row.fileDialog) dlg.ShowOpen();  // cancelled; the object is now a file dialog's
        PropertyBag withoutHwnd;
        WindowObject window(row.centreTo.value_or(0));
        const ILateBound* object = row.nullObject ? nullptr : row.centreTo ? &window : &withoutHwnd;
        dlg.CentreDialog(child, object);
        if (row.moved == 0) {
            EXPECT_TRUE(screen.Moves.empty());
            continue;
        }
        ASSERT_EQ(screen.Moves.size(), 1u);
        EXPECT_EQ(screen.Moves[0].hWnd, row.moved);
        EXPECT_EQ(screen.Moves[0].rect.left, row.to.left);
        EXPECT_EQ(screen.Moves[0].rect.top, row.to.top);
        EXPECT_EQ(screen.Moves[0].rect.right, row.to.right);
        EXPECT_EQ(screen.Moves[0].rect.bottom, row.to.bottom);
        EXPECT_TRUE(screen.Moves[0].repaint);

        int32_t l = -1, t = -1, w = -1, h = -1;
        dlg.GetDialogSize(child, l, t, w, h);
        EXPECT_EQ(std::vector<int32_t>({l, t, w, h}), std::vector<int32_t>({row.to.left, row.to.top, 50, 80}));
    }
    // A window that can't be read gives all 0.
    ScriptedWindows empty;
    cCommonDialog dlg;
    int32_t l = -1, t = -1, w = -1, h = -1;
    dlg.GetDialogSize(child, l, t, w, h);
    EXPECT_EQ(std::vector<int32_t>({l, t, w, h}), std::vector<int32_t>({0, 0, 0, 0}));
    DestroyDialogWindow(child);
    DestroyDialogWindow(dialog);
}
