#include "pak/CPAKFile.h"

#include "controls/ListView.h"
#include "identify/modGlobal.h"
#include "platform/Runtime.h"

CPAKFile::~CPAKFile() {
    m_oLv = nullptr;
    if (m_hFile != 0) _lclose(m_hFile);
}

// Reads up to four little-endian bytes into a field and gives the number read.
// Bytes that the file doesn't have keep what the field held.
int32_t CPAKFile::ReadLong(int32_t& lValue) {
    uint8_t bytes[4];
    int32_t n = _lread(m_hFile, bytes, 4);
    if (n <= 0) return 0;
    auto value = static_cast<uint32_t>(lValue);
    for (int32_t i = 0; i < n; ++i) {
        value &= ~(0xFFu << (8 * i));
        value |= static_cast<uint32_t>(bytes[i]) << (8 * i);
    }
    lValue = static_cast<int32_t>(value);
    return n;
}

bool CPAKFile::Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) {
    m_oLv = oLv;
    m_hDesDC = hDesDC;
    if (lpPathName == m_sPathName) return true;
    m_sPathName = lpPathName;
    if (m_hFile != 0) _lclose(m_hFile);
    m_hFile = _lopen(lpPathName, OF_READ);
    if (m_hFile <= 0) return false;
    int32_t lRead = ReadLong(m_tHeader.lSignature);
    lRead += ReadLong(m_tHeader.lFormatId);
    lRead += ReadLong(m_tHeader.lField2);
    lRead += ReadLong(m_tHeader.lField3);
    lRead += ReadLong(m_tHeader.lMemberCount);
    m_bValid = lRead == 20 && m_tHeader.lFormatId == kPakFormatId;
    return m_bValid;
}

std::string CPAKFile::Information() { return m_bValid ? "DCL Imploding Packed File" : std::string(); }

bool CPAKFile::Show(int32_t hDesDC) {
    if (m_bShown) return false;
    if (m_hFile == 0) {
        m_bShown = true;
        return false;
    }
    if (m_oLv == nullptr) return false;
    m_oLv->Clear();
    // A name may not run past the end of the file: with a damaged directory
    // the count would otherwise go on asking for bytes that aren't there.
    int64_t lFileEnd = -1;
    try {
        lFileEnd = FileLen(m_sPathName);
    } catch (const RuntimeError&) {
        lFileEnd = _llseek(m_hFile, 0, FILE_END);
    }
    _llseek(m_hFile, 20, FILE_BEGIN);
    int32_t lNameLength = 0;
    int32_t lOffset = 0;
    int32_t lPackedSize = 0;
    int32_t lOriginalSize = 0;
    std::string sName;
    for (int32_t i = 0; i < m_tHeader.lMemberCount; ++i) {
        if (ReadLong(lNameLength) != 4) {
            m_oLv->Refresh();
            return false;
        }
        sName.clear();
        if (lNameLength > 0) {
            const int64_t lHere = _llseek(m_hFile, 0, FILE_CURRENT);
            if (lHere < 0 || lNameLength > lFileEnd - lHere) {
                m_oLv->Refresh();
                return false;
            }
            sName.resize(static_cast<size_t>(lNameLength));
            int32_t n = _lread(m_hFile, sName.data(), lNameLength);
            sName.resize(n > 0 ? static_cast<size_t>(n) : 0);
        }
        ReadLong(lOffset);
        ReadLong(lPackedSize);
        ReadLong(lOriginalSize);
        ListItem& oItem = m_oLv->Add(sName);
        oItem.Tag = lOffset;
        oItem.SubItems(3) = GetFileExt(sName);
        oItem.SubItems(1) = PadSize(lPackedSize);
        oItem.SubItems(2) = PadSize(lOriginalSize);
    }
    m_bShown = true;
    m_oLv->Refresh();
    return false;
}

bool CPAKFile::SaveAs() { return false; }
