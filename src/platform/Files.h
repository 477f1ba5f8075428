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

// Opens an existing regular file; mode OF_READ, OF_WRITE or OF_READWRITE. A
// folder, a named pipe, a socket or a device is not a file and can't be opened;
// the open never blocks on one.
HFILE _lopen(const std::string& path, int32_t mode);
// Reads up to `count` bytes; gives the number read (0 at the end of the file),
// or HFILE_ERROR for a bad handle.
int32_t _lread(HFILE h, void* buffer, int32_t count);
// Writes `count` bytes; gives the number written or HFILE_ERROR.
int32_t _lwrite(HFILE h, const void* buffer, int32_t count);
// Moves the position; gives the new position or HFILE_ERROR.
int32_t _llseek(HFILE h, int32_t offset, int32_t origin);
// Closes; gives 0, or HFILE_ERROR for a bad handle. Closing a replacement
// (below) that was never committed throws it away.
HFILE _lclose(HFILE h);

// A file is replaced only by a whole new one. CreateReplacement makes a new,
// empty file under a temporary name in the folder of `path` (created
// exclusively, never through a link) and gives a handle for _lwrite;
// CommitReplacement renames it over `path` when every write succeeded, so the
// old file stays whole until the new one is. A failed write, a failed commit
// or a close without commit leaves the old file as it was and no temporary.
//
// With `within` (a folder ending in a separator, of which `path` must be a
// part) the folders between `within` and the file are opened one by one
// without following links: a link planted inside the destination of an
// extraction can't lead a write out of it. No replacement lands on a file
// that the running operation uses (see RunFileGuard).
HFILE CreateReplacement(const std::string& path, const std::string& within = {});
// Closes the handle and, when it is whole, renames the file into place. True
// when the file now stands under its final name.
bool CommitReplacement(HFILE h);
// The identity (device and inode) of the file that a handle has open.
bool HandleIdentity(HFILE h, uint64_t& device, uint64_t& inode);

// Deletes a file inside `within` (which ends in a separator), walking the
// folders on the way without following links. Refuses a file that the running
// operation uses.
bool DeleteFileWithin(const std::string& within, const std::string& path);

// The files that a running operation itself reads or writes (the archive it
// unpacks, its command file): while a guard stands, no replacement or delete
// of this module lands on such a file, whether it is named by the same path
// after "." and doubled separators are resolved, or is the same file by
// device and inode.
class RunFileGuard {
public:
    explicit RunFileGuard(const std::string& path);
    ~RunFileGuard();
    RunFileGuard(const RunFileGuard&) = delete;
    RunFileGuard& operator=(const RunFileGuard&) = delete;
    // Takes the identity of the file now at the path (after it was created),
    // or the identity of a file that is still being written.
    void Refresh();
    void Refresh(uint64_t device, uint64_t inode);

private:
    size_t slot_;
};
// True when `path` is one of the guarded files, by name or by identity.
bool IsRunFile(const std::string& path);
// True when `path` names the file of that identity, not through a link.
bool IsSameFile(const std::string& path, uint64_t device, uint64_t inode);
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
// match (vbDirectory, vbHidden). Gives the name, or an empty text. A path
// without wildcards costs one stat; a pattern is matched while the folder is
// read, in the folder's own order, and Dir() without a path gives the next
// match of the same scan.
std::string Dir(const std::string& pattern, int32_t attributes = vbNormal);
std::string Dir();

// One entry of a folder listing.
struct DirEntry {
    std::string name;
    bool isDirectory = false;
};
// The entries of a folder, without "." and "..", sorted by name; false when the
// folder can't be read.
bool ListDirectory(const std::string& folder, std::vector<DirEntry>& out);
// True for an existing entry of any kind, by one stat.
bool PathExists(const std::string& path);
// True for an existing folder.
bool IsDirectory(const std::string& path);
// Normalises a folder path: absolute, "." and ".." resolved, no trailing
// separator except for the root. Gives an empty text for an empty input.
std::string NormaliseFolder(const std::string& path);

// The runtime's numbered files ("Open ... For Output As #n").
enum class VbOpenMode { Input, Output, Append, Binary };
// The next free file number.
int16_t FreeFile();
// Opens a numbered file; raises the runtime's file errors. A file opened for
// Output is a replacement (see CreateReplacement): it takes the place of the
// old file at its close, and only when every write succeeded.
void VbOpen(int16_t number, const std::string& path, VbOpenMode mode);
// Opens a numbered file for Output as a replacement inside `within`.
void VbOpenWithin(int16_t number, const std::string& path, const std::string& within);
// Closes a numbered file; raises 52 when it is not open. Closing an Output
// file puts it in place, and raises 61 (or 75) when a write or the rename
// failed, in which case the old file stands as it was.
void VbClose(int16_t number);
// Closes a numbered Output file without putting it in place.
void VbDiscard(int16_t number);
// The identity (device and inode) of an open numbered file.
bool VbIdentity(int16_t number, uint64_t& device, uint64_t& inode);
// Writes a text and CR LF to a file opened for Output or Append.
void VbPrintLine(int16_t number, const std::string& text);
// Writes bytes at the current position of a Binary or Output file.
void VbPut(int16_t number, const std::string& bytes);
// Length of an open numbered file.
int64_t VbLOF(int16_t number);
// Reads `count` bytes from a Binary or Input file; short at the end.
std::string VbGet(int16_t number, int64_t count);
