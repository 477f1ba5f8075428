#include "pak/ZipReader.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>

#include "pak/BatchScript.h"
#include "pak/MemberPath.h"
#include "platform/LittleEndian.h"

namespace {

constexpr uint32_t kEndSignature = 0x06054B50;
constexpr uint32_t kCentralSignature = 0x02014B50;
constexpr uint32_t kLocalSignature = 0x04034B50;
constexpr size_t kEndSize = 22;
constexpr size_t kCentralSize = 46;
constexpr size_t kLocalSize = 30;
constexpr size_t kChunk = 64 * 1024;


// Bit 0 is encryption, bit 6 strong encryption, bit 13 a masked directory.
constexpr uint16_t kEncryptedFlags = 0x0001 | 0x0040 | 0x2000;
// Bit 3: the sizes and CRC follow the data and the local header holds zeros.
constexpr uint16_t kDataDescriptorFlag = 0x0008;

const char* const kSinkStopped = "the output could not be written";

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
    // Without O_NONBLOCK, opening a named pipe waits for a writer that may
    // never come; only a regular file is read, and for it the flag changes
    // nothing.
    fd_ = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
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
    const ByteCursor tailBytes(tail.data(), tail.size());
    for (int64_t i = tailSize - static_cast<int64_t>(kEndSize); i >= 0; --i) {
        const ByteCursor p = tailBytes.Sub(static_cast<size_t>(i), kEndSize);
        if (p.LongAt(0) != kEndSignature) continue;
        int64_t commentEnd = i + static_cast<int64_t>(kEndSize) + p.WordAt(20);
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
    const ByteCursor end = tailBytes.Sub(static_cast<size_t>(endAt), kEndSize);
    const int64_t endOffset = size - tailSize + endAt;
    const uint16_t disk = end.WordAt(4);
    const uint16_t cdDisk = end.WordAt(6);
    const uint16_t entriesHere = end.WordAt(8);
    const uint16_t entriesTotal = end.WordAt(10);
    const uint32_t cdSize = end.LongAt(12);
    const uint32_t cdOffset = end.LongAt(16);
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
    const ByteCursor directory(cd.data(), cd.size());
    size_t pos = 0;
    for (uint32_t i = 0; i < entriesTotal; ++i) {
        const ByteCursor c = directory.Sub(pos, cd.size() - pos);
        if (!c.Holds(0, kCentralSize) || c.LongAt(0) != kCentralSignature) {
            error = "central directory entry " + std::to_string(i + 1) + " is damaged";
            entries_.clear();
            return false;
        }
        const size_t nameLength = c.WordAt(28);
        const size_t extraLength = c.WordAt(30);
        const size_t commentLength = c.WordAt(32);
        const size_t recordSize = kCentralSize + nameLength + extraLength + commentLength;
        if (cd.size() - pos < recordSize) {
            error = "central directory entry " + std::to_string(i + 1) + " runs past the directory";
            entries_.clear();
            return false;
        }
        ZipEntry e;
        e.Flags = c.WordAt(8);
        e.Method = c.WordAt(10);
        e.Crc = c.LongAt(16);
        e.CompressedSize = c.LongAt(20);
        e.UncompressedSize = c.LongAt(24);
        e.LocalHeaderOffset = c.LongAt(42);
        e.Name.assign(reinterpret_cast<const char*>(c.Data() + kCentralSize), nameLength);
        pos += recordSize;

        // The local header must tell the same story as the central one.
        uint8_t local[kLocalSize];
        const ByteCursor head(local, kLocalSize);
        if (static_cast<int64_t>(e.LocalHeaderOffset) + static_cast<int64_t>(kLocalSize) > dataEnd_ ||
            !source.ReadAt(e.LocalHeaderOffset, local, kLocalSize) || head.LongAt(0) != kLocalSignature) {
            e.Damage = "no local header at the offset the central directory gives";
        } else {
            const size_t localNameLength = head.WordAt(26);
            const size_t localExtraLength = head.WordAt(28);
            e.DataOffset = static_cast<int64_t>(e.LocalHeaderOffset) + static_cast<int64_t>(kLocalSize) +
                           static_cast<int64_t>(localNameLength) + static_cast<int64_t>(localExtraLength);
            std::string localName(localNameLength, '\0');
            if (e.DataOffset > dataEnd_ ||
                !source.ReadAt(e.LocalHeaderOffset + kLocalSize, localName.data(), localNameLength)) {
                e.Damage = "the local header runs past the data";
            } else if (localName != e.Name) {
                e.Damage = "the local header names another file";
            } else if (head.WordAt(8) != e.Method) {
                e.Damage = "the local header gives another method";
            } else if (!(e.Flags & kDataDescriptorFlag) &&
                       (head.LongAt(14) != e.Crc || head.LongAt(18) != e.CompressedSize ||
                        head.LongAt(22) != e.UncompressedSize)) {
                e.Damage = "the local header gives other sizes or another CRC";
            } else if (e.DataOffset + e.CompressedSize > dataEnd_) {
                e.Damage = "the data runs past the end of the archive's data";
            }
        }
        entries_.push_back(std::move(e));
    }
    return RefuseOverlaps(error);
}

bool ZipReader::RefuseOverlaps(std::string& error) {
    // Each sound entry claims its local header, name, extra field and data.
    // Entries that share bytes let a small archive stand for a huge output,
    // so they are refused as a whole before anything is written. Sorted by
    // start, each range must begin at or behind the furthest end before it.
    struct Range {
        int64_t Start, End;
        size_t Index;
    };
    std::vector<Range> ranges;
    ranges.reserve(entries_.size());
    for (size_t i = 0; i < entries_.size(); ++i) {
        const ZipEntry& e = entries_[i];
        if (e.Damage.empty())
            ranges.push_back({e.LocalHeaderOffset, e.DataOffset + static_cast<int64_t>(e.CompressedSize), i});
    }
    std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) {
        return a.Start != b.Start ? a.Start < b.Start : a.Index < b.Index;
    });
    const Range* furthest = nullptr;
    for (const Range& r : ranges) {
        if (furthest != nullptr && r.Start < furthest->End) {
            const size_t first = std::min(furthest->Index, r.Index), second = std::max(furthest->Index, r.Index);
            error = "entries " + std::to_string(first + 1) + " (" + PrintableLine(entries_[first].Name) + ") and " +
                    std::to_string(second + 1) + " (" + PrintableLine(entries_[second].Name) +
                    ") share bytes of the archive: overlapping entries are refused";
            entries_.clear();
            return false;
        }
        if (furthest == nullptr || r.End > furthest->End) furthest = &r;
    }
    return true;
}

// StormLib exports the streaming decoder of its PKWare DCL code, which its
// header doesn't declare. The decoder pulls the stream through `read_buf`, at
// most 2 KiB at a time, and pushes what it decodes through `write_buf`, at
// most 4 KiB at a time; its whole state lies in `work_buf`. It answers 0 for
// a stream that ends with its end mark, 4 for one whose input ran out first,
// and 1 to 3 for a header or data it can't decode.
extern "C" unsigned int explode(unsigned int (*read_buf)(char* buf, unsigned int* size, void* param),
                                void (*write_buf)(char* buf, unsigned int* size, void* param), char* work_buf,
                                void* param);

namespace {

constexpr unsigned int kExplodeEndMark = 0;
constexpr unsigned int kExplodeInputEnded = 4;
// The decoder's state takes 12,648 bytes in StormLib 9.22 on 64-bit systems;
// the room given leaves a margin for other builds of the library.
constexpr size_t kExplodeWorkSize = 32 * 1024;

// What the decoder's two callbacks share while one entry is decoded. Input
// and output go through buffers of at most kChunk bytes, whatever the
// entry's size.
struct ExplodeRun {
    enum class Stop { No, ReadFailed, TooMuch, SinkStopped };
    const ZipSource* source = nullptr;
    int64_t inOffset = 0;  // the next byte of the stream in the archive
    uint32_t inLeft = 0;   // bytes of the stream not read yet
    std::vector<uint8_t> in;
    size_t inPos = 0, inEnd = 0;
    std::vector<uint8_t> out;
    size_t outFill = 0;
    uint64_t declared = 0;
    uint64_t produced = 0;
    const std::function<bool(const uint8_t*, size_t)>* give = nullptr;
    Stop stop = Stop::No;

    bool Flush() {
        if (outFill != 0 && !(*give)(out.data(), outFill)) stop = Stop::SinkStopped;
        outFill = 0;
        return stop == Stop::No;
    }
};

// Once the run is stopped the decoder gets no more input, so it ends within
// the bytes it holds; what it still writes is dropped.
unsigned int ExplodeRead(char* buf, unsigned int* size, void* param) {
    auto& run = *static_cast<ExplodeRun*>(param);
    unsigned int done = 0;
    while (run.stop == ExplodeRun::Stop::No && done < *size) {
        if (run.inPos == run.inEnd) {
            if (run.inLeft == 0) break;
            const size_t n = std::min<size_t>(run.in.size(), run.inLeft);
            if (!run.source->ReadAt(run.inOffset, run.in.data(), n)) {
                run.stop = ExplodeRun::Stop::ReadFailed;
                break;
            }
            run.inOffset += static_cast<int64_t>(n);
            run.inLeft -= static_cast<uint32_t>(n);
            run.inPos = 0;
            run.inEnd = n;
        }
        const size_t n = std::min<size_t>(*size - done, run.inEnd - run.inPos);
        std::memcpy(buf + done, run.in.data() + run.inPos, n);
        run.inPos += n;
        done += static_cast<unsigned int>(n);
    }
    return run.stop == ExplodeRun::Stop::No ? done : 0;
}

void ExplodeWrite(char* buf, unsigned int* size, void* param) {
    auto& run = *static_cast<ExplodeRun*>(param);
    if (run.stop != ExplodeRun::Stop::No) return;
    size_t n = *size;
    if (run.produced + n > run.declared) {
        run.stop = ExplodeRun::Stop::TooMuch;
        return;
    }
    run.produced += n;
    const auto* p = reinterpret_cast<const uint8_t*>(buf);
    while (n > 0) {
        const size_t k = std::min(n, run.out.size() - run.outFill);
        std::memcpy(run.out.data() + run.outFill, p, k);
        run.outFill += k;
        p += k;
        n -= k;
        if (run.outFill == run.out.size() && !run.Flush()) return;
    }
}

// Decodes an imploded entry piece by piece into `give`; memory stays the
// same whatever the entry's size, and the declared size is checked against
// what the stream gives, never trusted for a buffer.
bool Explode(const ZipSource& source, const ZipEntry& entry, const std::function<bool(const uint8_t*, size_t)>& give,
             std::string& error) {
    ExplodeRun run;
    run.source = &source;
    run.inOffset = entry.DataOffset;
    run.inLeft = entry.CompressedSize;
    run.in.resize(std::clamp<size_t>(entry.CompressedSize, 1, kChunk));
    run.out.resize(std::clamp<size_t>(entry.UncompressedSize, 1, kChunk));
    run.declared = entry.UncompressedSize;
    run.give = &give;
    auto work = std::make_unique<char[]>(kExplodeWorkSize);
    const unsigned int result = explode(ExplodeRead, ExplodeWrite, work.get(), &run);
    if (run.stop == ExplodeRun::Stop::No) run.Flush();
    switch (run.stop) {
        case ExplodeRun::Stop::No:
            break;
        case ExplodeRun::Stop::ReadFailed:
            error = "the data can't be read";
            return false;
        case ExplodeRun::Stop::TooMuch:
            error = "the implode stream gives more bytes than the declared " + std::to_string(entry.UncompressedSize);
            return false;
        case ExplodeRun::Stop::SinkStopped:
            error = kSinkStopped;
            return false;
    }
    // A stream cut short behind its last byte, without the end mark, is taken
    // when it gave the declared size.
    if (result != kExplodeEndMark && result != kExplodeInputEnded) {
        error = "the implode stream is damaged";
        return false;
    }
    if (run.produced != run.declared) {
        error = "the implode stream gives fewer bytes than the declared " + std::to_string(entry.UncompressedSize);
        return false;
    }
    return true;
}

}  // namespace

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
    const std::function<bool(const uint8_t*, size_t)> give = [&](const uint8_t* data, size_t n) {
        if (n == 0) return true;
        crc = crc32(crc, data, static_cast<uInt>(n));
        produced += n;
        return sink(data, n);
    };

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
            if (static_cast<int64_t>(entry.UncompressedSize) > MaxExplodedSize(entry.CompressedSize)) {
                error = "the declared size is more than an implode stream of " +
                        std::to_string(entry.CompressedSize) + " bytes can produce";
                return false;
            }
            if (!Explode(*source_, entry, give, error)) return false;
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

// ---- Temporary files and the signals that end the program ------------------
//
// Each entry is written into a temporary file that is renamed when it is
// whole. While an archive is unpacked, SIGINT, SIGTERM and SIGHUP remove the
// temporary file being written and then end the program the way they would
// have without a handler. The handler only sees the static slot below: its
// path is filled while no temporary file exists (before the file is
// created), and it counts only while the flag is set.

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr size_t kEndingSignalCount = sizeof kEndingSignals / sizeof kEndingSignals[0];

static_assert(std::atomic<bool>::is_always_lock_free, "the signal handler reads an atomic flag");
char g_tempPath[PATH_MAX];
std::atomic<bool> g_tempPathSet{false};
std::atomic<bool> g_tempSlotTaken{false};

extern "C" void RemoveTempFileAndEnd(int signalNumber) {
    if (g_tempPathSet.load()) ::unlink(g_tempPath);
    struct sigaction defaultAction {};
    defaultAction.sa_handler = SIG_DFL;
    sigemptyset(&defaultAction.sa_mask);
    ::sigaction(signalNumber, &defaultAction, nullptr);
    sigset_t self;
    sigemptyset(&self);
    sigaddset(&self, signalNumber);
    ::sigprocmask(SIG_UNBLOCK, &self, nullptr);
    ::raise(signalNumber);
}

// Holds the slot for one unpacking: installs the handler for each ending
// signal whose action is the default one (a signal that the process ignores
// or handles itself is left alone), and puts everything back at the end, so
// that nothing stays behind in a process that unpacks many archives. A
// second unpacking that runs meanwhile in another thread goes without.
class TempFileGuard {
public:
    TempFileGuard() {
        bool expected = false;
        owner_ = g_tempSlotTaken.compare_exchange_strong(expected, true);
        if (!owner_) return;
        for (size_t i = 0; i < kEndingSignalCount; ++i) {
            struct sigaction current {};
            if (::sigaction(kEndingSignals[i], nullptr, &current) != 0 || (current.sa_flags & SA_SIGINFO) ||
                current.sa_handler != SIG_DFL)
                continue;
            struct sigaction mine {};
            mine.sa_handler = RemoveTempFileAndEnd;
            sigemptyset(&mine.sa_mask);
            for (int other : kEndingSignals) sigaddset(&mine.sa_mask, other);
            installed_[i] = ::sigaction(kEndingSignals[i], &mine, &previous_[i]) == 0;
        }
    }
    ~TempFileGuard() {
        if (!owner_) return;
        g_tempPathSet.store(false);
        for (size_t i = 0; i < kEndingSignalCount; ++i)
            if (installed_[i]) ::sigaction(kEndingSignals[i], &previous_[i], nullptr);
        g_tempSlotTaken.store(false);
    }
    TempFileGuard(const TempFileGuard&) = delete;
    TempFileGuard& operator=(const TempFileGuard&) = delete;

    // Before the file at `path` is created.
    void Set(const std::string& path) {
        if (!owner_) return;
        g_tempPathSet.store(false);
        if (path.size() >= sizeof g_tempPath) return;  // too long to be created anyway
        std::memcpy(g_tempPath, path.c_str(), path.size() + 1);
        g_tempPathSet.store(true);
    }
    // After the file was renamed or removed.
    void Clear() {
        if (owner_) g_tempPathSet.store(false);
    }

private:
    bool owner_ = false;
    bool installed_[kEndingSignalCount] = {};
    struct sigaction previous_[kEndingSignalCount] {};
};

// The folders that one entry made, removed again, deepest first, unless the
// entry was written.
struct FoldersMade {
    std::vector<std::string> Paths;
    bool Keep = false;
    FoldersMade() = default;
    FoldersMade(const FoldersMade&) = delete;
    FoldersMade& operator=(const FoldersMade&) = delete;
    ~FoldersMade() {
        if (Keep) return;
        for (auto it = Paths.rbegin(); it != Paths.rend(); ++it) ::rmdir(it->c_str());
    }
};

// Makes the folders of `parts` below `folder`, one by one, noting each one it
// makes. A part that exists must be a real folder: a symbolic link on the way
// could lead the write out.
bool MakeFolders(const std::string& folder, const std::vector<std::string>& parts, FoldersMade& made,
                 std::string& error) {
    std::string path = folder;
    for (const std::string& part : parts) {
        if (part.empty() || part == ".") continue;
        path += "/" + part;
        struct stat st {};
        if (::lstat(path.c_str(), &st) == 0) {
            if (!S_ISDIR(st.st_mode)) {
                error = PrintableLine(path) + " is in the way and is not a folder";
                return false;
            }
            continue;
        }
        if (::mkdir(path.c_str(), 0777) != 0) {
            if (errno == EEXIST) continue;
            error = "can't make the folder " + PrintableLine(path) + ": " + std::strerror(errno);
            return false;
        }
        made.Paths.push_back(path);
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

class FileDescriptor {
public:
    ~FileDescriptor() { Close(); }
    int Get() const { return fd_; }
    void Reset(int fd) {
        Close();
        fd_ = fd;
    }
    // Gives the result of close(2), or 0 when nothing was open.
    int Close() {
        const int rc = fd_ >= 0 ? ::close(fd_) : 0;
        fd_ = -1;
        return rc;
    }

private:
    int fd_ = -1;
};

// Writes one entry: into a new file with a temporary name in the target's
// folder, renamed to its name only when it is whole, so that no part of a
// damaged entry ever stands under the entry's name. An entry that fails
// leaves neither its temporary file nor the folders it made.
bool WriteEntry(const ZipReader& reader, const ZipEntry& entry, const std::string& folder, TempFileGuard& guard,
                std::string& error) {
    std::vector<std::string> parts = SplitName(entry.Name);
    const std::string leaf = parts.back();
    parts.pop_back();
    FoldersMade made;
    if (!MakeFolders(folder, parts, made, error)) return false;
    std::string parent = folder;
    for (const std::string& part : parts)
        if (!part.empty() && part != ".") parent += "/" + part;
    const std::string target = parent + "/" + leaf;

    std::string temp;
    FileDescriptor fd;
    for (int attempt = 0; attempt < 100 && fd.Get() < 0; ++attempt) {
        temp = parent + "/.quarrin-pkzip-" + std::to_string(::getpid()) + "-" + std::to_string(attempt) + ".part";
        guard.Set(temp);
        fd.Reset(::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
        if (fd.Get() < 0 && errno != EEXIST) break;
    }
    if (fd.Get() < 0) {
        error = "can't create a file in " + PrintableLine(parent) + ": " + std::strerror(errno);
        guard.Clear();
        return false;
    }
    std::string writeError;
    bool ok = reader.Extract(
        entry,
        [&](const uint8_t* data, size_t size) {
            while (size > 0) {
                ssize_t n = ::write(fd.Get(), data, size);
                if (n < 0 && errno == EINTR) continue;
                if (n <= 0) {
                    writeError = std::string("write failed: ") + std::strerror(n < 0 ? errno : ENOSPC);
                    return false;
                }
                data += n;
                size -= static_cast<size_t>(n);
            }
            return true;
        },
        error);
    if (!ok && !writeError.empty()) error = writeError;
    if (fd.Close() != 0 && ok) {
        error = std::string("write failed: ") + std::strerror(errno);
        ok = false;
    }
    if (ok && ::rename(temp.c_str(), target.c_str()) != 0) {
        error = "can't write " + PrintableLine(target) + ": " + std::strerror(errno);
        ok = false;
    }
    if (!ok) ::unlink(temp.c_str());
    guard.Clear();
    made.Keep = ok;
    return ok;
}

// Every entry of the archive into `folder`; true when each one was written.
bool ExtractEntries(const std::string& zipPath, const std::string& shownZip, const std::string& folder,
                    std::ostream& out, std::ostream& err) {
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
    TempFileGuard guard;
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
            FoldersMade made;
            if (entry.UncompressedSize != 0) {
                error = "a folder entry with data";
            } else if (MakeFolders(folder, SplitName(name), made, error)) {
                made.Keep = true;
                out << "   creating: " << shown << "\n";
                continue;
            }
            err << shownZip << ": " << shown << ": " << error << "\n";
            allWritten = false;
            continue;
        }
        if (!WriteEntry(reader, entry, folder, guard, error)) {
            err << shownZip << ": " << shown << ": " << error << "\n";
            allWritten = false;
            continue;
        }
        out << " extracting: " << shown << "\n";
    }
    return allWritten;
}

}  // namespace

bool ExtractZipToFolder(const std::string& zipPath, const std::string& folder, std::ostream& out,
                        std::ostream& err) {
    const std::string shownZip = PrintableLine(zipPath);
    const bool ok = ExtractEntries(zipPath, shownZip, folder, out, err);
    out.flush();
    if (!ok) err << "quarrin-pkzip: " << shownZip << ": not every entry was extracted\n";
    return ok;
}
