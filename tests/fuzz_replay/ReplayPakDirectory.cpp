// The fuzz target fuzz_pak_directory, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_pak_directory
#include "../../fuzz/fuzz_pak_directory.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_pak_directory", FuzzEntry_pak_directory);
