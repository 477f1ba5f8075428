// The fuzz target fuzz_scrollbars, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_scrollbars
#include "../../fuzz/fuzz_scrollbars.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_scrollbars", FuzzEntry_scrollbars);
