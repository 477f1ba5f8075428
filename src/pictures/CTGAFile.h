#pragma once
// Uncompressed TGA pictures of 8 (grey) or 24 (blue, green, red) bits per
// pixel, decoded into a 24-bit DIB section and painted by block transfer. No
// game format: the common picture recogniser tries it on what is not a BMP,
// GIF or JPEG.
#include <cstdint>
#include <memory>
#include <string>

#include "pictures/DibSection.h"
#include "platform/Files.h"

struct TgaHeader {
    uint8_t bIdLength = 0;
    uint8_t bColorMapType = 0;
    uint8_t bImageType = 0;
    int16_t iColorMapOrigin = 0;
    int16_t iColorMapLength = 0;
    uint8_t bColorMapDepth = 0;
    int16_t iXOrigin = 0;
    int16_t iYOrigin = 0;
    int16_t iWidth = 0;
    int16_t iHeight = 0;
    uint8_t bPixelDepth = 0;
    uint8_t bDescriptor = 0;
};

class CTGAFile : public CDibSection {
public:
    CTGAFile() : CDibSection(24) {}
    ~CTGAFile();
    CTGAFile(const CTGAFile&) = delete;
    CTGAFile& operator=(const CTGAFile&) = delete;

    uint8_t* DIBBitsPtr() const { return m_lBits; }
    std::string Information() const;
    int32_t Height() const { return m_tHeader.iHeight; }
    int32_t Width() const { return m_tHeader.iWidth; }
    // Reads the 18-byte header anew; true for a TGA of a kind this class reads.
    bool Initialize(const std::string& lpPathName);
    // Saving a TGA is the common picture recogniser's task: always false.
    bool SaveAs() { return false; }
    bool Show(int32_t hDesDC);

    const TgaHeader& Header() const { return m_tHeader; }
    bool Loaded() const { return m_bLoaded; }

private:
    void DecodePixels(bool b8Bits);

    HFILE m_hFile = 0;
    bool m_bLoaded = false;
    std::string m_sPathName;
    // The pixel data as read, held from the read to the decode.
    std::unique_ptr<uint8_t[]> m_abData;
    TgaHeader m_tHeader;
};
