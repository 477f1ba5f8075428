#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include "QtPictureService.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"

TEST(QtPictureLoader, DecodesTheThreeFormatsByTheirContentAndNothingElse) {
    fixtures::TempDir dir;
    const fixtures::RgbImage gradient = fixtures::GradientImage(9, 5);
    QImage source(9, 5, QImage::Format_RGB32);
    for (int i = 0; i < 45; ++i) {
        const uint8_t* rgb = gradient.At(i % 9, i / 9);
        source.setPixel(i % 9, i / 9, qRgb(rgb[0], rgb[1], rgb[2]));
    }
    auto written = [&](const char* format, bool progressive) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, format);
        writer.setProgressiveScanWrite(progressive);
        writer.write(source);
        return bytes.toStdString();
    };
    const struct {
        const char* name;
        std::string bytes;
        bool decodes, exact;
    } cases[] = {
        {"a.png", fixtures::BuildBmp24(gradient), true, true},  // a BMP under any name
        {"b.gif", fixtures::BuildGif(fixtures::Quantise332(gradient)), true, false},
        {"c.jpg", written("jpeg", true), true, false},  // progressive
        {"d.bmp", written("png", false), false, false},
        {"e.jpg", std::string("\xFF\xD8\xFF\xC0\x00\x11", 6), false, false},
    };
    const QtPictureLoader loader;
    for (const auto& c : cases) {
        fixtures::WriteFile(dir / c.name, c.bytes);
        int32_t width = 0, height = 0;
        std::vector<uint32_t> pixels;
        ASSERT_EQ(GetPictureLoader()->Load(dir / c.name, width, height, pixels), c.decodes) << c.name;
        if (!c.decodes) continue;
        EXPECT_EQ(width * 10 + height, 95) << c.name;
        ASSERT_EQ(pixels.size(), 45u) << c.name;
        for (int i = 0; c.exact && i < 45; ++i) EXPECT_EQ(pixels[i] & 0xFFFFFF, source.pixel(i % 9, i / 9) & 0xFFFFFF);
    }
}
