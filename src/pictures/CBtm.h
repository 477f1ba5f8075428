#pragma once
// The game's Planar Bitmap: a grid of 8-bit palette indices (each pixel
// lBytesPerPixel bytes, of which the first is the index) followed by the
// palette block that it carries with it. The class decodes it into an 8-bit
// bottom-up DIB section and paints that into the picture pane; the section's
// palette toolkit (fade, lightness, grey, invert, copy) works on the colour
// table alone.
#include <cstdint>
#include <memory>
#include <string>

#include "identify/CNerhaltFile.h"
#include "identify/CNerhaltFiles.h"
#include "identify/IFileHost.h"
#include "pictures/DibSection.h"
#include "pictures/PlanarFormat.h"
#include "platform/Files.h"
#include "platform/Picture.h"
#include "platform/Variant.h"

class CBtm : public CNerhaltFile, public CDibSection {
public:
    explicit CBtm(IFileHost& host) : CDibSection(8), host_(host) {}
    ~CBtm() override;
    CBtm(const CBtm&) = delete;
    CBtm& operator=(const CBtm&) = delete;

    bool Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) override;
    std::string Information() override;
    bool Show(int32_t hDesDC) override;
    int32_t Width() override { return m_tHeader.lWidth; }
    int32_t Height() override { return m_tHeader.lHeight; }
    // Saves what the picture pane shows as a BMP, through the save dialog.
    bool SaveAs() override;

    // Makes the section from a picture's bitmap: its size, pixels and, where
    // it has one, its colour table. The value stays empty.
    Variant CreateFromPicture(const Picture& picThis);
    // Takes the colour table of the section in lHDC (where it has one) and a
    // block transfer from it into this section at (0, 0); a negative width or
    // height stands for this section's own.
    void LoadPictureBlt(HDC lHDC, int32_t lSrcLeft = 0, int32_t lSrcTop = 0, int32_t lSrcWidth = -1,
                        int32_t lSrcHeight = -1, uint32_t eRop = SRCCOPY);
    uint8_t* DIBSectionBitsPtr() const { return m_lBits; }
    // Seeds the random number generator from the time of day; no pixel changes.
    void RandomiseBits();

    // Palette operations: each reads the 256 entries, makes a new table and
    // writes it back in one call.
    // Each colour times lAmount / 255; lAmount must lie in 0 to 255.
    void Fade(int32_t lAmount);
    // Lightness times lAmount percent.
    void AdjustLightness(int32_t lAmount);
    void GrayScale();
    void Invert();
    void CopyPalette(const CBtm& cDib);

    // One entry of the table as a colour word; -1 for an index it doesn't hold.
    int32_t Color(int32_t nIndex) const;
    void SetColor(int32_t nIndex, uint32_t lColor);

    // The HLS model in single precision: h in sextants from -1 up to 5, s and
    // l from 0 to 1. Outputs of HLSToRGB are rounded, a tie to the even one.
    static void HLSToRGB(float& h, float& s, float& l, int32_t& r, int32_t& g, int32_t& b);
    static void RGBToHLS(int32_t r, int32_t g, int32_t b, float& h, float& s, float& l);

    // The picture has been decoded into the section.
    bool Loaded() const { return m_bLoaded; }
    bool HasPalette() const { return m_bHasPalette; }
    const PlanarFileHeader& Header() const { return m_tHeader; }

private:
    void DecodePixels();
    // Reads the section's table into m_atColors; gives the entries read.
    uint32_t ReadColors();
    void WriteColors();

    IFileHost& host_;
    RGBQUAD m_atColors[257]{};

    HFILE m_hFile = 0;
    int32_t m_hDesDC = 0;
    ListView* m_oLv = nullptr;
    bool m_bLoaded = false;
    bool m_bHasPalette = false;
    std::string m_sPathName;
    PlanarFileHeader m_tHeader;
    // The pixel data as read, with one byte more that stays 0, held from the
    // read to the decode. The decoder takes the first byte of each pixel
    // straight into the section; the planes of first and second bytes that
    // it would split the data into are not kept, as nothing shows the second.
    std::unique_ptr<uint8_t[]> m_abData;
    // A palette block holds 256 entries whatever its lField13 says; entries
    // beyond them would never be read or used.
    PlanarPaletteEntry m_atPalette[kPaletteEntries]{};
    PlanarFileHeader m_tPaletteHeader;
};
