// The fuzz target fuzz_registry, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_registry
#include "../../fuzz/fuzz_registry.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_registry", FuzzEntry_registry);
