#!/usr/bin/env bash
# Builds the Debian package from a release build: build/package/tavix_<version>_<arch>.deb.
# Install it with: sudo apt install ./build/package/tavix_*.deb
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/package}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTAVIX_TESTS=OFF -DTAVIX_BENCH=OFF \
  -DCMAKE_INSTALL_PREFIX=/usr >/dev/null
cmake --build "$build" -j "$(nproc)"
(cd "$build" && cpack -G DEB)
ls "$build"/tavix_*.deb
