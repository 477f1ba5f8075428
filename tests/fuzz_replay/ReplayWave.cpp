// The fuzz target fuzz_wave, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_wave
#include "../../fuzz/fuzz_wave.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_wave", FuzzEntry_wave);
