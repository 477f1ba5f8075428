#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "samples/WavBuilder.h"
#include "platform/NullAudio.h"
#include "platform/Runtime.h"
#include "platform/Windows.h"
#include "shell/frmMain.h"
#include "sound/cWavPlayer.h"

namespace {

class WavePlayback : public ::testing::Test {
protected:
    void SetUp() override {
        fixtures::WavSpec one_second;
        one_second.Frames = 22050;
        fixtures::WriteFile(dir / "long.wav", fixtures::BuildWav(one_second));
        fixtures::WriteFile(dir / "short.WAV", fixtures::BuildWav(fixtures::WavSpec{}));
        fixtures::WriteFile(dir / "notes.txt", "text\r\n");
        SetAudioBackend(&backend);
        // A yield lets the device's time pass and runs the posted messages.
        SetDoEventsHook([this] {
            now += 0.05;
            backend.Poll();
            DispatchPostedMessages();
        });
        form.Form_Initialize();
        form.oDir.SetPath(dir.Path());
    }
    void TearDown() override {
        SetDoEventsHook({});
        SetAudioBackend(nullptr);
    }
    void DoubleClick(const std::string& name) {
        ASSERT_TRUE(form.oFile.Select(name));
        form.oFile_DblClick();
        DispatchPostedMessages();
    }
    bool Playing() { return form.oWavPlayer->Playing(); }

    fixtures::RegistryHome home;
    fixtures::TempDir dir;
    double now = 0;
    NullAudioBackend backend{false, [this] { return now; }};
    frmMain form;
};

}  // namespace

TEST_F(WavePlayback, ADoubleClickPlaysOrStopsAndOnlyClosingTheWindowEndsIt) {
    DoubleClick("long.wav");
    // The preview of another file doesn't stop the sound.
    DoubleClick("notes.txt");
    EXPECT_TRUE(Playing());
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "ASCII Formated File");
    // A double click on a wave while one plays stops it and starts nothing;
    // the next one plays the selected file, whose end closes it.
    DoubleClick("short.WAV");
    EXPECT_FALSE(Playing());
    DoubleClick("short.WAV");
    EXPECT_TRUE(Playing());
    for (int i = 0; i < 100 && Playing(); ++i) DoEvents();
    EXPECT_FALSE(Playing());
    EXPECT_THROW(form.oWavPlayer->Channels(), RuntimeError);

    DoubleClick("long.wav");
    int16_t cancel = 0;
    form.Form_Unload(cancel);
    EXPECT_FALSE(Playing());
    EXPECT_THROW(form.oWavPlayer->Play(), RuntimeError);
}
