#include <cstdio>
#include <iterator>

#include "fixtures/Judges.h"
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
    const Row rows[] = {
        {"plain.dat", fkNone, "", "", false, false, true, "6A 75 73 74 "},
        {"level.MvLst", fkText, "ASCII Formated File", "", false, true, false, nullptr},
        // The signature comes before the extension; the WAV text comes last.
        {"game.txt", fkGame, "FlatTile", "ftl", false, false, true, "71 6E "},
        {"signed.wav", fkGame, "Wav File", "ftl", false, false, true, "71 6E "},
        // A mesh offers Save at once; one whose headers disagree is refused.
        {"cube.msh", fkNone, "Mesh File", "msh", true, true, true, "71 6E 00 00 "},
        {"cube.amh", fkNone, "Mesh File", "amh", true, true, true, "71 6E 00 00 "},
        {"mixed.msh", fkNone, "", "", false, false, true, "71 6E 00 00 "},
        {"data.pak", fkGame, "DCL Imploding Packed File", "pak", false, true, true, "71 6E 00 00 D3 D4 7D 09 "},
        {"bars.bmp", fkPicture, "BMP Picture 12x7", "bmp", false, true, true, "42 4D "},
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
        // The front end's loader draws the common pictures.
        {"bars.bmp", nullptr, true, false, false, false, 12, 7, 11, 6, kPatternCorner},
        {"grad.gif", nullptr, true, false, true, false, 12, 7, 11, 6, kPatternCorner},
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
    const Row rows[] = {{vbKeyPageDown, true, 0, 1}, {vbKeyPageDown, true, 2, 2}, {vbKeyPageUp, true, 0, 0},
                        {vbKeyHome, true, 1, 0},     {vbKeyEnd, false, 0, 0},     {'a', true, 1, 1}};
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

TEST_F(Selection, SaveWritesThePaneAsABmpOfTheFilesName) {
    REQUIRE_IMAGEMAGICK();
    struct Row {
        const char* name;
        const char* proposed;
        const char* identify;
        uint32_t corner;
    };
    const Row rows[] = {
        {"six.btm", "six.bmp", "BMP3 6 4", Rainbow(255)},
        {"grad.gif", "grad.bmp", "BMP3 12 7", kPatternCorner},
    };
    const std::string out = dir / "out.bmp";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Preview(row.name);
        fixtures::ScriptedFileDialogs dialogs;
        dialogs.Choose(out);
        std::remove(out.c_str());
        form.SaveCommand();
        ASSERT_EQ(dialogs.Requests.size(), 1u);
        EXPECT_EQ(dialogs.Requests[0].fileName, row.proposed);
        EXPECT_EQ(check::Identify(out), row.identify);
        const std::vector<uint8_t> rgb = check::DecodeRgb(out);
        ASSERT_GE(rgb.size(), 3u);
        EXPECT_EQ(std::vector<uint8_t>(rgb.end() - 3, rgb.end()),
                  (std::vector<uint8_t>{uint8_t(row.corner), uint8_t(row.corner >> 8), uint8_t(row.corner >> 16)}));
    }
}

TEST_F(Selection, APictureThatFailsToDecodeSaysSo) {
    Select("grad.gif");
    loader.Decodes = false;
    form.oFile_DblClick();
    EXPECT_EQ(Panel(1), "Invalid picture");
    EXPECT_EQ(form.oPicture.Bounds().Width, 12);  // sized from the header before the decode
    EXPECT_EQ(form.screen.MousePointer(), 0);
}
