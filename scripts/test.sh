#!/usr/bin/env bash
# Installs what is missing, builds with AddressSanitizer and UndefinedBehaviorSanitizer,
# runs every test, then builds the fuzz targets with clang and runs each briefly.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
jobs=$(nproc)

cmake --preset asan >/dev/null
cmake --build --preset asan -j "$jobs"
# Qt's offscreen platform keeps a few allocations until exit on purpose; see the file.
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
ctest --preset asan -j "$jobs"

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$jobs"
bash scripts/fuzz.sh build/fuzz 5
