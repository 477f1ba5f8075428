#include <gtest/gtest.h>

#include <utility>

#include "fixtures/ByteWriter.h"
#include "fixtures/ErrorOf.h"
#include "fixtures/Programs.h"
#include "fixtures/WavBuilder.h"
#include "platform/Files.h"
#include "platform/NullAudio.h"
#include "platform/Windows.h"
#include "sound/cWavPlayer.h"
#include "winsupport/MSubclass.h"

using fixtures::WavSpec;

namespace {

int32_t ErrorOf(const std::function<void()>& call) { return fixtures::ErrorOf(call).Number; }

std::string Wav(const std::function<void(WavSpec&)>& change) {
    WavSpec s;
    s.Frames = 300;
    change(s);
    return fixtures::BuildWav(s);
}

// 0.1 s of 22050 Hz 16-bit mono, by the player's arithmetic.
constexpr uint32_t B = 17640;

class WavPlayer : public ::testing::Test {
protected:
    void SetUp() override {
        SetAudioBackend(&backend);
        SetWaveOutWatch({[this](HWAVEOUT, const WAVEHDR& h) { written.append(h.lpData, h.dwBufferLength), ++writes; }, {}});
        player.Attach(window.hWnd());
        player.Complete.Connect([this] { ++completes; });
    }
    void TearDown() override { SetWaveOutWatch({}), SetAudioBackend(nullptr); }
    // Lets `seconds` pass and runs what the messages lead to.
    void Run(double seconds = 0) {
        now += seconds;
        backend.Poll();
        while (DispatchPostedMessages() > 0) backend.Poll();
    }
    // Plays on until Complete; gives all bytes written since the last call.
    std::string PlayOut() {
        for (int i = 0, before = completes; i < 1000 && completes == before; ++i) Run(1);
        return std::exchange(written, {});
    }

    double now = 0;
    NullAudioBackend backend{false, [this] { return now; }};
    PlatformWindow window;
    cWavPlayer player;
    fixtures::TempDir dir;
    std::string path = dir / "w.wav", written;
    int writes = 0, completes = 0;
};

}  // namespace

// quarrin-cli wave, run as a program: the format and the buffer arithmetic
// (a stereo file, and a rate of 0 that leaves the fallback size), and the
// buffers that a play writes, the last one short and none empty.
TEST(WaveCli, ReportsAndPlaysAsThePlayerDoes) {
    fixtures::TempDir dir;
    const std::string wav = dir / "second.wav", cli = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-cli";
    fixtures::WriteFile(wav, Wav([](WavSpec& s) { s.Frames = 22050; }));
    fixtures::WriteFile(dir / "stereo.wav", Wav([](WavSpec& s) { s.Channels = 2, s.SampleRate = 44100; }));
    fixtures::WriteFile(dir / "zero.wav", Wav([](WavSpec& s) { s.SampleRate = 0, s.BitsPerSample = 8; }));
    fixtures::WriteFile(dir / "bad.wav", "RIFF\x04\x00\x00\x00WAVX");
    // Standard output, or the end of standard error on failure.
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"info", wav},
         "format=1\nchannels=1\nrate=22050\nbits=16\nalign=2\ndata-offset=44\ndata-length=44100\nbuffer-bytes=17640\n"},
        {{"info", dir / "stereo.wav"},
         "format=1\nchannels=2\nrate=44100\nbits=16\nalign=4\ndata-offset=44\ndata-length=1200\nbuffer-bytes=70560\n"},
        {{"info", dir / "zero.wav"},
         "format=1\nchannels=1\nrate=0\nbits=8\nalign=1\ndata-offset=44\ndata-length=300\nbuffer-bytes=17640\n"},
        {{"play", wav, "--null", "--fast", "--trace", "--buffer", "0.05"},
         "write 8824\nwrite 8824\nwrite 8824\nwrite 8824\nwrite 8804\ncomplete\nplayed 44100\n"},
        {{"info", dir / "bad.wav"}, "Not a Wave file. (29673)\n"},
        {{"play", wav, "--null", "--buffer", "10"},
         "Buffer time out of range, choose a number of second between 0.001 and 10 (29680)\n"},
        {{"play", wav, "--fast"}, "add --null\n"},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        const auto& [args, output] = cases[i];
        std::vector<std::string> argv{cli, "wave"};
        argv.insert(argv.end(), args.begin(), args.end());
        SCOPED_TRACE(args[0] + " " + args.back());
        const auto r = fixtures::RunAndCapture(argv);
        EXPECT_EQ(r.Status, i < 4 ? 0 : 1) << r.Errors;
        EXPECT_TRUE(i < 4 ? r.Output == output : r.Errors.ends_with(output)) << r.Output << r.Errors;
    }
}

TEST_F(WavPlayer, AnyFileEndsInTrueOrTheErrorOfItsFault) {
    const std::pair<std::string, int32_t> cases[] = {
        {Wav([](WavSpec& s) { s.RiffSize = 0xFFFFFFF0u; }), 0},
        {Wav([](WavSpec& s) { s.DataSize = 0x7FFFFF00u; }), 0},
        {Wav([](WavSpec& s) { s.FmtSize = 40; }), 0},
        {Wav([](WavSpec& s) { s.FormType = "AVI "; }), 29673},
        {Wav([](WavSpec& s) { s.OmitFmt = true; }), 29674},
        {Wav([](WavSpec& s) { s.DataBeforeFmt = true; }), 29676},
        {Wav([](WavSpec& s) { s.BlockAlign = 0; }), vbErrDivisionByZero},
        {Wav([](WavSpec& s) { s.SampleRate = 0xFFFFFFFFu; }), vbErrOverflow},
        {Wav([](WavSpec& s) { s.Channels = 65535, s.BlockAlign = 2, s.Samples = std::string(64, 'x'); }), 29677},
    };
    const int32_t handles = OpenHandleCount();
    for (const auto& [bytes, error] : cases) {
        SCOPED_TRACE(error);
        fixtures::WriteFile(path, bytes);
        bool opened = false;
        EXPECT_EQ(ErrorOf([&] { opened = player.OpenFile(path); }), error);
        // The file is closed behind a failure; what opens plays to its end,
        // however its data chunk lies.
        EXPECT_EQ(ErrorOf([&] { player.Play(); }), opened ? 0 : 29676);
        EXPECT_EQ(opened ? PlayOut().size() : 0u, opened ? 600u : 0u);
        EXPECT_FALSE(player.Playing());
    }
    player.CloseFile();
    EXPECT_EQ(OpenHandleCount(), handles);
    EXPECT_EQ(ErrorOf([&] { player.OpenFile(dir / "none.wav"); }), 29672);
}

TEST_F(WavPlayer, PlaysStopsAndResumesWhereItStopped) {
    fixtures::WriteFile(path, Wav([](WavSpec& s) { s.Frames = B / 2 * 10 + 100; }));
    const std::string data = fixtures::ReadFile(path).substr(44);
    ASSERT_TRUE(player.OpenFile(path));
    ASSERT_TRUE(player.Play());
    // Nothing is written in Play: five messages wait in the queue, and each
    // completion reads and submits exactly one buffer.
    EXPECT_EQ(PostedMessageCount(), 5u);
    Run();
    EXPECT_EQ(writes, 5);
    Run(1.5 * B / 44100.0 + 1e-9);
    EXPECT_EQ(writes, 6);
    const int32_t at = player.Position();
    EXPECT_EQ(at, static_cast<int32_t>(B + B / 2));
    // The reset gives the buffers back; their messages close the device.
    player.StopPlay();
    EXPECT_TRUE(player.Playing());
    Run();
    EXPECT_EQ(completes, 1);
    EXPECT_FALSE(player.Playing());
    EXPECT_EQ(std::exchange(written, {}), data.substr(0, 6 * B));
    ASSERT_TRUE(player.Play());
    EXPECT_EQ(PlayOut(), data.substr(static_cast<size_t>(at)));
    // A replay finds no data left and ends at once, as does a seek that is
    // rounded up to the end.
    ASSERT_TRUE(player.Play());
    EXPECT_EQ(PlayOut(), "");
    ASSERT_TRUE(player.FileSeek(player.Length() - 1));
    ASSERT_TRUE(player.Play());
    EXPECT_EQ(PlayOut(), "");
    EXPECT_EQ(ErrorOf([&] { player.FileSeek(player.Length()); }), 29678);
    // A file opened while the device still plays the last two buffers takes
    // them back before their memory goes.
    ASSERT_TRUE(player.FileSeek(player.Length() - 2 * B));
    ASSERT_TRUE(player.Play());
    Run();
    ASSERT_TRUE(player.OpenFile(path));
    EXPECT_EQ(completes, 4);
    Run();
    EXPECT_EQ(completes, 5);
}

TEST_F(WavPlayer, RefusesWhatItCannotDo) {
    cWavPlayer loose;
    fixtures::WriteFile(path, fixtures::BuildWav(WavSpec{}));
    EXPECT_EQ(ErrorOf([&] { loose.Play(); }), 29671);
    EXPECT_EQ(ErrorOf([&] { player.FileSeek(0); }) + ErrorOf([&] { player.Pause(true); }), 2 * 29676);
    for (float refused : {0.001f, 10.0f}) EXPECT_EQ(ErrorOf([&] { player.SetBufferLength(refused); }), 29680);
    player.SetBufferLength(9.99f);
    ASSERT_TRUE(player.OpenFile(path));
    EXPECT_EQ(ErrorOf([&] { player.Pause(true); }), 29679);
    EXPECT_FALSE(player.OpenFile(""));
    // Without a sound output the device's own code and text are raised.
    SetAudioBackend(nullptr);
    ASSERT_TRUE(player.OpenFile(path));
    const RuntimeError e = fixtures::ErrorOf([&] { player.Play(); });
    EXPECT_EQ(e.Number, 29686);
    EXPECT_EQ(e.Description, "There is no driver installed on your system.");
    EXPECT_FALSE(player.Playing());
    // A second attachment to the window is the subclassing layer's failure;
    // the window's destruction message detaches the player.
    EXPECT_EQ(ErrorOf([&] { player.Attach(window.hWnd()); }), kSubclassErrAlreadyHandled);
    SendMessageA(window.hWnd(), MM_WOM_DONE, 0, 0);  // for no buffer of the player
    SendMessageA(window.hWnd(), WM_DESTROY, 0, 0);
    EXPECT_EQ(ErrorOf([&] { player.Play(); }), 29671);
}
