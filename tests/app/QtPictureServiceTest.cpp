#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include "QtPictureService.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"

using fixtures::TempDir;

namespace {

std::string QtWritten(const QImage& image, const char* format, bool progressive = false) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(progressive);
    EXPECT_TRUE(writer.write(image));
    return bytes.toStdString();
}

}  // namespace

TEST(QtPictureLoader, DecodesTheThreeFormatsAndNothingElse) {
    TempDir dir;
    const fixtures::RgbImage gradient = fixtures::GradientImage(9, 5);
    QImage source(9, 5, QImage::Format_RGB32);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 9; ++x) source.setPixel(x, y, qRgb(gradient.At(x, y)[0], gradient.At(x, y)[1], gradient.At(x, y)[2]));
    struct Case {
        const char* name;
        std::string bytes;
        bool decodes;
        bool exact;
    } cases[] = {
        {"a.bmp", fixtures::BuildBmp24(gradient), true, true},
        {"b.gif", fixtures::BuildGif(fixtures::Quantise332(gradient)), true, false},
        {"c.jpg", QtWritten(source, "jpeg"), true, false},
        {"d.jpg", QtWritten(source, "jpeg", true), true, false},
        // The content decides: a PNG named .bmp is refused, a BMP named .png read.
        {"e.bmp", QtWritten(source, "png"), false, false},
        {"f.png", fixtures::BuildBmp24(gradient), true, true},
        {"g.jpg", std::string("\xFF\xD8\xFF\xC0\x00\x11", 6), false, false},
        {"h.gif", "GIF89a", false, false},
    };
    QtPictureLoader loader;
    for (const Case& c : cases) {
        fixtures::WriteFile(dir / c.name, c.bytes);
        int32_t width = 0, height = 0;
        std::vector<uint32_t> pixels;
        ASSERT_EQ(GetPictureLoader()->Load(dir / c.name, width, height, pixels), c.decodes) << c.name;
        if (!c.decodes) continue;
        EXPECT_EQ(width, 9) << c.name;
        EXPECT_EQ(height, 5) << c.name;
        ASSERT_EQ(pixels.size(), 45u) << c.name;
        for (int i = 0; c.exact && i < 45; ++i)
            EXPECT_EQ(pixels[i] & 0xFFFFFF, source.pixel(i % 9, i / 9) & 0xFFFFFF) << c.name << i;
    }
}
