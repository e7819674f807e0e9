#!/usr/bin/env bash
# Runs every fuzz target in BUILD_DIR for SECONDS each (0: no time limit), or
# for RUNS inputs each when given, starting from its seed corpus; JOBS targets
# at a time (default 1). Each target's log and grown corpus stay in KEEP_DIR
# when given (for long runs), else they are removed. TARGETS (names without
# "fuzz_", longest first) picks and orders the targets.
#   [TARGETS="ini_reader picture_load"] bash scripts/fuzz.sh [BUILD_DIR] [SECONDS] [RUNS] [JOBS] [KEEP_DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/fuzz}
seconds=${2:-5}
runs=${3:--1}
jobs=${4:-1}
keep=${5:-}

# One target: prints one line, and the log's tail on a finding.
run_target() {
  local target=$1 name work start
  name=$(basename "$target")
  if [ -n "$keep" ]; then
    work="$keep/$name"
    mkdir -p "$work/corpus"
  else
    work=$(mktemp -d)
    mkdir "$work/corpus"
  fi
  local seeds="fuzz/corpus/${name#fuzz_}"
  [ -d "$seeds" ] && cp -r "$seeds"/. "$work/corpus"/
  start=$(date +%s)
  if "$target" -max_total_time="$seconds" -runs="$runs" -rss_limit_mb=2048 -print_final_stats=1 \
    "$work/corpus" >"$work/log" 2>&1; then
    local done_runs rate rss
    done_runs=$(sed -nE 's/^stat::number_of_executed_units: *([0-9]+)/\1/p' "$work/log")
    rate=$(sed -nE 's/^stat::average_exec_per_sec: *([0-9]+)/\1/p' "$work/log")
    rss=$(sed -nE 's/^stat::peak_rss_mb: *([0-9]+)/\1/p' "$work/log")
    echo "fuzz: $name ran $(($(date +%s) - start))s, ${done_runs:-?} inputs (${rate:-?}/s, peak ${rss:-?} MB), no finding"
  else
    echo "fuzz: $name FAILED"
    tail -40 "$work/log"
    [ -z "$keep" ] && rm -rf "$work"
    return 1
  fi
  [ -z "$keep" ] && rm -rf "$work"
  return 0
}

failed=0
running=0
if [ -n "${TARGETS:-}" ]; then
  targets=()
  for name in $TARGETS; do targets+=("$build/fuzz/fuzz_$name"); done
else
  targets=("$build"/fuzz/fuzz_*)
fi
for target in "${targets[@]}"; do
  [ -f "$target" ] && [ -x "$target" ] || continue
  if [ "$running" -ge "$jobs" ]; then
    wait -n || failed=1
    running=$((running - 1))
  fi
  run_target "$target" &
  running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
  wait -n || failed=1
  running=$((running - 1))
done
exit $failed
