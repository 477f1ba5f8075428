#pragma once
// The runtime's LoadPicture: a BMP, GIF or JPEG file decoded into a picture
// object. The decoding is a service that the front end fills with its image
// reader; without one, or for a file the service can't decode, LoadPicture
// raises the runtime's error 481, "Invalid picture".
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

constexpr int32_t vbErrInvalidPicture = 481;

// A decoded picture: rows from the top, each pixel four bytes in the order
// blue, green, red and one unused byte (the layout of a DIB's colour table
// entry), rows not padded.
struct StdPicture {
    int32_t Width = 0;
    int32_t Height = 0;
    std::vector<uint8_t> Bits;

    // True when the size is above 0 and the pixels fill it.
    bool Whole() const {
        return Width > 0 && Height > 0 && Bits.size() / 4 / static_cast<size_t>(Width) >= static_cast<size_t>(Height);
    }
    // The first byte of the pixel at (x, y), (0, 0) being the top left.
    const uint8_t* Pixel(int32_t x, int32_t y) const {
        return Bits.data() + (static_cast<size_t>(y) * static_cast<size_t>(Width) + static_cast<size_t>(x)) * 4;
    }
};

class IPictureService {
public:
    virtual ~IPictureService() = default;
    // Decodes the file at `path` (a BMP, the first frame of a GIF, a JPEG) into
    // `out`; false when the file can't be read or decoded.
    virtual bool Decode(const std::string& path, StdPicture& out) = 0;
};

// Installs the service; nullptr removes it.
void SetPictureService(IPictureService* service);
IPictureService* GetPictureService();

// Raises 53 when there is no such file, 481 when it can't be decoded.
std::shared_ptr<const StdPicture> LoadPicture(const std::string& path);
