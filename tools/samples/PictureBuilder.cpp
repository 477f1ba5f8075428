#include "samples/PictureBuilder.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <QBuffer>
#include <QImage>

#include "samples/ByteWriter.h"

namespace samples {

RgbImage::RgbImage(int width, int height)
    : Width(width), Height(height), Rgb(static_cast<size_t>(width) * static_cast<size_t>(height) * 3, 0) {}

RgbImage GradientImage(int width, int height) {
    RgbImage image(width, height);
    const int wx = std::max(1, width - 1), hy = std::max(1, height - 1);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            uint8_t* p = image.At(x, y);
            p[0] = static_cast<uint8_t>(x * 255 / wx);
            p[1] = static_cast<uint8_t>(y * 255 / hy);
            p[2] = static_cast<uint8_t>(((wx - x) * 255 / wx + y * 255 / hy) / 2);
        }
    return image;
}

RgbImage ColourBars(int width, int height) {
    static const uint8_t bars[8][3] = {{255, 255, 255}, {255, 255, 0}, {0, 255, 255}, {0, 255, 0},
                                       {255, 0, 255},   {255, 0, 0},   {0, 0, 255},   {0, 0, 0}};
    RgbImage image(width, height);
    const int rampTop = height - height / 4;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            uint8_t* p = image.At(x, y);
            if (y < rampTop) {
                const uint8_t* bar = bars[std::min(7, x * 8 / std::max(1, width))];
                std::copy(bar, bar + 3, p);
            } else {
                p[0] = p[1] = p[2] = static_cast<uint8_t>(x * 255 / std::max(1, width - 1));
            }
        }
    return image;
}

uint8_t GreyOf(const uint8_t* rgb) { return static_cast<uint8_t>((299 * rgb[0] + 587 * rgb[1] + 114 * rgb[2]) / 1000); }

IndexedImage Quantise332(const RgbImage& image) {
    IndexedImage out;
    out.Width = image.Width;
    out.Height = image.Height;
    for (int i = 0; i < 256; ++i)
        out.Palette.push_back({static_cast<uint8_t>((i >> 5) * 255 / 7), static_cast<uint8_t>(((i >> 2) & 7) * 255 / 7),
                               static_cast<uint8_t>((i & 3) * 255 / 3)});
    out.Indices.reserve(static_cast<size_t>(image.Width) * image.Height);
    for (int y = 0; y < image.Height; ++y)
        for (int x = 0; x < image.Width; ++x) {
            const uint8_t* p = image.At(x, y);
            // Rounded to the nearest step of each channel.
            int r = (p[0] * 7 + 127) / 255, g = (p[1] * 7 + 127) / 255, b = (p[2] * 3 + 127) / 255;
            out.Indices.push_back(static_cast<uint8_t>(r << 5 | g << 2 | b));
        }
    return out;
}

// ---------------------------------------------------------------- TGA

std::string BuildTga(const RgbImage& image, const TgaOptions& o) {
    ByteWriter w;
    w.U8(o.IdLength).U8(o.ColorMapEntries ? 1 : 0).U8(o.ImageType);
    w.U16(0).U16(o.ColorMapEntries).U8(o.ColorMapEntries ? 24 : 0);
    w.U16(0).U16(0).U16(static_cast<uint16_t>(image.Width)).U16(static_cast<uint16_t>(image.Height));
    w.U8(o.PixelDepth);
    w.U8(static_cast<uint8_t>((o.TopDown ? 0x20 : 0) | (o.PixelDepth == 32 ? 8 : 0)));
    w.Fill(o.IdLength, 'I');
    for (uint16_t i = 0; i < o.ColorMapEntries; ++i) w.U8(static_cast<uint8_t>(i)).U8(0x80).U8(static_cast<uint8_t>(255 - i));
    for (int row = 0; row < image.Height; ++row) {
        const int y = o.TopDown ? row : image.Height - 1 - row;
        for (int x = 0; x < image.Width; ++x) {
            const uint8_t* p = image.At(x, y);
            if (o.PixelDepth == 8) {
                w.U8(GreyOf(p));
            } else {
                w.U8(p[2]).U8(p[1]).U8(p[0]);
                if (o.PixelDepth == 32) w.U8(255);
            }
        }
    }
    std::string bytes = w.Data();
    if (o.Truncate && *o.Truncate < bytes.size()) bytes.resize(*o.Truncate);
    return bytes;
}

// ---------------------------------------------------------------- BMP

namespace {

void BmpHeaders(ByteWriter& w, int width, int height, int bits, uint32_t colours, uint32_t stride) {
    const uint32_t pixelOffset = 14 + 40 + colours * 4;
    const uint32_t imageSize = stride * static_cast<uint32_t>(height);
    w.U8('B').U8('M').U32(pixelOffset + imageSize).U16(0).U16(0).U32(pixelOffset);
    w.U32(40).I32(width).I32(height).U16(1).U16(static_cast<uint16_t>(bits)).U32(0).U32(imageSize);
    w.I32(2835).I32(2835).U32(colours).U32(0);
}

}  // namespace

std::string BuildBmp24(const RgbImage& image) {
    const uint32_t stride = (static_cast<uint32_t>(image.Width) * 3 + 3) & ~3u;
    ByteWriter w;
    BmpHeaders(w, image.Width, image.Height, 24, 0, stride);
    for (int y = image.Height - 1; y >= 0; --y) {
        for (int x = 0; x < image.Width; ++x) {
            const uint8_t* p = image.At(x, y);
            w.U8(p[2]).U8(p[1]).U8(p[0]);
        }
        w.Fill(stride - static_cast<uint32_t>(image.Width) * 3);
    }
    return w.Data();
}

std::string BuildBmp8(const IndexedImage& image) {
    if (image.Palette.size() > 256) throw std::invalid_argument("a BMP palette holds 256 colours at most");
    const uint32_t stride = (static_cast<uint32_t>(image.Width) + 3) & ~3u;
    ByteWriter w;
    BmpHeaders(w, image.Width, image.Height, 8, 256, stride);
    for (size_t i = 0; i < 256; ++i) {
        if (i < image.Palette.size())
            w.U8(image.Palette[i][2]).U8(image.Palette[i][1]).U8(image.Palette[i][0]).U8(0);
        else
            w.U32(0);
    }
    for (int y = image.Height - 1; y >= 0; --y) {
        for (int x = 0; x < image.Width; ++x) w.U8(image.Indices[static_cast<size_t>(y) * image.Width + x]);
        w.Fill(stride - static_cast<uint32_t>(image.Width));
    }
    return w.Data();
}

std::string JpegFile(const RgbImage& image, bool grey) {
    QImage picture(image.Rgb.data(), image.Width, image.Height, image.Width * 3, QImage::Format_RGB888);
    if (grey) picture = picture.convertToFormat(QImage::Format_Grayscale8);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!picture.save(&buffer, "JPG", 85)) throw std::runtime_error("Qt cannot write JPEG files");
    return bytes.toStdString();
}

}  // namespace samples
