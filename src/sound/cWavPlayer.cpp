#include "sound/cWavPlayer.h"

#include <algorithm>
#include <cmath>

#include "platform/Addresses.h"
#include "platform/LittleEndian.h"
#include "platform/Runtime.h"
#include "platform/Windows.h"
#include "winsupport/MSubclass.h"

namespace {

// The buffer size when the arithmetic gives 0: a tenth of a second of
// 22050 Hz 16-bit mono, as the arithmetic counts it.
constexpr int32_t kFallbackBufferBytes = 17640;
// The format chunk is read into a block of this size, whatever its own size.
constexpr uint32_t kFormatBlock = 50;

const char* const kDescriptions[] = {
    "Class not ready; call attach method first.",
    "Unable to open file.",
    "Not a Wave file.",
    "Unable to retrieve format chunk",
    "Error reading format",
    "No Wave File Open",
    "Insufficient memory",
    "Position out of range",
    "No wave file playing",
    "Buffer time out of range, choose a number of second between 0.001 and 10",
};

std::string Source() { return App::EXEName() + ".cWavePlayer"; }

// Raises a value to the next multiple of `align`, as the runtime's Mod and
// addition do: 11 for an align of 0, 6 when the sum leaves 32 bits.
int32_t AlignUp(int32_t value, uint16_t align) {
    if (align == 0) RaiseError(vbErrDivisionByZero);
    const int32_t rest = value % align;
    return rest != 0 ? VbAdd32(value, align - rest) : value;
}

}  // namespace

int32_t WaveBufferBytes(float seconds, const WAVEFORMATEX& format) {
    // The float widens exactly, so 0.1 stays a little above one tenth.
    const double product = static_cast<double>(seconds) * format.nSamplesPerSec;
    int32_t bytes = VbToLong(static_cast<int64_t>(std::nearbyint(product)));
    if (format.wBitsPerSample > 8) bytes = VbToLong(static_cast<int64_t>(bytes) * (format.wBitsPerSample / 2));
    if (format.nChannels > 0) bytes = VbToLong(static_cast<int64_t>(bytes) * format.nChannels);
    if (bytes == 0) bytes = kFallbackBufferBytes;
    return AlignUp(bytes, format.nBlockAlign);
}

cWavPlayer::cWavPlayer() = default;

cWavPlayer::~cWavPlayer() {
    PassOver([&] { Detach(); });
    PassOver([&] { CloseFile(); });
    FreeBuffers();
    // No device is left holding the headers.
    if (m_hWaveOut != 0) {
        waveOutReset(m_hWaveOut);
        waveOutClose(m_hWaveOut);
    }
    for (const WAVEHDR& header : m_aHeaders) ForgetAddress(&header);
}

void cWavPlayer::SetBufferLength(float value) {
    // Compared in single precision, so 0.001 itself is refused.
    if (!(value > 0.001f && value < 10.0f)) RaiseError(10);
    m_fBufferLength = value;
}

int32_t cWavPlayer::WaveFormatTag() const {
    if (m_hmmio == 0) RaiseError(6);
    return m_tFormat.wFormatTag;
}

int32_t cWavPlayer::SamplesPerSecond() const {
    if (m_hmmio == 0) RaiseError(6);
    return static_cast<int32_t>(m_tFormat.nSamplesPerSec);
}

int32_t cWavPlayer::Channels() const {
    if (m_hmmio == 0) RaiseError(6);
    return m_tFormat.nChannels;
}

int32_t cWavPlayer::BitsPerSample() const {
    if (m_hmmio == 0) RaiseError(6);
    return m_tFormat.wBitsPerSample;
}

void cWavPlayer::CloseFile() {
    if (m_hmmio == 0) return;
    StopPlay();
    mmioClose(m_hmmio, 0);
    m_hmmio = 0;
}

bool cWavPlayer::OpenFile(const std::string& path) {
    CloseFile();
    if (path.empty()) return false;
    m_hmmio = mmioOpenA(path, nullptr, MMIO_READ);
    if (m_hmmio == 0) RaiseError(2);
    auto fail = [&](int32_t code) {
        CloseFile();
        RaiseError(code);
    };

    MMCKINFO riff;
    riff.fccType = mmioStringToFOURCCA("WAVE", 0);
    if (mmioDescend(m_hmmio, &riff, nullptr, MMIO_FINDRIFF) != 0) fail(3);

    MMCKINFO chunk;
    chunk.ckid = mmioStringToFOURCCA("fmt", 0);
    if (mmioDescend(m_hmmio, &chunk, &riff, MMIO_FINDCHUNK) != 0) fail(4);
    // A larger chunk is read only as far as the block goes.
    char block[kFormatBlock] = {};
    const auto want = static_cast<int32_t>(std::min(chunk.cksize, kFormatBlock));
    if (mmioRead(m_hmmio, block, want) == -1) fail(5);
    mmioAscend(m_hmmio, &chunk, 0);

    const ByteCursor format(block, sizeof block);
    m_tFormat.wFormatTag = format.WordAt(0);
    m_tFormat.nChannels = format.WordAt(2);
    m_tFormat.nSamplesPerSec = format.LongAt(4);
    m_tFormat.nAvgBytesPerSec = format.LongAt(8);
    m_tFormat.nBlockAlign = format.WordAt(12);
    m_tFormat.wBitsPerSample = format.WordAt(14);
    m_tFormat.cbSize = format.WordAt(16);

    // Searched from behind "fmt ": a "data" chunk before it is not found.
    MMCKINFO data;
    data.ckid = mmioStringToFOURCCA("data", 0);
    if (mmioDescend(m_hmmio, &data, &riff, MMIO_FINDCHUNK) != 0) fail(6);
    m_lDataOffset = mmioSeek(m_hmmio, 0, SEEK_FROM_CURRENT);
    m_lDataLength = static_cast<int32_t>(data.cksize);

    try {
        m_lBufferBytes = WaveBufferBytes(m_fBufferLength, m_tFormat);
    } catch (...) {
        // The failure of the arithmetic goes to the caller; the file that
        // can't be played doesn't stay open behind it.
        CloseFile();
        throw;
    }

    FreeBuffers();
    for (int i = 0; i < kBuffers; ++i) {
        m_aMemHandles[i] = GlobalAlloc(GMEM_FIXED, static_cast<size_t>(m_lBufferBytes));
        if (m_aMemHandles[i] != nullptr) m_aMemPointers[i] = static_cast<char*>(GlobalLock(m_aMemHandles[i]));
        if (m_aMemHandles[i] == nullptr || m_aMemPointers[i] == nullptr) {
            FreeBuffers();
            fail(7);
        }
    }
    return true;
}

void cWavPlayer::FreeBuffers() {
    // A device that still holds buffers gives them back before their memory goes.
    if (m_hWaveOut != 0 && (m_aMemPointers[0] != nullptr || m_aMemHandles[0] != nullptr)) waveOutReset(m_hWaveOut);
    for (int i = 0; i < kBuffers; ++i) {
        if (m_aMemPointers[i] != nullptr) {
            GlobalUnlock(m_aMemHandles[i]);
            m_aMemPointers[i] = nullptr;
        }
        if (m_aMemHandles[i] != nullptr) {
            GlobalFree(m_aMemHandles[i]);
            m_aMemHandles[i] = nullptr;
        }
    }
}

void cWavPlayer::Attach(int32_t hwnd) {
    m_hWnd = hwnd;
    MSubclass::AttachMessage(*this, hwnd, MM_WOM_DONE);
    MSubclass::AttachMessage(*this, hwnd, WM_DESTROY);
}

void cWavPlayer::Detach() {
    if (m_hWnd == 0) return;
    CloseFile();
    FreeBuffers();
    MSubclass::DetachMessage(*this, m_hWnd, MM_WOM_DONE);
    MSubclass::DetachMessage(*this, m_hWnd, WM_DESTROY);
    m_hWnd = 0;
}

bool cWavPlayer::Play() {
    if (m_hWnd == 0) RaiseError(1);
    if (m_hmmio == 0) RaiseError(6);
    if (m_bPlaying) return true;

    // A device still draining gives its buffers back before a new one takes them.
    if (m_hWaveOut != 0) waveOutReset(m_hWaveOut);
    // Only the first 18 bytes of the format reach the device.
    const WAVEFORMATEX format = m_tFormat;
    uint32_t result = waveOutOpen(&m_hWaveOut, WAVE_MAPPER, &format, m_hWnd, 0, CALLBACK_WINDOW);
    if (result != MMSYSERR_NOERROR) RaiseWaveError(result);

    for (int i = 0; i < kBuffers; ++i) {
        WAVEHDR& header = m_aHeaders[i];
        header.lpData = m_aMemPointers[i];
        header.dwBufferLength = static_cast<uint32_t>(m_lBufferBytes);
        header.dwUser = static_cast<uint32_t>(i + 1);
        header.dwFlags = 0;
        header.dwLoops = 0;
        result = waveOutPrepareHeader(m_hWaveOut, &header, sizeof header);
        if (result != MMSYSERR_NOERROR) RaiseWaveError(result);
    }
    m_bPlaying = true;
    m_lBasePosition = VbToLong(static_cast<int64_t>(mmioSeek(m_hmmio, 0, SEEK_FROM_CURRENT)) - m_lDataOffset);
    // The five messages run the refill path of a real completion, which
    // fills and submits the five buffers.
    for (const WAVEHDR& header : m_aHeaders) PostMessageA(m_hWnd, MM_WOM_DONE, 0, AddressOf(&header));
    return true;
}

void cWavPlayer::StopPlay() {
    if (!m_bPlaying) return;
    m_bPlaying = false;
    FileSeek(Position());
    // The queued buffers come back as done and end in Complete.
    waveOutReset(m_hWaveOut);
}

bool cWavPlayer::FileSeek(int32_t Position) {
    if (m_hmmio == 0) RaiseError(6);
    if (Position < 0 || Position >= m_lDataLength) RaiseError(8);
    Position = AlignUp(Position, m_tFormat.nBlockAlign);
    m_lBasePosition = mmioSeek(m_hmmio, VbAdd32(m_lDataOffset, Position), SEEK_FROM_START);
    return true;
}

void cWavPlayer::Pause(bool bState) {
    if (m_hmmio == 0) RaiseError(6);
    if (m_hWaveOut == 0) RaiseError(9);
    if (bState)
        waveOutPause(m_hWaveOut);
    else
        waveOutRestart(m_hWaveOut);
}

int32_t cWavPlayer::Position() {
    MMTIME time;
    time.wType = TIME_BYTES;
    if (waveOutGetPosition(m_hWaveOut, &time, sizeof time) != MMSYSERR_NOERROR) return 0;
    return VbAdd32(m_lBasePosition, time.u.cb);
}

bool cWavPlayer::Playing() {
    if (m_hmmio == 0 || m_hWaveOut == 0) return false;
    MMTIME time;
    time.wType = TIME_BYTES;
    return waveOutGetPosition(m_hWaveOut, &time, sizeof time) == MMSYSERR_NOERROR;
}

WAVEHDR* cWavPlayer::HeaderAt(int32_t address) {
    for (WAVEHDR& header : m_aHeaders)
        if (AddressOf(&header) == address) return &header;
    return nullptr;
}

void cWavPlayer::Refill(WAVEHDR& header) {
    const int32_t position = mmioSeek(m_hmmio, 0, SEEK_FROM_CURRENT);
    // Counted in 64 bits: a damaged chunk size can't overflow here, and a
    // position behind the end of the data leaves nothing to read.
    const int64_t left = position < 0 ? 0 : static_cast<int64_t>(m_lDataOffset) + m_lDataLength - position;
    int32_t want = m_lBufferBytes;
    if (m_lBufferBytes >= left) {
        want = static_cast<int32_t>(std::max<int64_t>(left, 0));
        m_bPlaying = false;
    }
    int32_t got = want > 0 ? mmioRead(m_hmmio, header.lpData, want) : 0;
    // A failed read, or a file that ends before its "data" chunk says,
    // ends the stream as the end of the data does.
    if (got <= 0) {
        got = 0;
        m_bPlaying = false;
    }
    header.dwBufferLength = static_cast<uint32_t>(got);
    waveOutWrite(m_hWaveOut, &header, sizeof header);
}

void cWavPlayer::EndOfBuffer(const WAVEHDR& header) {
    if (header.dwUser >= 1 && header.dwUser <= kBuffers)
        waveOutUnprepareHeader(m_hWaveOut, &m_aHeaders[header.dwUser - 1], sizeof(WAVEHDR));
    if (waveOutClose(m_hWaveOut) == MMSYSERR_NOERROR) Complete.Raise();
}

int32_t cWavPlayer::WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) {
    if (iMsg == static_cast<int32_t>(MM_WOM_DONE)) {
        WAVEHDR* header = HeaderAt(lParam);
        if (header == nullptr) return 0;
        PassOver([&] {
            if (m_bPlaying) Refill(*header);
            if (!m_bPlaying) EndOfBuffer(*header);
        });
    } else if (iMsg == static_cast<int32_t>(WM_DESTROY)) {
        PassOver([&] { Detach(); });
    }
    return 0;
}

void cWavPlayer::RaiseError(int32_t code) {
    throw RuntimeError(kWavPlayerErrorBase + code, Source(), kDescriptions[code - 1]);
}

void cWavPlayer::RaiseWaveError(uint32_t result) {
    char text[260] = {};
    waveInGetErrorTextA(result, text, sizeof text);
    throw RuntimeError(kWavPlayerDeviceErrorBase + static_cast<int32_t>(result), Source(), std::string(text));
}
