#include "winsupport/cRegistry.h"

#include <new>

#include "identify/modGlobal.h"
#include "platform/LittleEndian.h"
#include "platform/Registry.h"
#include "platform/Runtime.h"

std::unique_ptr<cRegistry> g_oRegistry;

cRegistry& Registry() {
    if (!g_oRegistry) g_oRegistry = std::make_unique<cRegistry>();
    return *g_oRegistry;
}

namespace {

// Access masks: reading values, listing sub-keys, and all that writes.
constexpr REGSAM kMaskQuery = 1;
constexpr REGSAM kMaskEnumerate = 8;
constexpr REGSAM kMaskWrite = 63;

int32_t SwapEndian(int32_t value) {
    const auto v = static_cast<uint32_t>(value);
    return static_cast<int32_t>((v >> 24) | ((v >> 8) & 0xFF00u) | ((v << 8) & 0xFF0000u) | (v << 24));
}

// Asks once for the length and once for the text.
std::string ExpandEnvStr(const std::string& sValue) {
    const DWORD needed = ExpandEnvironmentStringsA(sValue.c_str(), nullptr, 0);
    if (needed == 0) return {};
    std::string out(needed, '\0');
    ExpandEnvironmentStringsA(sValue.c_str(), out.data(), needed);
    out.resize(needed - 1);
    return out;
}

// A text is stored to be expanded when it has a "%" and another "%" at least
// two characters further on, so that a name can stand between them.
bool HasReference(const std::string& s) {
    const size_t first = s.find('%');
    return first != std::string::npos && s.find('%', first + 2) != std::string::npos;
}

std::string Source() { return App::EXEName() + ".cRegistry"; }

}  // namespace

void cRegistry::Raise(int32_t number, const std::string& description) const {
    RaiseError(number, Source(), description);
}

std::string cRegistry::SetValueFailure() const {
    return "Failed to set registry value Key: '" + std::to_string(m_hClassKey) + "',Section: '" + m_sSectionKey +
           "',Key: '" + m_sValueKey + "' to value: '" + m_vValue.ToString() + "'";
}

bool cRegistry::KeyExists() const {
    HKEY hKey = 0;
    if (RegOpenKeyExA(m_hClassKey, m_sSectionKey, 0, kMaskQuery, &hKey) != ERROR_SUCCESS) return false;
    RegCloseKey(hKey);
    return true;
}

bool cRegistry::CreateKey() {
    HKEY hKey = 0;
    DWORD disposition = 0;
    if (RegCreateKeyExA(m_hClassKey, m_sSectionKey, 0, "", 0, kMaskWrite, nullptr, &hKey, &disposition) !=
        ERROR_SUCCESS)
        Raise(kRegErrFailed, "Failed to create registry Key: '" + m_sSectionKey);
    RegCloseKey(hKey);
    return true;
}

bool cRegistry::DeleteKey() {
    if (RegDeleteKeyA(m_hClassKey, m_sSectionKey) != ERROR_SUCCESS)
        Raise(kRegErrFailed, "Failed to delete registry Key: '" + std::to_string(m_hClassKey) + "',Section: '" +
                                 m_sSectionKey);
    return true;
}

bool cRegistry::DeleteValue() {
    HKEY hKey = 0;
    if (RegOpenKeyExA(m_hClassKey, m_sSectionKey, 0, kMaskWrite, &hKey) != ERROR_SUCCESS)
        Raise(kRegErrFailed, "Failed to open key '" + std::to_string(m_hClassKey) + "',Section: '" + m_sSectionKey +
                                 "' for delete access");
    const LONG result = RegDeleteValueA(hKey, m_sValueKey);
    RegCloseKey(hKey);
    if (result != ERROR_SUCCESS)
        Raise(kRegErrFailed, "Failed to delete registry Key: '" + std::to_string(m_hClassKey) + "',Section: '" +
                                 m_sSectionKey + "',Key: '" + m_sValueKey);
    return true;
}

Variant cRegistry::Value() {
    HKEY hKey = 0;
    // The open is not tested: a key that is missing leaves no handle, and the
    // query below then fails like one for a missing value.
    RegOpenKeyExA(m_hClassKey, m_sSectionKey, 0, kMaskQuery, &hKey);
    DWORD type = 0;
    DWORD size = 0;
    const LONG probe = RegQueryValueExA(hKey, m_sValueKey, nullptr, &type, nullptr, &size);
    if (probe != ERROR_SUCCESS && probe != ERROR_MORE_DATA) {
        if (hKey != 0) RegCloseKey(hKey);
        return m_vDefault;
    }
    m_eValueType = static_cast<int32_t>(type);
    Variant result;
    switch (type) {
        case REG_SZ:
        case REG_MULTI_SZ:
        case REG_EXPAND_SZ: {
            std::string buffer(size, '\0');
            DWORD got = size;
            RegQueryValueExA(hKey, m_sValueKey, nullptr, &type, buffer.data(), &got);
            // The text is the data without its last byte, the terminating zero.
            buffer.resize(size > 0 ? size - 1 : 0);
            result = type == REG_EXPAND_SZ ? Variant(ExpandEnvStr(buffer)) : Variant(std::move(buffer));
            break;
        }
        case REG_DWORD:
        case REG_DWORD_BIG_ENDIAN: {
            uint8_t bytes[4] = {0, 0, 0, 0};
            DWORD got = 4;
            RegQueryValueExA(hKey, m_sValueKey, nullptr, &type, bytes, &got);
            const auto value = static_cast<int32_t>(ByteCursor(bytes, sizeof bytes).LongAt(0));
            result = Variant(type == REG_DWORD_BIG_ENDIAN ? SwapEndian(value) : value);
            break;
        }
        default: {
            // Indexes 0 to the stored size: one byte more than the data.
            std::vector<uint8_t> bytes(static_cast<size_t>(size) + 1, 0);
            DWORD got = size;
            RegQueryValueExA(hKey, m_sValueKey, nullptr, &type, bytes.data(), &got);
            result = Variant(std::move(bytes));
            break;
        }
    }
    RegCloseKey(hKey);
    return result;
}

void cRegistry::SetValue(Variant vValue) {
    HKEY hKey = 0;
    DWORD disposition = 0;
    if (RegCreateKeyExA(m_hClassKey, m_sSectionKey, 0, "", 0, kMaskWrite, nullptr, &hKey, &disposition) !=
        ERROR_SUCCESS)
        Raise(kRegErrFailed, SetValueFailure());
    LONG result = ERROR_SUCCESS;
    switch (m_eValueType) {
        case REG_SZ:
        case REG_EXPAND_SZ: {
            const std::string text = vValue.ToString();
            const DWORD type = HasReference(text) ? REG_EXPAND_SZ : REG_SZ;
            result = RegSetValueExA(hKey, m_sValueKey, 0, type, text.c_str(), static_cast<DWORD>(text.size() + 1));
            break;
        }
        case REG_BINARY: {
            if (!vValue.IsByteArray()) {
                RegCloseKey(hKey);
                Raise(kRegErrFailed, {});
            }
            // The whole array is stored, so a written array reads back with
            // every one of its bytes.
            const auto& bytes = vValue.Bytes();
            result = RegSetValueExA(hKey, m_sValueKey, 0, REG_BINARY, bytes.data(), static_cast<DWORD>(bytes.size()));
            break;
        }
        case REG_DWORD:
        case REG_DWORD_BIG_ENDIAN: {
            if (vValue.IsNumeric()) {
                const auto v = static_cast<uint32_t>(vValue.ToLong());
                const uint8_t bytes[4] = {static_cast<uint8_t>(v), static_cast<uint8_t>(v >> 8),
                                          static_cast<uint8_t>(v >> 16), static_cast<uint8_t>(v >> 24)};
                result = RegSetValueExA(hKey, m_sValueKey, 0, REG_DWORD, bytes, 4);
            }
            break;
        }
        default: result = vbErrTypeMismatch; break;
    }
    RegCloseKey(hKey);
    if (result != ERROR_SUCCESS) Raise(kRegErrSetValue, SetValueFailure());
    m_vValue = std::move(vValue);
}

bool cRegistry::EnumerateValues(std::vector<std::string>& sKeyNames, int32_t& iKeyCount) {
    iKeyCount = 0;
    sKeyNames.clear();
    HKEY hKey = 0;
    if (RegOpenKeyExA(m_hClassKey, m_sSectionKey, 0, kMaskQuery, &hKey) != ERROR_SUCCESS) return true;
    DWORD maxName = 0;
    if (RegQueryInfoKeyA(hKey, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &maxName, nullptr,
                         nullptr, nullptr) != ERROR_SUCCESS) {
        RegCloseKey(hKey);
        return true;
    }
    for (DWORD index = 0;; ++index) {
        std::string name(static_cast<size_t>(maxName) + 1, '\0');
        DWORD size = maxName + 1;
        if (RegEnumValueA(hKey, index, name.data(), &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        name.resize(size);
        ++iKeyCount;
        sKeyNames.push_back(std::move(name));
    }
    RegCloseKey(hKey);
    return true;
}

bool cRegistry::EnumerateSections(std::vector<std::string>& sSect, int32_t& iSectCount) {
    iSectCount = 0;
    sSect.clear();
    HKEY hKey = 0;
    try {
        if (RegOpenKeyExA(m_hClassKey, m_sSectionKey, 0, kMaskEnumerate, &hKey) != ERROR_SUCCESS) return true;
        for (DWORD index = 0;; ++index) {
            std::string name(255, '\0');
            if (RegEnumKeyA(hKey, index, name.data(), 255) != ERROR_SUCCESS) break;
            name.resize(name.find('\0'));
            iSectCount = VbAdd32(iSectCount, 1);
            sSect.push_back(std::move(name));
        }
        RegCloseKey(hKey);
    } catch (const RuntimeError& e) {
        if (hKey != 0) RegCloseKey(hKey);
        Raise(kRegErrEnumerateSections, e.Description);
    } catch (const std::bad_alloc&) {
        if (hKey != 0) RegCloseKey(hKey);
        Raise(kRegErrEnumerateSections, VbErrorDescription(vbErrOutOfMemory));
    }
    return true;
}

void cRegistry::CreateEXEAssociation(const std::string& sExePath, const std::string& sClassName,
                                     const std::string& sClassDescription, const std::string& sAssociation,
                                     const std::string& sOpenMenuText, bool bSupportPrint,
                                     const std::string& sPrintMenuText, bool bSupportNew,
                                     const std::string& sNewMenuText, bool bSupportInstall,
                                     const std::string& sInstallMenuText, int32_t lDefaultIconIndex) {
    std::string sPath = VbTrim(sExePath);
    if (sPath.empty() || sPath.front() != '"') sPath.insert(sPath.begin(), '"');
    if (sPath.size() < 2 || sPath.back() != '"') sPath += '"';

    SetClassKey(HKEY_CLASSES_ROOT);
    SetValueType(REG_SZ);
    SetValueKey("");
    auto write = [this](const std::string& section, const std::string& text) {
        SetSectionKey(section);
        SetValue(Variant(text));
    };
    auto orDefault = [](const std::string& text, const std::string& fallback) {
        return text.empty() ? fallback : text;
    };
    write("." + sAssociation, sClassName);
    write(sClassName, sClassDescription);
    write(sClassName + "\\shell\\open", orDefault(sOpenMenuText, "&Open"));
    write(sClassName + "\\shell\\open\\command", sPath + " \"%1\"");
    if (bSupportPrint) {
        write(sClassName + "\\shell\\print", orDefault(sPrintMenuText, "&Print"));
        write(sClassName + "\\shell\\print\\command", sPath + " /p \"%1\"");
    }
    if (bSupportInstall) {
        write(sClassName + "\\shell\\add", orDefault(sInstallMenuText, "&Install " + sAssociation));
        write(sClassName + "\\shell\\add\\command", sPath + " /a \"%1\"");
    }
    if (bSupportNew) {
        write(sClassName + "\\shell\\new", orDefault(sNewMenuText, "&New"));
        write(sClassName + "\\shell\\new\\command", sPath + " /n \"%1\"");
    }
    if (lDefaultIconIndex > -1) write(sClassName + "\\DefaultIcon", sPath + "," + std::to_string(lDefaultIconIndex));
}

void cRegistry::CreateAdditionalEXEAssociations(const std::string& sClassName, std::vector<Variant>& vItems) {
    // An array without elements has no bounds.
    if (vItems.empty() || vItems.size() % 3 != 0)
        Raise(kRegErrAssociationItems,
              "Invalid parameter list passed to CreateAdditionalEXEAssociations - expected Name/Text/Command");
    SetValueType(REG_SZ);
    SetValueKey("");
    SetSectionKey(sClassName);
    if (!KeyExists())
        Raise(kRegErrAssociationClass, "Error - attempt to create additional associations before class defined.");
    for (size_t i = 0; i + 2 < vItems.size(); i += 3) {
        const std::string verbKey = sClassName + "\\shell\\" + vItems[i].ToString();
        SetSectionKey(verbKey);
        SetValue(vItems[i + 1]);
        SetSectionKey(verbKey + "\\command");
        SetValue(vItems[i + 2]);
    }
}
