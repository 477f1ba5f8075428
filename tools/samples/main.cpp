// quarrin-samples FOLDER: writes one file of every kind the browser knows
// into FOLDER, creating it.
#include <cstdio>
#include <exception>

#include "samples/SampleSet.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argc > 0 ? argv[0] : "quarrin-samples");
        return 2;
    }
    try {
        samples::WriteSamples(argv[1]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "quarrin-samples: %s\n", e.what());
        return 1;
    }
    return 0;
}
