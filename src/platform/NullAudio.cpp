#include "platform/NullAudio.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <deque>

class NullAudioBackend::Stream : public IWaveStream {
public:
    Stream(NullAudioBackend& owner, IWaveSink& sink, const WAVEFORMATEX& format)
        : owner_(&owner),
          sink_(sink),
          fast_(owner.fast_),
          clock_(owner.clock_),
          bytesPerSecond_(static_cast<double>(format.nSamplesPerSec) * format.nBlockAlign),
          blockAlign_(format.nBlockAlign),
          last_(clock_()) {
        owner_->streams_.push_back(this);
    }
    ~Stream() override {
        if (owner_ != nullptr) std::erase(owner_->streams_, this);
    }
    // The backend ended before the device was closed.
    void Orphan() { owner_ = nullptr; }

    void Queue(const char*, uint32_t length) override {
        Advance();
        blocks_.push_back(length);
        Advance();
    }
    void Pause() override {
        Advance();
        paused_ = true;
    }
    void Restart() override {
        Advance();
        paused_ = false;
        Advance();
    }
    void Reset() override {
        blocks_.clear();
        headDone_ = 0;
        played_ = 0;
        last_ = clock_();
    }
    uint32_t PlayedBytes() override {
        Advance();
        // The part of the block now playing, in whole sample frames.
        const uint64_t partial = static_cast<uint64_t>(headDone_) / blockAlign_ * blockAlign_;
        return static_cast<uint32_t>(played_ + partial);
    }

    // Consumes what the time since the last call covers.
    void Advance() {
        const double now = clock_();
        double budget = fast_ ? INFINITY : std::max(0.0, now - last_) * bytesPerSecond_;
        last_ = now;
        if (paused_) return;
        // Reporting may post messages, never call back into this stream.
        while (!blocks_.empty()) {
            const double left = static_cast<double>(blocks_.front()) - headDone_;
            if (budget < left) {
                headDone_ += budget;
                return;
            }
            budget -= left;
            played_ += blocks_.front();
            if (owner_ != nullptr) owner_->totalPlayed_ += blocks_.front();
            blocks_.pop_front();
            headDone_ = 0;
            sink_.BlockDone();
        }
    }

    std::optional<double> Due() const {
        if (paused_ || blocks_.empty()) return std::nullopt;
        if (fast_) return 0.0;
        return (static_cast<double>(blocks_.front()) - headDone_) / bytesPerSecond_;
    }

private:
    NullAudioBackend* owner_;
    IWaveSink& sink_;
    bool fast_;
    NullAudioBackend::Clock clock_;
    double bytesPerSecond_;
    uint32_t blockAlign_;
    double last_;
    std::deque<uint32_t> blocks_;
    double headDone_ = 0;  // bytes of the first block already played
    uint64_t played_ = 0;   // bytes of whole blocks played since open or reset
    bool paused_ = false;
};

NullAudioBackend::NullAudioBackend(bool fast, Clock clock) : fast_(fast), clock_(std::move(clock)) {
    if (!clock_) {
        clock_ = [] {
            return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
        };
    }
}

NullAudioBackend::~NullAudioBackend() {
    for (Stream* s : streams_) s->Orphan();
}

uint32_t NullAudioBackend::Open(const WAVEFORMATEX& format, IWaveSink& sink, std::unique_ptr<IWaveStream>& stream) {
    if (format.nChannels == 0 || format.nSamplesPerSec == 0 || format.nBlockAlign == 0) return WAVERR_BADFORMAT;
    stream = std::make_unique<Stream>(*this, sink, format);
    return MMSYSERR_NOERROR;
}

void NullAudioBackend::Poll() {
    // A stream may be closed by what a report leads to, so walk a copy.
    const std::vector<Stream*> open = streams_;
    for (Stream* s : open)
        if (std::find(streams_.begin(), streams_.end(), s) != streams_.end()) s->Advance();
}

std::optional<double> NullAudioBackend::NextDue() {
    std::optional<double> due;
    for (const Stream* s : streams_) {
        const auto d = s->Due();
        if (d && (!due || *d < *due)) due = d;
    }
    return due;
}
