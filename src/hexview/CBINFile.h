#pragma once
// The hex dump of any file in the report pane, a page of 256 bytes at a time,
// and the reader of whole text files for the text view. One object serves the
// whole run and is pointed at each new file in turn.
#include <cstdint>
#include <climits>
#include <string>

#include "platform/Files.h"

class ListView;
class IFileHost;

class CBINFile {
public:
    // Binds the object to the main window's scroll bar, whose changes repaint.
    explicit CBINFile(IFileHost& host);
    ~CBINFile();
    CBINFile(const CBINFile&) = delete;
    CBINFile& operator=(const CBINFile&) = delete;

    // Opens a file; the same path again changes nothing.
    bool Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv);
    // The extension of the current path.
    std::string Information();
    // Writes the page that the scroll bar stands on into the report pane;
    // true when all 256 bytes of it were read.
    bool Show(int32_t hDesDC);
    bool SaveAs() { return false; }
    // The whole file as text, one character per byte; on a failure the
    // error's number as text. With a limit, no more than that many bytes are
    // read: the text view asks for one byte more than its pane can hold, since
    // a longer text is cut anyway, and so a huge file costs no more memory.
    std::string ReadAll(std::string& lpPathName, int64_t limit = INT64_MAX);

    int64_t FileLength() const { return m_lFileLength; }

private:
    void m_oVScroll_Change();

    IFileHost& host_;
    HFILE m_hFile = 0;
    int32_t m_hDesDC = 0;
    ListView* m_oLv = nullptr;
    std::string m_sPathName;
    int64_t m_lFileLength = 0;
    unsigned char m_abPage[513] = {};
    int32_t changeToken_ = 0;
    // A scroll event that arrives while a page is being drawn is taken up
    // when that drawing ends.
    bool showing_ = false;
    bool showAgain_ = false;
};
