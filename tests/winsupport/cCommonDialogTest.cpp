#include <gtest/gtest.h>

#include <functional>

#include "fixtures/ErrorOf.h"
#include "fixtures/ScriptedDialogs.h"
#include "platform/Runtime.h"
#include "winsupport/cCommonDialog.h"

using fixtures::ErrorOf;
using fixtures::ScriptedFileDialogs;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

class FileDialog : public ::testing::Test {
protected:
    void SetUp() override { App::SetExecutable("/opt/quarrin", "quarrin"); }
    ScriptedFileDialogs user;
    cCommonDialog dlg;
};

}  // namespace

TEST(FilterText, BarsAndColonsBecomeZerosAndEntriesAndTitlesAreFound) {
    const std::pair<std::string, std::string> filters[] = {
        {"Direct X Model (*.x)|*.x", std::string("Direct X Model (*.x)\0*.x\0\0", 26)},
        {"Scan: all|*.*", std::string("Scan\0 all\0*.*\0\0", 15)},
        {"", std::string("\0\0", 2)},
    };
    for (const auto& [text, platform] : filters) EXPECT_EQ(GCommonDialog::PlatformFilter(text), platform) << text;
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
    EXPECT_EQ(GCommonDialog::CutAtZero(std::string("abc\0def", 7)), "abc");
    EXPECT_EQ(GCommonDialog::CutAtZero("whole"), "whole");
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
    EXPECT_TRUE(dlg.IsFileDialog());

    // A direct caller opens one file that must exist; a colon splits a name.
    OpenFileNameArgs args;
    args.Filter = "Models: meshes|*.msh";
    dlg.Dialog().VBGetOpenFileName(args);
    EXPECT_EQ(user.Requests.at(1).filters, (Pairs{{"Models", " meshes"}, {"*.msh", ""}}));
    EXPECT_TRUE(user.Requests[1].fileMustExist);
    EXPECT_FALSE(user.Requests[1].multiSelect);
}

// What comes back: the name, with the chosen pattern's extension on a save,
// the filter index and the default extension. A choice of "" cancels, "*"
// accepts the proposed name "model.msh" in "/out".
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
        {false, pak, 1, "/games/data/world.pak", 1, "/games/data/world.pak 1 ."},
        {true, pak, 1, "/out/archive", 1, "/out/archive.pak 1 .pak"},
        {true, pak, 1, "/out/ARCHIVE.PAK", 1, "/out/ARCHIVE.PAK 1 .pak"},  // the comparison ignores case
        {true, x, 1, "*", 1, "/out/model.msh.x 1 .x"},                     // after it all
        {true, x, 1, "/out/mox", 1, "/out/mox 1 .x"},  // a name that merely ends in the letter gets nothing
        {true, "All (*.*)|*.*", 1, "/out/plain", 1, "/out/plain 1 ."},
        {true, pak + "|Raw stream (*.dcl)|*.dcl", 1, "/out/member", 2, "/out/member.dcl 2 .dcl"},
        {false, "A|*.a|B|*.b", 0, "", 0, " -1 ."},  // a cancelled open corrects index 0
        {true, "A|*.a|B|*.b", 0, "", 0, " 0 ."},    // a cancelled save does not
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.got);
        ScriptedFileDialogs user;
        row.choice.empty() ? user.Cancel() : row.choice == "*" ? user.AcceptProposed() : user.Choose(row.choice, row.chosenIndex);
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

TEST_F(FileDialog, ACancelRaisesOnlyWhenAsked) {
    user.Cancel();
    dlg.SetFilter("Pak Files (*.pak)|*.pak");
    dlg.Setflags(OFN_OVERWRITEPROMPT);
    dlg.ShowSave();
    EXPECT_EQ(dlg.Filename() + dlg.Filter(), "");
    EXPECT_EQ(dlg.flags(), 0);

    dlg.SetCancelError(true);
    RuntimeError e = ErrorOf([&] { dlg.ShowOpen(); });  // the queue is empty: a cancel
    EXPECT_EQ(e.Number, 20001);
    EXPECT_EQ(e.Source, "quarrin.cCommonDialog");
    EXPECT_EQ(e.Description, "User selected cancel.");
    EXPECT_EQ(ErrorOf([&] { dlg.ShowSave(); }).Number, 20001);
    EXPECT_EQ(dlg.Dialog().APIReturn(), 0);
    EXPECT_EQ(dlg.Dialog().ExtendedError(), 0);
    // Without a service every dialog is cancelled.
    SetFileDialogService(nullptr);
    dlg.SetFilename("x");
    EXPECT_EQ(ErrorOf([&] { dlg.ShowOpen(); }).Number, 20001);
    EXPECT_EQ(dlg.Filename(), "");
    SetFileDialogService(&user);
    // A chosen path too long for the buffer is a cancel.
    user.Choose("/" + std::string(300, 'p'));
    EXPECT_EQ(ErrorOf([&] { dlg.ShowOpen(); }).Number, 20001);
    EXPECT_EQ(CommDlgExtendedError(), FNERR_BUFFERTOOSMALL);
}

TEST_F(FileDialog, TheLastExtensionGoesToTheNextDialog) {
    dlg.SetFilter("Bitmap (*.bmp)|*.bmp");
    user.Choose("/out/a.bmp").Cancel();
    dlg.ShowSave();
    dlg.SetFilter("Bitmap (*.bmp)|*.bmp");
    dlg.ShowSave();
    EXPECT_EQ(user.Requests.at(1).defaultExt, "bmp");
    // After a cancel the extension stays, since the empty Filter holds no zero.
    EXPECT_EQ(dlg.DefaultExt(), "bmp");
}

TEST_F(FileDialog, ANameLongerThanTheBufferFailsBeforeTheDialog) {
    dlg.SetFilename(std::string(261, 'n'));
    EXPECT_EQ(ErrorOf([&] { dlg.ShowSave(); }).Number, 5);
    EXPECT_EQ(ErrorOf([&] { dlg.ShowOpen(); }).Number, 5);
    EXPECT_TRUE(user.Requests.empty());
    // Exactly the buffer's length still opens the dialog, and multi-select has the larger buffer.
    dlg.SetFilename(std::string(260, 'n'));
    dlg.ShowSave();
    EXPECT_EQ(user.Requests.at(0).fileName, std::string(260, 'n'));
    dlg.SetFilename(std::string(261, 'n'));
    dlg.Setflags(OFN_ALLOWMULTISELECT);
    dlg.ShowOpen();
    EXPECT_EQ(user.Requests.size(), 2u);
}

TEST_F(FileDialog, ReadOnlyComesBackInTheFlags) {
    user.Choose("/in/a.pak", 1, true);
    dlg.SetFilter("Pak|*.pak");
    dlg.Setflags(OFN_HIDEREADONLY | OFN_ENABLEHOOK | OFN_ENABLETEMPLATE);
    dlg.ShowOpen();
    // A caller's hook and template bits are not passed on.
    EXPECT_EQ(dlg.flags() & (OFN_READONLY | OFN_ENABLEHOOK | OFN_ENABLETEMPLATE), static_cast<int32_t>(OFN_READONLY));
}

TEST_F(FileDialog, MultiSelectGivesTheWholeBufferToParse) {
    user.ChooseMany({"/games/data/a.pak", "/games/data/b.pak"});
    dlg.Setflags(OFN_ALLOWMULTISELECT);
    dlg.ShowOpen();
    EXPECT_TRUE(user.Requests.at(0).multiSelect);
    EXPECT_EQ(dlg.Filename().size(), 8192u);
    std::string folder;
    std::vector<std::string> files{"kept"};
    int32_t count = 1;
    dlg.ParseMultiFileName(folder, files, count);
    EXPECT_EQ(folder, "/games/data");
    EXPECT_EQ(count, 3);
    EXPECT_EQ(files, (std::vector<std::string>{"kept", "a.pak", "b.pak"}));
}

// A single path splits at its last separator, but not at the first character.
// The list form has pieces between single zeros, ended by two zeros: the
// first is the folder unless one is given, and the last piece is always a
// file, also when it is the only one.
TEST(MultiFileName, SplitsAPathOrAList) {
    using Names = std::vector<std::string>;
    struct Row {
        std::string buffer, folderBefore;
        Names filesBefore;
        std::string folder;
        Names files;
    };
    const Row rows[] = {
        {"/games/data/world.pak", "old", {"x", "y"}, "/games/data", {"world.pak"}},
        {"bare.pak", "old", {}, "", {"bare.pak"}},
        {"/root.pak", "", {}, "", {"/root.pak"}},
        {std::string("/d/one.pak\0\0", 12), "", {}, "", {"/d/one.pak"}},
        {std::string("/d\0a\0b\0\0", 8), "/given", {}, "/given", {"/d", "a", "b"}},
        {std::string("\0\0", 2), "", {"kept"}, "", {"kept", ""}},
        {std::string("\0\0", 2), "/given", {"kept"}, "/given", {"kept", ""}},
        {std::string("\0\0junk", 6), "", {"kept"}, "", {"kept", ""}},
        {std::string("/d\0a\0\0", 6), "", {"kept"}, "/d", {"kept", "a"}},
        {std::string("\0a\0\0", 4), "", {"kept"}, "", {"kept", "a"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.buffer);
        cCommonDialog dlg;
        dlg.SetFilename(row.buffer);
        std::string folder = row.folderBefore;
        Names files = row.filesBefore;
        int32_t count = static_cast<int32_t>(files.size());
        dlg.ParseMultiFileName(folder, files, count);
        EXPECT_EQ(folder, row.folder);
        EXPECT_EQ(files, row.files);
        EXPECT_EQ(count, static_cast<int32_t>(row.files.size()));
    }
}
