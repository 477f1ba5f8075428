#pragma once
// The waveform output calls over an audio backend. The layer keeps each open
// device's queue of headers; a backend plays the blocks handed to it, in
// order, and reports each one played. A finished block goes back to the
// program as MM_WOM_DONE (957) posted to the callback window, with the device
// handle in wParam and the header's 32-bit address (see Addresses.h) in
// lParam. Everything runs on the user-interface thread: a backend reports
// from there too.
//
// Device handles count up and are not given twice in a run, so a handle kept
// after its device closed is refused with MMSYSERR_INVALHANDLE.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/Mmio.h"

using HWAVEOUT = int32_t;

struct WAVEFORMATEX {
    uint16_t wFormatTag = 0;
    uint16_t nChannels = 0;
    uint32_t nSamplesPerSec = 0;
    uint32_t nAvgBytesPerSec = 0;
    uint16_t nBlockAlign = 0;
    uint16_t wBitsPerSample = 0;
    uint16_t cbSize = 0;
};

struct WAVEHDR {
    char* lpData = nullptr;
    uint32_t dwBufferLength = 0;
    uint32_t dwBytesRecorded = 0;
    uint32_t dwUser = 0;
    uint32_t dwFlags = 0;
    uint32_t dwLoops = 0;
    WAVEHDR* lpNext = nullptr;
    uint32_t reserved = 0;
};

struct MMTIME {
    uint32_t wType = 0;
    union {
        uint32_t ms;
        uint32_t sample;
        uint32_t cb;
    } u{};
    uint32_t pad = 0;
};

inline constexpr uint16_t WAVE_FORMAT_PCM = 1;
inline constexpr uint32_t WAVE_MAPPER = 0xFFFFFFFFu;
inline constexpr uint32_t CALLBACK_NULL = 0x00000;
inline constexpr uint32_t CALLBACK_WINDOW = 0x10000;
inline constexpr uint32_t TIME_MS = 1;
inline constexpr uint32_t TIME_SAMPLES = 2;
inline constexpr uint32_t TIME_BYTES = 4;

inline constexpr uint32_t WHDR_DONE = 0x01;
inline constexpr uint32_t WHDR_PREPARED = 0x02;
inline constexpr uint32_t WHDR_INQUEUE = 0x10;

// Results, beside MMSYSERR_INVALHANDLE (5) and MMSYSERR_INVALPARAM (11).
inline constexpr uint32_t MMSYSERR_NOERROR = 0;
inline constexpr uint32_t MMSYSERR_ERROR = 1;
inline constexpr uint32_t MMSYSERR_BADDEVICEID = 2;
inline constexpr uint32_t MMSYSERR_NOTENABLED = 3;
inline constexpr uint32_t MMSYSERR_ALLOCATED = 4;
inline constexpr uint32_t MMSYSERR_NODRIVER = 6;
inline constexpr uint32_t MMSYSERR_NOMEM = 7;
inline constexpr uint32_t MMSYSERR_NOTSUPPORTED = 8;
inline constexpr uint32_t MMSYSERR_BADERRNUM = 9;
inline constexpr uint32_t MMSYSERR_INVALFLAG = 10;
inline constexpr uint32_t WAVERR_BADFORMAT = 32;
inline constexpr uint32_t WAVERR_STILLPLAYING = 33;
inline constexpr uint32_t WAVERR_UNPREPARED = 34;

// What the layer hands a stream: where to report played blocks.
class IWaveSink {
public:
    virtual ~IWaveSink() = default;
    // The oldest block still queued has been played.
    virtual void BlockDone() = 0;
};

// One open output stream of a backend.
class IWaveStream {
public:
    virtual ~IWaveStream() = default;
    // Plays `length` bytes behind the blocks already queued. The bytes stay
    // valid until the block is reported done or the stream is reset.
    virtual void Queue(const char* data, uint32_t length) = 0;
    virtual void Pause() = 0;
    virtual void Restart() = 0;
    // Drops every queued block at once, unreported, and counts the played
    // bytes from 0 again.
    virtual void Reset() = 0;
    // Bytes played since the stream was opened or last reset.
    virtual uint32_t PlayedBytes() = 0;
};

// A sound output.
class IAudioBackend {
public:
    virtual ~IAudioBackend() = default;
    // MMSYSERR_NOERROR with a stream that reports to `sink`, or the device's
    // code: MMSYSERR_NODRIVER when there is no output, WAVERR_BADFORMAT for a
    // format it can't play.
    virtual uint32_t Open(const WAVEFORMATEX& format, IWaveSink& sink, std::unique_ptr<IWaveStream>& stream) = 0;
};

// Installs the backend; nullptr removes it. With none, no device opens and
// waveOutOpen gives MMSYSERR_NODRIVER.
void SetAudioBackend(IAudioBackend* backend);
IAudioBackend* GetAudioBackend();

// Opens device WAVE_MAPPER (or 0) for the format. With CALLBACK_WINDOW,
// dwCallback is the window that receives MM_WOM_DONE.
uint32_t waveOutOpen(HWAVEOUT* phwo, uint32_t uDeviceID, const WAVEFORMATEX* pwfx, int32_t dwCallback,
                     int32_t dwInstance, uint32_t fdwOpen);
uint32_t waveOutPrepareHeader(HWAVEOUT hwo, WAVEHDR* pwh, uint32_t cbwh);
// WAVERR_STILLPLAYING while the header is queued.
uint32_t waveOutUnprepareHeader(HWAVEOUT hwo, WAVEHDR* pwh, uint32_t cbwh);
// Queues a prepared header's dwBufferLength bytes.
uint32_t waveOutWrite(HWAVEOUT hwo, WAVEHDR* pwh, uint32_t cbwh);
// Gives every queued header back as done, in order, and sets the position to 0.
uint32_t waveOutReset(HWAVEOUT hwo);
// 0 when closed; WAVERR_STILLPLAYING while headers are queued.
uint32_t waveOutClose(HWAVEOUT hwo);
// TIME_BYTES: bytes played since open. Another type is answered in bytes,
// with wType set to TIME_BYTES.
uint32_t waveOutGetPosition(HWAVEOUT hwo, MMTIME* pmmt, uint32_t cbmmt);
uint32_t waveOutPause(HWAVEOUT hwo);
uint32_t waveOutRestart(HWAVEOUT hwo);
// The text of a result code, cut to `cchText` - 1 characters and ended with a
// zero; MMSYSERR_BADERRNUM, with nothing written, for a code it has no text of.
uint32_t waveInGetErrorTextA(uint32_t mmrError, char* pszText, uint32_t cchText);

// Watches the blocks of every device, for tracing tools and tests: each block
// written, and each block played (not those that a reset gives back).
struct WaveOutWatch {
    std::function<void(HWAVEOUT, const WAVEHDR&)> Written;
    std::function<void(HWAVEOUT, const WAVEHDR&)> Played;
};
void SetWaveOutWatch(WaveOutWatch watch);

// Number of devices open now (for tests that look for leaks).
int32_t OpenWaveDeviceCount();
