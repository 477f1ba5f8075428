#include "pictures/SavePicture.h"

#include <new>

#include "controls/Controls.h"
#include "identify/modGlobal.h"
#include "pictures/BmpWriter.h"
#include "platform/Gdi.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"
#include "winsupport/cCommonDialog.h"

void SavePicture(const Picture& picture, const std::string& path) {
    BITMAPINFO format{};
    // With no buffer GetDIBits tells the bitmap's own size.
    if (!picture || GetDIBits(0, picture->Handle(), 0, 0, nullptr, &format, DIB_RGB_COLORS) == 0)
        RaiseError(vbErrInvalidPicture, {}, "Invalid picture");
    const int32_t width = format.bmiHeader.biWidth;
    const int32_t height = format.bmiHeader.biHeight < 0 ? -format.bmiHeader.biHeight : format.bmiHeader.biHeight;
    if (width <= 0 || height <= 0) RaiseError(vbErrInvalidPicture, {}, "Invalid picture");
    // Rows of 24 bits from the bottom up are the BMP's own pixel data.
    format.bmiHeader = BITMAPINFOHEADER{};
    format.bmiHeader.biSize = 40;
    format.bmiHeader.biWidth = width;
    format.bmiHeader.biHeight = height;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 24;
    const HBITMAP bitmap = picture->Handle();
    const bool written = WriteBmp24(path, width, height, [&](int32_t first, int32_t rows, uint8_t* out) {
        return GetDIBits(0, bitmap, static_cast<uint32_t>(first), static_cast<uint32_t>(rows), out, &format,
                         DIB_RGB_COLORS) == rows;
    });
    if (!written) RaiseError(vbErrPathFileAccess);
}

std::string BmpNameFor(const std::string& sPathName) {
    return VbReplace(GetFileName(sPathName), "." + GetFileExt(sPathName), ".bmp");
}

bool SavePaneAs(const std::string& sPathName, const PictureBox& pane, int32_t hOwner) {
    try {
        cCommonDialog& dialog = CommonDialog();
        dialog.SetFilename(BmpNameFor(sPathName));
        dialog.SetFilter("Bitmap 24 bits (*.bmp)|*.bmp");
        dialog.SetCancelError(true);
        dialog.Sethwnd(hOwner);
        dialog.ShowSave();
        const std::string path = dialog.Filename();
        // The old file goes only when the new one takes its name, so a write
        // that fails leaves it whole.
        if (FileExists(path) && MsgBox(path + " already exist.\r\nDo you want to replace it?", vbYesNo) == vbNo)
            return true;
        SavePicture(pane.Image(), path);
        return true;
    } catch (const RuntimeError&) {
    } catch (const std::bad_alloc&) {
    }
    return false;
}
