#include "pak/CPAKFile.h"

#include <memory>
#include <new>

#include "controls/ListView.h"
#include "identify/modGlobal.h"
#include "pak/ZipWrapper.h"
#include "platform/FileDialogs.h"
#include "platform/LittleEndian.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"
#include "winsupport/cCommonDialog.h"

CPAKFile::~CPAKFile() {
    m_oLv = nullptr;
    if (m_hFile != 0) _lclose(m_hFile);
}

bool CPAKFile::Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) {
    m_oLv = oLv;
    m_hDesDC = hDesDC;
    if (lpPathName == m_sPathName) return true;
    m_sPathName = lpPathName;
    if (m_hFile != 0) _lclose(m_hFile);
    m_hFile = _lopen(lpPathName, OF_READ);
    if (m_hFile <= 0) return false;
    int32_t lRead = ReadLong(m_hFile, m_tHeader.lSignature);
    lRead += ReadLong(m_hFile, m_tHeader.lFormatId);
    lRead += ReadLong(m_hFile, m_tHeader.lField2);
    lRead += ReadLong(m_hFile, m_tHeader.lField3);
    lRead += ReadLong(m_hFile, m_tHeader.lMemberCount);
    m_bValid = lRead == 20 && m_tHeader.lFormatId == kPakFormatId;
    return m_bValid;
}

std::string CPAKFile::Information() { return m_bValid ? "DCL Imploding Packed File" : std::string(); }

int64_t CPAKFile::FileEnd() const {
    // A PAK too large for 32-bit positions holds whatever its 32-bit offsets
    // can name.
    const int32_t lEnd = _llseek(m_hFile, 0, FILE_END);
    return lEnd < 0 ? INT64_MAX : lEnd;
}

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
    const int64_t lFileEnd = FileEnd();
    _llseek(m_hFile, 20, FILE_BEGIN);
    int32_t lNameLength = 0;
    int32_t lOffset = 0;
    int32_t lPackedSize = 0;
    int32_t lOriginalSize = 0;
    std::string sName;
    for (int32_t i = 0; i < m_tHeader.lMemberCount; ++i) {
        if (ReadLong(m_hFile, lNameLength) != 4) {
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
        ReadLong(m_hFile, lOffset);
        ReadLong(m_hFile, lPackedSize);
        ReadLong(m_hFile, lOriginalSize);
        // The item keeps the numbers as numbers and the extension as a mark
        // on its name; they become the padded texts when they are read.
        ListItem& oItem = m_oLv->Add(sName);
        oItem.Tag = lOffset;
        oItem.SetSubItemExtension(3);
        oItem.SetSubItemNumber(1, lPackedSize);
        oItem.SetSubItemNumber(2, lOriginalSize);
    }
    m_bShown = true;
    m_oLv->Refresh();
    return false;
}

bool CPAKFile::SaveAs() {
    SaveMember();
    return false;
}

// Saves the selected member: a stored one as its bytes, a compressed one as a
// ZIP wrapper under the first filter or as the bare stream under the second.
// The file is written under a temporary name and takes the place of an older
// one only when it is whole, so a full disk leaves the older file as it was.
PakMemberSave CPAKFile::SaveMember() {
    if (m_oLv == nullptr || m_hFile <= 0) return PakMemberSave::NoSelection;
    ListItem* oItem = m_oLv->SelectedItem();
    if (oItem == nullptr) return PakMemberSave::NoSelection;
    HFILE hOut = 0;
    // A number of the item that can't be read ends the save as a member that
    // can't be read.
    PakMemberSave outcome = PakMemberSave::Unreadable;
    const PakMemberSave saved = PassOver([&] {
        const std::string abName = oItem->Text;
        const int16_t L = VbToInteger(static_cast<int64_t>(abName.size()));
        const int32_t lPackedSize = VbCLng(oItem->SubItems(1));
        const int32_t lOriginalSize = VbCLng(oItem->SubItems(2));
        const bool bStored = lPackedSize == lOriginalSize;

        cCommonDialog& oDialog = CommonDialog();
        // The path must exist; the replace question below is the class's own.
        oDialog.Setflags(static_cast<int32_t>(OFN_PATHMUSTEXIST));
        oDialog.SetFilter(bStored ? "All Files (*.*)|*.*" : "Zip File (*.zip)|*.zip|PKWare DCL Imploding|*.*");
        oDialog.SetCancelError(true);
        oDialog.SetFilename(abName);
        oDialog.SetFilterIndex(1);
        oDialog.Sethwnd(host_.OwnerWindow());
        outcome = PakMemberSave::Cancelled;
        oDialog.ShowSave();
        const std::string sTarget = oDialog.Filename();
        const bool bWrapper = !bStored && oDialog.FilterIndex() == 1;

        outcome = PakMemberSave::Declined;
        if (FileExists(sTarget) &&
            MsgBox(sTarget + " already exist.\r\nDo you want to replace it?", vbYesNo) == vbNo)
            return outcome;

        // The directory's numbers may be damaged: a member that the PAK can't
        // hold ends the save before any memory is taken for it.
        outcome = PakMemberSave::Unreadable;
        const int32_t lOffset = oItem->Tag;
        if (lPackedSize < 0 || lOffset < 0 || static_cast<int64_t>(lOffset) + lPackedSize > FileEnd())
            return outcome;
        std::unique_ptr<uint8_t[]> abData(new uint8_t[static_cast<size_t>(lPackedSize)]);
        if (_llseek(m_hFile, lOffset, FILE_BEGIN) != lOffset) return outcome;
        if (_lread(m_hFile, abData.get(), lPackedSize) != lPackedSize) return outcome;

        // An older file is replaced by the rename at the commit; the PAK's own
        // handle goes on reading the file it opened, also when the member is
        // saved over the PAK itself.
        outcome = PakMemberSave::OpenFailed;
        hOut = CreateReplacement(sTarget);
        if (hOut <= 0) {
            hOut = 0;
            return outcome;
        }
        outcome = PakMemberSave::WriteFailed;
        // Under the second filter a compressed member goes out as the stream
        // alone, with no ZIP record before or behind it, so that any DCL
        // decoder takes the file as it stands.
        if (bWrapper) {
            WriteZipWrapper(hOut, abName, L, lPackedSize, lOriginalSize, abData.get());
        } else if (lPackedSize > 0 && _lwrite(hOut, abData.get(), lPackedSize) != lPackedSize) {
            RaiseError(vbErrDiskFull);
        }
        const HFILE hDone = hOut;
        hOut = 0;
        return CommitReplacement(hDone) ? PakMemberSave::Written : outcome;
    }, outcome);
    // Closing an uncommitted replacement throws it away.
    if (hOut > 0) _lclose(hOut);
    return saved;
}
