// The fuzz target fuzz_runner_check, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_runner_check
#include "../../fuzz/fuzz_runner_check.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_runner_check", FuzzEntry_runner_check);
