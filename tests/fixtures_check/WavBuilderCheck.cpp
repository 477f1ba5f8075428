// The wave builder writes RIFF files whose chunk sizes add up, as a chunk
// walk by the published rules and the file(1) program read them.
#include <gtest/gtest.h>

#include <map>

#include "fixtures/WavBuilder.h"
#include "fixtures_check/CheckSupport.h"

using namespace fixtures;

namespace {

struct Chunk {
    std::string Id;
    size_t DataOffset;
    uint32_t Size;
};

// Walks the chunks inside the RIFF form, padding odd sizes to even, and
// checks that the walk ends exactly at the end of the file.
std::vector<Chunk> Walk(const std::string& wav) {
    check::Cursor c(wav);
    EXPECT_EQ(c.Take(4), "RIFF");
    EXPECT_EQ(c.U32(), wav.size() - 8);
    EXPECT_EQ(c.Take(4), "WAVE");
    std::vector<Chunk> chunks;
    while (c.Left() >= 8) {
        Chunk k{c.Take(4), 0, 0};
        k.Size = c.U32();
        k.DataOffset = c.At();
        c.Skip(k.Size + (k.Size & 1));
        chunks.push_back(k);
    }
    EXPECT_EQ(c.Left(), 0u);
    return chunks;
}

std::string FileSays(const std::string& wav) {
    TempDir dir;
    WriteFile(dir / "sound.wav", wav);
    auto r = RunAndCapture({"file", "-b", dir / "sound.wav"});
    return r.Status == 0 ? r.Output : std::string();
}

}  // namespace

TEST(WavBuilder, FormatAndDataChunksHoldWhatTheSpecAsksFor) {
    for (auto [channels, bits, rate] : {std::tuple<uint16_t, uint16_t, uint32_t>{1, 16, 22050}, {2, 16, 44100},
                                        {1, 8, 11025}, {2, 8, 8000}}) {
        SCOPED_TRACE(std::to_string(channels) + " channels, " + std::to_string(bits) + " bits");
        WavSpec recipe;
        recipe.Channels = channels;
        recipe.BitsPerSample = bits;
        recipe.SampleRate = rate;
        recipe.Frames = 1001;  // an odd count, so 8-bit mono data needs a pad byte
        const std::string wav = BuildWav(recipe);
        const auto chunks = Walk(wav);
        ASSERT_EQ(chunks.size(), 2u);
        EXPECT_EQ(chunks[0].Id, "fmt ");
        ASSERT_EQ(chunks[0].Size, 16u);
        check::Cursor fmt(wav, chunks[0].DataOffset);
        const uint16_t blockAlign = static_cast<uint16_t>(channels * bits / 8);
        EXPECT_EQ(fmt.U16(), 1);
        EXPECT_EQ(fmt.U16(), channels);
        EXPECT_EQ(fmt.U32(), rate);
        EXPECT_EQ(fmt.U32(), rate * blockAlign);
        EXPECT_EQ(fmt.U16(), blockAlign);
        EXPECT_EQ(fmt.U16(), bits);
        EXPECT_EQ(chunks[1].Id, "data");
        EXPECT_EQ(chunks[1].Size, 1001u * blockAlign);
        EXPECT_EQ(BlockAlignOf(recipe), blockAlign);
    }
}

TEST(WavBuilder, TheFileProgramNamesTheFormat) {
    if (ProgramOnPath("file").empty()) GTEST_SKIP() << "file(1) is not installed";
    WavSpec mono;
    EXPECT_NE(FileSays(BuildWav(mono)).find("WAVE audio, Microsoft PCM, 16 bit, mono 22050 Hz"), std::string::npos);
    WavSpec stereo;
    stereo.Channels = 2;
    stereo.BitsPerSample = 8;
    stereo.SampleRate = 11025;
    EXPECT_NE(FileSays(BuildWav(stereo)).find("WAVE audio, Microsoft PCM, 8 bit, stereo 11025 Hz"), std::string::npos);
}
