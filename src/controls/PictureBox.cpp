#include <cmath>
#include <cstring>

#include "controls/Controls.h"
#include "platform/SystemColors.h"

namespace {

int32_t Nearest(float v) {
    if (!std::isfinite(v) || std::fabs(v) > 2.0e9f) return -1;
    return static_cast<int32_t>(std::lround(v));
}

}  // namespace

PictureBox::PictureBox(std::string name) : Control(std::move(name)), hDC(CreateCompatibleDC(0)) {
    stock_ = GetSelectedBitmap(hDC);
    Resize.Connect([this] { SyncImage(); });
}

PictureBox::~PictureBox() {
    SelectObject(hDC, stock_);
    if (image_ != 0) DeleteObject(image_);
    DeleteDC(hDC);
}

uint32_t PictureBox::ResolvedBackColor() const {
    uint32_t colour = 0;
    if (OleTranslateColor(BackColor, 0, &colour) != S_OK) colour = 0;
    return colour & 0xFFFFFF;
}

void PictureBox::FillBack(int32_t left, int32_t top) const {
    // Everything right of `left` or below `top` takes the background colour.
    uint32_t c = ResolvedBackColor();
    uint8_t pixel[4] = {static_cast<uint8_t>(c >> 16), static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c), 0};
    for (int32_t y = 0; y < imageHeight_; ++y) {
        uint8_t* row = bits_ + static_cast<size_t>(y) * static_cast<size_t>(imageWidth_) * 4;
        for (int32_t x = y < top ? left : 0; x < imageWidth_; ++x) std::memcpy(row + static_cast<size_t>(x) * 4, pixel, 4);
    }
}

void PictureBox::SyncImage() const {
    // Every point drawn asks; the size is worked out again only when what it
    // comes from has changed.
    const SyncKey key{Bounds().Width, Bounds().Height, ParentUnitsPerPixel, BorderPixels};
    if (key == synced_) return;
    synced_ = key;
    int32_t width = ScaleWidth(), height = ScaleHeight();
    if (width == imageWidth_ && height == imageHeight_) return;
    void* bits = nullptr;
    // A size that the graphics layer refuses leaves the box without pixels.
    HBITMAP fresh = CreateTopDownSection(width, height, &bits);
    HBITMAP old = image_;
    int32_t oldWidth = imageWidth_, oldHeight = imageHeight_;
    HDC keep = 0;
    if (old != 0) {
        // Park the old image in a context of its own to copy from it.
        SelectObject(hDC, stock_);
        keep = CreateCompatibleDC(hDC);
        SelectObject(keep, old);
    }
    image_ = fresh;
    bits_ = static_cast<uint8_t*>(bits);
    imageWidth_ = fresh != 0 ? width : 0;
    imageHeight_ = fresh != 0 ? height : 0;
    if (fresh != 0) {
        SelectObject(hDC, fresh);
        FillBack(oldWidth, oldHeight);
        if (keep != 0) BitBlt(hDC, 0, 0, oldWidth, oldHeight, keep, 0, 0, SRCCOPY);
    }
    if (keep != 0) {
        SelectObject(keep, stock_);
        DeleteDC(keep);
        DeleteObject(old);
    }
}

void PictureBox::Cls() {
    SyncImage();
    FillBack(0, 0);
    if (picture_) {
        HDC source = CreateCompatibleDC(hDC);
        HBITMAP previous = SelectObject(source, picture_->Handle());
        if (previous != 0) {
            BitBlt(hDC, 0, 0, imageWidth_, imageHeight_, source, 0, 0, SRCCOPY);
            SelectObject(source, previous);
        }
        DeleteDC(source);
    }
    Notify();
}

void PictureBox::PSet(float x, float y, uint32_t color) {
    SyncImage();
    uint32_t resolved = color & 0xFFFFFF;
    if ((color & 0x80000000u) != 0 && OleTranslateColor(color, 0, &resolved) != S_OK) return;
    const int32_t px = Nearest(x), py = Nearest(y);
    if (px < 0 || py < 0 || px >= imageWidth_ || py >= imageHeight_) return;
    // The image is the box's own: a point goes straight into its pixels.
    uint8_t* p = bits_ + (static_cast<size_t>(py) * static_cast<size_t>(imageWidth_) + static_cast<size_t>(px)) * 4;
    p[0] = static_cast<uint8_t>(resolved >> 16);
    p[1] = static_cast<uint8_t>(resolved >> 8);
    p[2] = static_cast<uint8_t>(resolved);
    p[3] = 0;
}

int32_t PictureBox::Point(float x, float y) const {
    SyncImage();
    const int32_t px = Nearest(x), py = Nearest(y);
    if (px < 0 || py < 0 || px >= imageWidth_ || py >= imageHeight_) return -1;
    const uint8_t* p =
        bits_ + (static_cast<size_t>(py) * static_cast<size_t>(imageWidth_) + static_cast<size_t>(px)) * 4;
    return p[2] | p[1] << 8 | p[0] << 16;
}

::Picture PictureBox::Image() const {
    SyncImage();
    if (image_ == 0) return nullptr;
    return std::make_shared<StdPicture>(image_, false);
}

void PictureBox::SetPicture(::Picture picture) {
    picture_ = std::move(picture);
    Cls();
}
