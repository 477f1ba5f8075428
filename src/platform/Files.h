#pragma once
// The kernel's file calls and the runtime's file statements, over POSIX.
// Handles are small positive integers; a failed open gives HFILE_ERROR (-1).
// Reads are buffered in user space, so reading a name byte by byte costs a
// function call and not a system call.
#include <cstdint>
#include <string>
#include <vector>

using HFILE = int32_t;
constexpr HFILE HFILE_ERROR = -1;

constexpr int32_t OF_READ = 0;
constexpr int32_t OF_WRITE = 1;
constexpr int32_t OF_READWRITE = 2;

constexpr int32_t FILE_BEGIN = 0;
constexpr int32_t FILE_CURRENT = 1;
constexpr int32_t FILE_END = 2;

// Opens an existing file; mode OF_READ, OF_WRITE or OF_READWRITE. A folder is
// not a file and can't be opened.
HFILE _lopen(const std::string& path, int32_t mode);
// Reads up to `count` bytes; gives the number read (0 at the end of the file),
// or HFILE_ERROR for a bad handle.
int32_t _lread(HFILE h, void* buffer, int32_t count);
// Writes `count` bytes; gives the number written or HFILE_ERROR.
int32_t _lwrite(HFILE h, const void* buffer, int32_t count);
// Moves the position; gives the new position or HFILE_ERROR.
int32_t _llseek(HFILE h, int32_t offset, int32_t origin);
// Closes; gives 0, or HFILE_ERROR for a bad handle.
HFILE _lclose(HFILE h);
// Deletes a file (never a folder); true on success.
bool DeleteFileA(const std::string& path);

// Number of handles currently open (for tests that look for leaks).
int32_t OpenHandleCount();

// File attributes, as the runtime gives them.
enum VbFileAttribute : int32_t {
    vbNormal = 0,
    vbReadOnly = 1,
    vbHidden = 2,
    vbSystem = 4,
    vbDirectory = 16,
    vbArchive = 32,
};

// Length of a file by its path; raises 53 when there is no such file.
int64_t FileLen(const std::string& path);
// Attributes of a path; raises 53 when it does not exist. A file has at least
// vbArchive, so an existing path never gives 0.
int32_t GetAttr(const std::string& path);
// The first entry matching a path whose last part may hold "*" and "?" (the
// directory scan), with `attributes` choosing what beyond plain files may
// match (vbDirectory, vbHidden). Gives the name, or an empty text.
std::string Dir(const std::string& pattern, int32_t attributes = vbNormal);

// One entry of a folder listing.
struct DirEntry {
    std::string name;
    bool isDirectory = false;
};
// The entries of a folder, without "." and "..", sorted by name; false when the
// folder can't be read.
bool ListDirectory(const std::string& folder, std::vector<DirEntry>& out);
// True for an existing folder.
bool IsDirectory(const std::string& path);
// Normalises a folder path: absolute, "." and ".." resolved, no trailing
// separator except for the root. Gives an empty text for an empty input.
std::string NormaliseFolder(const std::string& path);

// The runtime's numbered files ("Open ... For Output As #n").
enum class VbOpenMode { Input, Output, Append, Binary };
// The next free file number.
int16_t FreeFile();
// Opens a numbered file; raises the runtime's file errors.
void VbOpen(int16_t number, const std::string& path, VbOpenMode mode);
// Closes a numbered file; raises 52 when it is not open.
void VbClose(int16_t number);
// Writes a text and CR LF to a file opened for Output or Append.
void VbPrintLine(int16_t number, const std::string& text);
// Writes bytes at the current position of a Binary or Output file.
void VbPut(int16_t number, const std::string& bytes);
// Length of an open numbered file.
int64_t VbLOF(int16_t number);
// Reads `count` bytes from a Binary or Input file; short at the end.
std::string VbGet(int16_t number, int64_t count);
