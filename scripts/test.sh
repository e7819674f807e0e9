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
# A failed test does not stop the script here: the fuzz targets still run and
# the counts still come last; the script fails when either failed.
set +e
ctest --preset asan -j "$jobs" | tee build/asan/ctest.log
ctest_status=${PIPESTATUS[0]}
set -e

fuzz_status=0
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$jobs" --target fuzz_all || fuzz_status=$?
[ "$fuzz_status" -ne 0 ] || bash scripts/fuzz.sh build/fuzz 5 || fuzz_status=$?

# Every skipped test with the reason it gave (no right to mount, a library
# already on the system) and every disabled one, then the counts once more,
# last, for whoever reads only the end of the log. ctest counts a skipped test
# among the passed ones ("out of" includes it) and leaves a disabled one out;
# here both are counted as skipped.
awk '/^[0-9]+\/[0-9]+ Test: / { name = $3 }
     /: Skipped$/ { getline reason; print "skipped: " name ": " reason }' build/asan/Testing/Temporary/LastTest.log
sed -nE 's/^[[:space:]]*[0-9]+ - (.*) \(Disabled\)$/skipped: \1: disabled in its source/p' build/asan/ctest.log
summary=$(grep -E '^[0-9]+% tests passed' build/asan/ctest.log | tail -1)
total=$(echo "$summary" | sed -E 's/.* out of ([0-9]+).*/\1/')
failed=$(echo "$summary" | sed -E 's/.* ([0-9]+) tests? failed.*/\1/')
skipped=$(grep -cE '^[[:space:]]*[0-9]+ - .* \(Skipped\)$' build/asan/ctest.log || true)
disabled=$(grep -cE '^[[:space:]]*[0-9]+ - .* \(Disabled\)$' build/asan/ctest.log || true)
echo "tests: $((total - failed - skipped)) passed, $failed failed, $((skipped + disabled)) skipped"
[ "$ctest_status" -eq 0 ] && [ "$fuzz_status" -eq 0 ]
