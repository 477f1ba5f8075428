// Reads arbitrary bytes as a hive file. Whatever the text, reading what a save
// would write gives that same text again, and every value that was read is
// written in a form that reads back to it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/Registry.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string root = "HKEY_CURRENT_USER";
    for (const auto& section : regtext::Parse(text, root)) {
        for (const auto& value : section.values) {
            const auto again = regtext::Parse("[HKCU]\n" + regtext::FormatValue(value), root);
            if (again.size() != 1 || again[0].values.size() != 1) std::abort();
            const auto& v = again[0].values[0];
            if (v.name != value.name || v.type != value.type || v.data != value.data) std::abort();
        }
    }
    const std::string once = regtext::Canonical(text, root);
    if (regtext::Canonical(once, root) != once) std::abort();
    return 0;
}
