#pragma once
// One object with a current address in the registry: a root (ClassKey), a key
// path (SectionKey), a value name (ValueKey) and a value type (ValueType).
// A caller sets these and then reads or writes Value, or calls a key
// operation; each operation opens and closes what it needs, so no key stays
// open between calls. Failures are raised as RuntimeError with the source
// App::EXEName() + ".cRegistry".
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The roots (HKEY_CURRENT_USER, ...) and value types (REG_SZ, ...) that
// ClassKey and ValueType take come with the class.
#include "platform/Registry.h"
#include "platform/Variant.h"

// Numbers of the failures this class raises.
inline constexpr int32_t kRegErrFailed = 26001;
inline constexpr int32_t kRegErrSetValue = static_cast<int32_t>(0x800469A9u);
inline constexpr int32_t kRegErrEnumerateSections = static_cast<int32_t>(0x800469AAu);
inline constexpr int32_t kRegErrAssociationItems = static_cast<int32_t>(0x800469ACu);
inline constexpr int32_t kRegErrAssociationClass = static_cast<int32_t>(0x800469ADu);

class cRegistry {
public:
    // True when SectionKey under ClassKey can be opened for reading.
    bool KeyExists() const;
    // Creates SectionKey (or opens it when it exists); true, or raises.
    bool CreateKey();
    // Deletes SectionKey; true, or raises.
    bool DeleteKey();
    // Deletes ValueKey from SectionKey; true, or raises.
    bool DeleteValue();

    // Reads ValueKey of SectionKey and sets ValueType to the stored type. A key
    // or value that can't be read gives Default and raises nothing.
    Variant Value();
    // Writes ValueKey by ValueType, creating the key when it is missing.
    void SetValue(Variant vValue);

    // The value names of SectionKey: sKeyNames[i] is the name numbered i + 1.
    // Always true; a key that can't be opened gives a count of 0.
    bool EnumerateValues(std::vector<std::string>& sKeyNames, int32_t& iKeyCount);
    // The sub-key names of SectionKey, in the same shape.
    bool EnumerateSections(std::vector<std::string>& sSect, int32_t& iSectCount);

    // Registers a class of documents for an executable under HKEY_CLASSES_ROOT.
    void CreateEXEAssociation(const std::string& sExePath, const std::string& sClassName,
                              const std::string& sClassDescription, const std::string& sAssociation,
                              const std::string& sOpenMenuText = {}, bool bSupportPrint = false,
                              const std::string& sPrintMenuText = {}, bool bSupportNew = false,
                              const std::string& sNewMenuText = {}, bool bSupportInstall = false,
                              const std::string& sInstallMenuText = {}, int32_t lDefaultIconIndex = -1);
    // Adds verbs to an existing class under ClassKey: triples of verb, menu
    // text and command, from vItems[0].
    void CreateAdditionalEXEAssociations(const std::string& sClassName, std::vector<Variant>& vItems);

    int32_t ValueType() const { return m_eValueType; }
    void SetValueType(int32_t eValueType) { m_eValueType = eValueType; }
    int32_t ClassKey() const { return m_hClassKey; }
    void SetClassKey(int32_t eKey) { m_hClassKey = eKey; }
    const std::string& SectionKey() const { return m_sSectionKey; }
    void SetSectionKey(const std::string& sSectionKey) { m_sSectionKey = sSectionKey; }
    const std::string& ValueKey() const { return m_sValueKey; }
    void SetValueKey(const std::string& sValueKey) { m_sValueKey = sValueKey; }
    const Variant& Default() const { return m_vDefault; }
    void SetDefault(Variant vDefault) { m_vDefault = std::move(vDefault); }

private:
    int32_t m_hClassKey = 0;
    std::string m_sSectionKey;
    std::string m_sValueKey;
    Variant m_vValue;
    Variant m_vDefault;
    int32_t m_eValueType = 0;

    [[noreturn]] void Raise(int32_t number, const std::string& description) const;
    std::string SetValueFailure() const;
};
// The shared registry object, created on first use.
extern std::unique_ptr<cRegistry> g_oRegistry;
cRegistry& Registry();

