#!/usr/bin/env bash
# The long run: live view at 2592x1944 and 30 fps with a freeze, a measurement,
# a picture save and a return to live every few seconds, for MINUTES minutes
# (default 60), on a release build. Writes the samples to build/soak.csv and
# prints the summary; fails when frames were lost, threads or open files grew,
# or resident memory or the heap in use grew by 1 MB or more after the warm-up.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-60}
bash scripts/deps.sh >/dev/null
cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc)" --target tavix_soak
[ -z "${QT_QPA_PLATFORM:-}" ] && export QT_QPA_PLATFORM=offscreen
build/release/tavix_soak --minutes "$minutes" --check | tee build/soak.csv
