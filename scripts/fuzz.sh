#!/usr/bin/env bash
# Runs every fuzz target in BUILD_DIR for SECONDS each, starting from its seed corpus.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/fuzz}
seconds=${2:-5}
failed=0
for target in "$build"/fuzz/fuzz_*; do
  [ -f "$target" ] && [ -x "$target" ] || continue
  name=$(basename "$target")
  corpus=$(mktemp -d)
  seeds="fuzz/corpus/${name#fuzz_}"
  [ -d "$seeds" ] && cp -r "$seeds"/. "$corpus"/
  if "$target" -max_total_time="$seconds" -rss_limit_mb=2048 "$corpus" >"$corpus.log" 2>&1; then
    echo "fuzz: $name ran ${seconds}s, no finding"
  else
    echo "fuzz: $name FAILED"; tail -40 "$corpus.log"; failed=1
  fi
  rm -rf "$corpus" "$corpus.log"
done
exit $failed
