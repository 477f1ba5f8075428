#pragma once
// The sample files that the build writes beside the programs: one file of
// every kind the browser knows, all made by the builders here.
#include <string>
#include <vector>

namespace samples {

struct SampleFile {
    std::string Name;
    std::string Bytes;
};

// The samples in a fixed order; the same bytes on every call.
std::vector<SampleFile> SampleFiles();

// The members of the sample PAK: name, original bytes, and whether it is imploded.
struct SampleMember {
    std::string Name;
    std::string Original;
    bool Imploded;
};
std::vector<SampleMember> SamplePakMembers();

// Writes every sample into `folder`, creating it and the folders above it;
// throws std::runtime_error on failure.
void WriteSamples(const std::string& folder);

}  // namespace samples
