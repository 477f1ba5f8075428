// The builders of the game's own files put every field where the formats
// have it: the common head, Planar Bitmaps with their palette, palette files
// and both kinds of mesh.
#include <gtest/gtest.h>

#include <set>

#include "fixtures/GameFiles.h"
#include "fixtures/MeshBuilder.h"
#include "fixtures/PlanarBuilder.h"
#include "fixtures_check/CheckSupport.h"

using namespace fixtures;

TEST(GameHeadBuilder, TwentyTypesWithOwnIdsAndExtensions) {
    std::set<uint32_t> ids;
    std::set<std::string> extensions;
    for (const GameType& t : kGameTypes) {
        ids.insert(t.Id);
        extensions.insert(t.Extension);
        EXPECT_EQ(std::string(t.Extension).size(), 3u) << t.Name;
    }
    EXPECT_EQ(ids.size(), 20u);
    EXPECT_EQ(extensions.size(), 20u);
    EXPECT_EQ(GameHead(kIdPak), std::string("\x71\x6E\x00\x00\xD3\xD4\x7D\x09", 8));
    const std::string file = GameFileWithBody(kIdFont, 10);
    EXPECT_EQ(file.size(), 18u);
    EXPECT_EQ(file.substr(0, 8), GameHead(kIdFont));
    EXPECT_EQ(static_cast<uint8_t>(file[8 + 9]), (9 * 7 + 3) & 0xFF);
}

TEST(PlanarBuilder, BitmapHeaderPixelsAndPaletteFollowOneAnother) {
    BtmSpec recipe;
    recipe.Width = 3;
    recipe.Height = 2;
    recipe.BytesPerPixel = 2;
    recipe.Palette = RainbowPalette();
    recipe.Pixels = PlanarPixels(3, 2, 2, [](int x, int y) { return 10 * y + x; });
    EXPECT_EQ(recipe.Pixels, std::string("\x00\xB1\x01\xB1\x02\xB1\x0A\xB1\x0B\xB1\x0C\xB1", 12));
    const std::string btm = BuildBtm(recipe);
    ASSERT_EQ(btm.size(), 56u + 12u + 56u + 3072u);
    check::Cursor c(btm);
    EXPECT_EQ(c.U32(), 0x6E71u);
    EXPECT_EQ(c.U32(), kIdPlanarBitmap);
    c.Skip(28);
    EXPECT_EQ(c.I32(), 3);
    EXPECT_EQ(c.I32(), 2);
    EXPECT_EQ(c.I32(), 2);
    EXPECT_EQ(c.I32(), 12);
    c.Skip(4 + 12);
    EXPECT_EQ(c.U32(), 0x6E71u);
    EXPECT_EQ(c.U32(), kIdPlanarPalette);
    c.Skip(44);
    EXPECT_EQ(c.I32(), 255) << "the palette's highest index";
    // Record 5: three colour words, the third the one a bitmap shows.
    c.Skip(5 * 12 + 8);
    EXPECT_EQ(c.U32(), recipe.Palette[5][2]);
    EXPECT_EQ(recipe.Palette[0][2], ColorWord(255, 0, 0));
    EXPECT_EQ(ColorWord(1, 2, 3), 0x030201u);
}

TEST(PlanarBuilder, PaletteShapesAndSizeOverrides) {
    BtmSpec recipe;
    recipe.Width = 4;
    recipe.Height = 4;
    recipe.Pixels = std::string(16, '\x07');
    const size_t pixelsEnd = 56 + 16;
    recipe.Shape = PaletteShape::Missing;
    EXPECT_EQ(BuildBtm(recipe).size(), pixelsEnd);
    recipe.Shape = PaletteShape::Short;
    recipe.ShortLength = 60;
    EXPECT_EQ(BuildBtm(recipe).size(), pixelsEnd + 60);
    recipe.Shape = PaletteShape::WrongId;
    const std::string wrong = BuildBtm(recipe);
    EXPECT_EQ(wrong.size(), pixelsEnd + 3128);
    EXPECT_EQ(check::U32At(wrong, pixelsEnd + 4), kIdPlanarBitmap);
    recipe.Shape = PaletteShape::Full;
    recipe.DataSize = 1000;
    const std::string lying = BuildBtm(recipe);
    EXPECT_EQ(check::U32At(lying, 48), 1000u);
    EXPECT_EQ(lying.size(), pixelsEnd + 3128);

    const std::string plt = PaletteFile(GreyPalette(), 100);
    ASSERT_EQ(plt.size(), 56u + 3072u);
    EXPECT_EQ(check::U32At(plt, 4), kIdPlanarPalette);
    EXPECT_EQ(check::U32At(plt, 52), 100u);
    EXPECT_EQ(check::U32At(plt, 56 + 200 * 12 + 4), ColorWord(200, 200, 200));
}

TEST(MeshBuilder, TheLayoutNamesWhereEachCountStands) {
    for (MeshKind kind : {MeshKind::Msh, MeshKind::Amh}) {
        MeshSpec recipe = CubeMesh(kind);
        recipe.InnerGap = 6;
        const std::string mesh = BuildMesh(recipe);
        const MeshLayout l = LayoutOf(recipe);
        EXPECT_EQ(l.End, mesh.size());
        EXPECT_EQ(check::U32At(mesh, 0), 0x6E71u);
        EXPECT_EQ(check::U32At(mesh, 4), kind == MeshKind::Msh ? kIdMesh : kIdAMesh);
        EXPECT_EQ(check::U32At(mesh, 20), l.Inner);
        EXPECT_EQ(l.Inner, 34u);
        EXPECT_EQ(check::U32At(mesh, l.Inner), 0x6E71u);
        EXPECT_EQ(check::U32At(mesh, l.Inner + 4), kind == MeshKind::Msh ? kMshKindId : kAmhKindId);
        EXPECT_EQ(check::U32At(mesh, l.Body), 8u);
        EXPECT_EQ(check::U32At(mesh, l.Body + 4), 0xBF800000u) << "x of the first corner, -1.0f";
        EXPECT_EQ(check::U32At(mesh, l.PolygonCount), 12u);
        EXPECT_EQ(check::U16At(mesh, l.PolygonCount + 4 + 2), 2u);
        EXPECT_EQ(check::U32At(mesh, l.TripleCount), 2u);
        EXPECT_EQ(check::U32At(mesh, l.VectorCountA), 2u);
        EXPECT_EQ(check::U32At(mesh, l.VectorCountB), 1u);
        EXPECT_EQ(check::U32At(mesh, l.BlockCount), 1u);
        EXPECT_EQ(check::U32At(mesh, l.TextureCount), 2u);
        ASSERT_EQ(l.TextLengths.size(), 2u);
        EXPECT_EQ(check::U32At(mesh, l.TextureRecords[0]), 1u) << "lHead";
        EXPECT_EQ(check::U32At(mesh, l.TextLengths[0][0]), 9u);
        EXPECT_EQ(mesh.substr(l.TextLengths[0][0] + 4, 9), "stone.btm");
        EXPECT_EQ(check::U32At(mesh, l.TextLengths[1][1]), 0u);
        EXPECT_EQ(mesh.substr(l.TextLengths[1][3] + 4, 3), "oak");
    }
}

TEST(MeshBuilder, OverridesWriteTheirNumbersAndKeepTheTables) {
    MeshSpec recipe = CubeMesh();
    const size_t cleanSize = BuildMesh(recipe).size();
    recipe.FormatId = kIdAMesh;
    recipe.InnerOffset = 0x7FFFFFF0;
    recipe.VertexCount = -1;
    recipe.TextureCount = 0x40000000;
    recipe.Textures[1].LengthOverride[3] = 5000;
    const MeshLayout l = LayoutOf(recipe);
    const std::string mesh = BuildMesh(recipe);
    EXPECT_EQ(mesh.size(), cleanSize);
    EXPECT_EQ(check::U32At(mesh, 4), kIdAMesh);
    EXPECT_EQ(check::U32At(mesh, l.Inner + 4), kMshKindId);
    EXPECT_EQ(check::U32At(mesh, 20), 0x7FFFFFF0u);
    EXPECT_EQ(static_cast<int32_t>(check::U32At(mesh, l.Body)), -1);
    EXPECT_EQ(check::U32At(mesh, l.TextureCount), 0x40000000u);
    EXPECT_EQ(check::U32At(mesh, l.TextLengths[1][3]), 5000u);

    recipe.Truncate = l.TextLengths[1][3] + 6;
    EXPECT_EQ(BuildMesh(recipe), mesh.substr(0, l.TextLengths[1][3] + 6));
}
