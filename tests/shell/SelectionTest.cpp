#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "identify/CNerhaltFiles.h"
#include "identify/modGlobal.h"
#include "platform/MessageBox.h"
#include "shell/frmMain.h"

using fixtures::ByteWriter;
using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

std::string Game(uint32_t id, size_t extra = 24) { return ByteWriter().U32(0x6E71).U32(id).Fill(extra, 1).Data(); }

class Selection : public ::testing::Test {
protected:
    void SetUp() override {
        WriteFile(dir / "tile.ftl", Game(0x0289FCF5));
        WriteFile(dir / "odd.bin", Game(0x00C0FFEE));
        WriteFile(dir / "notes.txt", "first line\r\nsecond line\r\n");
        WriteFile(dir / "level.MvLst", "a\r\n");
        WriteFile(dir / "game.txt", Game(0x0289FCF5));
        WriteFile(dir / "sound.wav", "RIFF....WAVEfmt ");
        WriteFile(dir / "signed.wav", Game(0x0289FCF5));
        WriteFile(dir / "plain.dat", "just some bytes");
        WriteFile(dir / "empty.dat", "");
        form.oDir.SetPath(dir.Path());
    }
    void Select(const std::string& name) { ASSERT_TRUE(form.oFile.Select(name)) << name; }
    std::string Panel(int i) { return form.oStatusBar.Panels(i).Text; }

    TempDir dir;
    frmMain form;
};

}  // namespace

TEST_F(Selection, FolderChangeListsEveryFileOfTheFolder) {
    EXPECT_EQ(form.oFile.Path(), form.oDir.Path());
    EXPECT_EQ(form.oFile.ListCount(), 9);
}

TEST_F(Selection, NamesAGameFileOfAKnownIdAndShowsItsHexDump) {
    Select("tile.ftl");
    EXPECT_EQ(form.m_lFileKind, fkGame);
    EXPECT_EQ(Panel(1), "FlatTile");
    EXPECT_EQ(Panel(2), "ftl");
    EXPECT_FALSE(form.SaveOffered());
    EXPECT_FALSE(form.ShowOffered());
    EXPECT_FALSE(form.ExtractOffered());
    EXPECT_TRUE(form.oVScroll.Visible());
    EXPECT_TRUE(form.oVScroll.Enabled());
    EXPECT_EQ(form.tReport.Text().substr(0, 24), "71 6E 00 00 F5 FC 89 02 ");
}

TEST_F(Selection, NamesUnknownIdsAndLeavesForeignFilesBlank) {
    Select("odd.bin");
    EXPECT_EQ(form.m_lFileKind, fkGame);
    EXPECT_EQ(Panel(1), "Unknow Nerhalt's File (0xC0FFEE)");
    EXPECT_EQ(Panel(2), "");
    Select("plain.dat");
    EXPECT_EQ(form.m_lFileKind, fkNone);
    EXPECT_EQ(Panel(1), "");
    EXPECT_EQ(Panel(2), "");
    EXPECT_EQ(form.tReport.Text().substr(0, 3), "6A ");
    Select("empty.dat");
    EXPECT_EQ(form.tReport.Text().substr(0, 49), std::string(49, ' '));
}

TEST_F(Selection, TextFilesOfferShowAndKeepTheReport) {
    Select("plain.dat");
    const std::string dump = form.tReport.Text();
    Select("notes.txt");
    EXPECT_EQ(form.m_lFileKind, fkText);
    EXPECT_EQ(Panel(1), "ASCII Formated File");
    EXPECT_TRUE(form.ShowOffered());
    EXPECT_FALSE(form.SaveOffered());
    EXPECT_FALSE(form.oVScroll.Visible());
    EXPECT_EQ(form.tReport.Text(), dump);
    Select("level.MvLst");
    EXPECT_EQ(form.m_lFileKind, fkText);
}

TEST_F(Selection, TheSignatureComesBeforeTheExtension) {
    Select("game.txt");
    EXPECT_EQ(form.m_lFileKind, fkGame);
    Select("signed.wav");
    EXPECT_EQ(form.m_lFileKind, fkGame);
    EXPECT_EQ(Panel(1), "Wav File");
    EXPECT_EQ(Panel(2), "ftl");
    Select("sound.wav");
    EXPECT_EQ(form.m_lFileKind, fkNone);
    EXPECT_EQ(Panel(1), "Wav File");
    EXPECT_FALSE(form.ShowOffered());
}

TEST_F(Selection, SelectingTwiceGivesTheSameState) {
    Select("tile.ftl");
    std::string report = form.tReport.Text();
    form.oVScroll.SetValue(0);
    Select("tile.ftl");
    EXPECT_EQ(Panel(1), "FlatTile");
    EXPECT_EQ(form.tReport.Text(), report);
}

TEST_F(Selection, PreviewOfATextFileShowsItsText) {
    Select("notes.txt");
    int16_t enter = vbKeyReturn;
    form.oFile_KeyPress(enter);
    EXPECT_EQ(form.tReport.Text(), "first line\r\nsecond line\r\n");
    EXPECT_EQ(Panel(1), "ASCII Formated File");
    EXPECT_FALSE(form.oVScroll.Visible());
    EXPECT_EQ(form.screen.MousePointer(), 0);
}

TEST_F(Selection, ATextTooLongForThePaneIsCut) {
    std::string big(40000, 'x');
    big[31999] = 'y';
    WriteFile(dir / "big.txt", big);
    form.oFile.Refresh();
    form.tReport.SetCapacity(35000);
    Select("big.txt");
    form.oFile_DblClick();
    EXPECT_EQ(form.tReport.Text(), big.substr(0, 32000) + "\r\n...");
}

TEST_F(Selection, OtherKeysAndPreviewBeforeAnySelectionDoLittle) {
    form.tReport.SetText("kept");
    int16_t key = 'a';
    form.oFile_KeyPress(key);
    EXPECT_TRUE(form.oVScroll.Visible());
    key = vbKeyReturn;
    form.oFile_KeyPress(key);
    EXPECT_FALSE(form.oVScroll.Visible());
    EXPECT_EQ(form.tReport.Text(), "kept");
}

TEST_F(Selection, PreviewOfANamedGameFileEmptiesThePicture) {
    Select("tile.ftl");
    form.oFile_DblClick();
    EXPECT_TRUE(form.oVScroll.Visible());
    EXPECT_FALSE(form.oListView.Visible());
    EXPECT_TRUE(form.oPicture.Visible());
    EXPECT_FALSE(form.SaveOffered());
    EXPECT_FALSE(form.ExtractOffered());
}

TEST_F(Selection, ANewSelectionTakesEveryOfferAway) {
    Select("notes.txt");
    ASSERT_TRUE(form.ShowOffered());
    Select("plain.dat");
    EXPECT_FALSE(form.ShowOffered());
    EXPECT_FALSE(form.SaveOffered());
    EXPECT_FALSE(form.ExtractOffered());
}

TEST_F(Selection, KeysOfTheReportPagePageThroughTheDump) {
    WriteFile(dir / "pages.dat", std::string(256 * 3, 'p'));
    form.oFile.Refresh();
    Select("pages.dat");
    ASSERT_EQ(form.oVScroll.Max(), 2);
    int16_t key = vbKeyPageDown;
    form.tReport_KeyDown(key, 0);
    EXPECT_EQ(form.oVScroll.Value(), 1);
    key = vbKeyEnd;
    form.tReport_KeyDown(key, 0);
    EXPECT_EQ(form.oVScroll.Value(), 2);
    key = vbKeyPageDown;
    form.tReport_KeyDown(key, 0);
    EXPECT_EQ(form.oVScroll.Value(), 2);
    key = vbKeyHome;
    form.tReport_KeyDown(key, 0);
    EXPECT_EQ(form.oVScroll.Value(), 0);
    key = vbKeyPageUp;
    form.tReport_KeyDown(key, 0);
    EXPECT_EQ(form.oVScroll.Value(), 0);
    // A hidden bar leaves the keys to the text box.
    form.oVScroll.SetVisible(false);
    key = vbKeyEnd;
    form.tReport_KeyDown(key, 0);
    EXPECT_EQ(form.oVScroll.Value(), 0);
}

TEST_F(Selection, AnEmptyReportDisablesTheBar) {
    form.tReport.SetText("x");
    EXPECT_TRUE(form.oVScroll.Enabled());
    form.tReport.SetText("");
    EXPECT_FALSE(form.oVScroll.Enabled());
}
