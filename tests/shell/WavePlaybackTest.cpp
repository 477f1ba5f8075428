#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/WavBuilder.h"
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

TEST_F(WavePlayback, ADoubleClickPlaysTheNextStopsAndOnlyClosingTheWindowEndsIt) {
    DoubleClick("long.wav");
    EXPECT_TRUE(Playing());
    // Selecting other files doesn't stop the sound, nor does their preview.
    ASSERT_TRUE(form.oFile.Select("notes.txt"));
    form.oFile_DblClick();
    EXPECT_TRUE(Playing());
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "ASCII Formated File");

    // A double click on a wave while one plays stops it and starts nothing;
    // the next one plays the selected file.
    DoubleClick("short.WAV");
    EXPECT_FALSE(Playing());
    DoubleClick("short.WAV");
    EXPECT_TRUE(Playing());
    // Its end closes the file: the player is ready for the next.
    for (int i = 0; i < 100 && Playing(); ++i) DoEvents();
    EXPECT_FALSE(Playing());
    EXPECT_EQ(form.oWavPlayer->Length(), 4410);
    EXPECT_THROW(form.oWavPlayer->Channels(), RuntimeError);

    DoubleClick("long.wav");
    int16_t cancel = 0;
    form.Form_Unload(cancel);
    EXPECT_FALSE(Playing());
    EXPECT_THROW(form.oWavPlayer->Play(), RuntimeError);
}

TEST_F(WavePlayback, WithoutASoundOutputTheDevicesTextStandsInTheStatusBar) {
    SetAudioBackend(nullptr);
    DoubleClick("short.WAV");
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "There is no driver installed on your system.");
    EXPECT_FALSE(Playing());
    // The program goes on: a broken wave reports the player's own text.
    fixtures::WriteFile(dir / "short.WAV", "RIFF");
    DoubleClick("short.WAV");
    EXPECT_EQ(form.oStatusBar.Panels(1).Text, "Not a Wave file.");
}
