// The fuzz target fuzz_tga, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_tga
#include "../../fuzz/fuzz_tga.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_tga", FuzzEntry_tga);
