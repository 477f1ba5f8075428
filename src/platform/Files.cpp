#include "platform/Files.h"

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <unordered_map>

#include "platform/Runtime.h"

namespace {

// The buffer starts small, since most files are only asked for their head,
// and grows while a caller goes on reading through the file.
constexpr size_t kFirstFill = 4 * 1024;
constexpr size_t kReadBufferSize = 64 * 1024;

// A new file under a temporary name that takes the place of its final name
// only when it is whole.
struct Replacement {
    int dirfd = -1;         // the folder that holds both names
    std::string tempName;   // inside that folder
    std::string finalName;  // inside that folder
    std::string finalPath;  // as the caller named it
    bool failed = false;    // a write went wrong: the file is not whole
    // Writes are gathered here and go out in one system call when the
    // buffer is full, before a seek elsewhere, and at the end: a wrapper is
    // sixteen small writes. A write that fails later still makes the file
    // not whole, which the commit reports.
    std::string pending;
    int64_t pendingAt = 0;  // file offset of pending[0]
    int64_t end = 0;        // offset behind the last byte written
};

constexpr size_t kWriteGather = 64 * 1024;

void WriteOut(int fd, Replacement& r, const char* data, size_t size, int64_t at) {
    while (size > 0 && !r.failed) {
        ssize_t n = ::pwrite(fd, data, size, at);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            r.failed = true;
            break;
        }
        data += n;
        size -= static_cast<size_t>(n);
        at += n;
    }
}

void FlushPending(int fd, Replacement& r) {
    if (r.pending.empty()) return;
    WriteOut(fd, r, r.pending.data(), r.pending.size(), r.pendingAt);
    r.pending.clear();
}

// Gathers a write at `at`; gives false when the file is already not whole.
bool Gather(int fd, Replacement& r, const void* data, size_t size, int64_t at) {
    r.end = at + static_cast<int64_t>(size);
    if (!r.pending.empty() && at != r.pendingAt + static_cast<int64_t>(r.pending.size())) FlushPending(fd, r);
    if (size >= kWriteGather) {
        FlushPending(fd, r);
        WriteOut(fd, r, static_cast<const char*>(data), size, at);
        return !r.failed;
    }
    if (r.pending.empty()) r.pendingAt = at;
    r.pending.append(static_cast<const char*>(data), size);
    if (r.pending.size() >= kWriteGather) FlushPending(fd, r);
    return !r.failed;
}

struct OpenFile {
    int fd = -1;
    std::unique_ptr<Replacement> replace;
    int64_t position = 0;                // logical position of the caller
    std::vector<unsigned char> buffer;   // bytes of the file from bufferStart
    int64_t bufferStart = 0;
    size_t bufferLength = 0;
    size_t nextFill = kFirstFill;
};

std::vector<std::unique_ptr<OpenFile>> g_handles;  // slot i holds handle i + 1

OpenFile* Lookup(HFILE h) {
    if (h < 1 || static_cast<size_t>(h) > g_handles.size()) return nullptr;
    return g_handles[h - 1].get();
}

// Only regular files are read or written: a named pipe would block the
// program, and a device or socket is no file of the game.
bool IsRegularFd(int fd) {
    struct stat st {};
    return fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
}

// Opens a path without blocking (a named pipe would wait for a writer) and
// keeps the descriptor only for a regular file.
int OpenRegular(const std::string& path, int flags, mode_t perms = 0) {
    int fd = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, perms);
    if (fd < 0) return -1;
    if (!IsRegularFd(fd)) {
        ::close(fd);
        errno = EACCES;
        return -1;
    }
    // O_NONBLOCK stays: it has no effect on a regular file.
    return fd;
}

// ---- Files that a running operation uses ----------------------------------

struct GuardEntry {
    std::string path;  // absolute, "." and doubled separators resolved
    bool hasId = false;
    dev_t device = 0;
    ino_t inode = 0;
};

struct IdHash {
    size_t operator()(const std::pair<dev_t, ino_t>& id) const {
        return std::hash<uint64_t>()(static_cast<uint64_t>(id.first) * 0x9E3779B97F4A7C15ull ^ id.second);
    }
};

// The guarded files, found by path and by identity in constant time: a run
// guards every wrapper it writes, so the table grows with the members.
class GuardTable {
public:
    bool Empty() const { return live_ == 0; }
    size_t Add(const std::string& path) {
        size_t slot;
        if (!free_.empty()) {
            slot = free_.back();
            free_.pop_back();
        } else {
            slot = slots_.size();
            slots_.emplace_back();
        }
        slots_[slot] = GuardEntry{path};
        byPath_.emplace(path, slot);
        ++live_;
        return slot;
    }
    void Remove(size_t slot) {
        ClearId(slot);
        Erase(byPath_, slots_[slot]->path, slot);
        slots_[slot].reset();
        free_.push_back(slot);
        --live_;
    }
    const std::string& Path(size_t slot) const { return slots_[slot]->path; }
    void SetId(size_t slot, dev_t device, ino_t inode) {
        ClearId(slot);
        GuardEntry& e = *slots_[slot];
        e.hasId = true;
        e.device = device;
        e.inode = inode;
        byId_.emplace(std::make_pair(device, inode), slot);
    }
    void ClearId(size_t slot) {
        GuardEntry& e = *slots_[slot];
        if (e.hasId) Erase(byId_, std::make_pair(e.device, e.inode), slot);
        e.hasId = false;
    }
    // True when a guard other than the owner of `self` stands over the
    // normalised path `n` or over one of the identities given.
    bool Matches(const std::string& n, const struct stat* now, const struct stat* target,
                 const struct stat* self) const {
        auto foreign = [&](size_t slot) {
            const GuardEntry& g = *slots_[slot];
            return self == nullptr || !(g.hasId && g.device == self->st_dev && g.inode == self->st_ino);
        };
        auto [pb, pe] = byPath_.equal_range(n);
        for (auto it = pb; it != pe; ++it)
            if (foreign(it->second)) return true;
        for (const struct stat* st : {now, target}) {
            if (st == nullptr) continue;
            auto [ib, ie] = byId_.equal_range(std::make_pair(st->st_dev, st->st_ino));
            for (auto it = ib; it != ie; ++it)
                if (foreign(it->second)) return true;
        }
        return false;
    }

private:
    template <typename Map, typename Key>
    static void Erase(Map& map, const Key& key, size_t slot) {
        auto [b, e] = map.equal_range(key);
        for (auto it = b; it != e; ++it) {
            if (it->second == slot) {
                map.erase(it);
                return;
            }
        }
    }
    std::vector<std::optional<GuardEntry>> slots_;
    std::vector<size_t> free_;
    std::unordered_multimap<std::string, size_t> byPath_;
    std::unordered_multimap<std::pair<dev_t, ino_t>, size_t, IdHash> byId_;
    size_t live_ = 0;
};
GuardTable g_guards;

// An absolute path with "." parts and doubled separators resolved. A path
// that is already plain, as the program's own paths are, is taken as it
// stands without the cost of the general form.
std::string NormalisePath(const std::string& path) {
    if (!path.empty() && path[0] == '/' && path.find("//") == std::string::npos &&
        path.find("/.") == std::string::npos && path.back() != '/')
        return path;
    return NormaliseFolder(path);
}

// A file in an open folder that a guard stands over, by name or by the
// identity of what stands there now. `self` is the file being put in place:
// a guard over that very file is its owner, not a conflict.
bool IsRunFileAt(int dirfd, const std::string& name, const std::string& path, const struct stat* self = nullptr) {
    if (g_guards.Empty()) return false;
    struct stat now {}, target {};
    const bool hasNow = ::fstatat(dirfd, name.c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0;
    // Only a link has a target that differs from the entry itself.
    const bool hasTarget = hasNow && S_ISLNK(now.st_mode) && ::fstatat(dirfd, name.c_str(), &target, 0) == 0;
    return g_guards.Matches(NormalisePath(path), hasNow ? &now : nullptr, hasTarget ? &target : nullptr, self);
}

// Opens the folder that holds `path` and gives the file's name inside it.
// With `within`, every folder below it is opened without following a link.
// Gives -1 with errno set when a folder is missing, is a link, or the path
// doesn't lie inside `within`.
int OpenParent(const std::string& path, const std::string& within, std::string& leaf) {
    std::vector<std::string> parts;
    std::string base;
    if (!within.empty()) {
        if (within.back() != '/' || path.size() <= within.size() || path.compare(0, within.size(), within) != 0) {
            errno = EACCES;
            return -1;
        }
        base = within;
        size_t pos = within.size();
        for (;;) {
            size_t end = path.find('/', pos);
            parts.push_back(path.substr(pos, end == std::string::npos ? std::string::npos : end - pos));
            if (end == std::string::npos) break;
            pos = end + 1;
        }
    } else {
        size_t slash = path.rfind('/');
        base = slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
        parts.push_back(slash == std::string::npos ? path : path.substr(slash + 1));
    }
    leaf = parts.back();
    parts.pop_back();
    if (leaf.empty() || leaf == "." || leaf == "..") {
        errno = EISDIR;
        return -1;
    }
    int fd = ::open(base.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return -1;
    for (const std::string& part : parts) {
        if (part.empty() || part == ".") continue;
        if (part == "..") {
            ::close(fd);
            errno = EACCES;
            return -1;
        }
        int next = ::openat(fd, part.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        int err = errno;
        ::close(fd);
        if (next < 0) {
            errno = err;
            return -1;
        }
        fd = next;
    }
    return fd;
}

std::string TempName() {
    static std::atomic<uint32_t> counter{0};
    static const uint64_t salt = std::random_device{}();
    static const long pid = static_cast<long>(::getpid());
    char buf[64];
    std::snprintf(buf, sizeof buf, ".quarrin-%ld-%u-%08llx.tmp", pid,
                  counter.fetch_add(1) + 1, static_cast<unsigned long long>(salt & 0xFFFFFFFFu));
    return buf;
}

// Makes the temporary file of a replacement. Gives the descriptor, or -1
// with errno set.
int BeginReplacement(const std::string& path, const std::string& within, Replacement& r) {
    std::string leaf;
    int dirfd = OpenParent(path, within, leaf);
    if (dirfd < 0) return -1;
    if (IsRunFileAt(dirfd, leaf, path)) {
        ::close(dirfd);
        errno = EACCES;
        return -1;
    }
    int fd = -1;
    std::string temp;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        temp = TempName();
        fd = ::openat(dirfd, temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST) break;
    }
    if (fd < 0) {
        int err = errno;
        ::close(dirfd);
        errno = err;
        return -1;
    }
    r.dirfd = dirfd;
    r.tempName = temp;
    r.finalName = leaf;
    r.finalPath = path;
    return fd;
}

// Closes the descriptor and either renames the file into place or removes
// it. True when it now stands under its final name.
bool EndReplacement(int fd, Replacement& r, bool commit) {
    if (commit) FlushPending(fd, r);
    bool ok = commit && !r.failed;
    struct stat self {};
    if (::fstat(fd, &self) != 0) ok = false;
    if (::close(fd) != 0) ok = false;
    // The guards are asked again: the final name may have been taken by a
    // file of the run since the temporary was made.
    if (ok && IsRunFileAt(r.dirfd, r.finalName, r.finalPath, &self)) ok = false;
    if (ok && ::renameat(r.dirfd, r.tempName.c_str(), r.dirfd, r.finalName.c_str()) != 0) ok = false;
    if (!ok) ::unlinkat(r.dirfd, r.tempName.c_str(), 0);
    ::close(r.dirfd);
    r.dirfd = -1;
    return ok;
}

}  // namespace

namespace {
HFILE AddHandle(std::unique_ptr<OpenFile> file);
}  // namespace

HFILE _lopen(const std::string& path, int32_t mode) {
    if (path.empty() || path.find('\0') != std::string::npos) return HFILE_ERROR;
    int flags = O_CLOEXEC;
    switch (mode & 3) {
        case OF_READ: flags |= O_RDONLY; break;
        case OF_WRITE: flags |= O_WRONLY; break;
        case OF_READWRITE: flags |= O_RDWR; break;
        default: return HFILE_ERROR;
    }
    int fd = OpenRegular(path, flags);
    if (fd < 0) return HFILE_ERROR;
    auto file = std::make_unique<OpenFile>();
    file->fd = fd;
    return AddHandle(std::move(file));
}

namespace {
HFILE AddHandle(std::unique_ptr<OpenFile> file) {
    for (size_t i = 0; i < g_handles.size(); ++i) {
        if (!g_handles[i]) {
            g_handles[i] = std::move(file);
            return static_cast<HFILE>(i + 1);
        }
    }
    g_handles.push_back(std::move(file));
    return static_cast<HFILE>(g_handles.size());
}
}  // namespace

HFILE CreateReplacement(const std::string& path, const std::string& within) {
    if (path.empty() || path.find('\0') != std::string::npos) return HFILE_ERROR;
    auto r = std::make_unique<Replacement>();
    int fd = BeginReplacement(path, within, *r);
    if (fd < 0) return HFILE_ERROR;
    auto file = std::make_unique<OpenFile>();
    file->fd = fd;
    file->replace = std::move(r);
    return AddHandle(std::move(file));
}

bool CommitReplacement(HFILE h) {
    OpenFile* f = Lookup(h);
    if (f == nullptr) return false;
    bool ok = f->replace ? EndReplacement(f->fd, *f->replace, true) : ::close(f->fd) == 0;
    g_handles[h - 1].reset();
    return ok;
}

bool HandleIdentity(HFILE h, uint64_t& device, uint64_t& inode) {
    OpenFile* f = Lookup(h);
    struct stat st {};
    if (f == nullptr || ::fstat(f->fd, &st) != 0) return false;
    device = st.st_dev;
    inode = st.st_ino;
    return true;
}

int32_t _lread(HFILE h, void* buffer, int32_t count) {
    OpenFile* f = Lookup(h);
    if (f == nullptr || count < 0) return HFILE_ERROR;
    auto* out = static_cast<unsigned char*>(buffer);
    int32_t done = 0;
    while (done < count) {
        // Serve from the buffer when the position lies inside it.
        if (f->position >= f->bufferStart &&
            f->position < f->bufferStart + static_cast<int64_t>(f->bufferLength)) {
            size_t at = static_cast<size_t>(f->position - f->bufferStart);
            size_t n = std::min<size_t>(f->bufferLength - at, static_cast<size_t>(count - done));
            std::memcpy(out + done, f->buffer.data() + at, n);
            done += static_cast<int32_t>(n);
            f->position += static_cast<int64_t>(n);
            continue;
        }
        size_t want = static_cast<size_t>(count - done);
        if (want >= kReadBufferSize) {
            // Large reads go straight into the caller's memory.
            ssize_t n = ::pread(f->fd, out + done, want, f->position);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) break;
            done += static_cast<int32_t>(n);
            f->position += n;
            continue;
        }
        size_t fill = std::max(f->nextFill, want);
        if (f->buffer.size() < fill) f->buffer.resize(fill);
        ssize_t n = ::pread(f->fd, f->buffer.data(), fill, f->position);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            f->bufferLength = 0;
            break;
        }
        f->bufferStart = f->position;
        f->bufferLength = static_cast<size_t>(n);
        f->nextFill = std::min(f->nextFill * 2, kReadBufferSize);
    }
    return done;
}

int32_t _lwrite(HFILE h, const void* buffer, int32_t count) {
    OpenFile* f = Lookup(h);
    if (f == nullptr || count < 0) return HFILE_ERROR;
    f->bufferLength = 0;  // what was buffered may be overwritten
    if (f->replace) {
        if (!Gather(f->fd, *f->replace, buffer, static_cast<size_t>(count), f->position)) return HFILE_ERROR;
        f->position += count;
        return count;
    }
    const auto* in = static_cast<const unsigned char*>(buffer);
    int32_t done = 0;
    while (done < count) {
        ssize_t n = ::pwrite(f->fd, in + done, static_cast<size_t>(count - done), f->position);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            if (f->replace) f->replace->failed = true;
            return done == 0 ? HFILE_ERROR : done;
        }
        done += static_cast<int32_t>(n);
        f->position += n;
    }
    return done;
}

int32_t _llseek(HFILE h, int32_t offset, int32_t origin) {
    OpenFile* f = Lookup(h);
    if (f == nullptr) return HFILE_ERROR;
    int64_t base = 0;
    if (origin == FILE_CURRENT) {
        base = f->position;
    } else if (origin == FILE_END) {
        if (f->replace) FlushPending(f->fd, *f->replace);
        struct stat st {};
        if (fstat(f->fd, &st) != 0) return HFILE_ERROR;
        base = st.st_size;
    } else if (origin != FILE_BEGIN) {
        return HFILE_ERROR;
    }
    int64_t target = base + offset;
    if (target < 0 || target > INT32_MAX) return HFILE_ERROR;
    f->position = target;
    return static_cast<int32_t>(target);
}

HFILE _lclose(HFILE h) {
    OpenFile* f = Lookup(h);
    if (f == nullptr) return HFILE_ERROR;
    if (f->replace) {
        EndReplacement(f->fd, *f->replace, false);
    } else {
        ::close(f->fd);
    }
    g_handles[h - 1].reset();
    return 0;
}

bool DeleteFileWithin(const std::string& within, const std::string& path) {
    std::string leaf;
    int dirfd = OpenParent(path, within, leaf);
    if (dirfd < 0) return false;
    struct stat st {};
    bool ok = ::fstatat(dirfd, leaf.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISDIR(st.st_mode) &&
              !IsRunFileAt(dirfd, leaf, path) && ::unlinkat(dirfd, leaf.c_str(), 0) == 0;
    ::close(dirfd);
    return ok;
}

RunFileGuard::RunFileGuard(const std::string& path) : slot_(g_guards.Add(NormalisePath(path))) { Refresh(); }

RunFileGuard::~RunFileGuard() { g_guards.Remove(slot_); }

void RunFileGuard::Refresh() {
    struct stat st {};
    if (::stat(g_guards.Path(slot_).c_str(), &st) == 0) {
        g_guards.SetId(slot_, st.st_dev, st.st_ino);
    } else {
        g_guards.ClearId(slot_);
    }
}

void RunFileGuard::Refresh(uint64_t device, uint64_t inode) {
    g_guards.SetId(slot_, static_cast<dev_t>(device), static_cast<ino_t>(inode));
}

bool IsSameFile(const std::string& path, uint64_t device, uint64_t inode) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && st.st_dev == device && st.st_ino == inode;
}

bool IsRunFile(const std::string& path) {
    if (g_guards.Empty()) return false;
    struct stat now {}, target {};
    const bool hasNow = ::lstat(path.c_str(), &now) == 0;
    const bool hasTarget = hasNow && S_ISLNK(now.st_mode) && ::stat(path.c_str(), &target) == 0;
    return g_guards.Matches(NormalisePath(path), hasNow ? &now : nullptr, hasTarget ? &target : nullptr, nullptr);
}

bool DeleteFileA(const std::string& path) {
    if (path.empty()) return false;
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0 || S_ISDIR(st.st_mode)) return false;
    return ::unlink(path.c_str()) == 0;
}

int32_t OpenHandleCount() {
    return static_cast<int32_t>(std::count_if(g_handles.begin(), g_handles.end(),
                                              [](const auto& p) { return p != nullptr; }));
}

int64_t FileLen(const std::string& path) {
    struct stat st {};
    if (path.empty() || ::stat(path.c_str(), &st) != 0) RaiseError(vbErrFileNotFound);
    return S_ISDIR(st.st_mode) ? 0 : static_cast<int64_t>(st.st_size);
}

int32_t GetAttr(const std::string& path) {
    struct stat st {};
    if (path.empty() || ::stat(path.c_str(), &st) != 0) RaiseError(vbErrFileNotFound);
    int32_t attr = 0;
    std::string base = std::filesystem::path(path).filename().string();
    if (!base.empty() && base[0] == '.' && base != "." && base != "..") attr |= vbHidden;
    if (S_ISDIR(st.st_mode)) {
        attr |= vbDirectory;
    } else {
        attr |= vbArchive;
    }
    if (::access(path.c_str(), W_OK) != 0 && errno == EACCES) attr |= vbReadOnly;
    return attr;
}

namespace {

// The scan that Dir() without a path goes on with.
struct DirScan {
    DIR* dir = nullptr;
    std::string folder;
    std::string mask;
    int32_t attributes = vbNormal;
    ~DirScan() { Close(); }
    void Close() {
        if (dir != nullptr) ::closedir(dir);
        dir = nullptr;
    }
};
DirScan g_dirScan;

bool HasWildcards(const std::string& s) { return s.find_first_of("*?") != std::string::npos; }

bool Admits(const std::string& name, bool isDirectory, int32_t attributes) {
    if (name[0] == '.' && !(attributes & vbHidden)) return false;
    if (isDirectory && !(attributes & vbDirectory)) return false;
    return true;
}

std::string NextMatch() {
    while (g_dirScan.dir != nullptr) {
        dirent* e = ::readdir(g_dirScan.dir);
        if (e == nullptr) break;
        std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        if (fnmatch(g_dirScan.mask.c_str(), name.c_str(), FNM_PERIOD) != 0) continue;
        bool isDirectory = e->d_type == DT_DIR;
        if (e->d_type == DT_UNKNOWN || e->d_type == DT_LNK) isDirectory = IsDirectory(g_dirScan.folder + "/" + name);
        if (Admits(name, isDirectory, g_dirScan.attributes)) return name;
    }
    g_dirScan.Close();
    return {};
}

}  // namespace

std::string Dir(const std::string& pattern, int32_t attributes) {
    g_dirScan.Close();
    if (pattern.empty() || pattern.find('\0') != std::string::npos) return {};
    size_t slash = pattern.rfind('/');
    std::string folder = slash == std::string::npos ? "." : (slash == 0 ? "/" : pattern.substr(0, slash));
    std::string mask = slash == std::string::npos ? pattern : pattern.substr(slash + 1);
    if (mask.empty()) return {};
    if (!HasWildcards(mask)) {
        struct stat st {};
        if (::stat(pattern.c_str(), &st) != 0 || mask == "." || mask == "..") return {};
        return Admits(mask, S_ISDIR(st.st_mode), attributes) ? mask : std::string();
    }
    g_dirScan.dir = ::opendir(folder.c_str());
    if (g_dirScan.dir == nullptr) return {};
    g_dirScan.folder = folder;
    g_dirScan.mask = mask;
    g_dirScan.attributes = attributes;
    return NextMatch();
}

std::string Dir() { return NextMatch(); }

bool ListDirectory(const std::string& folder, std::vector<DirEntry>& out) {
    out.clear();
    DIR* d = ::opendir(folder.empty() ? "." : folder.c_str());
    if (d == nullptr) return false;
    while (dirent* e = ::readdir(d)) {
        std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        DirEntry entry;
        entry.name = name;
        if (e->d_type == DT_DIR) {
            entry.isDirectory = true;
        } else if (e->d_type == DT_UNKNOWN || e->d_type == DT_LNK) {
            entry.isDirectory = IsDirectory(folder + "/" + name);
        }
        out.push_back(std::move(entry));
    }
    ::closedir(d);
    std::sort(out.begin(), out.end(), [](const DirEntry& a, const DirEntry& b) { return a.name < b.name; });
    return true;
}

bool PathExists(const std::string& path) {
    struct stat st {};
    return !path.empty() && ::stat(path.c_str(), &st) == 0;
}

bool IsDirectory(const std::string& path) {
    struct stat st {};
    return !path.empty() && ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string NormaliseFolder(const std::string& path) {
    if (path.empty()) return {};
    std::error_code ec;
    std::filesystem::path p = std::filesystem::absolute(path, ec);
    if (ec) return {};
    std::string s = p.lexically_normal().string();
    while (s.size() > 1 && s.back() == '/') s.pop_back();
    return s;
}

// ---- Numbered files -------------------------------------------------------

namespace {
struct NumberedFile {
    int fd = -1;
    VbOpenMode mode = VbOpenMode::Binary;
    std::shared_ptr<Replacement> replace;  // Output files
};
std::map<int16_t, NumberedFile> g_numbered;

NumberedFile& Numbered(int16_t number) {
    auto it = g_numbered.find(number);
    if (it == g_numbered.end()) RaiseError(vbErrBadFileNumber);
    return it->second;
}

void WriteAll(NumberedFile& f, const char* data, size_t size) {
    if (f.replace) {
        // Output files are written from their start, one piece behind the other.
        if (!Gather(f.fd, *f.replace, data, size, f.replace->end)) RaiseError(vbErrDiskFull);
        return;
    }
    while (size > 0) {
        ssize_t n = ::write(f.fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            if (f.replace) f.replace->failed = true;
            RaiseError(errno == ENOSPC || errno == EFBIG || errno == EDQUOT ? vbErrDiskFull : vbErrPathFileAccess);
        }
        data += n;
        size -= static_cast<size_t>(n);
    }
}
}  // namespace

int16_t FreeFile() {
    for (int16_t n = 1; n < 512; ++n)
        if (g_numbered.find(n) == g_numbered.end()) return n;
    RaiseError(vbErrTooManyFiles);
}

namespace {
void CheckNewNumber(int16_t number, const std::string& path) {
    if (number < 1 || number > 511) RaiseError(vbErrBadFileNumber);
    if (g_numbered.count(number) != 0) RaiseError(vbErrFileAlreadyOpen);
    if (path.empty() || path.find('\0') != std::string::npos) RaiseError(vbErrFileNotFound);
}

void OpenOutput(int16_t number, const std::string& path, const std::string& within) {
    CheckNewNumber(number, path);
    auto r = std::make_shared<Replacement>();
    int fd = BeginReplacement(path, within, *r);
    if (fd < 0) RaiseError(errno == ENOENT ? vbErrPathNotFound : vbErrPathFileAccess);
    g_numbered[number] = NumberedFile{fd, VbOpenMode::Output, std::move(r)};
}
}  // namespace

void VbOpen(int16_t number, const std::string& path, VbOpenMode mode) {
    if (mode == VbOpenMode::Output) return OpenOutput(number, path, {});
    CheckNewNumber(number, path);
    int flags = 0;
    switch (mode) {
        case VbOpenMode::Input: flags |= O_RDONLY; break;
        case VbOpenMode::Output: break;
        case VbOpenMode::Append: flags |= O_WRONLY | O_CREAT | O_APPEND; break;
        case VbOpenMode::Binary: flags |= O_RDWR | O_CREAT; break;
    }
    int fd = OpenRegular(path, flags, 0666);
    if (fd < 0 && mode == VbOpenMode::Binary && errno == EACCES) fd = OpenRegular(path, O_RDONLY);
    if (fd < 0) {
        RaiseError(errno == ENOENT ? (mode == VbOpenMode::Input ? vbErrFileNotFound : vbErrPathNotFound)
                                   : vbErrPathFileAccess);
    }
    g_numbered[number] = NumberedFile{fd, mode, nullptr};
}

void VbOpenWithin(int16_t number, const std::string& path, const std::string& within) {
    OpenOutput(number, path, within);
}

void VbClose(int16_t number) {
    NumberedFile f = Numbered(number);
    g_numbered.erase(number);
    if (f.replace) {
        bool wasWhole = !f.replace->failed;
        if (!EndReplacement(f.fd, *f.replace, true)) RaiseError(wasWhole ? vbErrPathFileAccess : vbErrDiskFull);
        return;
    }
    ::close(f.fd);
}

void VbDiscard(int16_t number) {
    NumberedFile f = Numbered(number);
    g_numbered.erase(number);
    if (f.replace) {
        EndReplacement(f.fd, *f.replace, false);
    } else {
        ::close(f.fd);
    }
}

bool VbIdentity(int16_t number, uint64_t& device, uint64_t& inode) {
    auto it = g_numbered.find(number);
    struct stat st {};
    if (it == g_numbered.end() || ::fstat(it->second.fd, &st) != 0) return false;
    device = st.st_dev;
    inode = st.st_ino;
    return true;
}

void VbPrintLine(int16_t number, const std::string& text) {
    NumberedFile& f = Numbered(number);
    if (f.mode != VbOpenMode::Output && f.mode != VbOpenMode::Append) RaiseError(vbErrBadFileMode);
    std::string line = text + "\r\n";
    WriteAll(f, line.data(), line.size());
}

void VbPut(int16_t number, const std::string& bytes) {
    NumberedFile& f = Numbered(number);
    if (f.mode == VbOpenMode::Input) RaiseError(vbErrBadFileMode);
    WriteAll(f, bytes.data(), bytes.size());
}

int64_t VbLOF(int16_t number) {
    NumberedFile& f = Numbered(number);
    if (f.replace) FlushPending(f.fd, *f.replace);
    struct stat st {};
    if (fstat(f.fd, &st) != 0) RaiseError(vbErrPathFileAccess);
    return st.st_size;
}

std::string VbGet(int16_t number, int64_t count) {
    NumberedFile& f = Numbered(number);
    if (f.mode == VbOpenMode::Output || f.mode == VbOpenMode::Append) RaiseError(vbErrBadFileMode);
    if (count < 0) RaiseError(vbErrInvalidCall);
    std::string out;
    out.resize(static_cast<size_t>(count));
    size_t done = 0;
    while (done < out.size()) {
        ssize_t n = ::read(f.fd, out.data() + done, out.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) RaiseError(vbErrPathFileAccess);
        if (n == 0) break;
        done += static_cast<size_t>(n);
    }
    out.resize(done);
    return out;
}
