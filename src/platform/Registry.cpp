#include "platform/Registry.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>

namespace {

// ---- Names --------------------------------------------------------------------

char Upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

// Key and value names compare as the registry compares them: without regard
// to case, and ordered by their upper-case form.
struct NameLess {
    bool operator()(const std::string& a, const std::string& b) const {
        const size_t n = std::min(a.size(), b.size());
        for (size_t i = 0; i < n; ++i) {
            const auto ca = static_cast<unsigned char>(Upper(a[i]));
            const auto cb = static_cast<unsigned char>(Upper(b[i]));
            if (ca != cb) return ca < cb;
        }
        return a.size() < b.size();
    }
};

bool SameName(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (Upper(a[i]) != Upper(b[i])) return false;
    return true;
}

// The limits of the registry: a key name has at most 255 characters, a value
// name 16383, and keys nest at most 512 deep.
constexpr size_t kMaxKeyName = 255;
constexpr size_t kMaxValueName = 16383;
constexpr size_t kMaxDepth = 512;
// A hive file beyond this size is not read, and the hive refuses writes so as
// not to replace a file it could not read.
constexpr off_t kMaxHiveFile = 4 * 1024 * 1024;

// Names reach the registry as zero-terminated texts.
std::string CText(const std::string& s) {
    const size_t z = s.find('\0');
    return z == std::string::npos ? s : s.substr(0, z);
}

bool HasLineBreak(const std::string& s) { return s.find_first_of("\r\n") != std::string::npos; }

// Splits a key path at its backslashes; empty parts are passed over.
bool SplitPath(const std::string& sub, std::vector<std::string>& parts) {
    const std::string s = CText(sub);
    size_t start = 0;
    while (start <= s.size()) {
        size_t end = s.find('\\', start);
        if (end == std::string::npos) end = s.size();
        if (end > start) {
            std::string part = s.substr(start, end - start);
            if (part.size() > kMaxKeyName || HasLineBreak(part)) return false;
            parts.push_back(std::move(part));
            if (parts.size() > kMaxDepth) return false;
        }
        start = end + 1;
    }
    return true;
}

// ---- Keys in memory -----------------------------------------------------------

struct KeyNode {
    std::string name;
    std::vector<regtext::Value> values;
    std::map<std::string, size_t, NameLess> valueIndex;
    std::map<std::string, std::unique_ptr<KeyNode>, NameLess> subkeys;

    const regtext::Value* FindValue(const std::string& n) const {
        auto it = valueIndex.find(n);
        return it == valueIndex.end() ? nullptr : &values[it->second];
    }
    void SetValue(regtext::Value v) {
        auto it = valueIndex.find(v.name);
        if (it != valueIndex.end()) {
            // The stored name keeps its first spelling, as the registry does.
            v.name = values[it->second].name;
            values[it->second] = std::move(v);
            return;
        }
        valueIndex.emplace(v.name, values.size());
        values.push_back(std::move(v));
    }
    bool RemoveValue(const std::string& n) {
        auto it = valueIndex.find(n);
        if (it == valueIndex.end()) return false;
        values.erase(values.begin() + static_cast<std::ptrdiff_t>(it->second));
        valueIndex.clear();
        for (size_t i = 0; i < values.size(); ++i) valueIndex.emplace(values[i].name, i);
        return true;
    }
    KeyNode* Child(const std::string& n) const {
        auto it = subkeys.find(n);
        return it == subkeys.end() ? nullptr : it->second.get();
    }
    KeyNode& MakeChild(const std::string& n) {
        auto& slot = subkeys[n];
        if (!slot) {
            slot = std::make_unique<KeyNode>();
            slot->name = n;
        }
        return *slot;
    }
};

KeyNode* FindKey(KeyNode& root, const std::vector<std::string>& path) {
    KeyNode* node = &root;
    for (const auto& part : path) {
        node = node->Child(part);
        if (node == nullptr) return nullptr;
    }
    return node;
}

void Fill(KeyNode& root, const std::vector<regtext::Section>& sections) {
    for (const auto& section : sections) {
        KeyNode* node = &root;
        for (const auto& part : section.path) node = &node->MakeChild(part);
        for (const auto& v : section.values) node->SetValue(v);
    }
}

// Writes a key's section when it has values or stands alone; a key with
// sub-keys and no values is implied by the sections below it.
void Write(const KeyNode& node, const std::string& path, bool isRoot, std::string& out) {
    if (!node.values.empty() || (node.subkeys.empty() && !isRoot)) {
        out += "\n[" + path + "]\n";
        for (const auto& v : node.values) out += regtext::FormatValue(v);
    }
    for (const auto& [name, child] : node.subkeys) Write(*child, path + "\\" + child->name, false, out);
}

std::string HiveText(const KeyNode& root, const std::string& rootName) {
    std::string out = "REGEDIT4\n";
    Write(root, rootName, true, out);
    return out;
}

// ---- Hives on disk ------------------------------------------------------------

struct FileStamp {
    bool exists = false;
    dev_t dev = 0;
    ino_t ino = 0;
    off_t size = 0;
    timespec mtime{};
    bool operator==(const FileStamp& o) const {
        return exists == o.exists && dev == o.dev && ino == o.ino && size == o.size &&
               mtime.tv_sec == o.mtime.tv_sec && mtime.tv_nsec == o.mtime.tv_nsec;
    }
};

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

struct Hive {
    std::string rootName;
    bool readOnly = false;
    std::string file;  // empty when the environment names no place
    bool loaded = false;
    bool unreadable = false;
    FileStamp stamp;
    KeyNode tree;
};

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

void Load(Hive& hive) {
    hive.tree = KeyNode();
    hive.unreadable = false;
    hive.stamp = StampOf(hive.file);
    hive.loaded = true;
    if (hive.file.empty() || !hive.stamp.exists) return;
    std::string text;
    if (!ReadWhole(hive.file, text)) {
        hive.unreadable = true;
        return;
    }
    Fill(hive.tree, regtext::Parse(text, hive.rootName));
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

// Writes the hive beside its file and renames it over the file, so the file
// holds either the old or the new keys whatever happens in between.
LONG Save(Hive& hive) {
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
    const std::string text = HiveText(hive.tree, hive.rootName);
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

// ---- Handles ------------------------------------------------------------------

struct OpenKey {
    HKEY root;
    std::vector<std::string> path;
    REGSAM access;
};

constexpr REGSAM kWriteRights = KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK | KEY_DELETE | 0x00040000 |
                                0x00080000;  // WRITE_DAC, WRITE_OWNER

struct State {
    std::mutex lock;
    std::map<HKEY, Hive> hives;
    std::map<HKEY, OpenKey> open;
    HKEY next = 1;
};

State& S() {
    static State s;
    return s;
}

bool IsRoot(HKEY h) { return h == HKEY_CLASSES_ROOT || h == HKEY_CURRENT_USER || h == HKEY_LOCAL_MACHINE; }

const char* RootName(HKEY h) {
    switch (h) {
        case HKEY_CLASSES_ROOT: return "HKEY_CLASSES_ROOT";
        case HKEY_CURRENT_USER: return "HKEY_CURRENT_USER";
        case HKEY_LOCAL_MACHINE: return "HKEY_LOCAL_MACHINE";
        default: return "";
    }
}

// The hive of a root, read or read again when its file is new or changed.
Hive& UseHive(HKEY root) {
    Hive& hive = S().hives[root];
    const std::string file = FileOfRoot(root);
    if (hive.rootName.empty()) {
        hive.rootName = RootName(root);
        hive.readOnly = root == HKEY_LOCAL_MACHINE;
    }
    if (!hive.loaded || hive.file != file || !(StampOf(file) == hive.stamp)) {
        hive.file = file;
        Load(hive);
    }
    return hive;
}

// What a handle stands for: its root, its path and the rights it was opened with.
struct Target {
    HKEY root = 0;
    Hive* hive = nullptr;
    std::vector<std::string> path;
    REGSAM access = 0;
    KeyNode* node = nullptr;
};

LONG Resolve(HKEY hKey, Target& t) {
    if (IsRoot(hKey)) {
        t.root = hKey;
        t.access = KEY_ALL_ACCESS;
    } else {
        auto it = S().open.find(hKey);
        if (it == S().open.end()) return ERROR_INVALID_HANDLE;
        t.root = it->second.root;
        t.path = it->second.path;
        t.access = it->second.access;
    }
    t.hive = &UseHive(t.root);
    t.node = FindKey(t.hive->tree, t.path);
    return t.node == nullptr ? ERROR_KEY_DELETED : ERROR_SUCCESS;
}

bool MayWrite(const Hive& hive) { return !hive.readOnly && !hive.unreadable && !hive.file.empty(); }

HKEY NewHandle(HKEY root, std::vector<std::string> path, REGSAM access) {
    State& s = S();
    while (s.open.count(s.next) != 0 || s.next <= 0) s.next = s.next <= 0 ? 1 : s.next + 1;
    const HKEY h = s.next++;
    s.open.emplace(h, OpenKey{root, std::move(path), access});
    return h;
}

// After a failed save the memory no longer matches the file: read it again at
// the next call, which drops the change that could not be kept.
LONG Commit(Hive& hive) {
    const LONG r = Save(hive);
    if (r != ERROR_SUCCESS) hive.loaded = false;
    return r;
}

void CopyOut(const std::string& data, void* lpData, DWORD* lpcbData, LONG& result) {
    const auto size = static_cast<DWORD>(data.size());
    if (lpData != nullptr) {
        if (*lpcbData < size) {
            result = ERROR_MORE_DATA;
        } else if (size > 0) {
            std::memcpy(lpData, data.data(), size);
        }
    }
    *lpcbData = size;
}

}  // namespace

// ---- The registry calls -------------------------------------------------------

LONG RegOpenKeyExA(HKEY hKey, const std::string& lpSubKey, DWORD ulOptions, REGSAM samDesired, HKEY* phkResult) {
    if (phkResult == nullptr) return ERROR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    std::vector<std::string> parts;
    if (!SplitPath(lpSubKey, parts)) return ERROR_INVALID_PARAMETER;
    KeyNode* node = FindKey(*t.node, parts);
    if (node == nullptr) return ERROR_FILE_NOT_FOUND;
    if ((samDesired & kWriteRights) != 0 && !MayWrite(*t.hive)) return ERROR_ACCESS_DENIED;
    std::vector<std::string> path = t.path;
    for (auto& p : parts) path.push_back(std::move(p));
    *phkResult = NewHandle(t.root, std::move(path), samDesired);
    return ERROR_SUCCESS;
}

LONG RegCreateKeyExA(HKEY hKey, const std::string& lpSubKey, DWORD Reserved, const std::string& lpClass,
                     DWORD dwOptions, REGSAM samDesired, const void* lpSecurityAttributes, HKEY* phkResult,
                     DWORD* lpdwDisposition) {
    if (phkResult == nullptr) return ERROR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    std::vector<std::string> parts;
    if (!SplitPath(lpSubKey, parts) || t.path.size() + parts.size() > kMaxDepth) return ERROR_INVALID_PARAMETER;
    KeyNode* node = FindKey(*t.node, parts);
    const bool exists = node != nullptr;
    if (!exists || (samDesired & kWriteRights) != 0) {
        if (!MayWrite(*t.hive)) return ERROR_ACCESS_DENIED;
    }
    if (!exists) {
        if ((t.access & KEY_CREATE_SUB_KEY) == 0) return ERROR_ACCESS_DENIED;
        KeyNode* n = t.node;
        for (const auto& p : parts) n = &n->MakeChild(p);
        if (LONG r = Commit(*t.hive); r != ERROR_SUCCESS) return r;
    }
    std::vector<std::string> path = t.path;
    for (auto& p : parts) path.push_back(std::move(p));
    *phkResult = NewHandle(t.root, std::move(path), samDesired);
    if (lpdwDisposition != nullptr) *lpdwDisposition = exists ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
    return ERROR_SUCCESS;
}

LONG RegCloseKey(HKEY hKey) {
    std::lock_guard<std::mutex> guard(S().lock);
    if (IsRoot(hKey)) return ERROR_SUCCESS;
    return S().open.erase(hKey) == 1 ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LONG RegQueryValueExA(HKEY hKey, const std::string& lpValueName, DWORD* lpReserved, DWORD* lpType, void* lpData,
                      DWORD* lpcbData) {
    if (lpData != nullptr && lpcbData == nullptr) return ERROR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    if ((t.access & KEY_QUERY_VALUE) == 0) return ERROR_ACCESS_DENIED;
    const regtext::Value* v = t.node->FindValue(CText(lpValueName));
    if (v == nullptr) return ERROR_FILE_NOT_FOUND;
    if (lpType != nullptr) *lpType = v->type;
    LONG result = ERROR_SUCCESS;
    if (lpcbData != nullptr) CopyOut(v->data, lpData, lpcbData, result);
    return result;
}

LONG RegSetValueExA(HKEY hKey, const std::string& lpValueName, DWORD Reserved, DWORD dwType, const void* lpData,
                    DWORD cbData) {
    if (lpData == nullptr && cbData != 0) return ERROR_INVALID_PARAMETER;
    const std::string name = CText(lpValueName);
    if (name.size() > kMaxValueName || HasLineBreak(name)) return ERROR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    if ((t.access & KEY_SET_VALUE) == 0 || !MayWrite(*t.hive)) return ERROR_ACCESS_DENIED;
    regtext::Value v;
    v.name = name;
    v.type = dwType;
    if (cbData > 0) v.data.assign(static_cast<const char*>(lpData), cbData);
    t.node->SetValue(std::move(v));
    return Commit(*t.hive);
}

LONG RegDeleteKeyA(HKEY hKey, const std::string& lpSubKey) {
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    std::vector<std::string> parts;
    if (!SplitPath(lpSubKey, parts)) return ERROR_INVALID_PARAMETER;
    if (t.path.empty() && parts.empty()) return ERROR_ACCESS_DENIED;  // a root can't go
    KeyNode* node = FindKey(*t.node, parts);
    if (node == nullptr) return ERROR_FILE_NOT_FOUND;
    if (!MayWrite(*t.hive) || !node->subkeys.empty()) return ERROR_ACCESS_DENIED;
    std::vector<std::string> path = t.path;
    for (auto& p : parts) path.push_back(std::move(p));
    const std::string last = path.back();
    path.pop_back();
    KeyNode* parent = FindKey(t.hive->tree, path);
    parent->subkeys.erase(last);
    return Commit(*t.hive);
}

LONG RegDeleteValueA(HKEY hKey, const std::string& lpValueName) {
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    if ((t.access & KEY_SET_VALUE) == 0 || !MayWrite(*t.hive)) return ERROR_ACCESS_DENIED;
    if (!t.node->RemoveValue(CText(lpValueName))) return ERROR_FILE_NOT_FOUND;
    return Commit(*t.hive);
}

LONG RegQueryInfoKeyA(HKEY hKey, char* lpClass, DWORD* lpcClass, DWORD* lpReserved, DWORD* lpcSubKeys,
                      DWORD* lpcMaxSubKeyLen, DWORD* lpcMaxClassLen, DWORD* lpcValues, DWORD* lpcMaxValueNameLen,
                      DWORD* lpcMaxValueLen, DWORD* lpcbSecurityDescriptor, void* lpftLastWriteTime) {
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    if ((t.access & KEY_QUERY_VALUE) == 0) return ERROR_ACCESS_DENIED;
    const KeyNode& n = *t.node;
    if (lpClass != nullptr && lpcClass != nullptr && *lpcClass > 0) lpClass[0] = '\0';
    if (lpcClass != nullptr) *lpcClass = 0;
    if (lpcSubKeys != nullptr) *lpcSubKeys = static_cast<DWORD>(n.subkeys.size());
    if (lpcMaxSubKeyLen != nullptr) {
        size_t m = 0;
        for (const auto& [name, child] : n.subkeys) m = std::max(m, child->name.size());
        *lpcMaxSubKeyLen = static_cast<DWORD>(m);
    }
    if (lpcMaxClassLen != nullptr) *lpcMaxClassLen = 0;
    if (lpcValues != nullptr) *lpcValues = static_cast<DWORD>(n.values.size());
    size_t maxName = 0, maxData = 0;
    for (const auto& v : n.values) {
        maxName = std::max(maxName, v.name.size());
        maxData = std::max(maxData, v.data.size());
    }
    if (lpcMaxValueNameLen != nullptr) *lpcMaxValueNameLen = static_cast<DWORD>(maxName);
    if (lpcMaxValueLen != nullptr) *lpcMaxValueLen = static_cast<DWORD>(maxData);
    if (lpcbSecurityDescriptor != nullptr) *lpcbSecurityDescriptor = 0;
    if (lpftLastWriteTime != nullptr) std::memset(lpftLastWriteTime, 0, 8);
    return ERROR_SUCCESS;
}

LONG RegEnumValueA(HKEY hKey, DWORD dwIndex, char* lpValueName, DWORD* lpcValueName, DWORD* lpReserved,
                   DWORD* lpType, void* lpData, DWORD* lpcbData) {
    if (lpValueName == nullptr || lpcValueName == nullptr) return ERROR_INVALID_PARAMETER;
    if (lpData != nullptr && lpcbData == nullptr) return ERROR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    if ((t.access & KEY_QUERY_VALUE) == 0) return ERROR_ACCESS_DENIED;
    if (dwIndex >= t.node->values.size()) return ERROR_NO_MORE_ITEMS;
    const regtext::Value& v = t.node->values[dwIndex];
    if (*lpcValueName <= v.name.size()) return ERROR_MORE_DATA;
    std::memcpy(lpValueName, v.name.data(), v.name.size());
    lpValueName[v.name.size()] = '\0';
    *lpcValueName = static_cast<DWORD>(v.name.size());
    if (lpType != nullptr) *lpType = v.type;
    LONG result = ERROR_SUCCESS;
    if (lpcbData != nullptr) CopyOut(v.data, lpData, lpcbData, result);
    return result;
}

LONG RegEnumKeyA(HKEY hKey, DWORD dwIndex, char* lpName, DWORD cchName) {
    if (lpName == nullptr) return ERROR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    if ((t.access & KEY_ENUMERATE_SUB_KEYS) == 0) return ERROR_ACCESS_DENIED;
    if (dwIndex >= t.node->subkeys.size()) return ERROR_NO_MORE_ITEMS;
    auto it = t.node->subkeys.begin();
    std::advance(it, dwIndex);
    const std::string& name = it->second->name;
    if (cchName <= name.size()) return ERROR_MORE_DATA;
    std::memcpy(lpName, name.data(), name.size());
    lpName[name.size()] = '\0';
    return ERROR_SUCCESS;
}

DWORD ExpandEnvironmentStringsA(const char* lpSrc, char* lpDst, DWORD nSize) {
    if (lpSrc == nullptr) return 0;
    const std::string src = lpSrc;
    std::string out;
    size_t i = 0;
    while (i < src.size()) {
        const size_t pct = src.find('%', i);
        if (pct == std::string::npos) {
            out.append(src, i, std::string::npos);
            break;
        }
        out.append(src, i, pct - i);
        const size_t close = src.find('%', pct + 1);
        if (close == std::string::npos) {
            out.append(src, pct, std::string::npos);
            break;
        }
        const std::string name = src.substr(pct + 1, close - pct - 1);
        const char* value = name.empty() ? nullptr : std::getenv(name.c_str());
        // An unknown name stays as it stands, with both of its percent signs.
        if (value != nullptr) {
            out += value;
        } else {
            out.append(src, pct, close - pct + 1);
        }
        i = close + 1;
    }
    const auto needed = static_cast<DWORD>(out.size() + 1);
    if (lpDst != nullptr && nSize >= needed) std::memcpy(lpDst, out.c_str(), needed);
    return needed;
}

std::string RegHiveFile(HKEY hKey) { return FileOfRoot(hKey); }

// ---- The hive text ------------------------------------------------------------

namespace regtext {
namespace {

bool RootMatches(const std::string& given, const std::string& rootName) {
    if (SameName(given, rootName)) return true;
    static const std::pair<const char*, const char*> kShort[] = {
        {"HKCR", "HKEY_CLASSES_ROOT"}, {"HKCU", "HKEY_CURRENT_USER"}, {"HKLM", "HKEY_LOCAL_MACHINE"}};
    for (const auto& [abbr, full] : kShort)
        if (SameName(given, abbr) && rootName == full) return true;
    return false;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// Reads the lines of a text one at a time, without their line ends.
class Lines {
public:
    explicit Lines(const std::string& text) : text_(text) {
        // A byte-order mark of UTF-8 before the header is passed over.
        if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0) pos_ = 3;
    }
    bool Next(std::string_view& line) {
        if (pos_ >= text_.size()) return false;
        size_t end = text_.find('\n', pos_);
        if (end == std::string::npos) end = text_.size();
        line = std::string_view(text_).substr(pos_, end - pos_);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        pos_ = end + 1;
        return true;
    }

private:
    const std::string& text_;
    size_t pos_ = 0;
};

std::string_view TrimLeft(std::string_view s) {
    while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
    return s;
}

std::string_view TrimRight(std::string_view s) {
    while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
    return s;
}

// A quoted text from just behind its opening quote up to its closing quote,
// with \\ and \" undone; `s` is left behind the closing quote.
bool ReadQuoted(std::string_view& s, std::string& out) {
    out.clear();
    size_t i = 0;
    while (i < s.size()) {
        const char c = s[i];
        if (c == '"') {
            s.remove_prefix(i + 1);
            return true;
        }
        if (c == '\\' && i + 1 < s.size() && (s[i + 1] == '\\' || s[i + 1] == '"')) {
            out += s[i + 1];
            i += 2;
            continue;
        }
        out += c;
        ++i;
    }
    return false;
}

// Comma-separated hex bytes, continued on the next line after a backslash.
bool ReadHexBytes(std::string_view s, Lines& lines, std::string& out) {
    out.clear();
    for (;;) {
        s = TrimLeft(TrimRight(s));
        bool continues = false;
        if (!s.empty() && s.back() == '\\') {
            continues = true;
            s.remove_suffix(1);
        }
        while (!s.empty()) {
            s = TrimLeft(s);
            size_t n = 0;
            int value = 0;
            while (n < s.size() && n < 3 && HexDigit(s[n]) >= 0) value = value * 16 + HexDigit(s[n++]);
            if (n == 0 || n > 2) return false;
            out += static_cast<char>(value);
            s.remove_prefix(n);
            s = TrimLeft(s);
            if (s.empty()) break;
            if (s.front() != ',') return false;
            s.remove_prefix(1);
        }
        if (!continues) return true;
        std::string_view next;
        if (!lines.Next(next)) return true;
        s = next;
    }
}

// The data of a value line, behind its "=".
bool ReadData(std::string_view s, Lines& lines, Value& v) {
    s = TrimLeft(s);
    if (!s.empty() && s.front() == '"') {
        s.remove_prefix(1);
        std::string text;
        if (!ReadQuoted(s, text)) return false;
        v.type = REG_SZ;
        v.data = text;
        v.data += '\0';
        return true;
    }
    auto startsWith = [&](const char* word) {
        const size_t n = std::strlen(word);
        if (s.size() < n) return false;
        for (size_t i = 0; i < n; ++i)
            if (Upper(s[i]) != Upper(word[i])) return false;
        s.remove_prefix(n);
        return true;
    };
    if (startsWith("dword:")) {
        s = TrimRight(s);
        if (s.empty() || s.size() > 8) return false;
        uint32_t value = 0;
        for (char c : s) {
            const int d = HexDigit(c);
            if (d < 0) return false;
            value = value * 16 + static_cast<uint32_t>(d);
        }
        v.type = REG_DWORD;
        v.data.resize(4);
        for (int i = 0; i < 4; ++i) v.data[static_cast<size_t>(i)] = static_cast<char>((value >> (8 * i)) & 0xFF);
        return true;
    }
    if (startsWith("hex:")) {
        v.type = REG_BINARY;
        return ReadHexBytes(s, lines, v.data);
    }
    if (startsWith("hex(")) {
        const size_t close = s.find(')');
        if (close == std::string_view::npos || close == 0 || close > 8) return false;
        uint32_t type = 0;
        for (size_t i = 0; i < close; ++i) {
            const int d = HexDigit(s[i]);
            if (d < 0) return false;
            type = type * 16 + static_cast<uint32_t>(d);
        }
        s.remove_prefix(close + 1);
        if (s.empty() || s.front() != ':') return false;
        s.remove_prefix(1);
        v.type = type;
        return ReadHexBytes(s, lines, v.data);
    }
    return false;
}

void AppendQuoted(const std::string& text, std::string& out) {
    out += '"';
    for (char c : text) {
        if (c == '\\' || c == '"') out += '\\';
        out += c;
    }
    out += '"';
}

// A text value is written between quotes when its bytes come back unchanged
// that way: one terminating zero, and no other zero and no line break.
bool PlainText(const Value& v) {
    if (v.type != REG_SZ || v.data.empty() || v.data.back() != '\0') return false;
    const std::string_view body(v.data.data(), v.data.size() - 1);
    return body.find_first_of(std::string_view("\0\r\n", 3)) == std::string_view::npos;
}

}  // namespace

std::vector<Section> Parse(const std::string& text, const std::string& rootName) {
    std::vector<Section> sections;
    Lines lines(text);
    std::string_view line;
    bool inSection = false;  // false: values here belong to no key of this hive
    while (lines.Next(line)) {
        line = TrimLeft(line);
        if (line.empty() || line.front() == ';') continue;
        if (line.front() == '[') {
            inSection = false;
            const size_t close = line.rfind(']');
            if (close == std::string_view::npos) continue;
            const std::string_view inner = line.substr(1, close - 1);
            // "[-KEY]" removes a key in an import; a hive has nothing to remove.
            if (!inner.empty() && inner.front() == '-') continue;
            const size_t sep = inner.find('\\');
            const std::string root(inner.substr(0, sep));
            if (!RootMatches(root, rootName)) continue;
            Section section;
            if (sep != std::string_view::npos && !SplitPath(std::string(inner.substr(sep + 1)), section.path))
                continue;
            sections.push_back(std::move(section));
            inSection = true;
            continue;
        }
        if (line.front() != '"' && line.front() != '@') continue;
        Value v;
        std::string_view rest = line;
        if (rest.front() == '@') {
            rest.remove_prefix(1);
        } else {
            rest.remove_prefix(1);
            if (!ReadQuoted(rest, v.name)) continue;
        }
        rest = TrimLeft(rest);
        if (rest.empty() || rest.front() != '=') continue;
        rest.remove_prefix(1);
        const bool ok = ReadData(rest, lines, v);
        if (!ok || !inSection) continue;
        v.name = CText(v.name);
        if (v.name.size() > kMaxValueName) continue;
        sections.back().values.push_back(std::move(v));
    }
    return sections;
}

std::string FormatValue(const Value& v) {
    std::string out;
    if (v.name.empty()) {
        out += '@';
    } else {
        AppendQuoted(v.name, out);
    }
    out += '=';
    if (PlainText(v)) {
        AppendQuoted(v.data.substr(0, v.data.size() - 1), out);
        out += '\n';
        return out;
    }
    if (v.type == REG_DWORD && v.data.size() == 4) {
        uint32_t value = 0;
        for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(v.data[static_cast<size_t>(i)]);
        char buf[16];
        std::snprintf(buf, sizeof buf, "dword:%08x\n", value);
        return out + buf;
    }
    static const char kHex[] = "0123456789abcdef";
    if (v.type == REG_BINARY) {
        out += "hex:";
    } else {
        char buf[24];
        std::snprintf(buf, sizeof buf, "hex(%x):", v.type);
        out += buf;
    }
    // Long runs of bytes wrap as the registry's export wraps them, a little
    // under 80 columns, each continued line indented by two blanks.
    size_t column = out.size();
    for (size_t i = 0; i < v.data.size(); ++i) {
        const auto b = static_cast<unsigned char>(v.data[i]);
        if (i > 0) {
            out += ',';
            ++column;
            if (column > 76) {
                out += "\\\n  ";
                column = 2;
            }
        }
        out += kHex[b >> 4];
        out += kHex[b & 15];
        column += 2;
    }
    out += '\n';
    return out;
}

std::string Canonical(const std::string& text, const std::string& rootName) {
    KeyNode root;
    Fill(root, Parse(text, rootName));
    return HiveText(root, rootName);
}

}  // namespace regtext
