// The fuzz target fuzz_recogniser, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_recogniser
#include "../../fuzz/fuzz_recogniser.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_recogniser", FuzzEntry_recogniser);
