#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"
#include "identify/IFileHost.h"
#include "pictures/CTGAFile.h"

using fixtures::RgbImage;
using fixtures::TgaOptions;

namespace {

struct Tga {
    fixtures::TempDir dir;
    CTGAFile tga;
    bool Open(const std::string& bytes) {
        fixtures::WriteFile(dir / "picture.tga", bytes);
        return tga.Initialize(dir / "picture.tga");
    }
    std::vector<uint8_t> Bits() const {
        const size_t size = static_cast<size_t>(tga.BytesPerScanLine()) * static_cast<size_t>(tga.DibHeight());
        return {tga.DIBBitsPtr(), tga.DIBBitsPtr() + size};
    }
};

// Two rows of one pixel: red above blue.
RgbImage Column() {
    RgbImage image(1, 2);
    image.At(0, 0)[0] = 0xFF;
    image.At(0, 1)[2] = 0xFF;
    return image;
}

TEST(CTGAFile, DecodesRowsAsTheDescriptorSays) {
    struct Case {
        TgaOptions options;
        std::vector<uint8_t> bits;  // bottom row first, blue green red, stride 4
    } cases[] = {
        {{}, {0xFF, 0, 0, 0, 0, 0, 0xFF, 0}},
        {{.TopDown = true}, {0xFF, 0, 0, 0, 0, 0, 0xFF, 0}},
        // Grey levels become three equal bytes; the type does not decide.
        {{.ImageType = 3, .PixelDepth = 8}, {29, 29, 29, 0, 76, 76, 76, 0}},
        {{.ImageType = 2, .PixelDepth = 8, .TopDown = true}, {29, 29, 29, 0, 76, 76, 76, 0}},
        // A colour map is not skipped: its bytes (filled in below) are taken
        // for the first row.
        {{.ColorMapEntries = 1}, {0, 0, 0, 0, 0xFF, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        Tga t;
        const std::string bytes = fixtures::BuildTga(Column(), c.options);
        std::vector<uint8_t> expected = c.bits;
        if (c.options.ColorMapEntries != 0) std::copy(bytes.begin() + 18, bytes.begin() + 21, expected.begin());
        ASSERT_TRUE(t.Open(bytes));
        EXPECT_EQ(t.tga.Information(),
                  "TGA Bitmap : 1x2 (" + std::to_string(c.options.PixelDepth) + " Bits/Pixel)");
        FileHost host;
        host.oPicture.Move(0, 0, 1, 2);
        ASSERT_TRUE(t.tga.Show(host.oPicture.hDC));
        EXPECT_EQ(t.Bits(), expected);
        EXPECT_EQ(host.oPicture.Point(0, 1), expected[0] << 16 | expected[1] << 8 | expected[2]);
        EXPECT_TRUE(t.tga.Show(host.oPicture.hDC));
    }
}

TEST(CTGAFile, FailureTable) {
    enum Outcome { InitFalse, ShowFalse };
    auto tga = [](TgaOptions o, RgbImage image = Column()) { return fixtures::BuildTga(image, o); };
    std::string wide = tga({});
    wide[12] = '\x00', wide[13] = '\x80';  // a width of 32768 reads as negative
    std::string zero = tga({});
    zero[14] = zero[15] = 0;
    struct Case {
        const char* name;
        std::string bytes;
        Outcome outcome;
    } cases[] = {
        {"run-length", tga({.ImageType = 10}), InitFalse},
        {"colour-mapped", tga({.ImageType = 1}), InitFalse},
        {"16 bits", tga({.PixelDepth = 16}), InitFalse},
        {"32 bits", tga({.PixelDepth = 32}), InitFalse},
        {"image id", tga({.IdLength = 3}), InitFalse},
        {"short header", tga({.Truncate = 17}), InitFalse},
        {"ends early", tga({.Truncate = 20}), ShowFalse},
        {"negative width", wide, ShowFalse},
        {"height 0", zero, ShowFalse},
    };
    for (const Case& c : cases) {
        Tga t;
        EXPECT_EQ(t.Open(c.bytes), c.outcome != InitFalse) << c.name;
        if (c.outcome == ShowFalse) {
            EXPECT_FALSE(t.tga.Show(0)) << c.name;
            EXPECT_FALSE(t.tga.Loaded()) << c.name;
        }
    }
    Tga t;
    ASSERT_TRUE(t.Open(tga({.Truncate = 20})));
    EXPECT_EQ(t.tga.Information(), "TGA Bitmap : 1x2 (24 Bits/Pixel)");
    EXPECT_FALSE(t.tga.Initialize(t.dir / "missing.tga"));
    EXPECT_FALSE(t.tga.Show(0));
    EXPECT_FALSE(t.tga.SaveAs());
}

}  // namespace
