// The fuzz target fuzz_hexpage, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_hexpage
#include "../../fuzz/fuzz_hexpage.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_hexpage", FuzzEntry_hexpage);
