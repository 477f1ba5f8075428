// The fuzz target fuzz_batch_line, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_batch_line
#include "../../fuzz/fuzz_batch_line.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_batch_line", FuzzEntry_batch_line);
