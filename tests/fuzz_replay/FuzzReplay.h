#pragma once
// Replays the kept inputs of a libFuzzer target in the normal test run: its
// seed corpus (fuzz/corpus/<target>/) and every crash input that it ever
// found (fuzz/regressions/<target>/). Each target's source is compiled here
// with its entry point renamed, so that the checks of the target itself
// (abort on a broken promise) and the sanitizers of the test build judge
// every input.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using FuzzEntry = int (*)(const uint8_t* data, size_t size);

// The folder of fuzz/ in the source tree.
std::string FuzzSourceFolder();

// The files of fuzz/corpus/<target>/ and fuzz/regressions/<target>/, sorted.
std::vector<std::string> FuzzInputs(const std::string& target);

// Runs the entry over one file, naming the file on stderr if the run aborts.
void ReplayFuzzInput(FuzzEntry entry, const std::string& path);

// Registers a test that replays every kept input of the target.
struct FuzzReplayTarget {
    FuzzReplayTarget(const char* target, FuzzEntry entry);
};
