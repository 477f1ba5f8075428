#include "platform/Registry.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string_view>

#include "platform/RegistryHive.h"
#include "platform/RegistryText.h"

using namespace regtext;
using namespace reghive;

namespace {

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
    Index::Key key;
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
    const Index& index = t.hive->index;
    return index.Find(index.Root(), t.path, t.key) ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

bool MayWrite(const Hive& hive) { return !hive.readOnly && !hive.unreadable && !hive.file.empty(); }

HKEY NewHandle(HKEY root, std::vector<std::string> path, REGSAM access) {
    State& s = S();
    while (s.open.count(s.next) != 0 || s.next <= 0) s.next = s.next <= 0 ? 1 : s.next + 1;
    const HKEY h = s.next++;
    s.open.emplace(h, OpenKey{root, std::move(path), access});
    return h;
}

// Writes a hive's new text, and reads its keys from it when it is in place.
// A failed write leaves the file and the keys in memory as they were.
LONG Commit(Hive& hive, std::string text) {
    if (text.size() > static_cast<size_t>(kMaxHiveFile)) return ERROR_NOT_ENOUGH_MEMORY;
    if (LONG r = Save(hive, text); r != ERROR_SUCCESS) return r;
    if (!hive.index.Build(std::move(text), hive.rootName)) hive.loaded = false;
    return ERROR_SUCCESS;
}

void CopyOut(std::string_view data, void* lpData, DWORD* lpcbData, LONG& result) {
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
    Index::Key key;
    if (!t.hive->index.Find(t.key, parts, key)) return ERROR_FILE_NOT_FOUND;
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
    Index::Key key;
    const bool exists = t.hive->index.Find(t.key, parts, key);
    if (!exists || (samDesired & kWriteRights) != 0) {
        if (!MayWrite(*t.hive)) return ERROR_ACCESS_DENIED;
    }
    std::vector<std::string> path = t.path;
    for (auto& p : parts) path.push_back(std::move(p));
    if (!exists) {
        if ((t.access & KEY_CREATE_SUB_KEY) == 0) return ERROR_ACCESS_DENIED;
        // The keys that exist keep their spelling; the new ones take the caller's.
        std::vector<std::string> spelled = t.hive->index.Spell(path);
        for (size_t i = spelled.size(); i < path.size(); ++i) spelled.push_back(path[i]);
        const Index& index = t.hive->index;
        if (LONG r = Commit(*t.hive, regtext::WithKey(index.Text(), t.hive->rootName, spelled)); r != ERROR_SUCCESS)
            return r;
    }
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
    Index::ValueView v;
    if (!t.hive->index.FindValue(t.key, CText(lpValueName), v)) return ERROR_FILE_NOT_FOUND;
    if (lpType != nullptr) *lpType = v.type;
    LONG result = ERROR_SUCCESS;
    if (lpcbData != nullptr) CopyOut(v.data, lpData, lpcbData, result);
    return result;
}

LONG RegSetValueExA(HKEY hKey, const std::string& lpValueName, DWORD Reserved, DWORD dwType, const void* lpData,
                    DWORD cbData) {
    if (lpData == nullptr && cbData != 0) return ERROR_INVALID_PARAMETER;
    const std::string_view name = CText(lpValueName);
    if (name.size() > kMaxValueName || HasLineBreak(name)) return ERROR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    if ((t.access & KEY_SET_VALUE) == 0 || !MayWrite(*t.hive)) return ERROR_ACCESS_DENIED;
    regtext::Value v;
    v.name = name;
    v.type = dwType;
    if (cbData > 0) v.data.assign(static_cast<const char*>(lpData), cbData);
    const Index& index = t.hive->index;
    return Commit(*t.hive, regtext::WithValue(index.Text(), t.hive->rootName, index.Spell(t.path), v));
}

LONG RegDeleteKeyA(HKEY hKey, const std::string& lpSubKey) {
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    std::vector<std::string> parts;
    if (!SplitPath(lpSubKey, parts)) return ERROR_INVALID_PARAMETER;
    if (t.path.empty() && parts.empty()) return ERROR_ACCESS_DENIED;  // a root can't go
    const Index& index = t.hive->index;
    Index::Key key;
    if (!index.Find(t.key, parts, key)) return ERROR_FILE_NOT_FOUND;
    if (!MayWrite(*t.hive) || index.SubkeyCount(key) != 0) return ERROR_ACCESS_DENIED;
    std::vector<std::string> path = t.path;
    for (auto& p : parts) path.push_back(std::move(p));
    return Commit(*t.hive, regtext::WithoutKey(index.Text(), t.hive->rootName, index.Spell(path)));
}

LONG RegDeleteValueA(HKEY hKey, const std::string& lpValueName) {
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    if ((t.access & KEY_SET_VALUE) == 0 || !MayWrite(*t.hive)) return ERROR_ACCESS_DENIED;
    const Index& index = t.hive->index;
    const std::string name(CText(lpValueName));
    Index::ValueView v;
    if (!index.FindValue(t.key, name, v)) return ERROR_FILE_NOT_FOUND;
    return Commit(*t.hive, regtext::WithoutValue(index.Text(), t.hive->rootName, index.Spell(t.path), name));
}

LONG RegQueryInfoKeyA(HKEY hKey, char* lpClass, DWORD* lpcClass, DWORD* lpReserved, DWORD* lpcSubKeys,
                      DWORD* lpcMaxSubKeyLen, DWORD* lpcMaxClassLen, DWORD* lpcValues, DWORD* lpcMaxValueNameLen,
                      DWORD* lpcMaxValueLen, DWORD* lpcbSecurityDescriptor, void* lpftLastWriteTime) {
    std::lock_guard<std::mutex> guard(S().lock);
    Target t;
    if (LONG r = Resolve(hKey, t); r != ERROR_SUCCESS) return r;
    if ((t.access & KEY_QUERY_VALUE) == 0) return ERROR_ACCESS_DENIED;
    const Index& index = t.hive->index;
    if (lpClass != nullptr && lpcClass != nullptr && *lpcClass > 0) lpClass[0] = '\0';
    if (lpcClass != nullptr) *lpcClass = 0;
    const size_t subkeys = index.SubkeyCount(t.key);
    if (lpcSubKeys != nullptr) *lpcSubKeys = static_cast<DWORD>(subkeys);
    if (lpcMaxSubKeyLen != nullptr) {
        size_t m = 0;
        for (size_t i = 0; i < subkeys; ++i) m = std::max(m, index.SubkeyName(t.key, i).size());
        *lpcMaxSubKeyLen = static_cast<DWORD>(m);
    }
    if (lpcMaxClassLen != nullptr) *lpcMaxClassLen = 0;
    const size_t values = index.ValueCount(t.key);
    if (lpcValues != nullptr) *lpcValues = static_cast<DWORD>(values);
    size_t maxName = 0, maxData = 0;
    for (size_t i = 0; i < values; ++i) {
        const Index::ValueView v = index.ValueAt(t.key, i);
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
    const Index& index = t.hive->index;
    if (dwIndex >= index.ValueCount(t.key)) return ERROR_NO_MORE_ITEMS;
    const Index::ValueView v = index.ValueAt(t.key, dwIndex);
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
    const Index& index = t.hive->index;
    if (dwIndex >= index.SubkeyCount(t.key)) return ERROR_NO_MORE_ITEMS;
    const std::string_view name = index.SubkeyName(t.key, dwIndex);
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
