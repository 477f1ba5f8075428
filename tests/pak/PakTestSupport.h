#pragma once
// Helpers shared by the PAK tests: PAK files built in code, and the built
// tools run as programs.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"

extern char** environ;

namespace paktest {

struct Member {
    std::string Name;
    std::string Bytes;          // as they stand in the PAK
    int32_t OriginalSize = -1;  // -1: the same as the packed size (stored)
};

// A PAK of the members in order: the header, the directory, then each
// member's bytes one behind the other.
inline std::string BuildPak(const std::vector<Member>& members) {
    size_t directory = 0;
    for (const auto& m : members) directory += 16 + m.Name.size();
    fixtures::ByteWriter w;
    w.U32(0x6E71).U32(0x097DD4D3).U32(0).U32(0).I32(static_cast<int32_t>(members.size()));
    auto offset = static_cast<int32_t>(20 + directory);
    for (const auto& m : members) {
        w.I32(static_cast<int32_t>(m.Name.size())).Bytes(m.Name).I32(offset);
        w.I32(static_cast<int32_t>(m.Bytes.size()));
        w.I32(m.OriginalSize < 0 ? static_cast<int32_t>(m.Bytes.size()) : m.OriginalSize);
        offset += static_cast<int32_t>(m.Bytes.size());
    }
    for (const auto& m : members) w.Bytes(m.Bytes);
    return w.Data();
}

// Offset of member i's bytes in a PAK from BuildPak.
inline int32_t MemberOffset(const std::vector<Member>& members, size_t index) {
    size_t offset = 20;
    for (const auto& m : members) offset += 16 + m.Name.size();
    for (size_t i = 0; i < index; ++i) offset += members[i].Bytes.size();
    return static_cast<int32_t>(offset);
}

inline std::string ToolPath(const std::string& name) { return std::string(QUARRIN_TOOLS_DIR) + "/" + name; }

inline bool ToolBuilt(const std::string& name) { return access(ToolPath(name).c_str(), X_OK) == 0; }

// The full path of a program on PATH, or empty.
inline std::string OnPath(const std::string& name) {
    const char* path = getenv("PATH");
    std::string dirs = path ? path : "/usr/bin:/bin";
    size_t start = 0;
    for (;;) {
        size_t end = dirs.find(':', start);
        std::string candidate = dirs.substr(start, end - start) + "/" + name;
        if (access(candidate.c_str(), X_OK) == 0) return candidate;
        if (end == std::string::npos) return {};
        start = end + 1;
    }
}

// Runs a program in a folder and gives its exit status; what it writes on
// standard output and error goes into `output`.
inline int RunCapture(const std::vector<std::string>& argv, const std::string& folder, std::string& output) {
    char outTemplate[] = "/tmp/quarrin-pak-output-XXXXXX";
    int outFd = mkstemp(outTemplate);
    if (outFd < 0) return -1;
    unlink(outTemplate);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outFd, 1);
    posix_spawn_file_actions_adddup2(&actions, outFd, 2);
    std::string command = argv[0];
    std::vector<char*> args;
    for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    pid_t pid = 0;
    int rc = posix_spawn(&pid, command.c_str(), &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) {
        close(outFd);
        return -1;
    }
    int status = 0;
    waitpid(pid, &status, 0);
    output.clear();
    lseek(outFd, 0, SEEK_SET);
    char buf[4096];
    ssize_t n;
    while ((n = read(outFd, buf, sizeof buf)) > 0) output.append(buf, static_cast<size_t>(n));
    close(outFd);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace paktest
