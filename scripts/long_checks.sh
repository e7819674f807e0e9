#!/bin/bash
# Checks too long for the test command: a recording over 1 GB (OpenDML), read
# by our own RIFF check, by ffprobe and by GStreamer's avidemux
# (gst-discoverer-1.0).
# Usage: scripts/long_checks.sh [build folder, default build/asan]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/asan}
cmake --build "$build" -j2 --target test_media
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
export QT_QPA_PLATFORM=offscreen

echo "== recording over 1 GB"
TAVIX_LONG_DIR=$out "$build/tests/test_media" --gtest_also_run_disabled_tests \
    --gtest_filter='AviLong.DISABLED_OverOneGigabyte*'
file=$out/over1gb.avi
ls -l "$file"
frames=$(ffprobe -v error -count_frames -select_streams v:0 \
    -show_entries stream=nb_read_frames -of csv=p=0 "$file")
echo "ffprobe: $frames frames decoded"
gst-discoverer-1.0 "$file" | tee "$out/discoverer.txt"
grep -q "Duration: " "$out/discoverer.txt"
! grep -qi "error" "$out/discoverer.txt"
rm -f "$file"

echo "long checks passed"
