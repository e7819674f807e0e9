#!/usr/bin/env bash
# The crash campaign: KILLS (default 1000) random SIGKILLs spread over every
# kind of file the program keeps, each while a child process writes it through
# the program's own code; every file must be found whole, old or new.
set -euo pipefail
cd "$(dirname "$0")/.."
kills=${1:-1000}
cmake --preset asan >/dev/null
cmake --build --preset asan -j "$(nproc)" --target test_reliability
export QT_QPA_PLATFORM=offscreen LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
TAVIX_KILLS=$kills build/asan/tests/test_reliability --gtest_filter='*Kill*' | grep -E 'figures|FAILED|PASSED|torn'
