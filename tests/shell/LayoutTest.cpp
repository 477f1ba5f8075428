#include <gtest/gtest.h>

#include "shell/frmMain.h"

namespace {

struct Box {
    int32_t left, top, width, height;
};

bool operator==(const Rect& r, const Box& b) {
    return r.Left == b.left && r.Top == b.top && r.Width == b.width && r.Height == b.height;
}

}  // namespace

TEST(Layout, PanesFollowTheWindowAndTheWindowKeepsItsMinimum) {
    struct Row {
        int32_t width, height;        // outer size asked for, in twips
        int32_t runs;                 // Form_Resize runs, the nested ones included
        int32_t finalWidth, finalHeight;
        Box img, fraMain;
        int32_t tabWidth, docWidth, reportWidth, vscrollLeft;
        int32_t innerWidth, innerHeight;  // pixels
    };
    const Row rows[] = {
        {12000, 9000, 1, 12000, 9000, {90, 4080, 11640, 3580}, {40, 280, 11800, 7720}, 11660, 11500, 6840, 11135, 772, 235},
        {7200, 6400, 1, 7200, 6400, {90, 4080, 6840, 980}, {40, 280, 7000, 5120}, 6860, 6700, 2040, 6335, 452, 61},
        // H exactly 5600 is no jump.
        {9255, 6260, 1, 9255, 6260, {90, 4080, 8895, 840}, {40, 280, 9055, 4980}, 8915, 8755, 4095, 8390, 589, 52},
        // Too narrow: the width snaps back to 7200.
        {5000, 9000, 2, 7200, 9000, {90, 4080, 6840, 3580}, {40, 280, 7000, 7720}, 6860, 6700, 2040, 6335, 452, 235},
        // H of 5540 is below 5600: the window jumps to 6400, higher than asked.
        {9000, 6200, 2, 9000, 6400, {90, 4080, 8640, 980}, {40, 280, 8800, 5120}, 8660, 8500, 3840, 8135, 572, 61},
        {7199, 6259, 3, 7200, 6400, {90, 4080, 6840, 980}, {40, 280, 7000, 5120}, 6860, 6700, 2040, 6335, 452, 61},
        // Sizes below zero on the way are passed over; the nested runs end right.
        {3000, 3000, 3, 7200, 6400, {90, 4080, 6840, 980}, {40, 280, 7000, 5120}, 6860, 6700, 2040, 6335, 452, 61},
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
        EXPECT_TRUE(form.oListView.Bounds() == row.img);
        EXPECT_TRUE(form.fraMain.Bounds() == row.fraMain);
        EXPECT_TRUE(form.oSSTab.Bounds() == (Box{90, 180, row.tabWidth, 3855}));
        EXPECT_TRUE(form.fraDocMain.Bounds() == (Box{160, 500, row.docWidth, 3480}));
        EXPECT_TRUE(form.tReport.Bounds() == (Box{4580, 160, row.reportWidth, 3250}));
        EXPECT_TRUE(form.oVScroll.Bounds() == (Box{row.vscrollLeft, 190, 255, 2950}));
        EXPECT_EQ(form.oImg.ScaleWidth(), row.innerWidth);
        EXPECT_EQ(form.oImg.ScaleHeight(), row.innerHeight);
    }
}
