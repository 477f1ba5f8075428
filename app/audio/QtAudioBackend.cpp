#include "QtAudioBackend.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSink>
#include <QElapsedTimer>
#include <QIODevice>
#include <QMediaDevices>
#include <QTimer>

#include <algorithm>
#include <cstring>
#include <deque>

namespace {

// The blocks queued at the device, read by the sink as one stream of bytes.
class BlockSource : public QIODevice {
public:
    struct Block {
        const char* data;
        uint32_t length;
        uint64_t end;  // offset behind the block in the stream since the start
    };

    void Append(const char* data, uint32_t length) {
        queued_ += length;
        blocks_.push_back({data, length, queued_});
        emit readyRead();
    }
    void Clear() {
        blocks_.clear();
        queued_ = pulled_ = 0;
    }
    std::deque<Block>& Blocks() { return blocks_; }
    uint64_t Pulled() const { return pulled_; }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override {
        return static_cast<qint64>(queued_ - pulled_) + QIODevice::bytesAvailable();
    }

protected:
    qint64 readData(char* out, qint64 max) override {
        qint64 done = 0;
        // Blocks ahead of the read point stay until they are reported played.
        for (const Block& b : blocks_) {
            if (done >= max) break;
            const uint64_t start = b.end - b.length;
            if (pulled_ >= b.end) continue;
            const uint64_t at = pulled_ - start;
            const qint64 n = std::min<qint64>(max - done, static_cast<qint64>(b.length - at));
            std::memcpy(out + done, b.data + at, static_cast<size_t>(n));
            done += n;
            pulled_ += static_cast<uint64_t>(n);
        }
        return done;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    std::deque<Block> blocks_;
    uint64_t queued_ = 0;
    uint64_t pulled_ = 0;
};

class QtWaveStream : public IWaveStream {
public:
    QtWaveStream(const QAudioDevice& device, const QAudioFormat& format, uint32_t blockAlign, IWaveSink& sink)
        : sink_(sink), format_(format), blockAlign_(blockAlign), audio_(device, format) {
        source_.open(QIODevice::ReadOnly);
        timer_.setInterval(10);
        QObject::connect(&timer_, &QTimer::timeout, [this] { Check(); });
        QObject::connect(&audio_, &QAudioSink::stateChanged, [this](QAudio::State) { Check(); });
    }
    ~QtWaveStream() override {
        QObject::disconnect(&audio_, nullptr, nullptr, nullptr);
        timer_.stop();
        audio_.stop();
    }

    void Queue(const char* data, uint32_t length) override {
        source_.Append(data, length);
        if (!started_) {
            started_ = true;
            audio_.start(&source_);
            if (paused_) audio_.suspend();
        }
        timer_.start();
        Check();
    }
    void Pause() override {
        paused_ = true;
        if (started_) audio_.suspend();
    }
    void Restart() override {
        paused_ = false;
        if (started_) audio_.resume();
    }
    void Reset() override {
        source_.Clear();
        audio_.stop();
        started_ = false;
        idle_.invalidate();
        timer_.stop();
    }
    uint32_t PlayedBytes() override {
        return static_cast<uint32_t>(Played() / blockAlign_ * blockAlign_);
    }

private:
    // Bytes played: what the sink has processed, and once it has run dry the
    // rest of what it pulled at the pace of the sound, as the device plays
    // out what it holds. A failed sink has played nothing more to wait for.
    uint64_t Played() {
        if (!started_) return 0;
        if (audio_.error() != QAudio::NoError) return source_.Pulled();
        uint64_t played = static_cast<uint64_t>(format_.bytesForDuration(audio_.processedUSecs()));
        if (audio_.state() == QAudio::IdleState) {
            if (!idle_.isValid()) {
                idle_.start();
                idleFrom_ = played;
            }
            const auto since = static_cast<uint64_t>(format_.bytesForDuration(idle_.nsecsElapsed() / 1000));
            played = std::max(played, idleFrom_ + since);
        } else {
            idle_.invalidate();
        }
        return std::min(played, source_.Pulled());
    }

    // Reports the blocks that have been played to their last byte.
    void Check() {
        auto& blocks = source_.Blocks();
        const uint64_t played = Played();
        // A report may post messages only; the stream stays as it is.
        while (!blocks.empty() && played >= blocks.front().end) {
            blocks.pop_front();
            sink_.BlockDone();
        }
        if (blocks.empty()) timer_.stop();
    }

    IWaveSink& sink_;
    QAudioFormat format_;
    uint32_t blockAlign_;
    QAudioSink audio_;
    BlockSource source_;
    QTimer timer_;
    bool started_ = false;
    bool paused_ = false;
    QElapsedTimer idle_;
    uint64_t idleFrom_ = 0;
};

}  // namespace

uint32_t QtAudioBackend::Open(const WAVEFORMATEX& format, IWaveSink& sink, std::unique_ptr<IWaveStream>& stream) {
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (device.isNull()) return MMSYSERR_NODRIVER;
    QAudioFormat qt;
    qt.setSampleRate(static_cast<int>(std::min<uint32_t>(format.nSamplesPerSec, INT32_MAX)));
    qt.setChannelCount(format.nChannels);
    if (format.wBitsPerSample == 8) qt.setSampleFormat(QAudioFormat::UInt8);
    else if (format.wBitsPerSample == 16) qt.setSampleFormat(QAudioFormat::Int16);
    const bool pcm = format.wFormatTag == WAVE_FORMAT_PCM && qt.sampleFormat() != QAudioFormat::Unknown &&
                     format.nChannels > 0 && format.nSamplesPerSec > 0 &&
                     format.nBlockAlign == format.nChannels * (format.wBitsPerSample / 8);
    if (!pcm || !device.isFormatSupported(qt)) return WAVERR_BADFORMAT;
    stream = std::make_unique<QtWaveStream>(device, qt, format.nBlockAlign, sink);
    return MMSYSERR_NOERROR;
}
