#!/usr/bin/env bash
# Installs what is missing, builds with AddressSanitizer and UndefinedBehaviorSanitizer,
# runs every test, then builds the fuzz targets with clang and runs each briefly.
set -euo pipefail
# ctest output goes through tee: pipefail keeps its exit code.
cd "$(dirname "$0")/.."
bash scripts/deps.sh
jobs=$(nproc)

# The sources keep the project's format.
find src tests bench fuzz soak \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format --dry-run --Werror

cmake --preset asan >/dev/null
cmake --build --preset asan -j "$jobs"
# Leaks reported by LeakSanitizer fail the tests; the suppressions file lists known foreign ones.
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
ctest --preset asan -j "$jobs" | tee build/asan/ctest.log

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$jobs" --target fuzz_all
bash scripts/fuzz.sh build/fuzz 5

# The test count once more, last, for whoever reads only the end of the log.
summary=$(grep -E '^[0-9]+% tests passed' build/asan/ctest.log | tail -1)
total=$(echo "$summary" | sed -E 's/.* out of ([0-9]+).*/\1/')
failed=$(echo "$summary" | sed -E 's/.* ([0-9]+) tests failed.*/\1/')
echo "tests: $((total - failed)) passed, $failed failed"
