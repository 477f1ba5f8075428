// The fuzz target fuzz_btm, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_btm
#include "../../fuzz/fuzz_btm.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_btm", FuzzEntry_btm);
