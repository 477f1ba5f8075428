#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/WavBuilder.h"
#include "platform/Files.h"
#include "platform/NullAudio.h"
#include "platform/Runtime.h"
#include "platform/Windows.h"
#include "sound/cWavPlayer.h"
#include "winsupport/MSubclass.h"

using fixtures::BuildWav;
using fixtures::WavSpec;

namespace {

// The error number that a call raises, or 0.
template <typename F>
int32_t ErrorOf(F&& call) {
    try {
        call();
    } catch (const RuntimeError& e) {
        return e.Number;
    }
    return 0;
}

// 0.1 s of 22050 Hz 16-bit mono, by the player's arithmetic.
constexpr uint32_t B = 17640;

class WavPlayer : public ::testing::Test {
protected:
    void SetUp() override {
        SetAudioBackend(&backend);
        SetWaveOutWatch({[this](HWAVEOUT, const WAVEHDR& h) { writes.emplace_back(h.lpData, h.dwBufferLength); },
                         [this](HWAVEOUT, const WAVEHDR& h) { played += h.dwBufferLength; }});
        player.Attach(window.hWnd());
        player.Complete.Connect([this] { ++completes; });
    }
    void TearDown() override {
        SetWaveOutWatch({});
        SetAudioBackend(nullptr);
    }
    // Lets `seconds` pass and runs what the messages lead to.
    void Run(double seconds = 0) {
        now += seconds;
        backend.Poll();
        while (DispatchPostedMessages() > 0) backend.Poll();
    }
    // Plays on until Complete; gives all bytes written since the last call.
    std::string PlayOut() {
        for (int i = 0; i < 1000 && completes == done; ++i) Run(1);
        done = completes;
        std::string all;
        for (const auto& w : writes) all += w;
        writes.clear();
        return all;
    }
    std::string Load(const std::string& bytes) {
        fixtures::WriteFile(path, bytes);
        EXPECT_TRUE(player.OpenFile(path));
        return bytes.substr(44);
    }

    double now = 0;
    NullAudioBackend backend{false, [this] { return now; }};
    PlatformWindow window;
    cWavPlayer player;
    fixtures::TempDir dir;
    std::string path = dir / "w.wav";
    std::vector<std::string> writes;
    uint64_t played = 0;
    int completes = 0;
    int done = 0;
};

}  // namespace

TEST(WaveBufferBytes, FollowsTheArithmeticOfTheFormat) {
    struct Case {
        float seconds;
        uint32_t rate;
        uint16_t bits, channels, align;
        int32_t bytes;  // or the error raised
        int32_t error;
    } cases[] = {
        {0.1f, 22050, 16, 1, 2, 17640, 0},
        {0.1f, 11025, 8, 1, 1, 1103, 0},  // 0.1 in single precision lies above a tenth
        {0.1f, 44100, 16, 2, 4, 70560, 0},
        {0.5f, 5, 8, 1, 1, 2, 0},  // 2.5 rounds to even
        {0.5f, 7, 8, 1, 1, 4, 0},
        {0.1f, 0, 16, 1, 2, 17640, 0},
        {0.1f, 22050, 16, 0, 2, 17640, 0},
        {0.1f, 11025, 8, 3, 4, 3312, 0},
        {0.1f, 0xFFFFFFFFu, 16, 1, 2, 0, vbErrOverflow},
        {9.99f, 0x7FFFFFFFu, 8, 1, 1, 0, vbErrOverflow},
        {0.1f, 22050, 16, 1, 0, 0, vbErrDivisionByZero},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.rate);
        WAVEFORMATEX f;
        f.nSamplesPerSec = c.rate;
        f.wBitsPerSample = c.bits;
        f.nChannels = c.channels;
        f.nBlockAlign = c.align;
        int32_t bytes = 0;
        EXPECT_EQ(ErrorOf([&] { bytes = WaveBufferBytes(c.seconds, f); }), c.error);
        EXPECT_EQ(bytes, c.bytes);
    }
}

TEST_F(WavPlayer, AnyFileEndsInTrueOrTheErrorOfItsFault) {
    auto recipe = [](auto change) {
        WavSpec s;
        s.Frames = 300;
        change(s);
        return BuildWav(s);
    };
    std::string hugeFmt = BuildWav(WavSpec{});
    fixtures::ByteWriter patch;
    patch.Bytes(hugeFmt).PatchU32(16, 0xFFFFFFFFu);
    struct Case {
        const char* name;
        std::string bytes;
        int32_t error;
    } cases[] = {
        {"plain", recipe([](WavSpec&) {}), 0},
        {"RIFF size beyond the file", recipe([](WavSpec& s) { s.RiffSize = 0xFFFFFFF0u; }), 0},
        {"data beyond the file", recipe([](WavSpec& s) { s.DataSize = 0x7FFFFF00u; }), 0},
        {"data size 0xFFFFFFFF", recipe([](WavSpec& s) { s.DataSize = 0xFFFFFFFFu; }), 0},
        {"format of 40 bytes", recipe([](WavSpec& s) { s.FmtSize = 40; }), 0},
        {"empty file", "", 29673},
        {"another form", recipe([](WavSpec& s) { s.FormType = "AVI "; }), 29673},
        {"no format", recipe([](WavSpec& s) { s.OmitFmt = true; }), 29674},
        {"no data", recipe([](WavSpec& s) { s.OmitData = true; }), 29676},
        {"data before format", recipe([](WavSpec& s) { s.DataBeforeFmt = true; }), 29676},
        {"format of 4 GB", patch.Data(), 29676},
        {"cut in the format", recipe([](WavSpec& s) { s.Truncate = 30; }), 29676},
        {"block align 0", recipe([](WavSpec& s) { s.BlockAlign = 0; }), vbErrDivisionByZero},
        {"format of 8 bytes", recipe([](WavSpec& s) { s.FmtSize = 8; }), vbErrDivisionByZero},
        {"rate times bits past 32 bits", recipe([](WavSpec& s) { s.SampleRate = 0xFFFFFFFFu; }), vbErrOverflow},
        {"buffers past memory",
         recipe([](WavSpec& s) {
             s.Channels = 65535;
             s.BlockAlign = 2;
             s.Samples = std::string(64, 'x');
         }),
         29677},
    };
    const int32_t handles = OpenHandleCount();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        fixtures::WriteFile(path, c.bytes);
        bool opened = false;
        EXPECT_EQ(ErrorOf([&] { opened = player.OpenFile(path); }), c.error);
        EXPECT_EQ(opened, c.error == 0);
        if (!opened) {
            // The file is closed behind a failure.
            EXPECT_EQ(ErrorOf([&] { player.Play(); }), 29676);
            continue;
        }
        // What opens plays to its end, however its data chunk lies.
        ASSERT_TRUE(player.Play());
        PlayOut();
        EXPECT_EQ(completes, done);
        EXPECT_FALSE(player.Playing());
        player.CloseFile();
    }
    EXPECT_EQ(OpenHandleCount(), handles);
    EXPECT_EQ(ErrorOf([&] { player.OpenFile(dir / "none.wav"); }), 29672);
}

TEST_F(WavPlayer, PrimesFiveBuffersAndRefillsEachCompletion) {
    WavSpec s;
    s.Frames = B / 2 * 10 + 100;
    const std::string data = Load(BuildWav(s));
    ASSERT_EQ(player.BitsPerSample(), 16);
    ASSERT_EQ(player.Length(), static_cast<int32_t>(data.size()));
    ASSERT_TRUE(player.Play());
    // Nothing is written in Play: five messages wait in the queue.
    EXPECT_EQ(PostedMessageCount(), 5u);
    EXPECT_TRUE(writes.empty());
    Run();
    ASSERT_EQ(writes.size(), 5u);
    EXPECT_EQ(writes[0] + writes[1] + writes[2] + writes[3] + writes[4], data.substr(0, 5 * B));
    EXPECT_TRUE(player.Playing());

    // Each completion reads and submits exactly one buffer.
    Run(B / 44100.0 + 1e-9);
    EXPECT_EQ(writes.size(), 6u);
    EXPECT_EQ(player.Position(), static_cast<int32_t>(B));

    EXPECT_EQ(PlayOut(), data);
    EXPECT_EQ(completes, 1);
    EXPECT_EQ(played, data.size());
    Run(5);
    EXPECT_EQ(completes, 1);
    EXPECT_FALSE(player.Playing());

    // A replay without a seek finds no data left and ends at once.
    ASSERT_TRUE(player.Play());
    EXPECT_EQ(PlayOut(), "");
    EXPECT_EQ(completes, 2);
    // A seek rounded up to the end leaves nothing either.
    EXPECT_EQ(ErrorOf([&] { player.FileSeek(player.Length()); }), 29678);
    ASSERT_TRUE(player.FileSeek(player.Length() - 1));
    ASSERT_TRUE(player.Play());
    EXPECT_EQ(PlayOut(), "");
    ASSERT_TRUE(player.FileSeek(0));
    ASSERT_TRUE(player.Play());
    EXPECT_EQ(PlayOut(), data);
    EXPECT_EQ(completes, 4);
}

TEST_F(WavPlayer, EndsAfterTheLastDataWithoutAnEmptyBuffer) {
    struct Case {
        size_t bytes;
        std::vector<size_t> writes;
    } cases[] = {{100, {100}}, {2 * B, {B, B}}, {0, {0}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bytes);
        WavSpec s;
        s.Samples = std::string(c.bytes, 's');
        Load(BuildWav(s));
        ASSERT_TRUE(player.Play());
        Run();
        std::vector<size_t> sizes;
        for (const auto& w : writes) sizes.push_back(w.size());
        EXPECT_EQ(sizes, c.writes);
        // The drain: the stream is fed no more, the device still plays, and
        // a stop does nothing.
        if (c.bytes > 0) {
            EXPECT_EQ(completes, done);
            EXPECT_TRUE(player.Playing());
            player.StopPlay();
            Run();
            EXPECT_EQ(completes, done);
        }
        PlayOut();
        EXPECT_EQ(completes, done);
        EXPECT_EQ(completes, static_cast<int>(&c - cases) + 1);
    }
}

TEST_F(WavPlayer, StopsInMidStreamAndResumesAtTheStop) {
    WavSpec s;
    s.Frames = B * 4;
    const std::string data = Load(BuildWav(s));
    ASSERT_TRUE(player.Play());
    Run();
    Run(1.5 * B / 44100.0 + 1e-9);
    const int32_t at = player.Position();
    EXPECT_EQ(at, static_cast<int32_t>(B + B / 2));
    player.StopPlay();
    // The reset gives the buffers back; their messages close the device.
    EXPECT_TRUE(player.Playing());
    EXPECT_EQ(completes, 0);
    Run();
    EXPECT_EQ(completes, 1);
    EXPECT_FALSE(player.Playing());
    writes.clear();
    done = completes;
    ASSERT_TRUE(player.Play());
    EXPECT_EQ(PlayOut(), data.substr(static_cast<size_t>(at)));
}

TEST_F(WavPlayer, RefusesWhatItCannotDo) {
    cWavPlayer loose;
    fixtures::WriteFile(path, BuildWav(WavSpec{}));
    EXPECT_EQ(ErrorOf([&] { loose.Play(); }), 29671);
    EXPECT_EQ(ErrorOf([&] { player.Play(); }), 29676);
    EXPECT_EQ(ErrorOf([&] { player.FileSeek(0); }), 29676);
    EXPECT_EQ(ErrorOf([&] { player.Pause(true); }), 29676);
    EXPECT_EQ(player.Position(), 0);
    for (float refused : {0.001f, 10.0f, -1.0f}) EXPECT_EQ(ErrorOf([&] { player.SetBufferLength(refused); }), 29680);
    EXPECT_EQ(player.BufferLength(), 0.1f);
    for (float taken : {0.0011f, 9.99f}) {
        player.SetBufferLength(taken);
        EXPECT_EQ(player.BufferLength(), taken);
    }
    player.SetBufferLength(0.1f);
    ASSERT_TRUE(player.OpenFile(path));
    EXPECT_EQ(ErrorOf([&] { player.Pause(true); }), 29679);
    EXPECT_FALSE(player.OpenFile(""));
    EXPECT_EQ(ErrorOf([&] { player.WaveFormatTag(); }), 29676);

    // Without a sound output the device's own code and text are raised.
    SetAudioBackend(nullptr);
    ASSERT_TRUE(player.OpenFile(path));
    EXPECT_THROW(
        try { player.Play(); } catch (const RuntimeError& e) {
            EXPECT_EQ(e.Number, 29686);
            EXPECT_EQ(e.Description, "There is no driver installed on your system.");
            EXPECT_EQ(e.Source, App::EXEName() + ".cWavePlayer");
            throw;
        },
        RuntimeError);
    EXPECT_FALSE(player.Playing());

    // A second attachment to the window is the subclassing layer's failure;
    // the window's destruction message detaches the player.
    EXPECT_EQ(ErrorOf([&] { player.Attach(window.hWnd()); }), kSubclassErrAlreadyHandled);
    SendMessageA(window.hWnd(), WM_DESTROY, 0, 0);
    EXPECT_EQ(ErrorOf([&] { player.Play(); }), 29671);
}
