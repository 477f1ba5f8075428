#include "identify/CNerhaltFiles.h"

#include <cstdio>

#include "platform/LittleEndian.h"
#include "platform/Runtime.h"

namespace {

constexpr NerhaltType kTypes[] = {
    {0x0054D654, "Font?", "fnt", false, false},
    {0x0055388B, "Mark", "mrk", false, false},
    {0x00553C98, "Mesh", "msh", true, true},
    {0x0289FCF5, "FlatTile", "ftl", false, false},
    {0x04023750, "Planar Bitmap", "btm", true, true},
    {0x049B2991, "Sequence", "seq", false, false},
    {0x04BCCAE5, "Landscape", "lnd", false, false},
    {0x05463C98, "AMesh File", "amh", true, true},
    {0x055E6924, "World", "wrd", false, false},
    {0x06364764, "ColorLut (look up table)", "lut", false, false},
    {0x0682CEF5, "Planar Bitmap Palette", "plt", true, false},
    {0x0770FCF5, "TexturedVoxelTile", "tvt", false, false},
    {0x07960AA0, "???", "rbt", false, false},
    {0x093D11F4, "Altitude Map", "alt", false, false},
    {0x097DD4D3, "DCL Imploding Packed File", "pak", true, true},
    {0x0CCCB3A4, "Cover File", "cov", false, false},
    {0x0CD90E63, "Srf File", "srf", false, false},
    {0x0D411164, "AttributeSet File", "att", false, false},
    {0x0E614355, "Remapping Palette", "pal", false, false},
    {0x0EC4F345, "VoxelTile", "vtl", false, false},
};

}  // namespace

const NerhaltType* FindNerhaltType(int32_t id) {
    for (const auto& t : kTypes)
        if (t.Id == id) return &t;
    return nullptr;
}

const NerhaltType* NerhaltTypes(size_t& count) {
    count = sizeof kTypes / sizeof kTypes[0];
    return kTypes;
}

std::unique_ptr<CNerhaltFile> CNerhaltFiles::CreateFileObject(int32_t id) {
    return m_fnCreate ? m_fnCreate(id) : nullptr;
}

CNerhaltFiles::~CNerhaltFiles() {
    m_oFile.reset();
    if (m_hFile != 0) _lclose(m_hFile);
}

bool CNerhaltFiles::Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) {
    if (lpPathName == m_sPathName) return m_bResult;
    m_sPathName = lpPathName;
    // Each statement that fails is passed over and the next one runs, so that
    // the answer kept for this path is the one given for it.
    if (m_hFile > 0) _lclose(m_hFile);
    m_hFile = 0;
    PassOver([&] { m_hFile = _lopen(lpPathName, OF_READ); });
    if (m_hFile <= 0) {
        m_bResult = false;
        return false;
    }
    int32_t bytesRead = 0;
    PassOver([&] { bytesRead += ReadLong(m_hFile, m_lSignature); });
    PassOver([&] { bytesRead += ReadLong(m_hFile, m_lId); });
    m_bKnownId = true;
    m_bAble2Show = false;
    m_bAble2Save = false;
    m_bSigned = m_lSignature == kNerhaltSignature;
    // The previous file's object ends here and closes its own file.
    m_oFile.reset();
    if (const NerhaltType* row = FindNerhaltType(m_lId)) {
        m_sName = row->Name;
        m_sExtension = row->Extension;
        m_bAble2Show = row->Able2Show;
        m_bAble2Save = row->Able2Save;
        if (m_bSigned) PassOver([&] { m_oFile = CreateFileObject(m_lId); });
    } else {
        m_bKnownId = false;
        m_sName.clear();
        m_sExtension.clear();
    }
    bool result = false;
    if (m_oFile) {
        PassOver([&] { result = m_oFile->Initialize(lpPathName, hDesDC, oLv); });
    } else {
        result = bytesRead == 8 && m_bSigned;
    }
    m_bResult = result;
    return result;
}

bool CNerhaltFiles::SaveAs() { return m_oFile ? m_oFile->SaveAs() : false; }

bool CNerhaltFiles::Show(int32_t hDesDC) { return m_oFile ? m_oFile->Show(hDesDC) : false; }

int32_t CNerhaltFiles::Width() { return m_oFile ? m_oFile->Width() : -1; }

int32_t CNerhaltFiles::Height() { return m_oFile ? m_oFile->Height() : -1; }

std::string CNerhaltFiles::Information() {
    if (m_oFile) return m_oFile->Information();
    if (!m_bSigned) return "Unknow File";
    if (m_bKnownId) return m_sName;
    char hex[16];
    std::snprintf(hex, sizeof hex, "%X", static_cast<uint32_t>(m_lId));
    return std::string("Unknow Nerhalt's File (0x") + hex + ")";
}

bool CNerhaltFiles::HideListView() const { return !(m_sExtension == "pak" && m_bKnownId); }
