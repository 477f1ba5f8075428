#include "pak/ZipWrapper.h"

#include <memory>
#include <new>
#include <vector>

#include "identify/modGlobal.h"
#include "pak/MemberPath.h"
#include "platform/Runtime.h"

std::array<uint8_t, 18> g_abZipLocalHead{};
std::array<uint8_t, 20> g_abZipCentralHead{};
std::array<uint8_t, 16> g_abZipCentralTail{};
std::array<uint8_t, 12> g_abZipEndHead{};

void FillZipTemplates() {
    // Signature, version 2.0, no flags, method 10, 01:11:00 on 1 February
    // 1997, and a CRC of 0: the stream is never decoded here.
    g_abZipLocalHead = {0x50, 0x4B, 0x03, 0x04, 0x14, 0x00, 0x00, 0x00, 0x0A,
                        0x00, 0x60, 0x09, 0x41, 0x22, 0x00, 0x00, 0x00, 0x00};
    g_abZipCentralHead = {0x50, 0x4B, 0x01, 0x02, 0x14, 0x00, 0x14, 0x00, 0x00, 0x00,
                          0x0A, 0x00, 0x60, 0x09, 0x41, 0x22, 0x00, 0x00, 0x00, 0x00};
    // No extra field, no comment, disk 0, the archive attribute, and the
    // local header at offset 0.
    g_abZipCentralTail = {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                          0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    g_abZipEndHead = {0x50, 0x4B, 0x05, 0x06, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01, 0x00};
}

namespace {

void Put(HFILE h, const void* data, int32_t count) {
    if (_lwrite(h, data, count) != count) RaiseError(vbErrDiskFull);
}

void Put32(HFILE h, int32_t value) {
    auto v = static_cast<uint32_t>(value);
    const uint8_t bytes[4] = {static_cast<uint8_t>(v), static_cast<uint8_t>(v >> 8), static_cast<uint8_t>(v >> 16),
                              static_cast<uint8_t>(v >> 24)};
    Put(h, bytes, 4);
}

void Put16(HFILE h, int32_t value) {
    auto v = static_cast<uint32_t>(value);
    const uint8_t bytes[2] = {static_cast<uint8_t>(v), static_cast<uint8_t>(v >> 8)};
    Put(h, bytes, 2);
}

// The length of the PAK, or -1 when it can't be told.
int64_t PakLength(const std::string& sPakPath) {
    return PassOver([&] { return FileLen(sPakPath); }, int64_t{-1});
}

}  // namespace

void WriteZipWrapper(HFILE hFile, const std::string& abName, int32_t L, int32_t lPackedSize,
                     int32_t lOriginalSize, const uint8_t* abStream) {
    Put(hFile, g_abZipLocalHead.data(), static_cast<int32_t>(g_abZipLocalHead.size()));
    Put32(hFile, lPackedSize);
    Put32(hFile, lOriginalSize);
    // The name length and the extra field length (0) as one 32-bit value.
    Put32(hFile, L);
    Put(hFile, abName.data(), L);
    Put(hFile, abStream, lPackedSize);
    Put(hFile, g_abZipCentralHead.data(), static_cast<int32_t>(g_abZipCentralHead.size()));
    Put32(hFile, lPackedSize);
    Put32(hFile, lOriginalSize);
    Put16(hFile, L);
    Put(hFile, g_abZipCentralTail.data(), static_cast<int32_t>(g_abZipCentralTail.size()));
    Put(hFile, abName.data(), L);
    Put(hFile, g_abZipEndHead.data(), static_cast<int32_t>(g_abZipEndHead.size()));
    Put32(hFile, VbAdd16(L, 46));
    Put32(hFile, VbAdd32(VbAdd32(L, lPackedSize), 30));
    Put16(hFile, 0);
}

bool UnpakMember(const std::string& sDestFolder, const std::string& sPakPath, const std::string& sName,
                 int32_t lPackedSize, int32_t lOriginalSize, int32_t lOffset) {
    const std::string sTarget = MemberPath(sDestFolder, sName);
    if (sTarget.empty()) return false;
    const bool bStored = lPackedSize == lOriginalSize;
    const std::string sZip = sTarget + ".zip";
    // A member never lands on a file that the run itself uses: the PAK, the
    // command file, the archiver's own files. The file written here is
    // checked when it is made and again when it is put in place; for a
    // compressed member the archiver later writes the plain name too.
    if (!bStored && IsRunFile(sTarget)) return false;

    HFILE hFile = _lopen(sPakPath, OF_READ);
    if (hFile < 1) return false;
    // A handle still open after the step is closed behind it.
    const bool bWritten = PassOver([&] {
        // The sizes come from the PAK's directory: a member that the PAK
        // can't hold is refused before any memory is taken for it.
        int64_t lLength = PakLength(sPakPath);
        if (lPackedSize < 0 || lOffset < 0 || lLength < 0 ||
            static_cast<int64_t>(lOffset) + lPackedSize > lLength) {
            return false;
        }
        // Not zero-filled: the read below fills every byte or the member is refused.
        std::unique_ptr<uint8_t[]> abData(new uint8_t[static_cast<size_t>(lPackedSize)]);
        if (_llseek(hFile, lOffset, FILE_BEGIN) != lOffset ||
            _lread(hFile, abData.get(), lPackedSize) != lPackedSize) {
            return false;
        }
        _lclose(hFile);
        hFile = 0;

        // The new file is written beside its final name and takes its place
        // only when whole, so an older file of that name is replaced, never
        // lost half-way. For a compressed member the older plain file stays
        // until the archiver has a whole one to put in its place.
        hFile = CreateReplacement(bStored ? sTarget : sZip, sDestFolder);
        if (hFile <= 0) {
            hFile = 0;
            return false;
        }
        if (bStored) {
            Put(hFile, abData.get(), lPackedSize);
        } else {
            const auto L = static_cast<int32_t>(sName.size());
            WriteZipWrapper(hFile, sName, L, lPackedSize, lOriginalSize, abData.get());
        }
        HFILE h = hFile;
        hFile = 0;
        return CommitReplacement(h);
    }, false);
    if (hFile > 0) _lclose(hFile);
    return bWritten;
}
