#include "pictures/CImageFiles.h"

#include <algorithm>
#include <utility>

#include "identify/IFileHost.h"
#include "pictures/CTGAFile.h"
#include "pictures/SavePicture.h"
#include "platform/LittleEndian.h"
#include "platform/Picture.h"
#include "platform/Runtime.h"

namespace {

// The bytes of a file taken one at a time, read in blocks: the JPEG scan
// walks a whole file byte by byte, and a block read spares a call per byte.
class ByteStream {
public:
    explicit ByteStream(HFILE h) : h_(h) {}

    // The next byte into `b`; at the end of the file `b` keeps what it held,
    // as a short read leaves its field.
    void Next(uint8_t& b) {
        if (at_ == length_) {
            if (end_) return;
            at_ = 0;
            length_ = std::max(0, _lread(h_, block_, static_cast<int32_t>(sizeof block_)));
            if (length_ == 0) {
                end_ = true;
                return;
            }
        }
        b = block_[at_++];
    }
    bool AtEnd() const { return end_; }
    // Bytes read from the file and not yet taken: the file's position is
    // that far ahead of the stream's.
    int32_t Ahead() const { return length_ - at_; }

private:
    HFILE h_;
    uint8_t block_[64 * 1024];
    int32_t at_ = 0;
    int32_t length_ = 0;
    bool end_ = false;
};

// The width and the height at `offset`, little-endian fields of T; a file too
// short for them gives 0.
template <typename T>
std::pair<int32_t, int32_t> ReadSizes(HFILE h, int32_t offset) {
    T width = 0, height = 0;
    _llseek(h, offset, FILE_BEGIN);
    if constexpr (sizeof(T) == 4) {
        ReadLong(h, width);
        ReadLong(h, height);
    } else {
        ReadWord(h, width);
        ReadWord(h, height);
    }
    return {width, height};
}

std::string SizeText(int32_t width, int32_t height) { return std::to_string(width) + "x" + std::to_string(height); }

}  // namespace

CImageFiles::CImageFiles(IFileHost& host) : host_(host) {}

CImageFiles::~CImageFiles() {
    if (m_hFile > 0) _lclose(m_hFile);
}

void CImageFiles::SetKind(int32_t kind, const char* extension, const char* name, bool able2Save) {
    m_lKind = kind;
    m_sExtension = extension;
    m_sName = name;
    m_bValid = true;
    m_bAble2Show = true;
    m_bAble2Save = able2Save;
}

void CImageFiles::SetSizedKind(int32_t kind, const char* extension, const char* name, bool able2Save,
                               int32_t width, int32_t height) {
    m_lWidth = width;
    m_lHeight = height;
    SetKind(kind, extension, name, able2Save);
    m_sName += SizeText(width, height);
}

bool CImageFiles::Initialize(const std::string& lpPathName) {
    if (lpPathName == m_sPathName) return m_bValid;
    m_bValid = false;
    m_bAble2Show = false;
    m_bAble2Save = false;
    m_sPathName = lpPathName;
    m_hFile = _lopen(lpPathName, OF_READ);
    if (m_hFile > 0) {
        uint8_t b = 0;
        ReadByte(m_hFile, b);
        switch (b) {
            case 'B':
                ReadByte(m_hFile, b);
                if (b == 'M') {
                    const auto [width, height] = ReadSizes<int32_t>(m_hFile, 18);
                    SetSizedKind(ikBmp, "bmp", "BMP Picture ", false, width, height);
                }
                break;
            case 'G':
                ReadByte(m_hFile, b);
                if (b == 'I') ReadByte(m_hFile, b);
                if (b == 'F') {
                    const auto [width, height] = ReadSizes<int16_t>(m_hFile, 6);
                    SetSizedKind(ikGif, "gif", "GIF Picture ", true, width, height);
                }
                break;
            case 255:
                ReadByte(m_hFile, b);
                if (b == 216) ScanJpeg();
                break;
            default:
                if (!m_oTga) m_oTga = std::make_unique<CTGAFile>();
                if (m_oTga->Initialize(lpPathName)) {
                    SetKind(ikTga, "tga", "", true);
                    m_sName = m_oTga->Information();
                    m_lHeight = m_oTga->Height();
                    m_lWidth = m_oTga->Width();
                }
                break;
        }
    }
    // No handle stays behind: LoadPicture and CTGAFile open the file themselves.
    if (m_hFile > 0) _lclose(m_hFile);
    m_hFile = 0;
    return m_bValid;
}

// Looks for the baseline frame marker 0xFF 0xC0 byte after byte, without
// walking the segments. The count runs over the bytes behind the two already
// read; a marker whose last byte ends the file leaves it at 0 and so counts
// as not found, and in 0xFF 0xFF 0xC0 the second 0xFF is taken as the
// marker's second byte.
void CImageFiles::ScanJpeg() {
    m_sName = "JPG Picture ";
    m_sExtension = "jpg";
    m_lKind = ikJpeg;
    m_bValid = true;
    int64_t counter = PassOver([&] { return FileLen(m_sPathName); }, int64_t{0}) - 2;
    bool found = false;
    ByteStream stream(m_hFile);
    uint8_t b = 0;
    do {
        --counter;
        stream.Next(b);
        if (b == 255) {
            --counter;
            stream.Next(b);
            found = b == 192;
        }
        // Past the end a byte keeps its value and no marker can come; the
        // count would only run down to 0.
        if (stream.AtEnd() && !found) counter = std::min<int64_t>(counter, 0);
    } while (counter > 0 && !found);
    if (counter <= 0) return;
    // Behind the marker: the segment's length and the sample precision, then
    // the height and the width, high byte first.
    _llseek(m_hFile, 3 - stream.Ahead(), FILE_CURRENT);
    uint8_t size[4] = {};
    _lread(m_hFile, size, 4);
    m_lHeight = size[0] << 8 | size[1];
    m_lWidth = size[2] << 8 | size[3];
    m_sName += SizeText(m_lWidth, m_lHeight);
    m_bAble2Save = true;
    m_bAble2Show = true;
}

bool CImageFiles::Show() {
    PictureBox& pane = host_.PicturePane();
    if (m_lKind == ikTga) {
        if (!m_oTga) return false;
        if (m_oTga->Height() > 0) pane.Move(0, 0, m_oTga->Width(), m_oTga->Height());
        pane.Refresh();
        pane.Cls();
        const bool shown = m_oTga->Show(pane.hDC);
        pane.Refresh();
        return shown;
    }
    if (!m_bAble2Show) return false;
    // The pane takes the header's size before the picture is decoded; a file
    // that fails to decode raises to the caller with the pane so sized.
    pane.Move(0, 0, m_lWidth, m_lHeight);
    pane.SetPicture(LoadPicture(m_sPathName));
    return false;
}

bool CImageFiles::SaveAs() {
    if (!m_bAble2Save) return true;
    return SavePaneAs(m_sPathName, host_.PicturePane(), host_.OwnerWindow());
}
