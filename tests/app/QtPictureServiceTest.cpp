#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>

#include "QtPictureService.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/PictureBuilder.h"

// The loader takes BMP, GIF and JPEG, known by their content and not by the
// name; a PNG and a JPEG cut after its frame marker are not pictures to it.
TEST(QtPictureLoader, DecodesTheThreeFormatsByTheirContentAndNothingElse) {
    fixtures::TempDir dir;
    const fixtures::RgbImage gradient = fixtures::GradientImage(9, 5);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImage(9, 5, QImage::Format_RGB32).save(&buffer, "PNG");
    const struct {
        const char* name;
        std::string bytes;
        bool decodes, exact;
    } cases[] = {
        {"a.png", fixtures::BuildBmp24(gradient), true, true},
        {"b.gif", fixtures::BuildGif(fixtures::Quantise332(gradient)), true, false},
        {"c.bmp", fixtures::JpegFile(gradient), true, false},
        {"d.bmp", png.toStdString(), false, false},
        {"e.jpg", std::string("\xFF\xD8\xFF\xC0\x00\x11", 6), false, false},
    };
    const QtPictureLoader loader;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fixtures::WriteFile(dir / c.name, c.bytes);
        int32_t width = 0, height = 0;
        std::vector<uint32_t> pixels;
        ASSERT_EQ(GetPictureLoader()->Load(dir / c.name, width, height, pixels), c.decodes);
        if (!c.decodes) continue;
        EXPECT_EQ(width * 10 + height, 95);
        ASSERT_EQ(pixels.size(), 45u);
        for (int i = 0; c.exact && i < 45; ++i) {
            const uint8_t* rgb = gradient.At(i % 9, i / 9);
            EXPECT_EQ(pixels[i] & 0xFFFFFF, qRgb(rgb[0], rgb[1], rgb[2]) & 0xFFFFFF) << i;
        }
    }
}
