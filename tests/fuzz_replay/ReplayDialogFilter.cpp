// The fuzz target fuzz_dialog_filter, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_dialog_filter
#include "../../fuzz/fuzz_dialog_filter.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_dialog_filter", FuzzEntry_dialog_filter);
