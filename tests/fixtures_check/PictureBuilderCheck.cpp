// The picture builders write files that ImageMagick decodes to the picture
// they were made from.
#include <gtest/gtest.h>

#include <cstdlib>

#include "fixtures/PictureBuilder.h"
#include "fixtures_check/CheckSupport.h"

using namespace fixtures;

namespace {

std::vector<uint8_t> RgbOf(const RgbImage& image) { return image.Rgb; }

std::vector<uint8_t> RgbOf(const IndexedImage& image) {
    std::vector<uint8_t> rgb;
    for (uint8_t i : image.Indices) rgb.insert(rgb.end(), image.Palette[i].begin(), image.Palette[i].end());
    return rgb;
}

std::vector<uint8_t> GreyRgbOf(const RgbImage& image) {
    std::vector<uint8_t> rgb;
    for (int y = 0; y < image.Height; ++y)
        for (int x = 0; x < image.Width; ++x) rgb.insert(rgb.end(), 3, GreyOf(image.At(x, y)));
    return rgb;
}

// Writes a picture and asks ImageMagick for its kind, size and pixels.
struct Decoded {
    std::string Identity;
    std::vector<uint8_t> Rgb;
};

Decoded Decode(const std::string& bytes, const std::string& name) {
    TempDir dir;
    const std::string path = dir / name;
    WriteFile(path, bytes);
    return {check::Identify(path), check::DecodeRgb(path)};
}

std::string Identity(const std::string& format, int width, int height) {
    return format + " " + std::to_string(width) + " " + std::to_string(height);
}

double MeanError(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    if (a.size() != b.size() || a.empty()) return 1e9;
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
    return sum / static_cast<double>(a.size());
}

// Offset of the first 0xFF 0xC0 pair, as a header scan finds it.
size_t FirstFrameMarker(const std::string& jpeg) {
    for (size_t i = 0; i + 1 < jpeg.size(); ++i)
        if (static_cast<uint8_t>(jpeg[i]) == 0xFF && static_cast<uint8_t>(jpeg[i + 1]) == 0xC0) return i;
    return std::string::npos;
}

IndexedImage Noise(int width, int height, int colours) {
    IndexedImage image;
    image.Width = width;
    image.Height = height;
    for (int i = 0; i < colours; ++i)
        image.Palette.push_back({static_cast<uint8_t>(i * 37), static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i * 11)});
    uint32_t seed = 12345;
    for (int i = 0; i < width * height; ++i) {
        seed = seed * 1664525u + 1013904223u;
        image.Indices.push_back(static_cast<uint8_t>((seed >> 24) % colours));
    }
    return image;
}

}  // namespace

TEST(TgaBuilder, ImageMagickShowsEveryKindAsTheSamePicture) {
    REQUIRE_IMAGEMAGICK();
    const RgbImage image = GradientImage(37, 23);
    struct Case {
        uint8_t Type, Depth;
        bool TopDown;
    };
    for (Case c : {Case{2, 24, false}, Case{2, 24, true}, Case{2, 32, false}, Case{2, 32, true}, Case{3, 8, false},
                   Case{3, 8, true}}) {
        SCOPED_TRACE(std::to_string(c.Type) + "/" + std::to_string(c.Depth) + (c.TopDown ? " top-down" : " bottom-up"));
        TgaOptions o;
        o.ImageType = c.Type;
        o.PixelDepth = c.Depth;
        o.TopDown = c.TopDown;
        const Decoded d = Decode(BuildTga(image, o), "picture.tga");
        EXPECT_EQ(d.Identity, Identity("TGA", 37, 23));
        EXPECT_EQ(d.Rgb, c.Depth == 8 ? GreyRgbOf(image) : RgbOf(image));
    }
}

TEST(TgaBuilder, AnImageIdAndAColourMapAreSkippedByARealReader) {
    REQUIRE_IMAGEMAGICK();
    const RgbImage image = GradientImage(16, 9);
    TgaOptions o;
    o.IdLength = 7;
    // ImageMagick 6 reads a single entry of a colour map that comes with a
    // true-colour picture, whatever its length says, so one entry is all that
    // it can judge.
    o.ColorMapEntries = 1;
    const Decoded d = Decode(BuildTga(image, o), "mapped.tga");
    EXPECT_EQ(d.Identity, Identity("TGA", 16, 9));
    EXPECT_EQ(d.Rgb, RgbOf(image));
}

TEST(BmpBuilder, ImageMagickReadsBothDepthsWithTheirRowPadding) {
    REQUIRE_IMAGEMAGICK();
    for (int width : {1, 2, 3, 13, 160}) {
        SCOPED_TRACE(width);
        const RgbImage image = ColourBars(width, 7);
        const std::string bmp24 = BuildBmp24(image);
        EXPECT_EQ(check::U32At(bmp24, 18), static_cast<uint32_t>(width));
        EXPECT_EQ(check::U32At(bmp24, 22), 7u);
        EXPECT_EQ(check::U32At(bmp24, 2), bmp24.size());
        Decoded d = Decode(bmp24, "bars.bmp");
        EXPECT_EQ(d.Identity, Identity("BMP3", width, 7));
        EXPECT_EQ(d.Rgb, RgbOf(image));

        const IndexedImage indexed = Quantise332(GradientImage(width, 7));
        const std::string bmp8 = BuildBmp8(indexed);
        EXPECT_EQ(check::U32At(bmp8, 10), 14u + 40u + 1024u);
        EXPECT_EQ(check::U32At(bmp8, 2), bmp8.size());
        d = Decode(bmp8, "indexed.bmp");
        EXPECT_EQ(d.Identity, Identity("BMP3", width, 7));
        EXPECT_EQ(d.Rgb, RgbOf(indexed));
    }
}

TEST(GifBuilder, ImageMagickDecodesTheLzwDataToTheIndices) {
    REQUIRE_IMAGEMAGICK();
    struct Case {
        const char* Name;
        IndexedImage Image;
    };
    IndexedImage single = Noise(1, 1, 2);
    std::vector<Case> cases = {
        {"one pixel", single},
        {"two colours", Noise(17, 5, 2)},
        {"five colours, table padded to eight", Noise(31, 9, 5)},
        // Noise of 256 colours fills the code table quickly, so the stream
        // holds many clear codes and every code width up to 12 bits.
        {"noise of 256 colours", Noise(301, 157, 256)},
        {"gradient", Quantise332(GradientImage(200, 150))},
        {"one colour", Noise(64, 64, 1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.Name);
        const std::string gif = BuildGif(c.Image);
        EXPECT_EQ(gif.substr(0, 6), "GIF89a");
        EXPECT_EQ(check::U16At(gif, 6), c.Image.Width);
        EXPECT_EQ(check::U16At(gif, 8), c.Image.Height);
        EXPECT_EQ(static_cast<uint8_t>(gif.back()), 0x3B);
        const Decoded d = Decode(gif, "picture.gif");
        EXPECT_EQ(d.Identity, Identity("GIF", c.Image.Width, c.Image.Height));
        EXPECT_EQ(d.Rgb, RgbOf(c.Image));
    }
}

TEST(JpegBuilder, ImageMagickDecodesColourAndGreyCloseToTheOriginal) {
    REQUIRE_IMAGEMAGICK();
    for (int width : {8, 33, 240}) {
        const int height = width * 3 / 4 + 1;
        SCOPED_TRACE(width);
        const RgbImage image = GradientImage(width, height);
        JpegOptions o;
        o.Quality = 90;
        Decoded d = Decode(BuildJpeg(image, o), "photo.jpg");
        EXPECT_EQ(d.Identity, Identity("JPEG", width, height));
        EXPECT_LT(MeanError(d.Rgb, RgbOf(image)), 3.0);

        o.Grey = true;
        d = Decode(BuildJpeg(image, o), "grey.jpg");
        EXPECT_EQ(d.Identity, Identity("JPEG", width, height));
        EXPECT_LT(MeanError(d.Rgb, GreyRgbOf(image)), 3.0);
    }
    // Sharp edges and a low quality still decode, only less closely.
    const RgbImage bars = ColourBars(64, 48);
    JpegOptions low;
    low.Quality = 20;
    const Decoded d = Decode(BuildJpeg(bars, low), "bars.jpg");
    EXPECT_EQ(d.Identity, Identity("JPEG", 64, 48));
    EXPECT_LT(MeanError(d.Rgb, RgbOf(bars)), 20.0);
}

TEST(JpegBuilder, AnotherFrameMarkerAndAThumbnailStillDecode) {
    JpegOptions extended;
    extended.FrameMarker = 0xC1;
    const std::string noBaseline = BuildJpeg(GradientImage(40, 30), extended);
    EXPECT_EQ(FirstFrameMarker(noBaseline), std::string::npos);

    JpegOptions withThumbnail;
    withThumbnail.Thumbnail = GradientImage(16, 12);
    const std::string thumbFirst = BuildJpeg(GradientImage(160, 120), withThumbnail);
    const size_t sof = FirstFrameMarker(thumbFirst);
    ASSERT_NE(sof, std::string::npos);
    EXPECT_EQ(static_cast<uint8_t>(thumbFirst[sof + 6]), 12) << "the thumbnail's frame comes first";

    REQUIRE_IMAGEMAGICK();
    EXPECT_EQ(Decode(noBaseline, "extended.jpg").Identity, Identity("JPEG", 40, 30));
    const Decoded d = Decode(thumbFirst, "thumb.jpg");
    EXPECT_EQ(d.Identity, Identity("JPEG", 160, 120));
    EXPECT_LT(MeanError(d.Rgb, RgbOf(GradientImage(160, 120))), 4.0);
}

TEST(GifBuilder, TheEndCodeIsWrittenAsWideAsTheDecoderThenReadsIt) {
    // Eleven pixels whose ten neighbouring pairs all differ fill the table of
    // a 2-bit picture up to code 15; reading the last pixel makes a decoder
    // add code 16 and read the end code with 5 bits. Codes: clear, 0, 0, 1 in
    // 3 bits; 0, 2, 0, 3, 1, 1, 2, 1 in 4 bits; the end code 5 in 5 bits.
    const std::string stream = GifLzw({0, 0, 1, 0, 2, 0, 3, 1, 1, 2, 1}, 2);
    EXPECT_EQ(stream, std::string("\x04\x02\x02\x13\x21\x51\x00", 7));
    // Nothing but a clear code and the end code for no pixels at all.
    EXPECT_EQ(GifLzw({}, 2), std::string("\x2C", 1));
}
