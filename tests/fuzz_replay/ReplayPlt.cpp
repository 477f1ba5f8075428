// The fuzz target fuzz_plt, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_plt
#include "../../fuzz/fuzz_plt.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_plt", FuzzEntry_plt);
