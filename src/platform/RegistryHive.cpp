#include "platform/RegistryHive.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace reghive {

namespace {

std::string HomeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/') return home;
    if (const passwd* pw = ::getpwuid(::getuid()); pw != nullptr && pw->pw_dir != nullptr) return pw->pw_dir;
    return {};
}

// The XDG base folders; a relative path there is not valid and is ignored.
std::string UserConfigFolder() {
    const char* v = std::getenv("XDG_CONFIG_HOME");
    if (v != nullptr && v[0] == '/') return v;
    const std::string home = HomeFolder();
    return home.empty() ? std::string() : home + "/.config";
}

std::string MachineConfigFolder() {
    const char* v = std::getenv("XDG_CONFIG_DIRS");
    if (v != nullptr) {
        const std::string dirs = v;
        size_t start = 0;
        while (start <= dirs.size()) {
            size_t end = dirs.find(':', start);
            if (end == std::string::npos) end = dirs.size();
            if (end > start && dirs[start] == '/') return dirs.substr(start, end - start);
            start = end + 1;
        }
    }
    return "/etc/xdg";
}

bool ReadWhole(const std::string& path, std::string& out) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || st.st_size > kMaxHiveFile) {
        ::close(fd);
        return false;
    }
    out.clear();
    out.reserve(static_cast<size_t>(st.st_size));
    char buf[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buf, sizeof buf);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            ::close(fd);
            return false;
        }
        if (n == 0) break;
        if (out.size() + static_cast<size_t>(n) > static_cast<size_t>(kMaxHiveFile)) {
            ::close(fd);
            return false;
        }
        out.append(buf, static_cast<size_t>(n));
    }
    ::close(fd);
    return true;
}

LONG ErrorOfErrno(int e) {
    switch (e) {
        case EACCES:
        case EPERM:
        case EROFS: return ERROR_ACCESS_DENIED;
        case ENOSPC:
        case EDQUOT: return ERROR_DISK_FULL;
        default: return ERROR_WRITE_FAULT;
    }
}

bool WriteAll(int fd, const std::string& data) {
    size_t done = 0;
    while (done < data.size()) {
        const ssize_t n = ::write(fd, data.data() + done, data.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

FileStamp StampOf(const std::string& path) {
    FileStamp s;
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return s;
    s.exists = true;
    s.dev = st.st_dev;
    s.ino = st.st_ino;
    s.size = st.st_size;
    s.mtime = st.st_mtim;
    return s;
}

std::string FileOfRoot(HKEY root) {
    std::string folder;
    const char* name = nullptr;
    switch (root) {
        case HKEY_CURRENT_USER: folder = UserConfigFolder(); name = "user.reg"; break;
        case HKEY_CLASSES_ROOT: folder = UserConfigFolder(); name = "classes.reg"; break;
        case HKEY_LOCAL_MACHINE: folder = MachineConfigFolder(); name = "machine.reg"; break;
        default: return {};
    }
    if (folder.empty()) return {};
    return folder + "/quarrin/" + name;
}

void Load(Hive& hive) {
    hive.index.Clear();
    hive.unreadable = false;
    hive.stamp = StampOf(hive.file);
    hive.loaded = true;
    if (hive.file.empty() || !hive.stamp.exists) return;
    std::string text;
    // A hive that can't be read, or holds a key deeper than the registry
    // allows, reads as empty and is never replaced.
    if (!ReadWhole(hive.file, text) || !hive.index.Build(std::move(text), hive.rootName)) {
        hive.index.Clear();
        hive.unreadable = true;
    }
}

// Writes a hive's new text beside its file and renames it over the file, so
// the file holds either the old or the new keys whatever happens in between.
LONG Save(Hive& hive, const std::string& text) {
    if (hive.file.empty()) return ERROR_ACCESS_DENIED;
    std::error_code ec;
    std::filesystem::path target = hive.file;
    // A hive file that is a link (a person's kept settings) is replaced where
    // it really lies, so the link stays.
    if (std::filesystem::is_symlink(target, ec)) {
        auto real = std::filesystem::canonical(target, ec);
        if (!ec) target = real;
    }
    std::filesystem::create_directories(target.parent_path(), ec);
    std::string tmpl = target.string() + ".XXXXXX";
    const int fd = ::mkstemp(tmpl.data());
    if (fd < 0) return ErrorOfErrno(errno);
    struct stat old {};
    if (::stat(target.c_str(), &old) == 0) ::fchmod(fd, old.st_mode & 07777);
    int err = 0;
    if (!WriteAll(fd, text) || ::fsync(fd) != 0) err = errno;
    if (::close(fd) != 0 && err == 0) err = errno;
    if (err == 0 && ::rename(tmpl.c_str(), target.c_str()) != 0) err = errno;
    if (err != 0) {
        ::unlink(tmpl.c_str());
        return ErrorOfErrno(err);
    }
    // Make the rename itself last: sync the folder that holds the entry.
    const int dirfd = ::open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirfd >= 0) {
        ::fsync(dirfd);
        ::close(dirfd);
    }
    hive.stamp = StampOf(hive.file);
    return ERROR_SUCCESS;
}

}  // namespace reghive
