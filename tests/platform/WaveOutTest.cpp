#include <gtest/gtest.h>

#include <vector>

#include "Recorder.h"
#include "platform/Addresses.h"
#include "platform/NullAudio.h"
#include "platform/WaveOut.h"
#include "platform/Windows.h"

namespace {

WAVEFORMATEX Pcm16(uint32_t rate) { return {WAVE_FORMAT_PCM, 1, rate, rate * 2, 2, 16, 0}; }

}  // namespace

TEST(WaveOut, OpensWhatTheDeviceCanPlayAndGivesBlocksBackInOrderAtTheFormatsPace) {
    PlatformWindow window;
    Recorder recorder;
    recorder.Attach(window.hWnd());
    // The blocks that the messages of a pass give back.
    auto pump = [&recorder] {
        std::vector<int32_t> done;
        recorder.seen.clear();
        DispatchPostedMessages();
        for (const Delivered& d : recorder.seen) done.push_back(d.uMsg == MM_WOM_DONE ? d.lParam : -1);
        return done;
    };
    HWAVEOUT h = 0;
    const WAVEFORMATEX pcm = Pcm16(1000);  // 2000 bytes a second
    WAVEFORMATEX noAlign = pcm;
    noAlign.nBlockAlign = 0;
    EXPECT_EQ(waveOutOpen(&h, WAVE_MAPPER, &pcm, window.hWnd(), 0, CALLBACK_WINDOW), MMSYSERR_NODRIVER);
    double now = 100.0;
    NullAudioBackend backend(false, [&] { return now; });
    SetAudioBackend(&backend);
    EXPECT_EQ(waveOutOpen(&h, WAVE_MAPPER, &noAlign, window.hWnd(), 0, CALLBACK_WINDOW), WAVERR_BADFORMAT);
    EXPECT_EQ(OpenWaveDeviceCount(), 0);
    char text[6] = {};
    EXPECT_EQ(waveInGetErrorTextA(12345, text, sizeof text), MMSYSERR_BADERRNUM);
    waveInGetErrorTextA(WAVERR_BADFORMAT, text, sizeof text);
    EXPECT_STREQ(text, "The s");

    ASSERT_EQ(waveOutOpen(&h, WAVE_MAPPER, &pcm, window.hWnd(), 0, CALLBACK_WINDOW), MMSYSERR_NOERROR);
    char bytes[3000] = {};
    WAVEHDR a{bytes, 1000}, b{bytes + 1000, 2000};
    ASSERT_EQ(waveOutPrepareHeader(h, &a, sizeof a), MMSYSERR_NOERROR);
    ASSERT_EQ(waveOutPrepareHeader(h, &b, sizeof b), MMSYSERR_NOERROR);
    ASSERT_EQ(waveOutWrite(h, &a, sizeof a), MMSYSERR_NOERROR);
    ASSERT_EQ(waveOutWrite(h, &b, sizeof b), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutUnprepareHeader(h, &a, sizeof a), WAVERR_STILLPLAYING);

    // Paused, time passes without playing.
    now += 0.25;
    waveOutPause(h);
    now += 5;
    backend.Poll();
    EXPECT_TRUE(pump().empty());
    waveOutRestart(h);
    now += 0.25;
    backend.Poll();
    EXPECT_EQ(pump(), std::vector<int32_t>{AddressOf(&a)});
    EXPECT_EQ(waveOutClose(h), WAVERR_STILLPLAYING);

    // A reset gives the rest back at once and the position starts again.
    EXPECT_EQ(waveOutReset(h), MMSYSERR_NOERROR);
    EXPECT_EQ(pump(), std::vector<int32_t>{AddressOf(&b)});
    MMTIME t;
    t.wType = TIME_BYTES;
    waveOutGetPosition(h, &t, sizeof t);
    EXPECT_EQ(t.u.cb, 0u);
    EXPECT_EQ(waveOutClose(h), MMSYSERR_NOERROR);
    SetAudioBackend(nullptr);
}
