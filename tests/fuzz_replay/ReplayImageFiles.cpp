// The fuzz target fuzz_image_files, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_image_files
#include "../../fuzz/fuzz_image_files.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_image_files", FuzzEntry_image_files);
