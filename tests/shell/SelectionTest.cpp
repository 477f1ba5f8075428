#include <iterator>

#include "fixtures/ScriptedDialogs.h"
#include "shell/Browser.h"

using Selection = Browser;

// Applied in order to one window: each selection takes the offers of the one
// before away, and a text file leaves the report as the file before left it.
TEST_F(Selection, NamesTheFileDecidesTheOffersAndShowsTheHexDump) {
    struct Row {
        const char* name;
        int32_t kind;
        const char *panel1, *panel2;
        bool save, show, bar;
        const char* report;  // the start of tReport; none: as it stood
    };
    const std::string blanks(49, ' ');
    const Row rows[] = {
        {"tile.ftl", fkGame, "FlatTile", "ftl", false, false, true, "71 6E 00 00 F5 FC 89 02 01 "},
        {"tile.ftl", fkGame, "FlatTile", "ftl", false, false, true, "71 6E 00 00 F5 FC 89 02 01 "},
        {"odd.bin", fkGame, "Unknow Nerhalt's File (0xC0FFEE)", "", false, false, true, "71 6E 00 00 EE FF C0 00 "},
        {"notes.txt", fkText, "ASCII Formated File", "", false, true, false, nullptr},
        {"plain.dat", fkNone, "", "", false, false, true, "6A 75 73 74 "},
        {"level.MvLst", fkText, "ASCII Formated File", "", false, true, false, nullptr},
        {"empty.dat", fkNone, "", "", false, false, true, blanks.c_str()},
        // The signature comes before the extension; the WAV text comes last.
        {"game.txt", fkGame, "FlatTile", "ftl", false, false, true, "71 6E "},
        {"signed.wav", fkGame, "Wav File", "ftl", false, false, true, "71 6E "},
        {"sound.wav", fkNone, "Wav File", "", false, false, true, "52 49 46 46 "},
        // A mesh offers Save at once; one whose headers disagree is refused.
        {"cube.msh", fkNone, "Mesh File", "msh", true, true, true, "71 6E 00 00 "},
        {"cube.amh", fkNone, "Mesh File", "amh", true, true, true, "71 6E 00 00 "},
        {"mixed.msh", fkNone, "", "", false, false, true, "71 6E 00 00 "},
        {"data.pak", fkGame, "DCL Imploding Packed File", "pak", false, true, true, "71 6E 00 00 D3 D4 7D 09 "},
        {"six.btm", fkGame, "PPlanarBitmap : 6x4 (1 Bytes/Pixel)", "btm", false, true, true, "71 6E "},
        {"rainbow.plt", fkGame, "Planar Bitmap Palette", "plt", false, true, true, "71 6E 00 00 F5 CE 82 06 "},
        {"bars.bmp", fkPicture, "BMP Picture 12x7", "bmp", false, true, true, "42 4D "},
        {"grad.gif", fkPicture, "GIF Picture 12x7", "gif", false, true, true, "47 49 46 "},
        {"photo.jpg", fkPicture, "JPG Picture 12x7", "jpg", false, true, true, "FF D8 "},
        {"grad.tga", fkPicture, "TGA Bitmap : 12x7 (24 Bits/Pixel)", "tga", false, true, true, "00 00 02 "},
        {"nomark.jpg", fkPicture, "JPG Picture ", "jpg", false, false, true, "FF D8 "},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string report = row.report ? row.report : form.tReport.Text();
        Select(row.name);
        EXPECT_EQ(form.m_lFileKind, row.kind);
        EXPECT_EQ(Panel(1), row.panel1);
        EXPECT_EQ(Panel(2), row.panel2);
        EXPECT_EQ(form.SaveOffered(), row.save);
        EXPECT_EQ(form.ShowOffered(), row.show);
        EXPECT_FALSE(form.ExtractOffered());
        EXPECT_EQ(form.oVScroll.Visible(), row.bar);
        EXPECT_EQ(Report(report.size()), report);
    }
    EXPECT_EQ(form.oFile.ListCount(), 20);
}

TEST_F(Selection, PreviewShowsWhatTheSelectionFound) {
    struct Row {
        const char* name;    // none: Enter before any selection
        const char* report;  // the start of tReport; none: as it stood
        bool bar, list, save, extract;
        int32_t width, height, x, y;  // oPicture's size, and where to look for the colour
        uint32_t colour;
    };
    const Row rows[] = {
        {nullptr, "kept", false, false, true, false, 249, 161, -1, 0, 0},
        {"notes.txt", "first line\r\nsecond line\r\n", false, false, false, false, 249, 161, -1, 0, 0},
        {"cube.msh", "Objects:\t1\r", false, false, true, false, 249, 161, -1, 0, 0},
        {"six.btm", nullptr, true, false, true, false, 6, 4, 5, 0, Rainbow(127)},
        {"rainbow.plt", nullptr, true, false, false, false, 256, 3, 200, 2, Rainbow(200)},
        // Without a picture size the pane keeps the one it had.
        {"tile.ftl", nullptr, true, false, false, false, 256, 3, -1, 0, 0},
        // The loader draws the common pictures, our own decoder the TGA.
        {"bars.bmp", nullptr, true, false, false, false, 12, 7, 11, 6, kPatternCorner},
        {"grad.gif", nullptr, true, false, true, false, 12, 7, 11, 6, kPatternCorner},
        {"photo.jpg", nullptr, true, false, true, false, 12, 7, 11, 6, kPatternCorner},
        {"grad.tga", nullptr, true, false, true, false, 12, 7, 11, 6, tgaCorner},
        {"data.pak", nullptr, true, true, true, true, 12, 7, -1, 0, 0},
    };
    form.tReport.SetText("kept");
    int16_t key = 'a';
    form.oFile_KeyPress(key);
    EXPECT_TRUE(form.oVScroll.Visible());
    // The preview is asked for by Enter, the toolbar and the menu in turn.
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Row& row = rows[i];
        SCOPED_TRACE(row.name ? row.name : "nothing");
        if (row.name) Select(row.name);
        const std::string report = row.report ? row.report : form.tReport.Text();
        key = vbKeyReturn;
        if (i % 3 == 0) form.oFile_KeyPress(key);
        if (i % 3 == 1) form.oToolbar_ButtonClick(4);
        if (i % 3 == 2) form.mnuSubFile[2]->Click.Raise();
        EXPECT_EQ(Report(report.size()), report);
        EXPECT_EQ(form.oVScroll.Visible(), row.bar);
        EXPECT_EQ(form.oListView.Visible(), row.list);
        EXPECT_EQ(form.oPicture.Visible() && form.oImg.Visible(), !row.list);
        EXPECT_EQ(form.SaveOffered(), row.save);
        EXPECT_EQ(form.ExtractOffered(), row.extract);
        EXPECT_EQ(form.oPicture.Bounds().Width, row.width);
        EXPECT_EQ(form.oPicture.Bounds().Height, row.height);
        if (row.x >= 0) { EXPECT_EQ(static_cast<uint32_t>(form.oPicture.Point(row.x, row.y)), row.colour); }
        EXPECT_EQ(form.screen.MousePointer(), 0);
    }
    ASSERT_EQ(form.oListView.Count(), 3);
    EXPECT_EQ(form.oListView.Item(1).Text, "a\\c.bin");  // sorted by name
    EXPECT_EQ(form.oListView.Item(1).SubItems(2), "            4000");
    EXPECT_EQ(form.oListView.Item(1).SubItems(3), "bin");

    // The members stay in view through new selections; a double click on one
    // saves only while Save is on, and then for the file selected.
    fixtures::ScriptedFileDialogs dialogs;
    dialogs.Choose(dir / "out.x");
    form.oListView.SelectOnly(1);
    Select("tile.ftl");
    form.oListView_DblClick();
    EXPECT_TRUE(dialogs.Requests.empty());
    Select("cube.msh");
    EXPECT_TRUE(form.oListView.Visible());
    form.oListView_DblClick();
    EXPECT_EQ(fixtures::ReadFile(dir / "out.x").substr(0, 18), "xof 0302txt 0032\r\n");
}

TEST_F(Selection, ReportKeysPageThroughTheDumpWhileTheBarShows) {
    Add("pages.dat", std::string(256 * 3, 'p'));
    Select("pages.dat");
    ASSERT_EQ(form.oVScroll.Max(), 2);
    struct Row {
        int16_t key;
        bool bar;
        int16_t from, to;
    };
    const Row rows[] = {{vbKeyPageDown, true, 0, 1}, {vbKeyPageDown, true, 2, 2}, {vbKeyEnd, true, 1, 2},
                        {vbKeyPageUp, true, 2, 1},   {vbKeyPageUp, true, 0, 0},   {vbKeyHome, true, 2, 0},
                        {vbKeyEnd, false, 0, 0},     {'a', true, 1, 1}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.key);
        form.oVScroll.SetVisible(row.bar);
        form.oVScroll.SetValue(row.from);
        int16_t key = row.key;
        form.tReport_KeyDown(key, 0);
        EXPECT_EQ(form.oVScroll.Value(), row.to);
    }
    form.tReport.SetText("");
    EXPECT_FALSE(form.oVScroll.Enabled());
    form.tReport.SetText("x");
    EXPECT_TRUE(form.oVScroll.Enabled());
}

TEST_F(Selection, ATextTooLongForThePaneIsCut) {
    std::string big(40000, 'x');
    big[31999] = 'y';
    Add("big.txt", big);
    form.tReport.SetCapacity(35000);
    Preview("big.txt");
    EXPECT_EQ(form.tReport.Text(), big.substr(0, 32000) + "\r\n...");
}
