#include "platform/Picture.h"

#include "platform/Files.h"
#include "platform/Runtime.h"

namespace {
IPictureService* g_service = nullptr;
}  // namespace

void SetPictureService(IPictureService* service) { g_service = service; }
IPictureService* GetPictureService() { return g_service; }

std::shared_ptr<const StdPicture> LoadPicture(const std::string& path) {
    if (!PathExists(path) || IsDirectory(path)) RaiseError(vbErrFileNotFound);
    auto picture = std::make_shared<StdPicture>();
    // A service that hands back pixels that don't fill the size it gives is
    // as good as one that failed.
    if (g_service == nullptr || !g_service->Decode(path, *picture) || !picture->Whole())
        RaiseError(vbErrInvalidPicture, {}, "Invalid picture");
    return picture;
}
