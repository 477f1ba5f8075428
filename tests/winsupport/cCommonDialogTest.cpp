#include <gtest/gtest.h>

#include <functional>

#include "fixtures/ScriptedDialogs.h"
#include "winsupport/WinsupportTestSupport.h"
#include "identify/modGlobal.h"
#include "platform/Runtime.h"
#include "winsupport/cCommonDialog.h"

using fixtures::ScriptedFileDialogs;

using winsupporttest::Raised;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

class FileDialog : public ::testing::Test {
protected:
    void SetUp() override { App::SetExecutable("/opt/quarrin", "quarrin"); }
    ScriptedFileDialogs user;
    cCommonDialog dlg;
};


}  // namespace

TEST(FilterText, BarsAndColonsBecomeZeros) {
    EXPECT_EQ(GCommonDialog::PlatformFilter("Direct X Model (*.x)|*.x"),
              std::string("Direct X Model (*.x)\0*.x\0\0", 26));
    EXPECT_EQ(GCommonDialog::PlatformFilter("Scan: all|*.*"), std::string("Scan\0 all\0*.*\0\0", 15));
    EXPECT_EQ(GCommonDialog::PlatformFilter(""), std::string("\0\0", 2));
    EXPECT_EQ(GCommonDialog::PlatformFilter(std::string(32767, 'a')).size(), 32769u);
    EXPECT_EQ(Raised([] { GCommonDialog::PlatformFilter(std::string(32768, 'a')); }).Number, 6);
}

TEST(FilterText, EntriesAreFoundByIndex) {
    const std::string text("Pak\0*.pak\0All\0*.*\0\0", 19);
    EXPECT_EQ(GCommonDialog::FilterEntry(text, 1), std::string("Pak\0*.pak", 9));
    EXPECT_EQ(GCommonDialog::FilterEntry(text, 2), std::string("All\0*.*", 7));
    EXPECT_EQ(GCommonDialog::FilterEntry("", 1), "");
    EXPECT_EQ(GCommonDialog::FilterEntry("no zero at all", 1), "");
    // A last pattern without its zero runs to the end of the text.
    EXPECT_EQ(GCommonDialog::FilterEntry(std::string("A\0*.a", 5), 1), std::string("A\0*.a", 5));
    EXPECT_EQ(GCommonDialog::FilterEntry(std::string("A\0*.a", 5), 2), "");
    EXPECT_EQ(GCommonDialog::FilterEntry(text, 0), "");
    EXPECT_EQ(GCommonDialog::FilterEntry(text, -1), "");
    EXPECT_EQ(GCommonDialog::FilterEntry(text, 9), "");
    EXPECT_EQ(GCommonDialog::CutAtZero(std::string("abc\0def", 7)), "abc");
    EXPECT_EQ(GCommonDialog::CutAtZero("whole"), "whole");
}

TEST_F(FileDialog, TheChooserGetsWhatTheCallerSet) {
    user.Choose("/games/data/world.pak", 1);
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
    EXPECT_FALSE(r.save);
    EXPECT_EQ(r.filters, (Pairs{{"Pak Files (*.pak)", "*.pak"}, {"All Files (*.*)", "*.*"}}));
    EXPECT_EQ(r.filterIndex, 2);
    EXPECT_EQ(r.title, "Open a PAK");
    EXPECT_EQ(r.initialDir, "/games/data");
    EXPECT_EQ(r.fileName, "start.pak");
    EXPECT_EQ(r.hwndOwner, 4242);
    EXPECT_TRUE(r.fileMustExist);
    EXPECT_TRUE(r.hideReadOnly);
    EXPECT_FALSE(r.multiSelect);

    EXPECT_EQ(dlg.Filename(), "/games/data/world.pak");
    EXPECT_EQ(dlg.FileTitle(), "world.pak");
    EXPECT_EQ(dlg.FilterIndex(), 1);
    // Filter now holds the chosen pair, its parts split by a zero character.
    EXPECT_EQ(dlg.Filter(), std::string("Pak Files (*.pak)\0*.pak", 23));
    EXPECT_TRUE(dlg.IsFileDialog());
}

TEST_F(FileDialog, AColonInAFilterNameSplitsIt) {
    user.Cancel();
    dlg.SetFilter("Models: meshes|*.msh");
    dlg.ShowOpen();
    EXPECT_EQ(user.Requests.at(0).filters, (Pairs{{"Models", " meshes"}, {"*.msh", ""}}));
}

TEST_F(FileDialog, OpenCorrectsAFilterIndexOfZeroAndSaveDoesNot) {
    user.Cancel().Cancel();
    dlg.SetFilter("A|*.a|B|*.b");
    dlg.SetFilterIndex(0);
    dlg.ShowOpen();
    EXPECT_EQ(user.Requests.at(0).filterIndex, 1);
    EXPECT_EQ(dlg.FilterIndex(), -1);  // a cancelled open
    dlg.SetFilter("A|*.a|B|*.b");
    dlg.SetFilterIndex(0);
    dlg.ShowSave();
    EXPECT_EQ(dlg.FilterIndex(), 0);  // a cancelled save
}

TEST_F(FileDialog, ACancelRaisesOnlyWhenAsked) {
    user.Cancel();
    dlg.SetFilter("Pak Files (*.pak)|*.pak");
    dlg.SetFilename("proposed.pak");
    dlg.Setflags(OFN_OVERWRITEPROMPT);
    dlg.ShowSave();
    EXPECT_EQ(dlg.Filename(), "");
    EXPECT_EQ(dlg.Filter(), "");
    EXPECT_EQ(dlg.flags(), 0);

    dlg.SetCancelError(true);
    RuntimeError e = Raised([&] { dlg.ShowOpen(); });  // the queue is empty: a cancel
    EXPECT_EQ(e.Number, 20001);
    EXPECT_EQ(e.Source, "quarrin.cCommonDialog");
    EXPECT_EQ(e.Description, "User selected cancel.");
    e = Raised([&] { dlg.ShowSave(); });
    EXPECT_EQ(e.Number, 20001);
    EXPECT_EQ(dlg.Dialog().APIReturn(), 0);
    EXPECT_EQ(dlg.Dialog().ExtendedError(), 0);
}

TEST_F(FileDialog, WithoutAServiceEveryDialogIsCancelled) {
    SetFileDialogService(nullptr);
    dlg.SetCancelError(true);
    dlg.SetFilename("x");
    EXPECT_EQ(Raised([&] { dlg.ShowOpen(); }).Number, 20001);
    EXPECT_EQ(dlg.Filename(), "");
    SetFileDialogService(&user);
}

TEST_F(FileDialog, SaveAppendsTheChosenPatternsExtension) {
    dlg.SetFilter("Pak Files (*.pak)|*.pak");
    user.Choose("/out/archive");
    dlg.ShowSave();
    EXPECT_EQ(dlg.Filename(), "/out/archive.pak");
    EXPECT_EQ(dlg.DefaultExt(), "pak");

    // Upper case matches: the comparison ignores case.
    dlg.SetFilter("Pak Files (*.pak)|*.pak");
    user.Choose("/out/ARCHIVE.PAK");
    dlg.ShowSave();
    EXPECT_EQ(dlg.Filename(), "/out/ARCHIVE.PAK");

    // The proposed name accepted as it stands gets the extension after it all.
    dlg.SetFilter("Direct X Model (*.x)|*.x");
    dlg.SetFilename("model.msh");
    dlg.SetInitDir("/out");
    user.AcceptProposed();
    dlg.ShowSave();
    EXPECT_EQ(dlg.Filename(), "/out/model.msh.x");
    EXPECT_EQ(dlg.DefaultExt(), "x");
    EXPECT_EQ(dlg.Filter(), std::string("Direct X Model (*.x)\0*.x", 24));
    // The save dialog always hides the read-only box, and prompts as the flags say.
    EXPECT_TRUE(user.Requests.back().hideReadOnly);
    EXPECT_FALSE(user.Requests.back().overwritePrompt);

    // A name that merely ends in the letter gets nothing: the test has no point.
    dlg.SetFilter("Direct X Model (*.x)|*.x");
    user.Choose("/out/mox");
    dlg.ShowSave();
    EXPECT_EQ(dlg.Filename(), "/out/mox");

    // "*.*" leaves no extension to append.
    dlg.SetFilter("All (*.*)|*.*");
    user.Choose("/out/plain");
    dlg.ShowSave();
    EXPECT_EQ(dlg.Filename(), "/out/plain");
    EXPECT_EQ(dlg.DefaultExt(), "");
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

TEST_F(FileDialog, TheSecondFilterOfASaveIsTheOneUsed) {
    dlg.SetFilter("Pak Files (*.pak)|*.pak|Raw stream (*.dcl)|*.dcl");
    user.Choose("/out/member", 2);
    dlg.ShowSave();
    EXPECT_EQ(dlg.FilterIndex(), 2);
    EXPECT_EQ(dlg.Filename(), "/out/member.dcl");
}

TEST_F(FileDialog, ANameLongerThanTheBufferFailsBeforeTheDialog) {
    dlg.SetFilename(std::string(261, 'n'));
    RuntimeError e = Raised([&] { dlg.ShowSave(); });
    EXPECT_EQ(e.Number, 5);
    e = Raised([&] { dlg.ShowOpen(); });
    EXPECT_EQ(e.Number, 5);
    EXPECT_TRUE(user.Requests.empty());
    // Exactly the buffer's length still opens the dialog.
    user.Cancel();
    dlg.SetFilename(std::string(260, 'n'));
    dlg.ShowSave();
    EXPECT_EQ(user.Requests.at(0).fileName, std::string(260, 'n'));
    // Multi-select has the larger buffer.
    user.Cancel();
    dlg.SetFilename(std::string(261, 'n'));
    dlg.Setflags(OFN_ALLOWMULTISELECT);
    dlg.ShowOpen();
    EXPECT_EQ(user.Requests.size(), 2u);
}

TEST_F(FileDialog, AChosenPathTooLongForTheBufferIsACancel) {
    user.Choose("/" + std::string(300, 'p'));
    dlg.SetCancelError(true);
    EXPECT_EQ(Raised([&] { dlg.ShowOpen(); }).Number, 20001);
    EXPECT_EQ(CommDlgExtendedError(), FNERR_BUFFERTOOSMALL);
}

TEST_F(FileDialog, ReadOnlyComesBackInTheFlags) {
    user.Choose("/in/a.pak", 1, true);
    dlg.SetFilter("Pak|*.pak");
    dlg.Setflags(OFN_HIDEREADONLY | OFN_ENABLEHOOK | OFN_ENABLETEMPLATE);
    dlg.ShowOpen();
    EXPECT_EQ(dlg.flags() & OFN_READONLY, static_cast<int32_t>(OFN_READONLY));
    // A caller's hook and template bits are not passed on.
    EXPECT_EQ(dlg.flags() & (OFN_ENABLEHOOK | OFN_ENABLETEMPLATE), 0);
}

TEST_F(FileDialog, MultiSelectGivesTheWholeBufferToParse) {
    user.ChooseMany({"/games/data/a.pak", "/games/data/b.pak"});
    dlg.Setflags(OFN_ALLOWMULTISELECT);
    dlg.SetFilter("Pak|*.pak");
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

TEST_F(FileDialog, ParseMultiFileNameOnSinglePaths) {
    std::string folder = "old";
    std::vector<std::string> files{"x", "y"};
    int32_t count = 2;
    dlg.SetFilename("/games/data/world.pak");
    dlg.ParseMultiFileName(folder, files, count);
    EXPECT_EQ(folder, "/games/data");
    EXPECT_EQ(files, (std::vector<std::string>{"world.pak"}));
    EXPECT_EQ(count, 1);

    dlg.SetFilename("bare.pak");
    dlg.ParseMultiFileName(folder, files, count);
    EXPECT_EQ(folder, "");
    EXPECT_EQ(files, (std::vector<std::string>{"bare.pak"}));

    // A separator that is the first character does not count.
    dlg.SetFilename("/root.pak");
    dlg.ParseMultiFileName(folder, files, count);
    EXPECT_EQ(folder, "");
    EXPECT_EQ(files, (std::vector<std::string>{"/root.pak"}));

    // A list with one path: it is the last piece and goes to the files.
    dlg.SetFilename(std::string("/d/one.pak\0\0", 12));
    folder.clear();
    files.clear();
    count = 0;
    dlg.ParseMultiFileName(folder, files, count);
    EXPECT_EQ(folder, "");
    EXPECT_EQ(files, (std::vector<std::string>{"/d/one.pak"}));
    // A folder already given takes no piece.
    dlg.SetFilename(std::string("/d\0a\0b\0\0", 8));
    folder = "/given";
    files.clear();
    count = 0;
    dlg.ParseMultiFileName(folder, files, count);
    EXPECT_EQ(folder, "/given");
    EXPECT_EQ(files, (std::vector<std::string>{"/d", "a", "b"}));
}
