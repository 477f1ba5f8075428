#!/usr/bin/env bash
# Installs the Debian packages that building, running and testing Quarrin need,
# skipping those already there. Runs apt-get through sudo when not root.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-multimedia-dev libstorm-dev zlib1g-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  fonts-dejavu-core
)
if [ "${1:-}" = "--test" ]; then
  # Real programs that judge what Quarrin writes, and a display for the window tests.
  packages+=(unzip 7zip assimp-utils imagemagick xvfb xauth)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "These packages are missing and neither root nor sudo is at hand: ${missing[*]}" >&2; exit 1; }
  sudo="sudo"
fi
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
