#include "platform/Picture.h"

#include <cstring>

#include "platform/Files.h"
#include "platform/Runtime.h"

namespace {
IPictureLoader* g_loader = nullptr;

int32_t Dimension(HBITMAP h, bool height) {
    BITMAP bm;
    if (GetObjectA(h, static_cast<int32_t>(sizeof(bm)), &bm) == 0) return 0;
    return height ? bm.bmHeight : bm.bmWidth;
}
}  // namespace

StdPicture::~StdPicture() {
    if (owns_ && handle_ != 0) DeleteObject(handle_);
}

int32_t StdPicture::Width() const { return Dimension(handle_, false); }
int32_t StdPicture::Height() const { return Dimension(handle_, true); }

Picture PictureFromPixels(int32_t width, int32_t height, const std::vector<uint32_t>& pixels) {
    if (width <= 0 || height <= 0) return nullptr;
    if (pixels.size() / static_cast<size_t>(width) < static_cast<size_t>(height)) return nullptr;
    void* bits = nullptr;
    HBITMAP hbm = CreateTopDownSection(width, height, &bits);
    if (hbm == 0) return nullptr;
    // Top-down rows of 32 bits have no padding, and 0xAARRGGBB in memory is
    // blue, green, red, alpha: the section's own layout.
    auto* out = static_cast<uint8_t*>(bits);
    for (size_t i = 0, n = static_cast<size_t>(width) * static_cast<size_t>(height); i < n; ++i) {
        uint32_t v = pixels[i] & 0x00FFFFFF;
        out[i * 4] = static_cast<uint8_t>(v);
        out[i * 4 + 1] = static_cast<uint8_t>(v >> 8);
        out[i * 4 + 2] = static_cast<uint8_t>(v >> 16);
    }
    return std::make_shared<StdPicture>(hbm, true);
}

void SetPictureLoader(IPictureLoader* loader) { g_loader = loader; }
IPictureLoader* GetPictureLoader() { return g_loader; }

Picture LoadPicture(const std::string& path) {
    if (path.empty()) return nullptr;
    HFILE h = _lopen(path, OF_READ);
    if (h <= 0) RaiseError(vbErrFileNotFound);
    _lclose(h);
    int32_t width = 0, height = 0;
    std::vector<uint32_t> pixels;
    if (g_loader == nullptr || !g_loader->Load(path, width, height, pixels))
        RaiseError(vbErrInvalidPicture, {}, "Invalid picture");
    Picture picture = PictureFromPixels(width, height, pixels);
    if (!picture) RaiseError(vbErrInvalidPicture, {}, "Invalid picture");
    return picture;
}
