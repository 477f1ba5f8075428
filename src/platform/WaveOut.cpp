#include "platform/WaveOut.h"

#include <cstring>
#include <deque>
#include <map>

#include "platform/Addresses.h"
#include "platform/Windows.h"

namespace {

IAudioBackend* g_backend = nullptr;
WaveOutWatch g_watch;

struct Device : IWaveSink {
    HWAVEOUT handle = 0;
    int32_t hWnd = 0;  // 0: no callback window
    std::deque<WAVEHDR*> queue;
    std::unique_ptr<IWaveStream> stream;

    void BlockDone() override {
        if (queue.empty()) return;
        WAVEHDR* header = queue.front();
        queue.pop_front();
        if (g_watch.Played) g_watch.Played(handle, *header);
        Finish(header);
    }

    void Finish(WAVEHDR* header) {
        header->dwFlags = (header->dwFlags & ~WHDR_INQUEUE) | WHDR_DONE;
        if (hWnd != 0) PostMessageA(hWnd, MM_WOM_DONE, handle, AddressOf(header));
    }
};

std::map<HWAVEOUT, std::unique_ptr<Device>> g_devices;
HWAVEOUT g_lastHandle = 0x2E00;

Device* Lookup(HWAVEOUT h) {
    const auto it = g_devices.find(h);
    return it != g_devices.end() ? it->second.get() : nullptr;
}

bool BadHeader(const WAVEHDR* pwh, uint32_t cbwh) { return pwh == nullptr || cbwh != sizeof(WAVEHDR); }

struct ErrorText {
    uint32_t code;
    const char* text;
};

const ErrorText kErrorTexts[] = {
    {MMSYSERR_NOERROR, "The specified command was carried out."},
    {MMSYSERR_ERROR, "Undefined external error."},
    {MMSYSERR_BADDEVICEID, "A device ID has been used that is out of range for your system."},
    {MMSYSERR_NOTENABLED, "The driver was not enabled."},
    {MMSYSERR_ALLOCATED, "The specified device is already in use. Wait until it is free, and then try again."},
    {MMSYSERR_INVALHANDLE, "The specified device handle is invalid."},
    {MMSYSERR_NODRIVER, "There is no driver installed on your system."},
    {MMSYSERR_NOMEM,
     "There is not enough memory available for this task. Quit one or more applications to increase available "
     "memory, and then try again."},
    {MMSYSERR_NOTSUPPORTED,
     "This function is not supported. Use the Capabilities function to determine which functions and messages "
     "the driver supports."},
    {MMSYSERR_BADERRNUM, "An error number was specified that is not defined in the system."},
    {MMSYSERR_INVALFLAG, "An invalid flag was passed to a system function."},
    {MMSYSERR_INVALPARAM, "An invalid parameter was passed to a system function."},
    {WAVERR_BADFORMAT,
     "The specified format is not supported or cannot be translated. Use the Capabilities function to determine "
     "the supported formats."},
    {WAVERR_STILLPLAYING,
     "Cannot perform this operation while media data is still playing. Reset the device, or wait until the data "
     "is finished playing."},
    {WAVERR_UNPREPARED,
     "The wave header was not prepared. Use the Prepare function to prepare the header, and then try again."},
};

}  // namespace

void SetAudioBackend(IAudioBackend* backend) { g_backend = backend; }
IAudioBackend* GetAudioBackend() { return g_backend; }

uint32_t waveOutOpen(HWAVEOUT* phwo, uint32_t uDeviceID, const WAVEFORMATEX* pwfx, int32_t dwCallback,
                     int32_t dwInstance, uint32_t fdwOpen) {
    if (phwo == nullptr || pwfx == nullptr) return MMSYSERR_INVALPARAM;
    if (fdwOpen != CALLBACK_NULL && fdwOpen != CALLBACK_WINDOW) return MMSYSERR_INVALFLAG;
    if (fdwOpen == CALLBACK_WINDOW && IsWindow(dwCallback) == 0) return MMSYSERR_INVALPARAM;
    if (g_backend == nullptr) return MMSYSERR_NODRIVER;
    // The mapper and the one device it maps to.
    if (uDeviceID != WAVE_MAPPER && uDeviceID != 0) return MMSYSERR_BADDEVICEID;
    auto device = std::make_unique<Device>();
    device->hWnd = fdwOpen == CALLBACK_WINDOW ? dwCallback : 0;
    const uint32_t result = g_backend->Open(*pwfx, *device, device->stream);
    if (result != MMSYSERR_NOERROR) return result;
    if (!device->stream) return MMSYSERR_ERROR;
    device->handle = ++g_lastHandle;
    *phwo = device->handle;
    g_devices.emplace(device->handle, std::move(device));
    return MMSYSERR_NOERROR;
}

uint32_t waveOutPrepareHeader(HWAVEOUT hwo, WAVEHDR* pwh, uint32_t cbwh) {
    if (Lookup(hwo) == nullptr) return MMSYSERR_INVALHANDLE;
    if (BadHeader(pwh, cbwh) || (pwh->lpData == nullptr && pwh->dwBufferLength > 0)) return MMSYSERR_INVALPARAM;
    pwh->dwFlags |= WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

uint32_t waveOutUnprepareHeader(HWAVEOUT hwo, WAVEHDR* pwh, uint32_t cbwh) {
    if (Lookup(hwo) == nullptr) return MMSYSERR_INVALHANDLE;
    if (BadHeader(pwh, cbwh)) return MMSYSERR_INVALPARAM;
    if (pwh->dwFlags & WHDR_INQUEUE) return WAVERR_STILLPLAYING;
    pwh->dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

uint32_t waveOutWrite(HWAVEOUT hwo, WAVEHDR* pwh, uint32_t cbwh) {
    Device* device = Lookup(hwo);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    if (BadHeader(pwh, cbwh)) return MMSYSERR_INVALPARAM;
    if (!(pwh->dwFlags & WHDR_PREPARED)) return WAVERR_UNPREPARED;
    if (pwh->dwFlags & WHDR_INQUEUE) return WAVERR_STILLPLAYING;
    pwh->dwFlags = (pwh->dwFlags & ~WHDR_DONE) | WHDR_INQUEUE;
    device->queue.push_back(pwh);
    if (g_watch.Written) g_watch.Written(hwo, *pwh);
    // The stream may report the block played at once.
    device->stream->Queue(pwh->lpData, pwh->dwBufferLength);
    return MMSYSERR_NOERROR;
}

uint32_t waveOutReset(HWAVEOUT hwo) {
    Device* device = Lookup(hwo);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    device->stream->Reset();
    std::deque<WAVEHDR*> returned;
    returned.swap(device->queue);
    for (WAVEHDR* header : returned) device->Finish(header);
    return MMSYSERR_NOERROR;
}

uint32_t waveOutClose(HWAVEOUT hwo) {
    Device* device = Lookup(hwo);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    if (!device->queue.empty()) return WAVERR_STILLPLAYING;
    g_devices.erase(hwo);
    return MMSYSERR_NOERROR;
}

uint32_t waveOutGetPosition(HWAVEOUT hwo, MMTIME* pmmt, uint32_t cbmmt) {
    Device* device = Lookup(hwo);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    if (pmmt == nullptr || cbmmt != sizeof(MMTIME)) return MMSYSERR_INVALPARAM;
    pmmt->wType = TIME_BYTES;
    pmmt->u.cb = device->stream->PlayedBytes();
    return MMSYSERR_NOERROR;
}

uint32_t waveOutPause(HWAVEOUT hwo) {
    Device* device = Lookup(hwo);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    device->stream->Pause();
    return MMSYSERR_NOERROR;
}

uint32_t waveOutRestart(HWAVEOUT hwo) {
    Device* device = Lookup(hwo);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    device->stream->Restart();
    return MMSYSERR_NOERROR;
}

uint32_t waveInGetErrorTextA(uint32_t mmrError, char* pszText, uint32_t cchText) {
    if (pszText == nullptr || cchText == 0) return MMSYSERR_INVALPARAM;
    for (const ErrorText& e : kErrorTexts) {
        if (e.code != mmrError) continue;
        const size_t n = std::min<size_t>(std::strlen(e.text), cchText - 1);
        std::memcpy(pszText, e.text, n);
        pszText[n] = '\0';
        return MMSYSERR_NOERROR;
    }
    return MMSYSERR_BADERRNUM;
}

void SetWaveOutWatch(WaveOutWatch watch) { g_watch = std::move(watch); }

int32_t OpenWaveDeviceCount() { return static_cast<int32_t>(g_devices.size()); }
