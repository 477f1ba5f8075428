// The sound output over Qt Multimedia. Without an output device it refuses
// with the platform's "no driver" code; with one, its blocks come back in
// order at the pace of the sound.
#include <gtest/gtest.h>

#include <QAudioDevice>
#include <QElapsedTimer>
#include <QMediaDevices>

#include "AppTestSupport.h"
#include "QtAudioBackend.h"

namespace {

struct CountingSink : IWaveSink {
    void BlockDone() override { ++done; }
    int done = 0;
};

}  // namespace

TEST(QtAudio, PlaysBlocksAtTheirPaceOrSaysThereIsNoDriver) {
    QtAudioBackend backend;
    CountingSink sink;
    std::unique_ptr<IWaveStream> stream;
    const WAVEFORMATEX pcm{WAVE_FORMAT_PCM, 1, 8000, 16000, 2, 16, 0};
    const uint32_t opened = backend.Open(pcm, sink, stream);
    if (QMediaDevices::defaultAudioOutput().isNull()) {
        EXPECT_EQ(opened, MMSYSERR_NODRIVER);
        return;
    }
    ASSERT_EQ(opened, MMSYSERR_NOERROR);
    std::unique_ptr<IWaveStream> other;
    for (WAVEFORMATEX bad : {WAVEFORMATEX{3, 1, 8000, 32000, 4, 32, 0}, WAVEFORMATEX{1, 1, 8000, 16000, 3, 16, 0}})
        EXPECT_EQ(backend.Open(bad, sink, other), WAVERR_BADFORMAT);

    // Two blocks of a tenth of a second each.
    const std::string silence(3200, '\0');
    QElapsedTimer timer;
    timer.start();
    stream->Queue(silence.data(), 1600);
    stream->Queue(silence.data() + 1600, 1600);
    ASSERT_TRUE(apptest::EventsUntil([&] { return sink.done == 2; }));
    EXPECT_GE(timer.elapsed(), 150);
    EXPECT_EQ(stream->PlayedBytes(), 3200u);
    // A reset drops what is queued without a report and counts from 0 again.
    stream->Queue(silence.data(), 3200);
    stream->Reset();
    EXPECT_EQ(stream->PlayedBytes(), 0u);
    apptest::EventsUntil([&] { return timer.elapsed() > 600; });
    EXPECT_EQ(sink.done, 2);
}
