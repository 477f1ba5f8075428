#include "pak/ZipReader.h"

#include <StormLib.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <new>

#include "pak/BatchScript.h"
#include "pak/MemberPath.h"

namespace {

constexpr uint32_t kEndSignature = 0x06054B50;
constexpr uint32_t kCentralSignature = 0x02014B50;
constexpr uint32_t kLocalSignature = 0x04034B50;
constexpr size_t kEndSize = 22;
constexpr size_t kCentralSize = 46;
constexpr size_t kLocalSize = 30;
constexpr size_t kChunk = 64 * 1024;

uint16_t Get16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }
uint32_t Get32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) | (static_cast<uint32_t>(p[2]) << 16) |
           (static_cast<uint32_t>(p[3]) << 24);
}

// Bit 0 is encryption, bit 6 strong encryption, bit 13 a masked directory.
constexpr uint16_t kEncryptedFlags = 0x0001 | 0x0040 | 0x2000;
// Bit 3: the sizes and CRC follow the data and the local header holds zeros.
constexpr uint16_t kDataDescriptorFlag = 0x0008;

}  // namespace

bool MemoryZipSource::ReadAt(int64_t offset, void* out, size_t count) const {
    if (offset < 0 || static_cast<uint64_t>(offset) > size_ || count > size_ - static_cast<size_t>(offset))
        return false;
    if (count != 0) std::memcpy(out, data_ + offset, count);
    return true;
}

FileZipSource::~FileZipSource() {
    if (fd_ >= 0) ::close(fd_);
}

bool FileZipSource::Open(const std::string& path, std::string& error) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) {
        error = std::strerror(errno);
        return false;
    }
    struct stat st {};
    if (::fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode)) {
        error = "not a file";
        ::close(fd_);
        fd_ = -1;
        return false;
    }
    size_ = st.st_size;
    return true;
}

bool FileZipSource::ReadAt(int64_t offset, void* out, size_t count) const {
    if (fd_ < 0 || offset < 0 || offset > size_ || static_cast<int64_t>(count) > size_ - offset) return false;
    auto* p = static_cast<uint8_t*>(out);
    size_t done = 0;
    while (done < count) {
        ssize_t n = ::pread(fd_, p + done, count - done, offset + static_cast<int64_t>(done));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

int64_t MaxExplodedSize(int64_t compressedSize) {
    // After its two header bytes, the densest thing an implode stream can say
    // is a copy of 518 bytes, which costs at least 22 bits: a flag bit, 7 bits
    // of length code and 8 extra bits, and 6 bits of distance. So a stream
    // yields fewer than 24 bytes per bit it holds.
    if (compressedSize < 2) return 0;
    return (compressedSize - 2) * 8 * 24 + 518;
}

bool ZipReader::Open(const ZipSource& source, std::string& error) {
    source_ = &source;
    entries_.clear();
    const int64_t size = source.Size();
    if (size < static_cast<int64_t>(kEndSize)) {
        error = "too short for a ZIP archive";
        return false;
    }
    // The end record stands in the last 22 bytes plus at most a 65535-byte
    // comment. The last signature whose comment ends exactly at the end of
    // the archive wins; failing that, the last one whose comment fits.
    const int64_t tailSize = std::min<int64_t>(size, kEndSize + 0xFFFF);
    std::vector<uint8_t> tail(static_cast<size_t>(tailSize));
    if (!source.ReadAt(size - tailSize, tail.data(), tail.size())) {
        error = "the archive can't be read";
        return false;
    }
    int64_t endAt = -1;
    int64_t looseAt = -1;
    for (int64_t i = tailSize - static_cast<int64_t>(kEndSize); i >= 0; --i) {
        const uint8_t* p = tail.data() + i;
        if (Get32(p) != kEndSignature) continue;
        int64_t commentEnd = i + static_cast<int64_t>(kEndSize) + Get16(p + 20);
        if (commentEnd == tailSize) {
            endAt = i;
            break;
        }
        if (commentEnd <= tailSize && looseAt < 0) looseAt = i;
    }
    if (endAt < 0) endAt = looseAt;
    if (endAt < 0) {
        error = "no end of central directory record: not a ZIP archive, or cut short";
        return false;
    }
    const uint8_t* end = tail.data() + endAt;
    const int64_t endOffset = size - tailSize + endAt;
    const uint16_t disk = Get16(end + 4);
    const uint16_t cdDisk = Get16(end + 6);
    const uint16_t entriesHere = Get16(end + 8);
    const uint16_t entriesTotal = Get16(end + 10);
    const uint32_t cdSize = Get32(end + 12);
    const uint32_t cdOffset = Get32(end + 16);
    if (disk != 0 || cdDisk != 0 || entriesHere != entriesTotal) {
        error = "archives spread over several disks are not supported";
        return false;
    }
    if (cdSize == 0xFFFFFFFF || cdOffset == 0xFFFFFFFF) {
        error = "ZIP64 archives are not supported";
        return false;
    }
    if (static_cast<int64_t>(cdOffset) + cdSize > endOffset) {
        error = "the central directory lies outside the archive";
        return false;
    }
    if (static_cast<uint64_t>(entriesTotal) * kCentralSize > cdSize) {
        error = "the central directory is too small for its " + std::to_string(entriesTotal) + " entries";
        return false;
    }
    std::vector<uint8_t> cd(cdSize);
    if (!source.ReadAt(cdOffset, cd.data(), cd.size())) {
        error = "the central directory can't be read";
        return false;
    }
    dataEnd_ = cdOffset;
    entries_.reserve(entriesTotal);
    size_t pos = 0;
    for (uint32_t i = 0; i < entriesTotal; ++i) {
        if (cd.size() - pos < kCentralSize || Get32(cd.data() + pos) != kCentralSignature) {
            error = "central directory entry " + std::to_string(i + 1) + " is damaged";
            entries_.clear();
            return false;
        }
        const uint8_t* c = cd.data() + pos;
        const size_t nameLength = Get16(c + 28);
        const size_t extraLength = Get16(c + 30);
        const size_t commentLength = Get16(c + 32);
        const size_t recordSize = kCentralSize + nameLength + extraLength + commentLength;
        if (cd.size() - pos < recordSize) {
            error = "central directory entry " + std::to_string(i + 1) + " runs past the directory";
            entries_.clear();
            return false;
        }
        ZipEntry e;
        e.Flags = Get16(c + 8);
        e.Method = Get16(c + 10);
        e.Crc = Get32(c + 16);
        e.CompressedSize = Get32(c + 20);
        e.UncompressedSize = Get32(c + 24);
        e.LocalHeaderOffset = Get32(c + 42);
        e.Name.assign(reinterpret_cast<const char*>(c + kCentralSize), nameLength);
        pos += recordSize;

        // The local header must tell the same story as the central one.
        uint8_t local[kLocalSize];
        if (static_cast<int64_t>(e.LocalHeaderOffset) + static_cast<int64_t>(kLocalSize) > dataEnd_ ||
            !source.ReadAt(e.LocalHeaderOffset, local, kLocalSize) || Get32(local) != kLocalSignature) {
            e.Damage = "no local header at the offset the central directory gives";
        } else {
            const size_t localNameLength = Get16(local + 26);
            const size_t localExtraLength = Get16(local + 28);
            e.DataOffset = static_cast<int64_t>(e.LocalHeaderOffset) + static_cast<int64_t>(kLocalSize) +
                           static_cast<int64_t>(localNameLength) + static_cast<int64_t>(localExtraLength);
            std::string localName(localNameLength, '\0');
            if (e.DataOffset > dataEnd_ ||
                !source.ReadAt(e.LocalHeaderOffset + kLocalSize, localName.data(), localNameLength)) {
                e.Damage = "the local header runs past the data";
            } else if (localName != e.Name) {
                e.Damage = "the local header names another file";
            } else if (Get16(local + 8) != e.Method) {
                e.Damage = "the local header gives another method";
            } else if (!(e.Flags & kDataDescriptorFlag) &&
                       (Get32(local + 14) != e.Crc || Get32(local + 18) != e.CompressedSize ||
                        Get32(local + 22) != e.UncompressedSize)) {
                e.Damage = "the local header gives other sizes or another CRC";
            } else if (e.DataOffset + e.CompressedSize > dataEnd_) {
                e.Damage = "the data runs past the end of the archive's data";
            }
        }
        entries_.push_back(std::move(e));
    }
    return true;
}

bool ZipReader::Extract(const ZipEntry& entry, const ZipSink& sink, std::string& error) const {
    if (source_ == nullptr) {
        error = "no archive";
        return false;
    }
    if (!entry.Damage.empty()) {
        error = entry.Damage;
        return false;
    }
    if (entry.Flags & kEncryptedFlags) {
        error = "encrypted entries are not supported";
        return false;
    }
    uLong crc = crc32(0L, Z_NULL, 0);
    uint64_t produced = 0;
    auto give = [&](const uint8_t* data, size_t n) {
        if (n == 0) return true;
        crc = crc32(crc, data, static_cast<uInt>(n));
        produced += n;
        return sink(data, n);
    };
    const char* const kSinkStopped = "the output could not be written";

    switch (entry.Method) {
        case kZipStored: {
            if (entry.CompressedSize != entry.UncompressedSize) {
                error = "a stored entry whose two sizes differ";
                return false;
            }
            std::vector<uint8_t> buf(std::min<size_t>(kChunk, entry.CompressedSize));
            for (uint32_t done = 0; done < entry.CompressedSize;) {
                size_t n = std::min<size_t>(buf.size(), entry.CompressedSize - done);
                if (!source_->ReadAt(entry.DataOffset + done, buf.data(), n)) {
                    error = "the data can't be read";
                    return false;
                }
                if (!give(buf.data(), n)) {
                    error = kSinkStopped;
                    return false;
                }
                done += static_cast<uint32_t>(n);
            }
            break;
        }
        case kZipDeflated: {
            // Deflate can't expand more than 1032 to 1.
            if (static_cast<uint64_t>(entry.UncompressedSize) > static_cast<uint64_t>(entry.CompressedSize) * 1032 + 1024) {
                error = "the declared size is more than the data can hold";
                return false;
            }
            z_stream z{};
            if (inflateInit2(&z, -MAX_WBITS) != Z_OK) {
                error = "the deflate decoder could not start";
                return false;
            }
            std::vector<uint8_t> in(kChunk), out(kChunk);
            uint32_t consumed = 0;
            int rc = Z_OK;
            bool ok = true;
            while (ok && rc != Z_STREAM_END) {
                if (z.avail_in == 0) {
                    size_t n = std::min<size_t>(in.size(), entry.CompressedSize - consumed);
                    if (n == 0) {
                        error = "the deflate stream ends early";
                        ok = false;
                        break;
                    }
                    if (!source_->ReadAt(entry.DataOffset + consumed, in.data(), n)) {
                        error = "the data can't be read";
                        ok = false;
                        break;
                    }
                    consumed += static_cast<uint32_t>(n);
                    z.next_in = in.data();
                    z.avail_in = static_cast<uInt>(n);
                }
                z.next_out = out.data();
                z.avail_out = static_cast<uInt>(out.size());
                rc = inflate(&z, Z_NO_FLUSH);
                if (rc != Z_OK && rc != Z_STREAM_END && rc != Z_BUF_ERROR) {
                    error = std::string("the deflate stream is damaged") + (z.msg ? std::string(": ") + z.msg : "");
                    ok = false;
                    break;
                }
                size_t n = out.size() - z.avail_out;
                if (produced + n > entry.UncompressedSize) {
                    error = "the deflate stream holds more than the declared size";
                    ok = false;
                    break;
                }
                if (!give(out.data(), n)) {
                    error = kSinkStopped;
                    ok = false;
                    break;
                }
                if (rc == Z_BUF_ERROR && n == 0 && z.avail_in != 0) {
                    error = "the deflate stream is damaged";
                    ok = false;
                }
            }
            inflateEnd(&z);
            if (!ok) return false;
            break;
        }
        case kZipImploded: {
            if (entry.UncompressedSize == 0) break;
            if (static_cast<int64_t>(entry.UncompressedSize) > MaxExplodedSize(entry.CompressedSize) ||
                std::max(entry.UncompressedSize, entry.CompressedSize) > static_cast<uint32_t>(INT_MAX) - 2) {
                error = "the declared size is more than an implode stream of " +
                        std::to_string(entry.CompressedSize) + " bytes can produce";
                return false;
            }
            std::unique_ptr<uint8_t[]> in(new (std::nothrow) uint8_t[entry.CompressedSize]);
            if (!in || !source_->ReadAt(entry.DataOffset, in.get(), entry.CompressedSize)) {
                error = "the data can't be read";
                return false;
            }
            // Room for one byte more than declared shows a stream that says
            // more than its header. The decoder also wants an output buffer
            // longer than its input: it refuses a shorter one and copies the
            // input unchanged into one of the same length.
            const int capacity =
                static_cast<int>(std::max(entry.UncompressedSize, entry.CompressedSize)) + 1;
            std::unique_ptr<uint8_t[]> out(new (std::nothrow) uint8_t[static_cast<size_t>(capacity)]);
            if (!out) {
                error = "not enough memory for " + std::to_string(entry.UncompressedSize) + " bytes";
                return false;
            }
            int length = capacity;
            if (SCompExplode(out.get(), &length, in.get(), static_cast<int>(entry.CompressedSize)) == 0) {
                error = "the implode stream is damaged";
                return false;
            }
            if (length != static_cast<int>(entry.UncompressedSize)) {
                error = "the implode stream gives " + std::string(length > static_cast<int>(entry.UncompressedSize) ? "more" : "fewer") +
                        " bytes than the declared " + std::to_string(entry.UncompressedSize);
                return false;
            }
            if (!give(out.get(), static_cast<size_t>(length))) {
                error = kSinkStopped;
                return false;
            }
            break;
        }
        default:
            error = "compression method " + std::to_string(entry.Method) + " is not supported";
            return false;
    }
    if (produced != entry.UncompressedSize) {
        error = "the data gives " + std::to_string(produced) + " bytes, not the declared " +
                std::to_string(entry.UncompressedSize);
        return false;
    }
    if (entry.Crc != 0 && static_cast<uint32_t>(crc) != entry.Crc) {
        error = "CRC error: the data is damaged";
        return false;
    }
    return true;
}

namespace {

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

// Makes the folders of `parts` below `folder`, one by one. A part that exists
// must be a real folder: a symbolic link on the way could lead the write out.
bool MakeFolders(const std::string& folder, const std::vector<std::string>& parts, std::string& error) {
    std::string path = folder;
    for (const std::string& part : parts) {
        if (part.empty() || part == ".") continue;
        path += "/" + part;
        struct stat st {};
        if (::lstat(path.c_str(), &st) == 0) {
            if (!S_ISDIR(st.st_mode)) {
                error = path + " is in the way and is not a folder";
                return false;
            }
            continue;
        }
        if (::mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) {
            error = "can't make the folder " + path + ": " + std::strerror(errno);
            return false;
        }
    }
    return true;
}

std::vector<std::string> SplitName(const std::string& name) {
    std::vector<std::string> parts(1);
    for (char c : name) {
        if (IsSeparator(c)) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

// Writes one entry: into a new file with a temporary name in the target's
// folder, renamed to its name only when it is whole, so that no part of a
// damaged entry ever stands under the entry's name.
bool WriteEntry(const ZipReader& reader, const ZipEntry& entry, const std::string& folder, std::string& error) {
    std::vector<std::string> parts = SplitName(entry.Name);
    std::string leaf = parts.back();
    parts.pop_back();
    if (!MakeFolders(folder, parts, error)) return false;
    std::string parent = folder;
    for (const std::string& part : parts)
        if (!part.empty() && part != ".") parent += "/" + part;
    const std::string target = parent + "/" + leaf;

    std::string temp;
    int fd = -1;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        temp = parent + "/.quarrin-pkzip-" + std::to_string(::getpid()) + "-" + std::to_string(attempt) + ".part";
        fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (fd < 0 && errno != EEXIST) break;
    }
    if (fd < 0) {
        error = "can't create a file in " + parent + ": " + std::strerror(errno);
        return false;
    }
    bool ok = reader.Extract(
        entry,
        [&](const uint8_t* data, size_t size) {
            while (size > 0) {
                ssize_t n = ::write(fd, data, size);
                if (n < 0 && errno == EINTR) continue;
                if (n <= 0) {
                    error = std::string("write failed: ") + std::strerror(errno);
                    return false;
                }
                data += n;
                size -= static_cast<size_t>(n);
            }
            return true;
        },
        error);
    if (::close(fd) != 0 && ok) {
        error = std::string("write failed: ") + std::strerror(errno);
        ok = false;
    }
    if (ok && ::rename(temp.c_str(), target.c_str()) != 0) {
        error = "can't write " + target + ": " + std::strerror(errno);
        ok = false;
    }
    if (!ok) ::unlink(temp.c_str());
    return ok;
}

}  // namespace

bool ExtractZipToFolder(const std::string& zipPath, const std::string& folder, std::ostream& out,
                        std::ostream& err) {
    const std::string shownZip = PrintableLine(zipPath);
    FileZipSource source;
    std::string error;
    if (!source.Open(zipPath, error)) {
        err << shownZip << ": can't be opened: " << error << "\n";
        return false;
    }
    ZipReader reader;
    if (!reader.Open(source, error)) {
        err << shownZip << ": damaged archive: " << error << "\n";
        return false;
    }
    out << "Archive: " << shownZip << "\n";
    bool allWritten = true;
    for (const ZipEntry& entry : reader.Entries()) {
        const std::string shown = PrintableLine(entry.Name);
        const bool isFolder = !entry.Name.empty() && IsSeparator(entry.Name.back());
        std::string name = entry.Name;
        while (!name.empty() && IsSeparator(name.back())) name.pop_back();
        if (!IsSafeMemberName(name)) {
            err << shownZip << ": " << shown << ": refused, the name leaves the destination folder\n";
            allWritten = false;
            continue;
        }
        if (isFolder) {
            if (entry.UncompressedSize != 0 || !MakeFolders(folder, SplitName(name), error)) {
                err << shownZip << ": " << shown << ": "
                    << (entry.UncompressedSize != 0 ? "a folder entry with data" : error) << "\n";
                allWritten = false;
                continue;
            }
            out << "   creating: " << shown << "\n";
            continue;
        }
        if (!WriteEntry(reader, entry, folder, error)) {
            err << shownZip << ": " << shown << ": " << error << "\n";
            allWritten = false;
            continue;
        }
        out << " extracting: " << shown << "\n";
    }
    return allWritten;
}
