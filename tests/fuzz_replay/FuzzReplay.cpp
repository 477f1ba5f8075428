// Replays the kept inputs of every libFuzzer target in the normal test run:
// its seed corpus (fuzz/corpus/<target>/) and every crash input that it ever
// found (fuzz/regressions/<target>/). Each target's source is compiled into
// this program with its entry point renamed FuzzEntry_<name> (see the build
// recipe of this folder), so that the checks of the target itself (abort on a
// broken promise) and the sanitizers of the test build judge every input.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#define FUZZ_TARGET(name) extern "C" int FuzzEntry_##name(const uint8_t* data, size_t size);
#include "FuzzTargets.inc"
#undef FUZZ_TARGET

namespace {

namespace fs = std::filesystem;
using FuzzEntry = int (*)(const uint8_t* data, size_t size);

// The input being replayed, for the message of an abort.
char g_current[4096];

void SayInput(int signal) {
    const char text[] = "fuzz replay: the input that stopped the run: ";
    (void)!::write(2, text, sizeof text - 1);
    (void)!::write(2, g_current, std::strlen(g_current));
    (void)!::write(2, "\n", 1);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void Replay(const std::string& target, FuzzEntry entry) {
    // The compiler may name this file relative to the build folder, which is
    // not where the tests run: the source tree's own path stands.
    const fs::path fuzz = fs::path(QUARRIN_SOURCE_DIR) / "fuzz";
    std::vector<fs::path> inputs;
    for (const char* kind : {"corpus", "regressions"}) {
        std::error_code ec;
        for (const auto& e : fs::directory_iterator(fuzz / kind / target, ec))
            if (e.is_regular_file()) inputs.push_back(e.path());
    }
    std::sort(inputs.begin(), inputs.end());
    // Every target keeps a seed corpus; none found means the folder moved.
    ASSERT_FALSE(inputs.empty()) << "no inputs for " << target << " under " << fuzz;
    for (const auto& path : inputs) {
        SCOPED_TRACE(path);
        std::ifstream in(path, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        std::strncpy(g_current, path.c_str(), sizeof g_current - 1);
        const auto old = std::signal(SIGABRT, SayInput);
        entry(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        std::signal(SIGABRT, old);
    }
}

const bool kRegistered = [] {
    const std::pair<const char*, FuzzEntry> targets[] = {
#define FUZZ_TARGET(name) {"fuzz_" #name, FuzzEntry_##name},
#include "FuzzTargets.inc"
#undef FUZZ_TARGET
    };
    for (const auto& [target, entry] : targets)
        testing::RegisterTest("FuzzReplay", target, nullptr, nullptr, __FILE__, __LINE__,
                              [target, entry]() -> testing::Test* {
                                  struct Run : testing::Test {
                                      Run(const char* t, FuzzEntry e) : target(t), entry(e) {}
                                      void TestBody() override { Replay(target, entry); }
                                      const char* target;
                                      FuzzEntry entry;
                                  };
                                  return new Run(target, entry);
                              });
    return true;
}();

}  // namespace
