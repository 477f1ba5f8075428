// quarrin-cli wave, run as a program.
#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/Programs.h"
#include "fixtures/WavBuilder.h"

TEST(WaveCli, ReportsAndPlaysAsThePlayerDoes) {
    fixtures::TempDir dir;
    fixtures::WavSpec second;
    second.Frames = 22050;
    fixtures::WriteFile(dir / "second.wav", fixtures::BuildWav(second));
    fixtures::WriteFile(dir / "bad.wav", "RIFF\x04\x00\x00\x00WAVX");
    const std::string cli = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-cli";
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string output;  // standard output, or the end of standard error on failure
    } cases[] = {
        {{"info", dir / "second.wav"},
         0,
         "format=1\nchannels=1\nrate=22050\nbits=16\nalign=2\ndata-offset=44\ndata-length=44100\n"
         "buffer-bytes=17640\n"},
        {{"info", dir / "bad.wav"}, 1, "Not a Wave file. (29673)\n"},
        {{"play", dir / "second.wav", "--null", "--fast", "--trace", "--buffer", "0.05"},
         0,
         "write 8824\nwrite 8824\nwrite 8824\nwrite 8824\nwrite 8804\ncomplete\nplayed 44100\n"},
        {{"play", dir / "second.wav", "--null", "--buffer", "10"},
         1,
         "Buffer time out of range, choose a number of second between 0.001 and 10 (29680)\n"},
        {{"play", dir / "second.wav", "--fast"}, 1, "add --null\n"},
        {{"play", "--null"}, 1, "[--buffer SECONDS]\n"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> argv{cli, "wave"};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        SCOPED_TRACE(c.args[0] + " " + c.args.back());
        const auto r = fixtures::RunAndCapture(argv);
        EXPECT_EQ(r.Status, c.status) << r.Errors;
        if (c.status == 0)
            EXPECT_EQ(r.Output, c.output);
        else
            EXPECT_TRUE(r.Errors.ends_with(c.output)) << r.Errors;
    }
}
