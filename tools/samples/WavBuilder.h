#pragma once
// RIFF WAVE files built in code: a "fmt " and a "data" chunk of PCM samples,
// with other chunks and damage where a test asks for them.
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace samples {

// A chunk: its four-character code, the 32-bit size of `data`, the data and
// a pad byte when the size is odd.
std::string RiffChunk(const std::string& id, const std::string& data);

// PCM samples of a sine tone, interleaved by channel: 8-bit samples are
// unsigned around 128, 16-bit samples signed little-endian. Every channel
// carries the same tone, the second a quarter period later.
std::string SineTone(uint32_t sampleRate, uint16_t bitsPerSample, uint16_t channels, size_t frames,
                     double frequency = 440.0, double amplitude = 0.5);

struct WavSpec {
    uint16_t FormatTag = 1;
    uint16_t Channels = 1;
    uint32_t SampleRate = 22050;
    uint16_t BitsPerSample = 16;
    // Frames of the tone when `Samples` is not given.
    size_t Frames = 2205;
    double Frequency = 440.0;
    // The bytes of the "data" chunk as they stand.
    std::optional<std::string> Samples;
    // 16 for the plain format record; 18 adds cbSize 0; more adds zero bytes.
    uint32_t FmtSize = 16;
    // Replace the values computed from the fields above.
    std::optional<uint16_t> BlockAlign;
    std::optional<uint32_t> AvgBytesPerSec;
    std::optional<uint32_t> DataSize;  // the size written; the samples are written whole
    std::optional<uint32_t> RiffSize;
    std::string FormType = "WAVE";
    // Chunks (code, data) before "fmt ", between "fmt " and "data", and behind "data".
    std::vector<std::pair<std::string, std::string>> Before, Between, After;
    bool DataBeforeFmt = false;
    bool OmitFmt = false;
    bool OmitData = false;
    // Cuts the built file to this many bytes when it is longer.
    std::optional<size_t> Truncate;
};

std::string BuildWav(const WavSpec& recipe);

// Block align and average bytes per second as the format defines them.
uint16_t BlockAlignOf(const WavSpec& recipe);

}  // namespace samples
