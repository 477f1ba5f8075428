#include "hexview/CBINFile.h"

#include <algorithm>

#include "hexview/HexPage.h"
#include "identify/modGlobal.h"
#include "platform/Runtime.h"
#include "identify/IFileHost.h"

CBINFile::CBINFile(IFileHost& host) : host_(host) {
    changeToken_ = host_.PageBar().Change.Connect([this] { m_oVScroll_Change(); });
}

CBINFile::~CBINFile() {
    host_.PageBar().Change.Disconnect(changeToken_);
    if (m_hFile > 0) _lclose(m_hFile);
}

void CBINFile::m_oVScroll_Change() { Show(0); }

bool CBINFile::Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) {
    m_oLv = oLv;
    m_hDesDC = hDesDC;
    if (lpPathName == m_sPathName) return true;
    // Still shows the old file if the bar moves here.
    PassOver([&] { host_.PageBar().SetValue(0); });
    m_sPathName = lpPathName;
    if (m_hFile > 0) _lclose(m_hFile);
    m_hFile = _lopen(lpPathName, OF_READ);
    if (m_hFile > 0) {
        m_lFileLength = PassOver([&] { return FileLen(lpPathName); }, decltype(m_lFileLength){0});
        return true;
    }
    return false;
}

std::string CBINFile::Information() { return GetFileExt(m_sPathName); }

bool CBINFile::Show(int32_t hDesDC) {
    if (m_hFile <= 0) return false;
    if (showing_) {
        showAgain_ = true;
        return false;
    }
    showing_ = true;
    bool complete = false;
    do {
        showAgain_ = false;
        PassOver([&] {
            host_.ReportPane().SetText({});
            host_.PageBar().SetMax(HexLastPage(m_lFileLength));
            int64_t offset = static_cast<int64_t>(host_.PageBar().Value()) * kHexPageBytes;
            complete = false;
            if (_llseek(m_hFile, static_cast<int32_t>(offset), FILE_BEGIN) >= 0)
                complete = _lread(m_hFile, m_abPage, kHexPageBytes) == kHexPageBytes;
            host_.ReportPane().SetText(FormatHexPage(m_abPage, offset, m_lFileLength));
        });
        DoEvents();
    } while (showAgain_);
    showing_ = false;
    return complete;
}

std::string CBINFile::ReadAll(std::string& lpPathName, int64_t limit) {
    lpPathName = VbReplace(lpPathName, "//", "/");
    int16_t number = 0;
    try {
        number = FreeFile();
        VbOpen(number, lpPathName, VbOpenMode::Input);
        std::string text = VbGet(number, std::min(VbLOF(number), limit));
        VbClose(number);
        return text;
    } catch (const RuntimeError& e) {
        if (number != 0) {
            PassOver([&] { VbClose(number); });
        }
        return std::to_string(e.Number);
    }
}
