#include "FuzzReplay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace {

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

}  // namespace

std::string FuzzSourceFolder() {
    // The compiler may name this file relative to the build folder, which is
    // not where the tests run: the source tree's own path stands.
    return (std::filesystem::path(QUARRIN_SOURCE_DIR) / "fuzz").string();
}

std::vector<std::string> FuzzInputs(const std::string& target) {
    std::vector<std::string> files;
    for (const char* kind : {"corpus", "regressions"}) {
        const std::filesystem::path folder = std::filesystem::path(FuzzSourceFolder()) / kind / target;
        std::error_code ec;
        if (!std::filesystem::is_directory(folder, ec)) continue;
        for (const auto& e : std::filesystem::directory_iterator(folder))
            if (e.is_regular_file()) files.push_back(e.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void ReplayFuzzInput(FuzzEntry entry, const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    ASSERT_TRUE(in) << path;
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::strncpy(g_current, path.c_str(), sizeof g_current - 1);
    auto old = std::signal(SIGABRT, SayInput);
    entry(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    std::signal(SIGABRT, old);
    g_current[0] = '\0';
}

namespace {

class FuzzReplayTest : public testing::Test {
public:
    FuzzReplayTest(std::string target, FuzzEntry entry) : target_(std::move(target)), entry_(entry) {}
    void TestBody() override {
        const auto inputs = FuzzInputs(target_);
        // Every target keeps a seed corpus; none found means the folder moved.
        ASSERT_FALSE(inputs.empty()) << "no inputs for " << target_ << " under " << FuzzSourceFolder();
        for (const auto& path : inputs) {
            SCOPED_TRACE(path);
            ReplayFuzzInput(entry_, path);
        }
    }

private:
    std::string target_;
    FuzzEntry entry_;
};

}  // namespace

FuzzReplayTarget::FuzzReplayTarget(const char* target, FuzzEntry entry) {
    const std::string name = target;
    testing::RegisterTest("FuzzReplay", target, nullptr, nullptr, __FILE__, __LINE__,
                          [name, entry]() -> testing::Test* { return new FuzzReplayTest(name, entry); });
}
