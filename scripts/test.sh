#!/usr/bin/env bash
# Installs what is missing, builds Quarrin with the address and
# undefined-behaviour sanitizers, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh --test
cmake -S . -B build/test -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQUARRIN_SANITIZE=ON -DQUARRIN_BUILD_BENCH=OFF
cmake --build build/test --parallel
cd build/test
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --parallel "$(nproc)" "$@"
