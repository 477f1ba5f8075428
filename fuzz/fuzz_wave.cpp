// Opens a wave file of arbitrary bytes with the player; whatever opens is
// played to its end on the null device, which consumes each buffer at once.
// Every input must end in True or in one of the player's errors (or the
// runtime's overflow and division failures of its arithmetic, or the device's
// refusal of a format), and a played file must end in exactly one Complete.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "FuzzFile.h"
#include "platform/NullAudio.h"
#include "platform/Runtime.h"
#include "platform/Windows.h"
#include "sound/cWavPlayer.h"

namespace {

bool Expected(int32_t number) {
    return (number >= 29672 && number <= 29677) || number == vbErrOverflow || number == vbErrDivisionByZero ||
           number == kWavPlayerDeviceErrorBase + static_cast<int32_t>(WAVERR_BADFORMAT);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFile file("quarrin-fuzz-wave");
    static NullAudioBackend backend(true);
    static PlatformWindow window;
    static int completes = 0;
    static cWavPlayer* player = [] {
        auto* p = new cWavPlayer;
        p->Attach(window.hWnd());
        p->Complete.Connect([] { ++completes; });
        return p;
    }();
    file.Write(data, size);
    SetAudioBackend(&backend);
    completes = 0;
    try {
        if (!player->OpenFile(file.Path())) std::abort();
        const int32_t bytes = player->BufferBytes();
        if (bytes <= 0 || bytes % player->Format().nBlockAlign != 0) std::abort();
        // The file holds at most `size` bytes of sound, so the stream ends
        // within that many buffers and the five of the start. A format of a
        // few bytes a buffer streams the same way as any other, only in more
        // rounds; such inputs are opened but not played, to keep each quick.
        const size_t limit = size / static_cast<size_t>(bytes) + 16;
        if (limit > 64) {
            player->CloseFile();
            SetAudioBackend(nullptr);
            return 0;
        }
        player->Play();
        for (size_t round = 0; round < limit && completes == 0; ++round) DispatchPostedMessages();
        if (completes != 1 || player->Playing()) std::abort();
        DispatchPostedMessages();
        if (completes != 1) std::abort();
        player->CloseFile();
    } catch (const RuntimeError& e) {
        if (!Expected(e.Number)) std::abort();
    }
    SetAudioBackend(nullptr);
    return 0;
}
