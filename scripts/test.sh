#!/usr/bin/env bash
# Builds Zenvora and runs every test. Installs missing build packages first.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/install-deps.sh"
cmake -S "$top" -B "$top/build" -G Ninja
cmake --build "$top/build" --parallel "$(nproc)"
cd "$top/build"
ctest --output-on-failure --parallel "$(nproc)"
