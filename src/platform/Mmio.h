#pragma once
// The multimedia file calls: a RIFF file opened for reading, walked chunk by
// chunk. A chunk is a four-character code, a 32-bit little-endian size and
// its data, padded to an even length; a RIFF or LIST chunk starts its data
// with a four-character form type. Reads go through the buffered file layer.
//
// Positions inside the walk are kept in 64 bits, so a damaged size of up to
// 4 GB only puts the position behind the end of the file, where every read
// gives 0 bytes; the positions that mmioSeek reports are 32-bit values.
#include <cstdint>
#include <string>

using FOURCC = uint32_t;
// A multimedia file handle: a small positive number, 0 for none.
using HMMIO = int32_t;

constexpr FOURCC MakeFourCC(char a, char b, char c, char d) {
    return static_cast<FOURCC>(static_cast<uint8_t>(a)) | static_cast<FOURCC>(static_cast<uint8_t>(b)) << 8 |
           static_cast<FOURCC>(static_cast<uint8_t>(c)) << 16 | static_cast<FOURCC>(static_cast<uint8_t>(d)) << 24;
}
inline constexpr FOURCC FOURCC_RIFF = MakeFourCC('R', 'I', 'F', 'F');
inline constexpr FOURCC FOURCC_LIST = MakeFourCC('L', 'I', 'S', 'T');

// Flags of mmioOpenA and mmioDescend.
inline constexpr uint32_t MMIO_READ = 0x0000;
inline constexpr uint32_t MMIO_FINDCHUNK = 0x0010;
inline constexpr uint32_t MMIO_FINDRIFF = 0x0020;
inline constexpr uint32_t MMIO_FINDLIST = 0x0040;

// Results.
inline constexpr uint32_t MMSYSERR_INVALHANDLE = 5;
inline constexpr uint32_t MMSYSERR_INVALPARAM = 11;
inline constexpr uint32_t MMIOERR_FILENOTFOUND = 257;
inline constexpr uint32_t MMIOERR_CANNOTOPEN = 259;
inline constexpr uint32_t MMIOERR_CANNOTSEEK = 263;
inline constexpr uint32_t MMIOERR_CHUNKNOTFOUND = 265;

// Seek origins of mmioSeek.
inline constexpr int32_t SEEK_FROM_START = 0;
inline constexpr int32_t SEEK_FROM_CURRENT = 1;
inline constexpr int32_t SEEK_FROM_END = 2;

struct MMIOINFO {
    uint32_t dwFlags = 0;
    // Why an open failed.
    uint32_t wErrorRet = 0;
};

struct MMCKINFO {
    FOURCC ckid = 0;
    uint32_t cksize = 0;
    FOURCC fccType = 0;
    // Absolute offset of the chunk's data (of the form type, for RIFF and LIST).
    uint32_t dwDataOffset = 0;
    uint32_t dwFlags = 0;
};

// Opens an existing file for reading (flags MMIO_READ); 0 on failure, with the
// reason in `info` when one is given.
HMMIO mmioOpenA(const std::string& path, MMIOINFO* info, uint32_t flags);
// The first four characters of a text, padded with blanks.
FOURCC mmioStringToFOURCCA(const std::string& text, uint32_t flags);
// Enters the next matching chunk from the current position on, within
// `parent` when one is given. MMIO_FINDRIFF and MMIO_FINDLIST match the form
// type in `ck`, MMIO_FINDCHUNK its ckid, no flag the next chunk. Gives 0 with
// `ck` filled in and the position at the chunk's data (behind the form type of
// RIFF and LIST), or MMIOERR_CHUNKNOTFOUND at the end of the file or parent.
uint32_t mmioDescend(HMMIO h, MMCKINFO* ck, const MMCKINFO* parent, uint32_t flags);
// Leaves a chunk: the position goes behind its data and pad byte.
uint32_t mmioAscend(HMMIO h, MMCKINFO* ck, uint32_t flags);
// Reads up to `count` bytes; gives the number read (0 at the end) or -1.
int32_t mmioRead(HMMIO h, char* buffer, int32_t count);
// Moves the position; gives the new absolute position or -1.
int32_t mmioSeek(HMMIO h, int32_t offset, int32_t origin);
// Closes; 0, or MMSYSERR_INVALHANDLE.
uint32_t mmioClose(HMMIO h, uint32_t flags);
