#pragma once
// A sound output that plays nothing: each block is consumed at the pace the
// format gives (nSamplesPerSec blocks of nBlockAlign bytes a second), or at
// once in fast mode. Time moves on when the backend is polled; the clock can
// be replaced, so a test decides when a block is done.
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "platform/WaveOut.h"

class NullAudioBackend : public IAudioBackend {
public:
    // Seconds on a steady clock.
    using Clock = std::function<double()>;
    explicit NullAudioBackend(bool fast = false, Clock clock = {});
    ~NullAudioBackend() override;
    NullAudioBackend(const NullAudioBackend&) = delete;
    NullAudioBackend& operator=(const NullAudioBackend&) = delete;

    // Refuses a format without channels, rate or block size (WAVERR_BADFORMAT).
    uint32_t Open(const WAVEFORMATEX& format, IWaveSink& sink, std::unique_ptr<IWaveStream>& stream) override;

    // Lets the time up to now pass on every open stream: the blocks it
    // covers are reported done.
    void Poll();
    // Seconds until the next block is done, if one is queued and playing.
    std::optional<double> NextDue();
    // Bytes consumed by all streams since the backend was made.
    uint64_t TotalPlayed() const { return totalPlayed_; }

    class Stream;

private:
    friend class Stream;
    bool fast_;
    Clock clock_;
    std::vector<Stream*> streams_;
    uint64_t totalPlayed_ = 0;
};
