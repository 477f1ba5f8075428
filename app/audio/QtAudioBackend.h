#pragma once
// The waveform output over Qt Multimedia: PCM of 8 and 16 bits, in any
// channel count and rate that the default output device takes. A block is
// reported played when the sink has processed its last byte. Needs a
// QCoreApplication and its event loop on the calling thread.
#include "platform/WaveOut.h"

class QtAudioBackend : public IAudioBackend {
public:
    // MMSYSERR_NODRIVER with no output device; WAVERR_BADFORMAT for a format
    // that is not such PCM or that the device refuses.
    uint32_t Open(const WAVEFORMATEX& format, IWaveSink& sink, std::unique_ptr<IWaveStream>& stream) override;
};
