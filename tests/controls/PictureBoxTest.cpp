#include <gtest/gtest.h>

#include "controls/Controls.h"

namespace {

TEST(PictureBox, ImageFollowsTheSizeInPixels) {
    struct Case {
        int32_t unitsPerPixel, border;
        int32_t width, height;
        int32_t pixelsWide, pixelsHigh;
    } cases[] = {
        {1, 0, 7, 3, 7, 3},
        {15, 2, 150, 90, 6, 2},
        {1, 0, 0, 5, 0, 0},
        {1, 0, 100000, 100000, 0, 0},  // beyond what a bitmap may take
    };
    for (const Case& c : cases) {
        PictureBox box("oPicture");
        // The place may come before the units: the image follows at its next use.
        box.Move(0, 0, c.width, c.height);
        box.ParentUnitsPerPixel = c.unitsPerPixel;
        box.BorderPixels = c.border;
        EXPECT_EQ(box.ImageWidth(), c.pixelsWide);
        EXPECT_EQ(box.ImageHeight(), c.pixelsHigh);
        EXPECT_EQ(box.ImageBits() != nullptr, c.pixelsWide > 0);
        EXPECT_EQ(box.Image() ? box.Image()->Width() : 0, c.pixelsWide);
    }
}

TEST(PictureBox, DrawingClearingAndResizing) {
    PictureBox box("oPicture");
    box.BackColor = 0x80000008;  // window text: black in the classic scheme
    box.Move(0, 0, 3, 2);
    box.BackColor = 0x00336699;
    box.Cls();
    box.PSet(1.4f, 0.6f, 0x7F0000FF);  // the high byte is not looked at
    box.PSet(-1.0f, 0.0f, 0x00FFFFFF);
    box.PSet(3.0f, 0.0f, 0x00FFFFFF);  // beyond the row's end, not on the next row
    box.PSet(1e30f, 0.0f, 0x00FFFFFF);
    EXPECT_EQ(box.Point(1, 1), 0x0000FF);
    EXPECT_EQ(box.Point(0, 1), 0x336699);
    EXPECT_EQ(box.Point(3, 0), -1);
    const uint8_t* p = box.ImageBits() + (1 * 3 + 1) * 4;  // blue, green, red
    EXPECT_EQ(p[0] + p[1] * 256 + p[2] * 65536, 0xFF0000);

    box.Move(0, 0, 4, 3);
    EXPECT_EQ(box.Point(1, 1), 0x0000FF);  // kept
    EXPECT_EQ(box.Point(3, 2), 0x336699);  // new
    EXPECT_EQ(box.Point(3, 0), 0x336699);
    box.BackColor = 0x80000005;  // window: white, and the image is cleared
    EXPECT_EQ(box.Point(1, 1), 0xFFFFFF);

    box.SetPicture(PictureFromPixels(2, 1, {0xFF102030, 0x00405060}));
    EXPECT_EQ(box.Point(0, 0), 0x302010);
    EXPECT_EQ(box.Point(1, 0), 0x605040);
    EXPECT_EQ(box.Point(1, 1), 0xFFFFFF);
    box.PSet(0, 2, 0);
    box.Cls();  // the picture stays, what was drawn goes
    EXPECT_EQ(box.Point(0, 0), 0x302010);
    EXPECT_EQ(box.Point(0, 2), 0xFFFFFF);
}

}  // namespace
