// quarrin-cli wave: what the player makes of a wave file, and playing it on
// the default output or on the null device.
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "CliSupport.h"
#include "Commands.h"
#include "platform/NullAudio.h"
#include "platform/Runtime.h"
#include "platform/Windows.h"
#include "sound/cWavPlayer.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include "QtAudioBackend.h"

namespace {

const char kWaveUsage[] =
    "usage: quarrin-cli wave info PATH\n"
    "       quarrin-cli wave play PATH [--null] [--fast] [--trace] [--buffer SECONDS]\n";

int UsageFail(const std::string& message) {
    CliFail(message);
    std::cerr << kWaveUsage;
    return 1;
}

// A failure of the player: its description and number.
int PlayerFail(const RuntimeError& e) { return CliFail(e.Description + " (" + std::to_string(e.Number) + ")"); }

int WaveInfo(const std::string& path) {
    cWavPlayer player;
    try {
        if (!player.OpenFile(path)) return CliFail("wave info takes a PATH");
    } catch (const RuntimeError& e) {
        return PlayerFail(e);
    }
    const WAVEFORMATEX& f = player.Format();
    std::cout << "format=" << f.wFormatTag << "\n"
              << "channels=" << f.nChannels << "\n"
              << "rate=" << f.nSamplesPerSec << "\n"
              << "bits=" << f.wBitsPerSample << "\n"
              << "align=" << f.nBlockAlign << "\n"
              << "data-offset=" << player.DataOffset() << "\n"
              << "data-length=" << player.Length() << "\n"
              << "buffer-bytes=" << player.BufferBytes() << "\n";
    return 0;
}

struct PlayOptions {
    std::string path;
    bool null = false;
    bool fast = false;
    bool trace = false;
    std::string buffer;
};

// Runs the player's messages until Complete. `wait` lets the device's time
// pass when no message is waiting.
template <typename Wait>
void RunUntilComplete(const bool& complete, Wait wait) {
    while (!complete) {
        if (DispatchPostedMessages() == 0) wait();
    }
}

int WavePlay(const PlayOptions& o) {
    std::unique_ptr<IAudioBackend> backend;
    std::unique_ptr<NullAudioBackend> null;
    int argc = 1;
    char name[] = "quarrin-cli";
    char* argv[] = {name, nullptr};
    std::unique_ptr<QCoreApplication> app;
    if (o.null) {
        null = std::make_unique<NullAudioBackend>(o.fast);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
        backend = std::make_unique<QtAudioBackend>();
    }
    SetAudioBackend(null ? null.get() : backend.get());

    uint64_t played = 0;
    bool complete = false;
    if (o.trace) {
        SetWaveOutWatch({[](HWAVEOUT, const WAVEHDR& h) { std::cout << "write " << h.dwBufferLength << "\n"; },
                         [&played](HWAVEOUT, const WAVEHDR& h) { played += h.dwBufferLength; }});
    }
    int status = 0;
    {
        PlatformWindow window;
        cWavPlayer player;
        player.Complete.Connect([&] {
            if (o.trace) std::cout << "complete\n";
            complete = true;
            PassOver([&] { player.StopPlay(); });
            PassOver([&] { player.CloseFile(); });
        });
        try {
            player.Attach(window.hWnd());
            if (!o.buffer.empty()) player.SetBufferLength(std::strtof(o.buffer.c_str(), nullptr));
            if (player.OpenFile(o.path) && player.Play()) {
                if (null) {
                    RunUntilComplete(complete, [&] {
                        null->Poll();
                        if (PostedMessageCount() > 0) return;
                        const auto due = null->NextDue();
                        const double seconds = due ? std::min(*due, 0.05) : 0.05;
                        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
                    });
                } else {
                    // The device's own timer wakes the loop while it plays;
                    // the heartbeat in between.
                    QTimer heartbeat;
                    heartbeat.start(50);
                    RunUntilComplete(complete, [] { QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents); });
                }
            }
        } catch (const RuntimeError& e) {
            status = e.Number > kWavPlayerDeviceErrorBase ? CliFail(e.Description) : PlayerFail(e);
        }
    }
    if (o.trace && status == 0) std::cout << "played " << played << "\n";
    std::cout.flush();
    SetWaveOutWatch({});
    SetAudioBackend(nullptr);
    return status;
}

}  // namespace

int CliWave(const std::vector<std::string>& args) {
    if (args.size() == 2 && args[0] == "info") return WaveInfo(args[1]);
    if (args.empty() || args[0] != "play") {
        std::cerr << kWaveUsage;
        return 1;
    }
    PlayOptions o;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--null") o.null = true;
        else if (a == "--fast") o.fast = true;
        else if (a == "--trace") o.trace = true;
        else if (a == "--buffer" && i + 1 < args.size()) o.buffer = args[++i];
        else if (a == "--buffer") return CliFail("--buffer needs a number of seconds");
        else if (o.path.empty() && !a.starts_with("--")) o.path = a;
        else return UsageFail("unknown argument '" + a + "'");
    }
    if (o.path.empty()) return UsageFail("wave play takes a PATH");
    if (o.fast && !o.null) return CliFail("--fast consumes the buffers of the null device: add --null");
    return WavePlay(o);
}
