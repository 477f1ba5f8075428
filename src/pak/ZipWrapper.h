#pragma once
// The one-entry ZIP file that carries a raw PKWare DCL implode stream to the
// external archiver (compression method 10, CRC 0, a fixed date and time),
// and UnpakMember, which cuts one member out of a PAK into a folder.
#include <array>
#include <cstdint>
#include <string>

#include "platform/Files.h"

// The constant parts of a wrapper, filled once by FillZipTemplates at the
// main window's start and never changed afterwards.
extern std::array<uint8_t, 18> g_abZipLocalHead;
extern std::array<uint8_t, 20> g_abZipCentralHead;
extern std::array<uint8_t, 16> g_abZipCentralTail;
extern std::array<uint8_t, 12> g_abZipEndHead;

void FillZipTemplates();

// Length of the wrapper of a stream of P bytes under a name of L bytes.
constexpr int64_t ZipWrapperLength(int64_t L, int64_t P) { return 98 + 2 * L + P; }

// Writes a whole wrapper to an open file, one write per part: the local
// header, the stream, the central header and the end record. L is the length
// of abName; L + 46 is computed in 16 bits and L + P + 30 in 32 bits, and an
// overflow of either raises the runtime's error 6 at the point where that
// value is due, so the parts before it are already written. A short write
// raises error 61.
void WriteZipWrapper(HFILE hFile, const std::string& abName, int32_t L, int32_t lPackedSize,
                     int32_t lOriginalSize, const uint8_t* abStream);

// Writes one member of the PAK at sPakPath into sDestFolder (which ends in a
// separator): a stored member (P equal to O) as its plain bytes under sName, a
// compressed one as the wrapper sName + ".zip". True when that file was
// written. A name that would leave sDestFolder is refused (false) before
// anything is touched; a backslash in sName is a folder separator, and a
// folder that doesn't exist makes the write fail. The file is written under a
// temporary name and renamed into place when whole; nothing is written onto
// a file that the running operation uses (RunFileGuard), and the folders
// below sDestFolder are walked without following links.
bool UnpakMember(const std::string& sDestFolder, const std::string& sPakPath, const std::string& sName,
                 int32_t lPackedSize, int32_t lOriginalSize, int32_t lOffset);
