#pragma once
// A reader of ZIP archives for the archiver quarrin-pkzip: it finds the
// entries through the end record and the central directory, checks each
// against its local header, and decodes the methods 0 (stored), 8 (deflate)
// and 10 (PKWare DCL implode). Every offset and size read from the archive
// is checked against the archive before it is used, and every method is
// decoded through buffers of a fixed size, whatever the entry's size.
#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

// Random access to the bytes of an archive.
class ZipSource {
public:
    virtual ~ZipSource() = default;
    virtual int64_t Size() const = 0;
    // Reads exactly `count` bytes at `offset`; false when they aren't all there.
    virtual bool ReadAt(int64_t offset, void* out, size_t count) const = 0;
};

class MemoryZipSource : public ZipSource {
public:
    MemoryZipSource(const void* data, size_t size) : data_(static_cast<const uint8_t*>(data)), size_(size) {}
    int64_t Size() const override { return static_cast<int64_t>(size_); }
    bool ReadAt(int64_t offset, void* out, size_t count) const override;

private:
    const uint8_t* data_;
    size_t size_;
};

class FileZipSource : public ZipSource {
public:
    FileZipSource() = default;
    ~FileZipSource() override;
    FileZipSource(const FileZipSource&) = delete;
    FileZipSource& operator=(const FileZipSource&) = delete;
    // Opens a file for reading; false with `error` set when it can't.
    bool Open(const std::string& path, std::string& error);
    int64_t Size() const override { return size_; }
    bool ReadAt(int64_t offset, void* out, size_t count) const override;

private:
    int fd_ = -1;
    int64_t size_ = 0;
};

inline constexpr uint16_t kZipStored = 0;
inline constexpr uint16_t kZipDeflated = 8;
inline constexpr uint16_t kZipImploded = 10;

struct ZipEntry {
    std::string Name;  // the bytes of the central directory's name
    uint16_t Flags = 0;
    uint16_t Method = 0;
    uint32_t Crc = 0;
    uint32_t CompressedSize = 0;
    uint32_t UncompressedSize = 0;
    uint32_t LocalHeaderOffset = 0;
    int64_t DataOffset = 0;
    // Why the entry can't be extracted (its local header disagrees, its data
    // lies outside the archive, ...); empty for a sound entry.
    std::string Damage;
};

// The largest output that a PKWare DCL implode stream of `compressedSize`
// bytes can produce.
int64_t MaxExplodedSize(int64_t compressedSize);

// Gives the entry's bytes in order, in pieces; answering false stops the
// extraction.
using ZipSink = std::function<bool(const uint8_t* data, size_t size)>;

class ZipReader {
public:
    // Reads the directory of an archive; false with `error` set when the end
    // record or the central directory is damaged, or when two entries share
    // bytes of the archive. Damage of one entry alone stands in that entry.
    bool Open(const ZipSource& source, std::string& error);
    const std::vector<ZipEntry>& Entries() const { return entries_; }
    // Decodes one entry into `sink`. The sink never receives more than the
    // entry's declared size; false with `error` set for a damaged entry, a
    // method or flag that isn't supported, a wrong size or a CRC that doesn't
    // match (a CRC of 0 means no check).
    bool Extract(const ZipEntry& entry, const ZipSink& sink, std::string& error) const;

private:
    bool RefuseOverlaps(std::string& error);

    const ZipSource* source_ = nullptr;
    int64_t dataEnd_ = 0;  // where the central directory begins
    std::vector<ZipEntry> entries_;
};

// The archiver's work, all of what quarrin-pkzip does and says: every entry
// of the archive at `zipPath` into `folder`, each file written under a
// temporary name and renamed when it is whole. An archive whose entries
// share bytes is refused before anything is written. Entry names that would
// leave the folder are refused; a backslash in a name is a folder separator,
// and missing sub-folders are made inside `folder`. An entry that fails
// leaves neither its temporary file nor the folders made for it, and SIGINT,
// SIGTERM or SIGHUP during the call (when their action is the default one)
// remove the temporary file before they end the process. Reports each entry
// on `out` and each problem on `err`, names with their control bytes and
// bytes from 0x7F up shown as \xNN, and closes a failure with a line on
// `err`. Gives true when every entry was written. Leaves no state behind, so
// one process may call it many times.
bool ExtractZipToFolder(const std::string& zipPath, const std::string& folder, std::ostream& out,
                        std::ostream& err);
