#!/usr/bin/env bash
# Configures and builds the project: tools/build.sh [BUILD_DIR] [extra cmake arguments...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
shift || true
cmake -S "$root" -B "$build" "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
