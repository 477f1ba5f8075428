#pragma once
// The wave player: plays a RIFF WAVE file from disk through the waveform
// output device, streaming it through five fixed buffers. Each finished
// buffer comes back as MM_WOM_DONE on the attached window, through the
// subclassing layer, and is refilled from there; the player has no thread or
// timer of its own. Failures are raised as RuntimeError with numbers from
// 29671, source App::EXEName() + ".cWavePlayer".
#include <array>
#include <cstdint>
#include <string>

#include "controls/Event.h"
#include "platform/GlobalMemory.h"
#include "platform/Mmio.h"
#include "platform/WaveOut.h"
#include "winsupport/ISubclass.h"

// The first error number of the player; code N is raised as 29670 + N, a
// device result R as 29680 + R.
inline constexpr int32_t kWavPlayerErrorBase = 29670;
inline constexpr int32_t kWavPlayerDeviceErrorBase = 29680;

// The size of each buffer for `seconds` of sound of the format: seconds times
// samples per second in double precision, rounded half to even; times
// wBitsPerSample \ 2 above 8 bits; times the channels; 17640 for 0; raised to
// a multiple of nBlockAlign. Raises the runtime's overflow (6) when a product
// leaves 32 bits, and its division by zero (11) for an nBlockAlign of 0.
int32_t WaveBufferBytes(float seconds, const WAVEFORMATEX& format);

class cWavPlayer : public ISubclass {
public:
    static constexpr int kBuffers = 5;

    cWavPlayer();
    ~cWavPlayer() override;

    // Raised when the device closed after the last buffer came back.
    Event<> Complete;

    float BufferLength() const { return m_fBufferLength; }
    // Strictly between 0.001 and 10 seconds; from the next OpenFile on.
    void SetBufferLength(float value);
    int32_t WaveFormatTag() const;
    int32_t SamplesPerSecond() const;
    int32_t Channels() const;
    int32_t BitsPerSample() const;
    void CloseFile();
    bool OpenFile(const std::string& path);
    void Attach(int32_t hwnd);
    void Detach();
    bool Play();
    void StopPlay();
    int32_t Length() const { return m_lDataLength; }
    bool FileSeek(int32_t Position);
    void Pause(bool bState);
    int32_t Position();
    bool Playing();

    // What OpenFile found, for the command line's report.
    const WAVEFORMATEX& Format() const { return m_tFormat; }
    int32_t DataOffset() const { return m_lDataOffset; }
    int32_t BufferBytes() const { return m_lBufferBytes; }

    // ISubclass.
    int32_t MsgResponse() override { return MsgResponseBefore; }
    void SetMsgResponse(int32_t) override {}
    int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) override;

private:
    void FreeBuffers();
    [[noreturn]] static void RaiseWaveError(uint32_t result);
    [[noreturn]] static void RaiseError(int32_t code);
    // The header of the buffer whose address a message carries; nullptr for
    // an address that names none of the five.
    WAVEHDR* HeaderAt(int32_t address);
    void Refill(WAVEHDR& header);
    void EndOfBuffer(const WAVEHDR& header);

    int32_t m_hWnd = 0;
    bool m_bPlaying = false;
    float m_fBufferLength = 0.1f;
    HMMIO m_hmmio = 0;
    int32_t m_lBasePosition = 0;
    int32_t m_lDataOffset = 0;
    int32_t m_lDataLength = 0;
    WAVEFORMATEX m_tFormat;
    std::array<HGLOBAL, kBuffers> m_aMemHandles{};
    std::array<char*, kBuffers> m_aMemPointers{};
    std::array<WAVEHDR, kBuffers> m_aHeaders{};
    int32_t m_lBufferBytes = 0;
    HWAVEOUT m_hWaveOut = 0;
};
