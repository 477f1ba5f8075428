// A wave played from the window on Qt's sound output: the posted buffer
// messages run from the event loop to the end of the sound, and without an
// output device the device's text stands in the status bar.
#include <gtest/gtest.h>

#include <QAudioDevice>
#include <QLabel>
#include <QListView>
#include <QMediaDevices>
#include <QTest>

#include "AppTestSupport.h"
#include "EventPump.h"
#include "MainWindow.h"
#include "QtAudioBackend.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/WavBuilder.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"
#include "sound/cWavPlayer.h"

TEST(WaveWindow, ADoubleClickPlaysTheWaveToItsEndOrNamesTheMissingDevice) {
    fixtures::RegistryHome home;
    fixtures::TempDir dir;
    fixtures::WriteFile(dir / "tone.wav", fixtures::BuildWav(fixtures::WavSpec{}));
    QtAudioBackend audio;
    SetAudioBackend(&audio);
    EventPump::Install();
    {
        frmMain form;
        form.Form_Initialize();
        MainWindow window{form};
        form.oDir.SetPath(dir.Path());
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        auto* list = window.findChild<QListView*>(QStringLiteral("oFile"));
        ASSERT_NE(list, nullptr);
        apptest::DoubleClick(list->viewport(), list->visualRect(list->model()->index(0, 0)).center());
        ASSERT_EQ(form.oFile.FileName(), "tone.wav");
        if (QMediaDevices::defaultAudioOutput().isNull()) {
            auto* panel = window.findChild<QLabel*>(QStringLiteral("oStatusBar_Panel1"));
            EXPECT_EQ(panel->text(), QStringLiteral("There is no driver installed on your system."));
        } else {
            EXPECT_TRUE(form.oWavPlayer->Playing());
            // The end of the sound closes the file, through Complete.
            EXPECT_TRUE(apptest::EventsUntil([&] { return !form.oWavPlayer->Playing(); }));
            EXPECT_THROW(form.oWavPlayer->Channels(), RuntimeError);
        }
    }
    EventPump::Uninstall();
    SetAudioBackend(nullptr);
}
