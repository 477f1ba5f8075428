#pragma once
// The game's archive file: a 20-byte header, a directory of variable-length
// records, and the members' bytes. The class checks the header, lists the
// directory into the main window's list view (which is the only directory in
// memory from then on) and saves the selected member.
#include <cstdint>
#include <string>

#include "identify/CNerhaltFile.h"
#include "identify/IFileHost.h"
#include "platform/Files.h"

inline constexpr int32_t kPakFormatId = 0x097DD4D3;

struct PakHeader {
    int32_t lSignature = 0;
    int32_t lFormatId = 0;
    int32_t lField2 = 0;
    int32_t lField3 = 0;
    int32_t lMemberCount = 0;
};
// The 20-byte head of a PAK, read field by field.
static_assert(sizeof(PakHeader) == 20);

// How the save of a member ended. SaveAs tells its caller nothing; the
// command-line companion wants to know.
enum class PakMemberSave {
    NoSelection,   // no list, no file, or no item selected
    Cancelled,     // the dialog was cancelled
    Declined,      // the user would not replace an existing file
    Unreadable,    // the member's bytes are not all in the archive
    OpenFailed,    // the target could not be created
    WriteFailed,   // the target could not be written whole; an older file stands as it was
    Written,
};

class CPAKFile : public CNerhaltFile {
public:
    explicit CPAKFile(IFileHost& host) : host_(host) {}
    ~CPAKFile() override;
    CPAKFile(const CPAKFile&) = delete;
    CPAKFile& operator=(const CPAKFile&) = delete;

    bool Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) override;
    // Saves the selected member where the user chooses; always false.
    bool SaveAs() override;
    std::string Information() override;
    bool Show(int32_t hDesDC) override;
    int32_t Width() override { return -1; }
    int32_t Height() override { return -1; }

    // SaveAs, with the way it ended.
    PakMemberSave SaveMember();

    const PakHeader& Header() const { return m_tHeader; }
    // The listing ran to its end.
    bool Shown() const { return m_bShown; }

private:
    // Length of the open archive, by its handle: the file at the path may
    // since have been replaced by another.
    int64_t FileEnd() const;

    HFILE m_hFile = 0;
    int32_t m_hDesDC = 0;
    IFileHost& host_;
    ListView* m_oLv = nullptr;
    std::string m_sPathName;
    bool m_bValid = false;
    bool m_bShown = false;
    PakHeader m_tHeader;
};
