#include <gtest/gtest.h>

#include <utility>

#include "fixtures/ByteWriter.h"
#include "fixtures/ErrorOf.h"
#include "fixtures/Programs.h"
#include "samples/WavBuilder.h"
#include "platform/Files.h"
#include "platform/NullAudio.h"
#include "platform/Windows.h"
#include "sound/cWavPlayer.h"

using fixtures::BuildWav;

namespace {

int32_t ErrorOf(const std::function<void()>& call) { return fixtures::ErrorOf(call).Number; }

// 0.1 s of 22050 Hz 16-bit mono, by the player's arithmetic.
constexpr uint32_t B = 17640;

class WavPlayer : public ::testing::Test {
protected:
    void SetUp() override {
        SetAudioBackend(&backend);
        SetWaveOutWatch({[this](HWAVEOUT, const WAVEHDR& h) { written.append(h.lpData, h.dwBufferLength); }, {}});
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
    int completes = 0;
};

}  // namespace

// quarrin-cli wave, run as a program: the format and the buffer arithmetic
// (and a rate of 0 that leaves the fallback size), and the
// buffers that a play writes, the last one short and none empty.
TEST(WaveCli, ReportsAndPlaysAsThePlayerDoes) {
    fixtures::TempDir dir;
    const std::string wav = dir / "second.wav", cli = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-cli";
    fixtures::WriteFile(wav, BuildWav({.Frames = 22050}));
    fixtures::WriteFile(dir / "zero.wav", BuildWav({.SampleRate = 0, .BitsPerSample = 8, .Frames = 300}));
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"info", wav},
         "format=1\nchannels=1\nrate=22050\nbits=16\nalign=2\ndata-offset=44\ndata-length=44100\nbuffer-bytes=17640\n"},
        {{"info", dir / "zero.wav"},
         "format=1\nchannels=1\nrate=0\nbits=8\nalign=1\ndata-offset=44\ndata-length=300\nbuffer-bytes=17640\n"},
        {{"play", wav, "--null", "--fast", "--trace", "--buffer", "0.05"},
         "write 8824\nwrite 8824\nwrite 8824\nwrite 8824\nwrite 8804\ncomplete\nplayed 44100\n"},
    };
    for (const auto& [args, output] : cases) {
        std::vector<std::string> argv{cli, "wave"};
        argv.insert(argv.end(), args.begin(), args.end());
        const auto r = fixtures::RunAndCapture(argv);
        EXPECT_EQ(r.Status, 0) << r.Errors;
        EXPECT_EQ(r.Output, output);
    }
}

TEST_F(WavPlayer, AnyFileEndsInTrueOrTheErrorOfItsFault) {
    const std::pair<std::string, int32_t> cases[] = {
        {BuildWav({.RiffSize = 0xFFFFFFF0u}), 0},
        {BuildWav({.DataSize = 0x7FFFFF00u}), 0},
        {BuildWav({.FmtSize = 40}), 0},
        {BuildWav({.FormType = "AVI "}), 29673},
        {BuildWav({.OmitFmt = true}), 29674},
        {BuildWav({.DataBeforeFmt = true}), 29676},
        {BuildWav({.BlockAlign = 0}), vbErrDivisionByZero},
        {BuildWav({.SampleRate = 0xFFFFFFFFu}), vbErrOverflow},
        {BuildWav({.Channels = 65535, .Samples = std::string(64, 'x'), .BlockAlign = 2}), 29677},
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
        EXPECT_EQ(opened ? PlayOut().size() : 0u, opened ? 4410u : 0u);
    }
    player.CloseFile();
    EXPECT_EQ(OpenHandleCount(), handles);
    EXPECT_EQ(ErrorOf([&] { player.OpenFile(dir / "none.wav"); }), 29672);
}

TEST_F(WavPlayer, PlaysStopsAndResumesWhereItStopped) {
    fixtures::WriteFile(path, BuildWav({.Frames = B / 2 * 10 + 100}));
    const std::string data = fixtures::ReadFile(path).substr(44);
    ASSERT_TRUE(player.OpenFile(path));
    ASSERT_TRUE(player.Play());
    // Nothing is written in Play: five messages wait in the queue, and each
    // completion reads and submits exactly one buffer (six by the stop).
    EXPECT_EQ(PostedMessageCount(), 5u);
    Run();
    Run(1.5 * B / 44100.0 + 1e-9);
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
    // A seek that is rounded up to the end finds no data left and ends at once.
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
    EXPECT_EQ(completes, 3);
    Run();
    EXPECT_EQ(completes, 4);
}

TEST_F(WavPlayer, RefusesWhatItCannotDo) {
    fixtures::WriteFile(path, BuildWav({}));
    EXPECT_EQ(ErrorOf([&] { player.FileSeek(0); }) + ErrorOf([&] { player.Pause(true); }), 2 * 29676);
    for (float refused : {0.001f, 10.0f}) EXPECT_EQ(ErrorOf([&] { player.SetBufferLength(refused); }), 29680);
    player.SetBufferLength(9.99f);
    ASSERT_TRUE(player.OpenFile(path));
    EXPECT_EQ(ErrorOf([&] { player.Pause(true); }), 29679);
    EXPECT_FALSE(player.OpenFile(""));
    // The window's destruction message detaches the player.
    SendMessageA(window.hWnd(), MM_WOM_DONE, 0, 0);  // for no buffer of the player
    SendMessageA(window.hWnd(), WM_DESTROY, 0, 0);
    EXPECT_EQ(ErrorOf([&] { player.Play(); }), 29671);
}
