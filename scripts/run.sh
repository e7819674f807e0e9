#!/usr/bin/env bash
# Installs what is missing, builds a release and starts Tavix on the simulated camera.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc)" --target tavix
exec build/release/tavix --camera sim "$@"
