// The fuzz target fuzz_zip_reader, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_zip_reader
#include "../../fuzz/fuzz_zip_reader.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_zip_reader", FuzzEntry_zip_reader);
