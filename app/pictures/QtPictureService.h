#pragma once
// Qt's image reader and writer for the picture services: BMP, the first frame
// of a GIF, and JPEG, baseline and progressive, within Qt's allocation limit.
// Every other format Qt could read is refused, as the runtime's loader knows
// only these three.
#include <QImage>
#include <QString>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/Picture.h"

// Decodes the file into rows of 0xAARRGGBB values from top to bottom; false
// when it can't be read or is none of the three formats.
bool DecodeWithQt(const std::string& path, int32_t& width, int32_t& height, std::vector<uint32_t>& pixels);

// The runtime's picture loader over DecodeWithQt; installs itself for its
// lifetime.
class QtPictureLoader : public IPictureLoader {
public:
    QtPictureLoader();
    ~QtPictureLoader() override;
    QtPictureLoader(const QtPictureLoader&) = delete;
    QtPictureLoader& operator=(const QtPictureLoader&) = delete;
    bool Load(const std::string& path, int32_t& width, int32_t& height, std::vector<uint32_t>& pixels) override;

private:
    IPictureLoader* previous_;
};

// A path of the file system's bytes as Qt names it.
QString QtPath(const std::string& path);
