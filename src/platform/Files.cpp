#include "platform/Files.h"

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>

#include "platform/Runtime.h"

namespace {

// The buffer starts small, since most files are only asked for their head,
// and grows while a caller goes on reading through the file.
constexpr size_t kFirstFill = 4 * 1024;
constexpr size_t kReadBufferSize = 64 * 1024;

struct OpenFile {
    int fd = -1;
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

bool IsRegularFd(int fd) {
    struct stat st {};
    return fstat(fd, &st) == 0 && !S_ISDIR(st.st_mode);
}

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
    int fd = ::open(path.c_str(), flags);
    if (fd < 0) return HFILE_ERROR;
    if (!IsRegularFd(fd)) {
        ::close(fd);
        return HFILE_ERROR;
    }
    auto file = std::make_unique<OpenFile>();
    file->fd = fd;
    for (size_t i = 0; i < g_handles.size(); ++i) {
        if (!g_handles[i]) {
            g_handles[i] = std::move(file);
            return static_cast<HFILE>(i + 1);
        }
    }
    g_handles.push_back(std::move(file));
    return static_cast<HFILE>(g_handles.size());
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
    const auto* in = static_cast<const unsigned char*>(buffer);
    int32_t done = 0;
    while (done < count) {
        ssize_t n = ::pwrite(f->fd, in + done, static_cast<size_t>(count - done), f->position);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return done == 0 ? HFILE_ERROR : done;
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
    ::close(f->fd);
    g_handles[h - 1].reset();
    return 0;
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

std::string Dir(const std::string& pattern, int32_t attributes) {
    if (pattern.empty()) return {};
    std::filesystem::path p(pattern);
    std::string folder = p.has_parent_path() ? p.parent_path().string() : ".";
    std::string mask = p.filename().string();
    if (mask.empty()) return {};
    std::vector<DirEntry> entries;
    if (!ListDirectory(folder, entries)) return {};
    for (const auto& e : entries) {
        if (fnmatch(mask.c_str(), e.name.c_str(), FNM_PERIOD) != 0) continue;
        bool hidden = e.name[0] == '.';
        if (hidden && !(attributes & vbHidden)) continue;
        if (e.isDirectory && !(attributes & vbDirectory)) continue;
        return e.name;
    }
    return {};
}

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
};
std::map<int16_t, NumberedFile> g_numbered;

NumberedFile& Numbered(int16_t number) {
    auto it = g_numbered.find(number);
    if (it == g_numbered.end()) RaiseError(vbErrBadFileNumber);
    return it->second;
}

void WriteAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) RaiseError(errno == ENOSPC ? vbErrDiskFull : vbErrPathFileAccess);
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

void VbOpen(int16_t number, const std::string& path, VbOpenMode mode) {
    if (number < 1 || number > 511) RaiseError(vbErrBadFileNumber);
    if (g_numbered.count(number) != 0) RaiseError(vbErrFileAlreadyOpen);
    if (path.empty() || path.find('\0') != std::string::npos) RaiseError(vbErrFileNotFound);
    int flags = O_CLOEXEC;
    switch (mode) {
        case VbOpenMode::Input: flags |= O_RDONLY; break;
        case VbOpenMode::Output: flags |= O_WRONLY | O_CREAT | O_TRUNC; break;
        case VbOpenMode::Append: flags |= O_WRONLY | O_CREAT | O_APPEND; break;
        case VbOpenMode::Binary: flags |= O_RDWR | O_CREAT; break;
    }
    int fd = ::open(path.c_str(), flags, 0666);
    if (fd < 0 && mode == VbOpenMode::Binary && errno == EACCES) fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        RaiseError(errno == ENOENT ? (mode == VbOpenMode::Input ? vbErrFileNotFound : vbErrPathNotFound)
                                   : vbErrPathFileAccess);
    }
    if (!IsRegularFd(fd)) {
        ::close(fd);
        RaiseError(vbErrPathFileAccess);
    }
    g_numbered[number] = NumberedFile{fd, mode};
}

void VbClose(int16_t number) {
    NumberedFile& f = Numbered(number);
    ::close(f.fd);
    g_numbered.erase(number);
}

void VbPrintLine(int16_t number, const std::string& text) {
    NumberedFile& f = Numbered(number);
    if (f.mode != VbOpenMode::Output && f.mode != VbOpenMode::Append) RaiseError(vbErrBadFileMode);
    std::string line = text + "\r\n";
    WriteAll(f.fd, line.data(), line.size());
}

void VbPut(int16_t number, const std::string& bytes) {
    NumberedFile& f = Numbered(number);
    if (f.mode == VbOpenMode::Input) RaiseError(vbErrBadFileMode);
    WriteAll(f.fd, bytes.data(), bytes.size());
}

int64_t VbLOF(int16_t number) {
    NumberedFile& f = Numbered(number);
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
