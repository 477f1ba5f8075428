#include <gtest/gtest.h>

#include <string>

#include "fixtures/ByteWriter.h"
#include "fixtures/PlanarBuilder.h"
#include "identify/IFileHost.h"
#include "pictures/CBtm.h"
#include "pictures/CPLTFile.h"

namespace {

TEST(CPLTFile, DrawsEachEntryAsAColumnOfItsThreeColours) {
    const fixtures::PlanarPalette palette = fixtures::RainbowPalette();
    const std::string whole = fixtures::PaletteFile(palette, 3);
    struct Case {
        const char* name;
        std::string bytes;
        int32_t columns;  // columns that arrived; the rest are black
    } cases[] = {
        {"whole", whole, 256},
        {"head alone", whole.substr(0, 8), 0},
        {"cut behind entry 9", whole.substr(0, 56 + 10 * 12), 10},
    };
    for (const Case& c : cases) {
        FileHost host;
        fixtures::TempDir dir;
        fixtures::WriteFile(dir / "p.plt", c.bytes);
        CPLTFile plt(host);
        ASSERT_TRUE(plt.Initialize(dir / "p.plt", 0, nullptr)) << c.name;
        host.oPicture.Move(0, 0, plt.Width(), plt.Height());
        host.oPicture.BackColor = 0x123456;
        for (int pass = 0; pass < 2; ++pass) {
            host.oPicture.Cls();
            EXPECT_FALSE(plt.Show(0));
            for (int32_t i = 0; i < 256; ++i)
                for (int32_t row = 0; row < 3; ++row) {
                    const uint32_t colour = i < c.columns ? palette[i][row] & 0xFFFFFF : 0;
                    ASSERT_EQ(host.oPicture.Point(i, row), static_cast<int32_t>(colour)) << c.name << " " << i;
                }
        }
        EXPECT_TRUE(plt.Loaded());
        EXPECT_EQ(plt.DibWidth(), 0);
    }
}

TEST(CPLTFile, ThirdRowIsWhatABitmapWithThisPaletteShows) {
    const fixtures::PlanarPalette palette = fixtures::RainbowPalette();
    FileHost host;
    fixtures::TempDir dir;
    fixtures::BtmSpec recipe;
    recipe.Width = 256;
    recipe.Height = 1;
    recipe.Palette = palette;
    for (int i = 0; i < 256; ++i) recipe.Pixels.push_back(static_cast<char>(i));
    fixtures::WriteFile(dir / "b.btm", fixtures::BuildBtm(recipe));
    fixtures::WriteFile(dir / "p.plt", fixtures::PaletteFile(palette));
    CBtm btm(host);
    ASSERT_TRUE(btm.Initialize(dir / "b.btm", 0, nullptr));
    FileHost strip;
    strip.oPicture.Move(0, 0, 256, 3);
    CPLTFile plt(strip);
    ASSERT_TRUE(plt.Initialize(dir / "p.plt", 0, nullptr));
    plt.Show(0);
    host.oPicture.Move(0, 0, 256, 1);
    ASSERT_TRUE(btm.Show(host.oPicture.hDC));
    for (int32_t i = 0; i < 256; ++i) ASSERT_EQ(host.oPicture.Point(i, 0), strip.oPicture.Point(i, 2)) << i;
}

}  // namespace
