#include "QtPictureService.h"

#include <QFile>
#include <QImageReader>
#include <algorithm>

QtPictureLoader::QtPictureLoader() : previous_(GetPictureLoader()) { SetPictureLoader(this); }

QtPictureLoader::~QtPictureLoader() { SetPictureLoader(previous_); }

bool QtPictureLoader::Load(const std::string& path, int32_t& width, int32_t& height, std::vector<uint32_t>& pixels) {
    return DecodeWithQt(path, width, height, pixels);
}

QString QtPath(const std::string& path) { return QFile::decodeName(QByteArray::fromStdString(path)); }

bool DecodeWithQt(const std::string& path, int32_t& width, int32_t& height, std::vector<uint32_t>& pixels) {
    QImageReader reader(QtPath(path));
    // The content decides, never the name, as for the loader it stands in for.
    reader.setDecideFormatFromContent(true);
    const QByteArray format = reader.format();
    if (format != "bmp" && format != "gif" && format != "jpeg") return false;
    QImage image;
    if (!reader.read(&image)) return false;
    image = image.convertToFormat(QImage::Format_RGB32);
    if (image.isNull()) return false;
    width = image.width();
    height = image.height();
    pixels.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
    for (int32_t y = 0; y < height; ++y) {
        const auto* line = reinterpret_cast<const uint32_t*>(image.constScanLine(y));
        std::copy(line, line + width, pixels.begin() + static_cast<ptrdiff_t>(y) * width);
    }
    return true;
}
