#pragma once
// The runtime's picture object and its LoadPicture. A picture holds a bitmap
// of the graphics layer; the picture that LoadPicture gives owns its bitmap,
// the Image of a picture box only refers to the box's own. Decoding BMP, GIF
// and JPEG is a service that the front end fills.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/Gdi.h"

class StdPicture {
public:
    // A picture of the bitmap `handle`; with `owns` the picture deletes the
    // bitmap at its end.
    StdPicture(HBITMAP handle, bool owns) : handle_(handle), owns_(owns) {}
    ~StdPicture();
    StdPicture(const StdPicture&) = delete;
    StdPicture& operator=(const StdPicture&) = delete;

    HBITMAP Handle() const { return handle_; }
    // The bitmap's size in pixels; 0 when the bitmap is gone.
    int32_t Width() const;
    int32_t Height() const;

private:
    HBITMAP handle_;
    bool owns_;
};

using Picture = std::shared_ptr<StdPicture>;

// A picture of `width` x `height` pixels made from 32-bit values 0xAARRGGBB,
// rows from top to bottom (alpha ignored); nullptr when the size is refused.
Picture PictureFromPixels(int32_t width, int32_t height, const std::vector<uint32_t>& pixels);

// What the front end decodes pictures with.
class IPictureLoader {
public:
    virtual ~IPictureLoader() = default;
    // Decodes a BMP, GIF or JPEG file into rows of 0xAARRGGBB values from top
    // to bottom; false when it cannot.
    virtual bool Load(const std::string& path, int32_t& width, int32_t& height, std::vector<uint32_t>& pixels) = 0;
};

void SetPictureLoader(IPictureLoader* loader);
IPictureLoader* GetPictureLoader();

inline constexpr int32_t vbErrInvalidPicture = 481;

// An empty path gives no picture. A file that isn't there raises error 53,
// "File not found"; a file that no loader decodes (or no loader at all)
// raises 481, "Invalid picture".
Picture LoadPicture(const std::string& path);
