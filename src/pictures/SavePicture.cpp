#include "pictures/SavePicture.h"

#include <cstring>
#include <new>

#include "controls/Controls.h"
#include "identify/modGlobal.h"
#include "pictures/BmpWriter.h"
#include "platform/Gdi.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"
#include "winsupport/cCommonDialog.h"

namespace {

// The rows of a bitmap of 24 or 32 bits in the BMP's order, straight from its
// pixel buffer: the pane's image is such a bitmap, and a conversion pixel by
// pixel would cost more than the write.
bool CopyRows(const BITMAP& bm, bool bottomUp, int32_t first, int32_t rows, uint8_t* out) {
    const auto* bits = static_cast<const uint8_t*>(bm.bmBits);
    const size_t stride = static_cast<size_t>(Bmp24Stride(bm.bmWidth));
    const int32_t bytes = bm.bmBitsPixel / 8;
    for (int32_t r = 0; r < rows; ++r, out += stride) {
        // Row `first + r` of the file counts from the bottom of the picture.
        const int32_t fromBottom = first + r;
        const int32_t memoryRow = bottomUp ? fromBottom : bm.bmHeight - 1 - fromBottom;
        const uint8_t* in = bits + static_cast<size_t>(memoryRow) * static_cast<size_t>(bm.bmWidthBytes);
        if (bytes == 3) {
            std::memcpy(out, in, static_cast<size_t>(bm.bmWidth) * 3);
            continue;
        }
        uint8_t* o = out;
        for (int32_t x = 0; x < bm.bmWidth; ++x, in += 4, o += 3) {
            o[0] = in[0];
            o[1] = in[1];
            o[2] = in[2];
        }
    }
    return true;
}

}  // namespace

void SavePicture(const Picture& picture, const std::string& path) {
    BITMAPINFO format{};
    BITMAP bm{};
    // With no buffer GetDIBits tells the bitmap's own format.
    if (!picture || GetDIBits(0, picture->Handle(), 0, 0, nullptr, &format, DIB_RGB_COLORS) == 0 ||
        GetObjectA(picture->Handle(), static_cast<int32_t>(sizeof bm), &bm) == 0 || bm.bmWidth <= 0 ||
        bm.bmHeight <= 0)
        RaiseError(vbErrInvalidPicture, {}, "Invalid picture");
    const bool bottomUp = format.bmiHeader.biHeight > 0;
    const HBITMAP bitmap = picture->Handle();
    BmpRowSource rows;
    if ((bm.bmBitsPixel == 24 || bm.bmBitsPixel == 32) && bm.bmBits != nullptr) {
        rows = [&](int32_t first, int32_t count, uint8_t* out) { return CopyRows(bm, bottomUp, first, count, out); };
    } else {
        // Any other depth goes through the colour conversion of GetDIBits:
        // rows of 24 bits from the bottom up are the BMP's own pixel data.
        format.bmiHeader = BITMAPINFOHEADER{};
        format.bmiHeader.biSize = 40;
        format.bmiHeader.biWidth = bm.bmWidth;
        format.bmiHeader.biHeight = bm.bmHeight;
        format.bmiHeader.biPlanes = 1;
        format.bmiHeader.biBitCount = 24;
        rows = [&](int32_t first, int32_t count, uint8_t* out) {
            return GetDIBits(0, bitmap, static_cast<uint32_t>(first), static_cast<uint32_t>(count), out, &format,
                             DIB_RGB_COLORS) == count;
        };
    }
    if (!WriteBmp24(path, bm.bmWidth, bm.bmHeight, rows)) RaiseError(vbErrPathFileAccess);
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
