#include <gtest/gtest.h>

#include <vector>

#include "platform/Addresses.h"
#include "platform/NullAudio.h"
#include "platform/WaveOut.h"
#include "platform/Windows.h"

namespace {

// A window that records the MM_WOM_DONE messages it is posted.
struct DoneWindow {
    DoneWindow() {
        proc = RegisterWindowProc([this](int32_t, uint32_t msg, int32_t, int32_t lParam) {
            if (msg == MM_WOM_DONE) done.push_back(lParam);
            return 0;
        });
        SetWindowLongA(window.hWnd(), GWL_WNDPROC, proc);
    }
    ~DoneWindow() { UnregisterWindowProc(proc); }
    std::vector<int32_t> Pump() {
        done.clear();
        DispatchPostedMessages();
        return done;
    }
    PlatformWindow window;
    int32_t proc = 0;
    std::vector<int32_t> done;
};

WAVEFORMATEX Pcm16(uint32_t rate) { return {WAVE_FORMAT_PCM, 1, rate, rate * 2, 2, 16, 0}; }

}  // namespace

TEST(WaveOut, OpensWhatTheDeviceCanPlayAndGivesBlocksBackInOrderAtTheFormatsPace) {
    DoneWindow w;
    HWAVEOUT h = 0;
    const WAVEFORMATEX pcm = Pcm16(1000);  // 2000 bytes a second
    WAVEFORMATEX noAlign = pcm;
    noAlign.nBlockAlign = 0;
    EXPECT_EQ(waveOutOpen(&h, WAVE_MAPPER, &pcm, w.window.hWnd(), 0, CALLBACK_WINDOW), MMSYSERR_NODRIVER);
    double now = 100.0;
    NullAudioBackend backend(false, [&] { return now; });
    SetAudioBackend(&backend);
    EXPECT_EQ(waveOutOpen(&h, WAVE_MAPPER, &noAlign, w.window.hWnd(), 0, CALLBACK_WINDOW), WAVERR_BADFORMAT);
    EXPECT_EQ(waveOutOpen(&h, 3, &pcm, w.window.hWnd(), 0, CALLBACK_WINDOW), MMSYSERR_BADDEVICEID);
    EXPECT_EQ(waveOutOpen(&h, WAVE_MAPPER, &pcm, 0x7FFFFFF0, 0, CALLBACK_WINDOW), MMSYSERR_INVALPARAM);
    EXPECT_EQ(OpenWaveDeviceCount(), 0);
    char text[6] = {};
    EXPECT_EQ(waveInGetErrorTextA(12345, text, sizeof text), MMSYSERR_BADERRNUM);
    waveInGetErrorTextA(WAVERR_BADFORMAT, text, sizeof text);
    EXPECT_STREQ(text, "The s");

    ASSERT_EQ(waveOutOpen(&h, WAVE_MAPPER, &pcm, w.window.hWnd(), 0, CALLBACK_WINDOW), MMSYSERR_NOERROR);
    char bytes[3000] = {};
    WAVEHDR a{bytes, 1000}, b{bytes + 1000, 2000};
    EXPECT_EQ(waveOutWrite(h, &a, sizeof a), WAVERR_UNPREPARED);
    ASSERT_EQ(waveOutPrepareHeader(h, &a, sizeof a), MMSYSERR_NOERROR);
    ASSERT_EQ(waveOutPrepareHeader(h, &b, sizeof b), MMSYSERR_NOERROR);
    ASSERT_EQ(waveOutWrite(h, &a, sizeof a), MMSYSERR_NOERROR);
    ASSERT_EQ(waveOutWrite(h, &b, sizeof b), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutUnprepareHeader(h, &a, sizeof a), WAVERR_STILLPLAYING);

    MMTIME t;
    t.wType = TIME_MS;
    now += 0.25;
    ASSERT_EQ(waveOutGetPosition(h, &t, sizeof t), MMSYSERR_NOERROR);
    EXPECT_EQ(t.wType, TIME_BYTES);
    EXPECT_EQ(t.u.cb, 500u);
    EXPECT_TRUE(w.Pump().empty());

    // Paused, time passes without playing.
    waveOutPause(h);
    now += 5;
    backend.Poll();
    EXPECT_TRUE(w.Pump().empty());
    waveOutRestart(h);
    now += 0.25;
    backend.Poll();
    EXPECT_EQ(w.Pump(), std::vector<int32_t>{AddressOf(&a)});
    EXPECT_TRUE(a.dwFlags & WHDR_DONE);
    EXPECT_EQ(*backend.NextDue(), 1.0);
    EXPECT_EQ(waveOutClose(h), WAVERR_STILLPLAYING);

    // A reset gives the rest back at once and the position starts again.
    EXPECT_EQ(waveOutReset(h), MMSYSERR_NOERROR);
    EXPECT_EQ(w.Pump(), std::vector<int32_t>{AddressOf(&b)});
    waveOutGetPosition(h, &t, sizeof t);
    EXPECT_EQ(t.u.cb, 0u);
    EXPECT_FALSE(backend.NextDue().has_value());
    EXPECT_EQ(waveOutClose(h), MMSYSERR_NOERROR);
    // The handle is not given again.
    EXPECT_EQ(waveOutClose(h), MMSYSERR_INVALHANDLE);
    SetAudioBackend(nullptr);
}
