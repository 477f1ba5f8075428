// Reads a ZIP archive of arbitrary bytes through the file source that the
// archiver opens, and decodes its first entries in memory. Aborts when an entry gives more than its declared size, when one
// taken as whole gave less, or when a name taken as safe could leave its
// folder.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzFile.h"
#include "pak/MemberPath.h"
#include "pak/ZipReader.h"

namespace {
void CheckName(const std::string& name) {
    std::string path = MemberPath("", name);
    if (path.empty()) return;
    if (path[0] == '/' || path.find('\\') != std::string::npos) std::abort();
    const bool letter = (path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z');
    if (path.size() >= 2 && letter && path[1] == ':') std::abort();
    size_t start = 0;
    for (;;) {
        size_t end = path.find('/', start);
        if (path.substr(start, end - start) == "..") std::abort();
        if (end == std::string::npos) break;
        start = end + 1;
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFile input("quarrin-fuzz-zip");
    input.Write(data, size);
    FileZipSource source;
    std::string error;
    if (!source.Open(input.Path(), error)) std::abort();
    ZipReader reader;
    if (!reader.Open(source, error)) return 0;
    int count = 0;
    for (const ZipEntry& entry : reader.Entries()) {
        CheckName(entry.Name);
        if (++count > 8) continue;
        uint64_t produced = 0;
        const bool whole = reader.Extract(
            entry,
            [&](const uint8_t*, size_t n) {
                produced += n;
                if (produced > entry.UncompressedSize) std::abort();
                return true;
            },
            error);
        if (whole && produced != entry.UncompressedSize) std::abort();
    }
    return 0;
}
