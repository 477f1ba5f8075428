// quarrin-cli picture: previews a file as a double click does and writes what
// the picture pane shows, as a 24-bit BMP by the program's own writer or as a
// PNG by Qt's image writer. A Planar Bitmap can have its colour table changed
// by one of the DIB engine's palette operations first.
#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <string>
#include <vector>

#include "CliSupport.h"
#include "Commands.h"
#include "QtPictureService.h"
#include "identify/CNerhaltFiles.h"
#include "pictures/CBtm.h"
#include "pictures/CImageFiles.h"
#include "pictures/SavePicture.h"
#include "platform/Files.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"

namespace {

enum class PaletteOp { None, Gray, Invert, Fade, Lightness };

struct PictureArgs {
    std::string path;
    std::string out;
    PaletteOp op = PaletteOp::None;
    std::string opName;
    int32_t amount = 0;
};

bool EndsWithPng(const std::string& name) {
    return name.size() >= 4 && VbLCase(name.substr(name.size() - 4)) == ".png";
}

// Parses the arguments; false with the reason.
bool ParsePictureArgs(const std::vector<std::string>& args, PictureArgs& p, std::string& why) {
    std::vector<std::string> plain;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a.rfind("--", 0) != 0) {
            plain.push_back(a);
            continue;
        }
        if (p.op != PaletteOp::None) {
            why = "picture takes one palette option at most";
            return false;
        }
        p.opName = a;
        if (a == "--gray") {
            p.op = PaletteOp::Gray;
        } else if (a == "--invert") {
            p.op = PaletteOp::Invert;
        } else if (a == "--fade" || a == "--lightness") {
            p.op = a == "--fade" ? PaletteOp::Fade : PaletteOp::Lightness;
            const int32_t most = a == "--fade" ? 255 : 1000;
            const bool number = i + 1 < args.size() && !args[i + 1].empty() &&
                                args[i + 1].find_first_not_of("0123456789") == std::string::npos &&
                                PassOver([&] { p.amount = VbCLng(args[i + 1]); });
            if (!number || p.amount > most) {
                why = a + " needs a number from 0 to " + std::to_string(most);
                return false;
            }
            ++i;
        } else {
            why = "unknown option '" + a + "' for picture";
            return false;
        }
    }
    if (plain.size() != 2) {
        why = "picture takes PATH and OUT";
        return false;
    }
    p.path = plain[0];
    p.out = plain[1];
    return true;
}

// The Planar Bitmap behind the selection, or null.
CBtm* PlanarBitmap(frmMain& form) {
    if (form.m_lFileKind != fkGame || !form.m_oGameFiles) return nullptr;
    return dynamic_cast<CBtm*>(form.m_oGameFiles->FileObject());
}

// True when the preview left a picture in the pane. A picture class that
// decoded its file paints again from what it holds; one that failed tries
// again and fails again.
bool PreviewShowsPicture(frmMain& form) {
    if (form.m_lFileKind == fkGame) {
        const std::string ext = form.m_oGameFiles->Extension();
        // A palette's strip is drawn whatever the file holds.
        return ext == "plt" || (ext == "btm" && form.m_oGameFiles->Show(form.oPicture.hDC));
    }
    if (form.m_lFileKind != fkPicture) return false;
    if (form.m_oImageFiles->Kind() == ikTga) return form.m_oImageFiles->Show();
    return form.oPicture.Picture() != nullptr;
}

void ApplyPaletteOp(CBtm& btm, const PictureArgs& p) {
    switch (p.op) {
        case PaletteOp::Gray: btm.GrayScale(); break;
        case PaletteOp::Invert: btm.Invert(); break;
        case PaletteOp::Fade: btm.Fade(p.amount); break;
        case PaletteOp::Lightness: btm.AdjustLightness(p.amount); break;
        case PaletteOp::None: break;
    }
}

// The section of a Planar Bitmap as an 8-bit indexed image with its own
// colour table and indices.
QImage IndexedImage(CBtm& btm) {
    const int32_t width = btm.Width();
    const int32_t height = btm.Height();
    QImage image(width, height, QImage::Format_Indexed8);
    if (image.isNull()) return image;
    QList<QRgb> table;
    for (int32_t i = 0; i < 256; ++i) {
        const auto c = static_cast<uint32_t>(btm.Color(i));
        table.push_back(qRgb(static_cast<int>(c & 0xFF), static_cast<int>((c >> 8) & 0xFF),
                             static_cast<int>((c >> 16) & 0xFF)));
    }
    image.setColorTable(table);
    const auto* bits = static_cast<const uint8_t*>(btm.DIBSectionBitsPtr());
    // The section's rows are bottom-up.
    for (int32_t y = 0; y < height; ++y)
        std::memcpy(image.scanLine(y), bits + static_cast<size_t>(height - 1 - y) * btm.BytesPerScanLine(),
                    static_cast<size_t>(width));
    return image;
}

// The pane's image, rows from the top, as a true-colour image.
QImage PaneImage(const PictureBox& pane) {
    const int32_t width = pane.ImageWidth();
    const int32_t height = pane.ImageHeight();
    if (pane.ImageBits() == nullptr || width <= 0 || height <= 0) return {};
    // The pane's pixels are blue, green, red and an unused byte: the memory
    // layout of Format_RGB32 once the unused byte is set.
    QImage image(width, height, QImage::Format_RGB32);
    if (image.isNull()) return image;
    for (int32_t y = 0; y < height; ++y) {
        const auto* in = reinterpret_cast<const uint32_t*>(pane.ImageBits()) + static_cast<size_t>(y) * width;
        auto* out = reinterpret_cast<uint32_t*>(image.scanLine(y));
        for (int32_t x = 0; x < width; ++x) out[x] = in[x] | 0xFF000000u;
    }
    return image;
}

// Writes a PNG through a replacement, so that a failure leaves nothing.
bool WritePng(const QImage& image, const std::string& path) {
    if (image.isNull()) return false;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image)) return false;
    const HFILE h = CreateReplacement(path);
    if (h <= 0) return false;
    if (_lwrite(h, bytes.constData(), static_cast<int32_t>(bytes.size())) != bytes.size()) {
        _lclose(h);
        return false;
    }
    return CommitReplacement(h);
}

}  // namespace

int CliPicture(const std::vector<std::string>& args) {
    PictureArgs p;
    std::string why;
    if (!ParsePictureArgs(args, p, why)) return CliFail(why);
    if (!CheckReadableFile(p.path, why)) return CliFail(why);
    frmMain form;
    if (!SelectFile(form, p.path, why)) return CliFail(why);
    if (p.op != PaletteOp::None && PlanarBitmap(form) == nullptr)
        return CliFail(p.opName + " changes a Planar Bitmap's colours and is refused for " + p.path);
    const bool picture = form.m_lFileKind == fkPicture || (form.m_lFileKind == fkGame && form.ShowOffered() &&
                                                         form.m_oGameFiles->HideListView());
    if (!picture) return CliFail(p.path + ": not a picture");
    if (!form.ShowOffered()) return CliFail(p.path + ": a JPEG without a baseline frame marker can't be shown");
    const std::string before = form.oStatusBar.Panels(1).Text;
    form.oFile_DblClick();
    if (!PreviewShowsPicture(form)) {
        const std::string& after = form.oStatusBar.Panels(1).Text;
        return CliFail(p.path + ": " + (after != before ? after : "the picture's data is short or damaged"));
    }
    CBtm* btm = PlanarBitmap(form);
    if (btm != nullptr && p.op != PaletteOp::None) {
        ApplyPaletteOp(*btm, p);
        form.m_oGameFiles->Show(form.oPicture.hDC);
    }
    if (EndsWithPng(p.out)) {
        const QImage image = btm != nullptr && p.op == PaletteOp::None ? IndexedImage(*btm) : PaneImage(form.oPicture);
        if (!WritePng(image, p.out)) return CliFail(p.out + ": cannot be written");
        return 0;
    }
    try {
        SavePicture(form.oPicture.Image(), p.out);
    } catch (const RuntimeError& e) {
        return CliFail(p.out + ": " + e.Description);
    }
    return 0;
}
