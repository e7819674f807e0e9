#!/usr/bin/env bash
# Builds with ThreadSanitizer and runs the tests that exercise the camera
# threads, the live view, the recorder and the interval series. Fails on any
# race report. Too slow for every test run: run it after touching threads.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh >/dev/null
cmake --preset tsan >/dev/null
cmake --build --preset tsan -j "$(nproc)" --target test_camera test_media test_files
export QT_QPA_PLATFORM=offscreen
export TSAN_OPTIONS="suppressions=$PWD/scripts/tsan.supp second_deadlock_stack=1 halt_on_error=0 exitcode=66 die_after_fork=0"
status=0
for t in test_camera test_media test_files; do
  log=build/tsan/$t.log
  if build/tsan/tests/$t >"$log" 2>&1; then
    echo "tsan: $t clean ($(grep -E '^\[  PASSED  \]' "$log"))"
  else
    echo "tsan: $t FAILED: $(grep -c 'WARNING: ThreadSanitizer' "$log") race reports, see $log"
    grep -A20 -m3 'WARNING: ThreadSanitizer' "$log" || tail -20 "$log"
    status=1
  fi
done
exit $status
