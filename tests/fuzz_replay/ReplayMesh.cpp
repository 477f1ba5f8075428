// The fuzz target fuzz_mesh, replayed over its kept inputs.
#define LLVMFuzzerTestOneInput FuzzEntry_mesh
#include "../../fuzz/fuzz_mesh.cpp"
#undef LLVMFuzzerTestOneInput

#include "FuzzReplay.h"

static const FuzzReplayTarget kTarget("fuzz_mesh", FuzzEntry_mesh);
