#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fixtures/ErrorOf.h"
#include "fixtures/ScriptedDialogs.h"
#include "platform/Runtime.h"
#include "platform/Windows.h"
#include "winsupport/cCommonDialog.h"
#include "winsupport/mDialogHook.h"

using fixtures::ErrorOf;
using fixtures::ScriptedFileDialogs;

using Lines = std::vector<std::string>;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

class FileDialog : public ::testing::Test {
protected:
    void SetUp() override { App::SetExecutable("/opt/quarrin", "quarrin"); }
    ScriptedFileDialogs user;
    cCommonDialog dlg;
};

// Writes down each event of a dialog object as "Name(argument)".
struct EventLog {
    explicit EventLog(cCommonDialog& dlg) {
        auto& e = dlg.Events;
        for (const auto& [event, name] : {std::pair{&e.InitDialog, "InitDialog"}, {&e.FileChange, "FileChange"},
                                          {&e.FolderChange, "FolderChange"}, {&e.TypeChange, "TypeChange"}})
            event->Connect([this, name = name](int32_t hDlg) { lines.push_back(name + ("(" + std::to_string(hDlg) + ")")); });
        e.ConfirmOK.Connect([this](bool&) { lines.push_back("ConfirmOK"); });
        e.DialogClose.Connect([this] { lines.push_back("DialogClose"); });
    }
    Lines lines;
};

}  // namespace

TEST(FilterText, BarsAndColonsBecomeZerosAndEntriesAndTitlesAreFound) {
    // Bars and colons become zeros (the file dialogs below see the pairs); the
    // loop over the text counts in 16 bits.
    EXPECT_EQ(GCommonDialog::PlatformFilter(std::string(32767, 'a')).size(), 32769u);
    EXPECT_EQ(ErrorOf([] { GCommonDialog::PlatformFilter(std::string(32768, 'a')); }).Number, 6);

    const std::string two("Pak\0*.pak\0All\0*.*\0\0", 19);
    const std::string open("A\0*.a", 5);  // a last pattern without its zero runs to the end
    const std::tuple<std::string, int32_t, std::string> entries[] = {
        {two, 1, std::string("Pak\0*.pak", 9)}, {two, 2, std::string("All\0*.*", 7)}, {two, 0, ""}, {two, -1, ""},
        {two, 9, ""}, {"", 1, ""}, {"no zero at all", 1, ""}, {open, 1, open}, {open, 2, ""},
    };
    for (const auto& [text, index, entry] : entries) EXPECT_EQ(GCommonDialog::FilterEntry(text, index), entry) << index;
    const std::pair<std::string, std::string> titles[] = {
        {"/games/data/world.pak", "world.pak"}, {"world.pak", "world.pak"}, {"/games/data/", ""}, {"/games/*.pak", ""},
        {"/games/w?rld.pak", ""}, {"/" + std::string(259, 'n'), std::string(259, 'n')},
        {"/" + std::string(260, 'n'), ""},  // no room for its zero
    };
    for (const auto& [path, title] : titles) EXPECT_EQ(cCommonDialog().Dialog().VBGetFileTitle(path), title) << path;
}

TEST_F(FileDialog, TheChooserGetsWhatTheCallerSet) {
    user.Choose("/games/data/world.pak", 1).Cancel();
    dlg.SetFilter("Pak Files (*.pak)|*.pak|All Files (*.*)|*.*");
    dlg.SetFilterIndex(2);
    dlg.SetDialogTitle("Open a PAK");
    dlg.SetInitDir("/games/data");
    dlg.SetFilename("start.pak");
    dlg.Sethwnd(4242);
    dlg.Setflags(OFN_FILEMUSTEXIST | OFN_HIDEREADONLY);
    dlg.ShowOpen();
    ASSERT_EQ(user.Requests.size(), 1u);
    const FileDialogRequest& r = user.Requests[0];
    EXPECT_EQ(r.filters, (Pairs{{"Pak Files (*.pak)", "*.pak"}, {"All Files (*.*)", "*.*"}}));
    EXPECT_EQ(r.title + " " + r.initialDir + " " + r.fileName, "Open a PAK /games/data start.pak");
    EXPECT_EQ(r.filterIndex, 2);
    EXPECT_EQ(r.hwndOwner, 4242);
    EXPECT_EQ(std::vector<bool>({r.save, r.fileMustExist, r.hideReadOnly, r.multiSelect}),
              std::vector<bool>({false, true, true, false}));
    EXPECT_EQ(dlg.FileTitle(), "world.pak");
    // Filter now holds the chosen pair, its parts split by a zero character.
    EXPECT_EQ(dlg.Filter(), std::string("Pak Files (*.pak)\0*.pak", 23));

    // A direct caller opens one file that must exist; a colon splits a name.
    OpenFileNameArgs args;
    args.Filter = "Models: meshes|*.msh";
    dlg.Dialog().VBGetOpenFileName(args);
    EXPECT_EQ(user.Requests.at(1).filters, (Pairs{{"Models", " meshes"}, {"*.msh", ""}}));
    EXPECT_TRUE(user.Requests[1].fileMustExist);
    EXPECT_FALSE(user.Requests[1].multiSelect);
}

// What comes back: the name, with the chosen pattern's extension on a save,
// the filter index and the default extension. A choice of "" cancels.
TEST(FileDialogAnswer, ComesBackInTheProperties) {
    struct Row {
        bool save;
        std::string filter;
        int32_t filterIndex;
        std::string choice;
        int32_t chosenIndex;
        std::string got;  // Filename, FilterIndex, DefaultExt
    };
    const std::string pak = "Pak Files (*.pak)|*.pak", x = "Direct X Model (*.x)|*.x";
    const Row rows[] = {
        {true, pak, 1, "/out/ARCHIVE.PAK", 1, "/out/ARCHIVE.PAK 1 .pak"},  // the comparison ignores case
        {true, x, 1, "/out/model.msh", 1, "/out/model.msh.x 1 .x"},        // after it all
        {true, x, 1, "/out/mox", 1, "/out/mox 1 .x"},  // a name that merely ends in the letter gets nothing
        {true, "All (*.*)|*.*", 1, "/out/plain", 1, "/out/plain 1 ."},
        {true, pak + "|Raw stream (*.dcl)|*.dcl", 1, "/out/member", 2, "/out/member.dcl 2 .dcl"},
        {false, "A|*.a|B|*.b", 0, "", 0, " -1 ."},  // a cancelled open corrects index 0
        {true, "A|*.a|B|*.b", 0, "", 0, " 0 ."},    // a cancelled save does not
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.got);
        ScriptedFileDialogs user;
        row.choice.empty() ? user.Cancel() : user.Choose(row.choice, row.chosenIndex);
        cCommonDialog d;
        d.SetFilter(row.filter);
        d.SetFilterIndex(row.filterIndex);
        d.SetFilename("model.msh");
        d.SetInitDir("/out");
        row.save ? d.ShowSave() : d.ShowOpen();
        EXPECT_EQ(d.Filename() + " " + std::to_string(d.FilterIndex()) + " ." + d.DefaultExt(), row.got);
        EXPECT_EQ(user.Requests.at(0).filterIndex, std::max(row.filterIndex, 1));
        // The save dialog always hides the read-only box, and prompts as the flags say.
        EXPECT_EQ(user.Requests[0].hideReadOnly, row.save);
        EXPECT_FALSE(user.Requests[0].overwritePrompt);
    }
}

TEST_F(FileDialog, ACancelClearsTheAnswerAndRaisesOnlyWhenAsked) {
    user.Choose("/out/a.bmp").Cancel();
    dlg.SetFilter("Bitmap (*.bmp)|*.bmp");
    dlg.ShowSave();
    dlg.SetFilter("Bitmap (*.bmp)|*.bmp");
    dlg.Setflags(OFN_OVERWRITEPROMPT);
    dlg.ShowSave();
    // The last extension goes to the next dialog, and stays after a cancel,
    // since the empty Filter holds no zero.
    EXPECT_EQ(user.Requests.at(1).defaultExt, "bmp");
    EXPECT_EQ(dlg.DefaultExt(), "bmp");
    EXPECT_EQ(dlg.Filename() + dlg.Filter(), "");
    EXPECT_EQ(dlg.flags(), 0);

    dlg.SetCancelError(true);
    RuntimeError e = ErrorOf([&] { dlg.ShowOpen(); });  // the queue is empty: a cancel
    EXPECT_EQ(e.Number, 20001);
    EXPECT_EQ(e.Source + " " + e.Description, "quarrin.cCommonDialog User selected cancel.");
    EXPECT_EQ(ErrorOf([&] { dlg.ShowSave(); }).Number, 20001);
    // Without a service every dialog is cancelled.
    SetFileDialogService(nullptr);
    dlg.SetFilename("x");
    EXPECT_EQ(ErrorOf([&] { dlg.ShowOpen(); }).Number, 20001);
    EXPECT_EQ(dlg.Filename(), "");
    SetFileDialogService(&user);
}

TEST_F(FileDialog, ANameMustFitTheBufferAndReadOnlyComesBack) {
    dlg.SetFilename(std::string(261, 'n'));
    EXPECT_EQ(ErrorOf([&] { dlg.ShowSave(); }).Number, 5);
    EXPECT_EQ(ErrorOf([&] { dlg.ShowOpen(); }).Number, 5);
    EXPECT_TRUE(user.Requests.empty());
    // Exactly the buffer's length still opens the dialog, and multi-select has the larger buffer.
    dlg.SetFilename(std::string(260, 'n'));
    dlg.ShowSave();
    EXPECT_EQ(user.Requests.at(0).fileName, std::string(260, 'n'));
    user.Choose("/in/a.pak", 1, true);
    dlg.SetFilename(std::string(261, 'n'));
    dlg.Setflags(OFN_ALLOWMULTISELECT | OFN_HIDEREADONLY | OFN_ENABLEHOOK | OFN_ENABLETEMPLATE);
    dlg.ShowOpen();
    EXPECT_EQ(user.Requests.size(), 2u);
    // A caller's hook and template bits are not passed on.
    EXPECT_EQ(dlg.flags() & (OFN_READONLY | OFN_ENABLEHOOK | OFN_ENABLETEMPLATE), static_cast<int32_t>(OFN_READONLY));
}

// A single path splits at its last separator, but not at the first character.
// The list form (the first row: what a dialog chose) has pieces between single
// zeros, ended by two zeros: the first is the folder unless one is given, and
// the last piece is always a file, also when it is the only one.
TEST(MultiFileName, SplitsAPathOrAList) {
    using Names = std::vector<std::string>;
    struct Row {
        std::string buffer, folderBefore;
        Names filesBefore;
        std::string folder;
        Names files;
    };
    const Row rows[] = {
        {"", "", {"kept"}, "/games/data", {"kept", "a.pak", "b.pak"}},
        {"/games/data/world.pak", "old", {"x", "y"}, "/games/data", {"world.pak"}},
        {"bare.pak", "old", {}, "", {"bare.pak"}},
        {"/root.pak", "", {}, "", {"/root.pak"}},
        {std::string("/d/one.pak\0\0", 12), "", {}, "", {"/d/one.pak"}},
        {std::string("/d\0a\0b\0\0", 8), "/given", {}, "/given", {"/d", "a", "b"}},
        {std::string("\0\0", 2), "", {"kept"}, "", {"kept", ""}},
        {std::string("/d\0a\0\0", 6), "", {"kept"}, "/d", {"kept", "a"}},
        {std::string("\0a\0\0", 4), "", {"kept"}, "", {"kept", "a"}},
    };
    // A multi-select open gives the whole buffer, in the list form.
    ScriptedFileDialogs user;
    user.ChooseMany({"/games/data/a.pak", "/games/data/b.pak"});
    cCommonDialog chosen;
    chosen.Setflags(OFN_ALLOWMULTISELECT);
    chosen.ShowOpen();
    EXPECT_TRUE(user.Requests.at(0).multiSelect);
    EXPECT_EQ(chosen.Filename().size(), 8192u);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.buffer);
        cCommonDialog dlg;
        dlg.SetFilename(row.buffer.empty() ? chosen.Filename() : row.buffer);
        std::string folder = row.folderBefore;
        Names files = row.filesBefore;
        int32_t count = static_cast<int32_t>(files.size());
        dlg.ParseMultiFileName(folder, files, count);
        EXPECT_EQ(folder, row.folder);
        EXPECT_EQ(files, row.files);
        EXPECT_EQ(count, static_cast<int32_t>(row.files.size()));
    }
}

// A hooked file dialog's changes reach the events in the order the user made
// them, on the hook's child window of the dialog. While a dialog is up every
// hook procedure forwards to it and the codes that it never sends are
// ignored; after it none is held.
TEST(DialogHook, AHookedDialogReportsToTheEventsWhileItIsUp) {
    struct Row {
        std::optional<uint32_t> code;  // WM_NOTIFY's code; none: lParam 0
        std::string event;
        int32_t msgResult;  // DWL_MSGRESULT afterwards; -7 where it is not touched
    };
    const Row rows[] = {
        {CDN_FILEOK, "ConfirmOK", 0},
        {CDN_INITDONE, "", -7},
        {{}, "", -7},
    };
    using Proc = intptr_t (*)(int32_t, uint32_t, uintptr_t, intptr_t);
    const Proc procs[] = {mDialogHook::FileDialogHookProc, mDialogHook::PrintHookProc, mDialogHook::PrintSetupHookProc,
                          mDialogHook::PageSetupHookProc,  mDialogHook::ColorHookProc, mDialogHook::FontHookProc};
    ScriptedFileDialogs user;
    cCommonDialog dlg;
    EventLog log(dlg);
    dlg.SetHookDialog(true);
    EXPECT_EQ(mDialogHook::FileDialogHookProc(7, WM_NCDESTROY, 0, 0), 0);
    EXPECT_TRUE(log.lines.empty());
    int32_t parent = -1;
    bool ran = false;
    dlg.Events.InitDialog.Connect([&](int32_t hDlg) {
        if (std::exchange(ran, true)) return;
        parent = GetParent(hDlg);
        EXPECT_EQ(dlg.Dialog().DialogObject(), &dlg);
        const Lines before = log.lines;
        for (const Row& row : rows) {
            SCOPED_TRACE(row.code.value_or(0));
            log.lines.clear();
            SetWindowLongA(hDlg, DWL_MSGRESULT, -7);
            NMHDR header{.code = row.code.value_or(0)};
            const intptr_t lParam = row.code ? reinterpret_cast<intptr_t>(&header) : 0;
            EXPECT_EQ(mDialogHook::FileDialogHookProc(hDlg, WM_NOTIFY, 0, lParam), 0);
            EXPECT_EQ(log.lines, row.event.empty() ? Lines{} : Lines{row.event});
            EXPECT_EQ(GetWindowLongA(hDlg, DWL_MSGRESULT), row.msgResult);
        }
        log.lines.clear();
        for (Proc proc : procs) proc(7, WM_NCDESTROY, 0, 0);
        EXPECT_EQ(log.lines, Lines(6, "DialogClose"));
        log.lines = before;
    });
    dlg.SetFilter("Pak|*.pak|All|*.*");
    user.Report(DialogEvent::TypeChanged)
        .Report(DialogEvent::FolderChanged)
        .Report(DialogEvent::SelectionChanged)
        .Choose("/games/world.pak");
    dlg.ShowOpen();
    const int32_t hDialog = user.Requests.at(0).hwndDialog;
    EXPECT_NE(hDialog, 0);
    EXPECT_EQ(parent, hDialog);
    ASSERT_EQ(log.lines.size(), 6u);
    const std::string child = log.lines[0].substr(11, log.lines[0].size() - 12);
    const std::string c = "(" + child + ")";
    EXPECT_EQ(log.lines, (Lines{"InitDialog" + c, "TypeChange" + c, "FolderChange" + c, "FileChange" + c, "ConfirmOK",
                                "DialogClose"}));
    EXPECT_EQ(dlg.Filename(), "/games/world.pak");
    EXPECT_EQ(GetParent(std::stoi(child)), 0);  // the dialog's windows are gone with it
    EXPECT_EQ(mDialogHook::GetDialogObject(), nullptr);

    // The colour, font and print dialogs hook their own window, not a child.
    fixtures::ScriptedColorDialogs colours;
    fixtures::ScriptedFontDialogs fonts;
    fixtures::ScriptedPrintDialogs prints;
    const std::pair<std::function<void()>, std::function<int32_t()>> others[] = {
        {[&] { dlg.ShowColor(); }, [&] { return colours.Requests().back().hwndDialog; }},
        {[&] { dlg.ShowFont(); }, [&] { return fonts.Requests().back().hwndDialog; }},
        {[&] { dlg.ShowPrinter(); }, [&] { return prints.PrintRequests().back().hwndDialog; }},
    };
    for (const auto& [show, dialogWindow] : others) {
        log.lines.clear();
        show();
        EXPECT_EQ(log.lines, (Lines{"InitDialog(" + std::to_string(dialogWindow()) + ")", "DialogClose"}));
    }

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

// Without the window that the object names, CentreDialog centres on the work
// area, else on the screen; GetDialogSize reads the same window.
TEST(DialogHook, CentreDialogAndItsFallbacks) {
    const int32_t child = CreateDialogWindow(0);
    enum Object { Unknown, NoHwnd, None };
    struct Row {
        Object object;
        bool workArea, screen;
        std::vector<int32_t> to;  // left, top, width, height; where it was when it didn't move
    };
    const Row rows[] = {
        {NoHwnd, true, true, {25, 75, 50, 80}},
        {None, false, true, {375, 260, 50, 80}},
        {Unknown, true, true, {10, 20, 50, 80}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.object);
        fixtures::ScriptedWindows screen;
        screen.Windows[child] = RECT{10, 20, 60, 100};                  // 50 by 80
        if (row.workArea) screen.Work = RECT{0, 30, 101, 200};  // odd width: the half truncates
        if (row.screen) screen.Screen = {800, 600};
        cCommonDialog dlg;
        PropertyBag withoutHwnd;
        WindowObject window(0x9990);
        dlg.CentreDialog(child, row.object == None ? nullptr : row.object == NoHwnd ? static_cast<const ILateBound*>(&withoutHwnd) : &window);
        const bool moves = row.to[0] != 10;
        ASSERT_EQ(screen.Moves.size(), moves ? 1u : 0u);
        for (const auto& m : screen.Moves) {
            EXPECT_EQ(m.hWnd, child);
            EXPECT_EQ(std::vector<int32_t>({m.rect.left, m.rect.top, m.rect.right - m.rect.left, m.rect.bottom - m.rect.top}), row.to);
            EXPECT_TRUE(m.repaint);
        }
        std::vector<int32_t> size(4, -1);
        dlg.GetDialogSize(child, size[0], size[1], size[2], size[3]);
        EXPECT_EQ(size, row.to);
    }
    DestroyDialogWindow(child);
}
