#pragma once
// The type recogniser: reads the first eight bytes of a file, names its type
// from the table of game file types, has the class that handles the type
// created when there is one, and from then on stands in front of that object.
// The classes themselves come from the factory that the recogniser is handed,
// so that identification needs none of them.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "identify/CNerhaltFile.h"
#include "platform/Files.h"

// A row of the table of game file types.
struct NerhaltType {
    int32_t Id;
    const char* Name;
    const char* Extension;
    bool Able2Show;
    bool Able2Save;
};

inline constexpr int32_t kNerhaltSignature = 0x6E71;

// The row of an id, or nullptr for an unknown id.
const NerhaltType* FindNerhaltType(int32_t id);
// The whole table, twenty rows.
const NerhaltType* NerhaltTypes(size_t& count);

// Creates the object of the class in charge of a type id, or nullptr for a
// type that the program only names.
using FileObjectFactory = std::function<std::unique_ptr<CNerhaltFile>(int32_t id)>;

class CNerhaltFiles {
public:
    explicit CNerhaltFiles(FileObjectFactory factory = {}) : m_fnCreate(std::move(factory)) {}
    virtual ~CNerhaltFiles();
    CNerhaltFiles(const CNerhaltFiles&) = delete;
    CNerhaltFiles& operator=(const CNerhaltFiles&) = delete;

    // True when the file is a game file (signed), unless the class in charge
    // refuses it.
    bool Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv);
    bool SaveAs();
    bool Show(int32_t hDesDC);
    std::string Information();
    int32_t Width();
    int32_t Height();

    const std::string& Extension() const { return m_sExtension; }
    const std::string& Name() const { return m_sName; }
    int32_t Id() const { return m_lId; }
    bool IsAble2Show() const { return m_bAble2Show; }
    bool IsAble2Save() const { return m_bAble2Save; }
    // The list view belongs to PAK files alone.
    bool HideListView() const;
    // The object of the current file, or nullptr.
    CNerhaltFile* FileObject() const { return m_oFile.get(); }

protected:
    // The object of the class in charge of a type, from the factory.
    virtual std::unique_ptr<CNerhaltFile> CreateFileObject(int32_t id);

private:
    HFILE m_hFile = 0;
    std::string m_sPathName;
    bool m_bSigned = false;
    bool m_bResult = false;
    bool m_bAble2Show = false;
    bool m_bAble2Save = false;
    bool m_bKnownId = false;
    int32_t m_lSignature = 0;
    int32_t m_lId = 0;
    std::string m_sName;
    std::string m_sExtension;
    FileObjectFactory m_fnCreate;
    std::unique_ptr<CNerhaltFile> m_oFile;
};
