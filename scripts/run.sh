#!/usr/bin/env bash
# Installs what is missing, builds Quarrin in Release and starts the browser in
# its executable's folder, where the build has written a samples/ folder.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUARRIN_BUILD_TESTS=OFF -DQUARRIN_BUILD_BENCH=OFF
cmake --build build/release --parallel
exe="$PWD/build/release/bin/quarrin"
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "Quarrin is built, but there is no display to show its window on."
  echo "Start it under a virtual display instead:"
  echo "  xvfb-run -a $exe"
  exit 1
fi
cd "$(dirname "$exe")"
exec "$exe" "$@"
