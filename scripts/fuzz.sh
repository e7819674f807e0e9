#!/usr/bin/env bash
# Runs every fuzz target in BUILD_DIR for SECONDS each (0: no time limit), or
# for RUNS inputs each when given, starting from its seed corpus.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/fuzz}
seconds=${2:-5}
runs=${3:--1}
failed=0
for target in "$build"/fuzz/fuzz_*; do
  [ -f "$target" ] && [ -x "$target" ] || continue
  name=$(basename "$target")
  corpus=$(mktemp -d)
  seeds="fuzz/corpus/${name#fuzz_}"
  [ -d "$seeds" ] && cp -r "$seeds"/. "$corpus"/
  start=$(date +%s)
  if "$target" -max_total_time="$seconds" -runs="$runs" -rss_limit_mb=2048 "$corpus" >"$corpus.log" 2>&1; then
    done_runs=$(grep -oE 'Done [0-9]+ runs' "$corpus.log" | grep -oE '[0-9]+' || echo "?")
    echo "fuzz: $name ran $(( $(date +%s) - start ))s, $done_runs inputs, no finding"
  else
    echo "fuzz: $name FAILED"; tail -40 "$corpus.log"; failed=1
  fi
  rm -rf "$corpus" "$corpus.log"
done
exit $failed
