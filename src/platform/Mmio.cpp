#include "platform/Mmio.h"

#include <climits>
#include <memory>
#include <vector>

#include "platform/Files.h"
#include "platform/LittleEndian.h"

namespace {

struct MmioFile {
    HFILE file = HFILE_ERROR;
    int64_t position = 0;
};

std::vector<std::unique_ptr<MmioFile>> g_files;  // slot i holds handle i + 1

MmioFile* Lookup(HMMIO h) {
    if (h < 1 || static_cast<size_t>(h) > g_files.size()) return nullptr;
    return g_files[static_cast<size_t>(h) - 1].get();
}

// Reads at the walk's position. A position that the file layer can't reach
// lies behind the end of any file it reads, so nothing is there.
int32_t ReadAt(MmioFile& f, void* buffer, int32_t count) {
    if (f.position > INT32_MAX) return 0;
    if (_llseek(f.file, static_cast<int32_t>(f.position), FILE_BEGIN) == HFILE_ERROR) return -1;
    const int32_t n = _lread(f.file, buffer, count);
    if (n > 0) f.position += n;
    return n;
}

int64_t PaddedEnd(const MMCKINFO& ck) {
    return static_cast<int64_t>(ck.dwDataOffset) + ck.cksize + (ck.cksize & 1);
}

}  // namespace

HMMIO mmioOpenA(const std::string& path, MMIOINFO* info, uint32_t flags) {
    auto fail = [info](uint32_t why) {
        if (info != nullptr) info->wErrorRet = why;
        return HMMIO{0};
    };
    if (flags != MMIO_READ) return fail(MMSYSERR_INVALPARAM);
    const HFILE file = _lopen(path, OF_READ);
    if (file == HFILE_ERROR) return fail(PathExists(path) ? MMIOERR_CANNOTOPEN : MMIOERR_FILENOTFOUND);
    auto entry = std::make_unique<MmioFile>();
    entry->file = file;
    size_t slot = 0;
    while (slot < g_files.size() && g_files[slot]) ++slot;
    if (slot == g_files.size()) g_files.emplace_back();
    g_files[slot] = std::move(entry);
    if (info != nullptr) info->wErrorRet = 0;
    return static_cast<HMMIO>(slot + 1);
}

FOURCC mmioStringToFOURCCA(const std::string& text, uint32_t flags) {
    char c[4] = {' ', ' ', ' ', ' '};
    for (size_t i = 0; i < 4 && i < text.size() && text[i] != '\0'; ++i) c[i] = text[i];
    return MakeFourCC(c[0], c[1], c[2], c[3]);
}

uint32_t mmioDescend(HMMIO h, MMCKINFO* ck, const MMCKINFO* parent, uint32_t flags) {
    MmioFile* f = Lookup(h);
    if (f == nullptr) return MMSYSERR_INVALHANDLE;
    if (ck == nullptr) return MMSYSERR_INVALPARAM;
    const FOURCC wantId = ck->ckid;
    const FOURCC wantType = ck->fccType;
    const int64_t end = parent != nullptr ? static_cast<int64_t>(parent->dwDataOffset) + parent->cksize : INT64_MAX;
    const int64_t start = f->position;
    // Every chunk passed over moves the position on by at least its 8-byte
    // head, and a position behind the end of the file reads nothing, so the
    // walk ends on any file.
    while (f->position < end) {
        uint8_t head[8];
        if (ReadAt(*f, head, 8) != 8) break;
        const ByteCursor c(head, sizeof head);
        MMCKINFO found;
        found.ckid = c.LongAt(0);
        found.cksize = c.LongAt(4);
        found.dwDataOffset = static_cast<uint32_t>(f->position);
        bool hasType = found.ckid == FOURCC_RIFF || found.ckid == FOURCC_LIST;
        if (hasType) {
            uint8_t type[4];
            if (ReadAt(*f, type, 4) != 4) break;
            found.fccType = ByteCursor(type, 4).LongAt(0);
        }
        bool match = true;
        if (flags & MMIO_FINDCHUNK) match = found.ckid == wantId;
        else if (flags & MMIO_FINDRIFF) match = found.ckid == FOURCC_RIFF && found.fccType == wantType;
        else if (flags & MMIO_FINDLIST) match = found.ckid == FOURCC_LIST && found.fccType == wantType;
        if (match) {
            *ck = found;
            return 0;
        }
        f->position = PaddedEnd(found);
    }
    f->position = start;
    return MMIOERR_CHUNKNOTFOUND;
}

uint32_t mmioAscend(HMMIO h, MMCKINFO* ck, uint32_t flags) {
    MmioFile* f = Lookup(h);
    if (f == nullptr) return MMSYSERR_INVALHANDLE;
    if (ck == nullptr) return MMSYSERR_INVALPARAM;
    f->position = PaddedEnd(*ck);
    return 0;
}

int32_t mmioRead(HMMIO h, char* buffer, int32_t count) {
    MmioFile* f = Lookup(h);
    if (f == nullptr || count < 0 || (buffer == nullptr && count > 0)) return -1;
    if (count == 0) return 0;
    return ReadAt(*f, buffer, count);
}

int32_t mmioSeek(HMMIO h, int32_t offset, int32_t origin) {
    MmioFile* f = Lookup(h);
    if (f == nullptr) return -1;
    int64_t base = 0;
    if (origin == SEEK_FROM_CURRENT) {
        base = f->position;
    } else if (origin == SEEK_FROM_END) {
        base = _llseek(f->file, 0, FILE_END);
        if (base < 0) return -1;
    } else if (origin != SEEK_FROM_START) {
        return -1;
    }
    const int64_t target = base + offset;
    if (target < 0 || target > INT32_MAX) return -1;
    f->position = target;
    return static_cast<int32_t>(target);
}

uint32_t mmioClose(HMMIO h, uint32_t flags) {
    MmioFile* f = Lookup(h);
    if (f == nullptr) return MMSYSERR_INVALHANDLE;
    _lclose(f->file);
    g_files[static_cast<size_t>(h) - 1].reset();
    return 0;
}
