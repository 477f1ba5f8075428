#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "samples/WavBuilder.h"
#include "platform/Mmio.h"

using fixtures::RiffChunk;
using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

std::string Riff(const std::string& body, uint32_t size) {
    return fixtures::ByteWriter().Bytes(std::string("RIFF")).U32(size).Bytes(body).Data();
}

}  // namespace

// The wave player's walk: the WAVE form, its "fmt " chunk, then its "data".
TEST(Mmio, WalksChunksByTheirPaddedSizesWithinTheirForm) {
    const std::string fmt = RiffChunk("fmt ", std::string(16, 'f'));
    const std::string data = RiffChunk("data", "0123");
    const std::string body = "WAVE" + fmt + RiffChunk("junk", "abc") + data;  // the junk padded to 4 bytes
    const uint32_t size = static_cast<uint32_t>(body.size());
    const struct {
        const char* name;
        std::string bytes;
        int32_t data;  // where the walk puts the data; -1 when the form holds no data
    } walks[] = {
        {"plain", Riff(body, size), 12 + 24 + 12 + 8},
        {"another form first", Riff("AVI " + data, 16) + Riff(body, size), 24 + 12 + 24 + 12 + 8},
        {"data outside the form", Riff("WAVE" + fmt, 28) + data, -1},
        {"junk of 4 GB before data", Riff("WAVE" + fmt + "junk\xFF\xFF\xFF\xFF" + data, 0xFFFFFFFFu), -1},
    };
    TempDir dir;
    for (const auto& w : walks) {
        SCOPED_TRACE(w.name);
        WriteFile(dir / "w", w.bytes);
        HMMIO h = mmioOpenA(dir / "w", nullptr, MMIO_READ);
        MMCKINFO riff, ck;
        riff.fccType = mmioStringToFOURCCA("WAVE", 0);
        ASSERT_EQ(mmioDescend(h, &riff, nullptr, MMIO_FINDRIFF), 0u);
        ck.ckid = mmioStringToFOURCCA("fmt", 0);
        ASSERT_EQ(mmioDescend(h, &ck, &riff, MMIO_FINDCHUNK), 0u);
        mmioAscend(h, &ck, 0);
        const int32_t before = mmioSeek(h, 0, SEEK_FROM_CURRENT);
        ck.ckid = mmioStringToFOURCCA("data", 0);
        EXPECT_EQ(mmioDescend(h, &ck, &riff, MMIO_FINDCHUNK), w.data > 0 ? 0u : MMIOERR_CHUNKNOTFOUND);
        // A search that finds nothing leaves the position where it began.
        EXPECT_EQ(mmioSeek(h, 0, SEEK_FROM_CURRENT), w.data > 0 ? w.data : before);
        EXPECT_EQ(mmioClose(h, 0), 0u);
    }
}

TEST(Mmio, ReadsAndSeeksStayWithinTheFileAndTheHandle) {
    TempDir dir;
    WriteFile(dir / "f", "abcdef");
    HMMIO h = mmioOpenA(dir / "f", nullptr, MMIO_READ);
    EXPECT_EQ(mmioSeek(h, -1, SEEK_FROM_START), -1);
    char buf[4];
    // Ascending out of a chunk of 4 GB goes behind any file, where nothing is read.
    MMCKINFO huge;
    huge.dwDataOffset = 8;
    huge.cksize = 0xFFFFFFFFu;
    EXPECT_EQ(mmioAscend(h, &huge, 0), 0u);
    EXPECT_EQ(mmioRead(h, buf, 4), 0);
    EXPECT_EQ(mmioSeek(h, 0, SEEK_FROM_CURRENT), -1);
    EXPECT_EQ(mmioClose(h, 0), 0u);
    EXPECT_EQ(mmioClose(h, 0), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(mmioRead(h, buf, 4), -1);
}
