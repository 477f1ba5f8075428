#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/WavBuilder.h"
#include "platform/Mmio.h"

using fixtures::RiffChunk;
using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

struct Walk {
    const char* name;
    std::string bytes;
    uint32_t riffResult;
    uint32_t dataResult;  // of "data" searched after "fmt " within the form
    uint32_t dataOffset;  // where the walk puts the data
};

std::string Riff(const std::string& body, uint32_t size) {
    return fixtures::ByteWriter().Bytes(std::string("RIFF")).U32(size).Bytes(body).Data();
}

}  // namespace

TEST(Mmio, WalksChunksByTheirPaddedSizes) {
    const std::string fmt = RiffChunk("fmt ", std::string(16, 'f'));
    const std::string odd = RiffChunk("junk", "abc");  // padded to 4 bytes
    const std::string data = RiffChunk("data", "0123");
    const std::string body = "WAVE" + fmt + odd + data;
    const std::string other = Riff("AVI " + data, 16);
    const Walk walks[] = {
        {"plain", Riff(body, static_cast<uint32_t>(body.size())), 0, 0, 12 + 24 + 12 + 8},
        {"another form first", other + Riff(body, static_cast<uint32_t>(body.size())), 0, 0, 24 + 12 + 24 + 12 + 8},
        {"data outside the form", Riff("WAVE" + fmt, 28) + data, 0, MMIOERR_CHUNKNOTFOUND, 0},
        {"junk of 4 GB before data", Riff("WAVE" + fmt + "junk\xFF\xFF\xFF\xFF" + data, 0xFFFFFFFFu), 0,
         MMIOERR_CHUNKNOTFOUND, 0},
        {"no RIFF", "RIFX" + body, MMIOERR_CHUNKNOTFOUND, 0, 0},
        {"cut in the head", std::string("RIFF\x04\x00", 6), MMIOERR_CHUNKNOTFOUND, 0, 0},
    };
    TempDir dir;
    for (const Walk& w : walks) {
        SCOPED_TRACE(w.name);
        WriteFile(dir / "w", w.bytes);
        HMMIO h = mmioOpenA(dir / "w", nullptr, MMIO_READ);
        ASSERT_NE(h, 0);
        MMCKINFO riff;
        riff.fccType = mmioStringToFOURCCA("WAVE", 0);
        EXPECT_EQ(mmioDescend(h, &riff, nullptr, MMIO_FINDRIFF), w.riffResult);
        if (w.riffResult == 0) {
            MMCKINFO ck;
            ck.ckid = mmioStringToFOURCCA("fmt", 0);
            ASSERT_EQ(mmioDescend(h, &ck, &riff, MMIO_FINDCHUNK), 0u);
            EXPECT_EQ(ck.cksize, 16u);
            EXPECT_EQ(mmioAscend(h, &ck, 0), 0u);
            const int32_t before = mmioSeek(h, 0, SEEK_FROM_CURRENT);
            ck.ckid = mmioStringToFOURCCA("data", 0);
            EXPECT_EQ(mmioDescend(h, &ck, &riff, MMIO_FINDCHUNK), w.dataResult);
            if (w.dataResult == 0) {
                EXPECT_EQ(mmioSeek(h, 0, SEEK_FROM_CURRENT), static_cast<int32_t>(w.dataOffset));
                char buf[8] = {};
                EXPECT_EQ(mmioRead(h, buf, 8), 4);
                EXPECT_EQ(std::string(buf), "0123");
            } else {
                // A search that finds nothing leaves the position where it began.
                EXPECT_EQ(mmioSeek(h, 0, SEEK_FROM_CURRENT), before);
            }
        }
        EXPECT_EQ(mmioClose(h, 0), 0u);
        EXPECT_EQ(mmioClose(h, 0), MMSYSERR_INVALHANDLE);
    }
}

TEST(Mmio, OpensReadsAndSeeksWithinLimits) {
    TempDir dir;
    WriteFile(dir / "f", "abcdef");
    MMIOINFO info;
    EXPECT_EQ(mmioOpenA(dir / "none", &info, MMIO_READ), 0);
    EXPECT_EQ(info.wErrorRet, MMIOERR_FILENOTFOUND);
    EXPECT_EQ(mmioOpenA(dir.Path(), &info, MMIO_READ), 0);
    HMMIO h = mmioOpenA(dir / "f", nullptr, MMIO_READ);
    ASSERT_NE(h, 0);
    EXPECT_EQ(mmioSeek(h, -2, SEEK_FROM_END), 4);
    EXPECT_EQ(mmioSeek(h, -6, SEEK_FROM_CURRENT), -1);
    char buf[4];
    EXPECT_EQ(mmioRead(h, buf, 4), 2);
    EXPECT_EQ(mmioRead(h, buf, -1), -1);
    // Ascending out of a chunk of 4 GB goes behind any file, where nothing is read.
    MMCKINFO huge;
    huge.dwDataOffset = 8;
    huge.cksize = 0xFFFFFFFFu;
    EXPECT_EQ(mmioAscend(h, &huge, 0), 0u);
    EXPECT_EQ(mmioRead(h, buf, 4), 0);
    EXPECT_EQ(mmioSeek(h, 0, SEEK_FROM_CURRENT), -1);
    mmioClose(h, 0);
    EXPECT_EQ(mmioRead(h, buf, 4), -1);
}
