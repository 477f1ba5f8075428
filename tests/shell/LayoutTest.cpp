#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fixtures/Programs.h"
#include "shell/frmMain.h"

namespace {

struct Box {
    int32_t left, top, width, height;
};

bool operator==(const Rect& r, const Box& b) {
    return r.Left == b.left && r.Top == b.top && r.Width == b.width && r.Height == b.height;
}

}  // namespace

// Each pane's own distance to the window's edge is checked at one size by the
// command line below; here the window's minimum and the panes that follow the height.
TEST(Layout, PanesFollowTheWindowAndTheWindowKeepsItsMinimum) {
    struct Row {
        int32_t width, height;  // outer size asked for, in twips
        int32_t runs;           // Form_Resize runs, the nested ones included
        int32_t finalWidth, finalHeight;
        Box img, fraMain;
    };
    const Row rows[] = {
        // H exactly 5600 is no jump.
        {9255, 6260, 1, 9255, 6260, {90, 4080, 8895, 840}, {40, 280, 9055, 4980}},
        // Too narrow: the width snaps back to 7200.
        {5000, 9000, 2, 7200, 9000, {90, 4080, 6840, 3580}, {40, 280, 7000, 7720}},
        // H of 5540 is below 5600: the window jumps to 6400, higher than asked.
        {9000, 6200, 2, 9000, 6400, {90, 4080, 8640, 980}, {40, 280, 8800, 5120}},
        {7199, 6259, 3, 7200, 6400, {90, 4080, 6840, 980}, {40, 280, 7000, 5120}},
        // Sizes below zero on the way are passed over; the nested runs end right.
        {3000, 3000, 3, 7200, 6400, {90, 4080, 6840, 980}, {40, 280, 7000, 5120}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.width) + "x" + std::to_string(row.height));
        frmMain form;
        int32_t runs = 0;
        form.Resize.Connect([&] { ++runs; });
        form.Move(0, 0, row.width, row.height);
        EXPECT_EQ(runs, row.runs);
        EXPECT_EQ(form.WindowWidth(), row.finalWidth);
        EXPECT_EQ(form.WindowHeight(), row.finalHeight);
        EXPECT_TRUE(form.oImg.Bounds() == row.img);
        EXPECT_TRUE(form.fraMain.Bounds() == row.fraMain);
    }
}

TEST(Layout, APictureLargerThanItsPaneGetsTheBarsOfItsOverhang) {
    struct Bar {
        bool visible;
        int32_t max, largeChange;
    };
    struct Row {
        const char* what;
        int32_t imgHeight;  // twips; oImg is 8415 wide, 557 pixels inside
        Box picture;        // pixels, before the resize
        Bar hbar, vbar;
        int32_t left, top;  // oPicture's place after it
    };
    // Applied in order to one window: a bar keeps what it was given until it
    // is given something else.
    const Row rows[] = {
        {"fits", 2600, {10, 5, 300, 100}, {false, 0, 0}, {false, 0, 0}, 0, 0},
        {"taller only", 2600, {10, 5, 200, 500}, {false, 0, 0}, {true, 22, 7}, 0, 5},
        {"both ways", 2600, {10, 5, 2000, 1500}, {true, 96, 32}, {true, 88, 9}, 10, 5},
        // 14 pixels inside: no steps and no new LargeChange, but a Max and a bar.
        {"tiny pane", 270, {10, 5, 2000, 1500}, {true, 96, 32}, {true, 99, 9}, 10, 5},
        {"over by less than a unit", 2600, {10, 5, 571, 183}, {false, 96, 32}, {false, 99, 9}, 0, 0},
    };
    frmMain form;
    form.oScroll.Create(form.oImg.hWnd());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        form.oPicture.Move(row.picture.left, row.picture.top, row.picture.width, row.picture.height);
        form.oImg.Move(90, 4080, 8415, row.imgHeight);
        form.oImg_Resize();
        const Bar* bars[] = {&row.hbar, &row.vbar};
        for (int32_t eBar : {0, 1}) {
            EXPECT_EQ(form.oScroll.Visible(eBar), bars[eBar]->visible) << eBar;
            EXPECT_EQ(form.oScroll.Max(eBar), bars[eBar]->max) << eBar;
            EXPECT_EQ(form.oScroll.LargeChange(eBar), bars[eBar]->largeChange) << eBar;
        }
        EXPECT_EQ(form.oPicture.Bounds().Left, row.left);
        EXPECT_EQ(form.oPicture.Bounds().Top, row.top);
    }
    // Each unit of a bar is 15 pixels; a page of the vertical bar is 9 units.
    form.oPicture.Move(0, 0, 2000, 1500);
    form.oImg_Resize();
    SendMessageA(form.oImg.hWnd(), WM_VSCROLL, SB_PAGEDOWN, 0);
    SendMessageA(form.oImg.hWnd(), WM_HSCROLL, SB_BOTTOM, 0);
    EXPECT_EQ(form.oPicture.Bounds().Left, -96 * 15);
    EXPECT_EQ(form.oPicture.Bounds().Top, -135);
}

TEST(Layout, TheCommandLinePrintsThePanesAndBarsInTwips) {
    struct Row {
        std::vector<std::string> args;
        const char* output;
    };
    const Row rows[] = {
        {{"617x571", "--picture", "2000x1500"},
         "oSSTab=90,180,8915,3855\nfraDocMain=160,500,8755,3480\noImg=90,4080,8895,3145\n"
         "oListView=90,4080,8895,3145\nfraMain=40,280,9055,7285\ntReport=4580,160,4095,3250\n"
         "oVScroll=8390,190,255,2950\nwindow=9255,8565\ninner=589,206\nhbar=1,94,31\nvbar=1,86,12\n"},
        {{"300x", "--picture", "1x1"}, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.args[0]);
        std::vector<std::string> argv = {std::string(QUARRIN_TOOLS_DIR) + "/quarrin-cli", "layout"};
        argv.insert(argv.end(), row.args.begin(), row.args.end());
        const fixtures::ProgramResult result = fixtures::RunAndCapture(argv);
        EXPECT_EQ(result.Output, row.output);
        EXPECT_EQ(result.Status, *row.output == 0 ? 1 : 0);
    }
}
