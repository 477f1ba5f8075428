#pragma once
// Helpers shared by the PAK tests: PAK files of members given as they stand,
// and the built tools run as programs.
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "fixtures/PakBuilder.h"
#include "fixtures/Programs.h"

namespace paktest {

struct Member {
    std::string Name;
    std::string Bytes;          // as they stand in the PAK
    int32_t OriginalSize = -1;  // -1: the same as the packed size (stored)
};

// A PAK of the members in order: the header, the directory, then each
// member's bytes one behind the other.
inline std::string BuildPak(const std::vector<Member>& members) {
    fixtures::PakBuilder pak;
    for (const auto& m : members)
        pak.Raw(m.Name, m.Bytes, m.OriginalSize < 0 ? static_cast<int32_t>(m.Bytes.size()) : m.OriginalSize);
    return pak.Build();
}

// Offset of member i's bytes in a PAK from BuildPak.
inline int32_t MemberOffset(const std::vector<Member>& members, size_t index) {
    fixtures::PakBuilder pak;
    for (const auto& m : members) pak.Raw(m.Name, m.Bytes, 0);
    return static_cast<int32_t>(pak.DataOffset(index));
}

inline std::string ToolPath(const std::string& name) { return std::string(QUARRIN_TOOLS_DIR) + "/" + name; }

inline bool ToolBuilt(const std::string& name) { return access(ToolPath(name).c_str(), X_OK) == 0; }

inline std::string OnPath(const std::string& name) { return fixtures::ProgramOnPath(name); }

// Runs a program in a folder and gives its exit status; what it writes on
// standard output and then on standard error goes into `output`.
inline int RunCapture(const std::vector<std::string>& argv, const std::string& folder, std::string& output) {
    const fixtures::ProgramResult r = fixtures::RunAndCapture(argv, folder);
    output = r.Output + r.Errors;
    return r.Status;
}

}  // namespace paktest
