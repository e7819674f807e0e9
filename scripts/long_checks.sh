#!/bin/bash
# Checks too long for the test command: a recording over 1 GB (OpenDML), once
# finished and once cut short by a full disk, read by our own RIFF check, by
# ffprobe and by GStreamer's avidemux (gst-discoverer-1.0); and a day-long
# interval series on the injected clock, once with the disk full at noon and
# once with the camera lost at noon.
# Usage: scripts/long_checks.sh [build folder, default build/asan]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/asan}
cmake --build "$build" -j2 --target test_media test_app_ui
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
export QT_QPA_PLATFORM=offscreen
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"

# A recording test, then its file read by ffprobe and by GStreamer's avidemux:
# ffprobe decodes as many frames as the RIFF check counted.
record_and_play() {
    local test=$1 file=$out/$2 counted decoded
    TAVIX_LONG_DIR=$out "$build/tests/test_media" --gtest_also_run_disabled_tests \
        --gtest_filter="AviLong.DISABLED_$test" | tee "$out/test.txt"
    counted=$(sed -nE "s/^$2: .* ([0-9]+) frames$/\1/p" "$out/test.txt")
    decoded=$(ffprobe -v error -count_frames -select_streams v:0 \
        -show_entries stream=nb_read_frames -of csv=p=0 "$file")
    echo "ffprobe: $decoded frames decoded, $counted in the file's index"
    [ "$decoded" = "$counted" ]
    gst-discoverer-1.0 "$file" | tee "$out/discoverer.txt"
    grep -q "Duration: " "$out/discoverer.txt"
    if grep -qi "error" "$out/discoverer.txt"; then
        echo "gst-discoverer-1.0 reports an error"
        exit 1
    fi
    rm -f "$file"
}

echo "== recording over 1 GB"
record_and_play 'OverOneGigabyte*' over1gb.avi

echo "== recording over 1 GB cut short by a full disk"
record_and_play 'CutShortOverOneGigabyte*' cut1gb.avi

echo "== a day-long series"
"$build/tests/test_app_ui" --gtest_also_run_disabled_tests --gtest_filter='IntervalSaveWindow.DISABLED_ADay_*'

echo "long checks passed"
