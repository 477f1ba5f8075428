#pragma once
// The game's Planar Bitmap Palette: a 56-byte header and 256 entries of three
// colours. It is shown as a strip 256 pixels wide and 3 high, one row for each
// colour of an entry, drawn point by point into the picture pane. It carries
// an unused 24-bit DIB section like the TGA reader's.
#include <cstdint>
#include <string>

#include "identify/CNerhaltFile.h"
#include "identify/IFileHost.h"
#include "pictures/DibSection.h"
#include "pictures/PlanarFormat.h"
#include "platform/Files.h"

class CPLTFile : public CNerhaltFile, public CDibSection {
public:
    explicit CPLTFile(IFileHost& host) : CDibSection(24), host_(host) {}
    ~CPLTFile() override;
    CPLTFile(const CPLTFile&) = delete;
    CPLTFile& operator=(const CPLTFile&) = delete;

    // True whenever the file opens: the recogniser has tested its head.
    bool Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) override;
    bool SaveAs() override { return false; }
    std::string Information() override { return "Planar Bitmap Palette"; }
    // Reads the palette anew and draws the strip; always false.
    bool Show(int32_t hDesDC) override;
    int32_t Width() override { return 256; }
    int32_t Height() override { return 3; }

    const PlanarFileHeader& Header() const { return m_tHeader; }
    bool Loaded() const { return m_bLoaded; }

private:
    IFileHost& host_;
    HFILE m_hFile = 0;
    int32_t m_hDesDC = 0;
    ListView* m_oLv = nullptr;
    bool m_bLoaded = false;
    std::string m_sPathName;
    PlanarFileHeader m_tHeader;
    // 256 entries whatever lField13 says.
    PlanarPaletteEntry m_atPalette[kPaletteEntries]{};
};
