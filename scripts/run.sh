#!/usr/bin/env bash
# Builds Zenvora and starts it on its default database
# ($XDG_DATA_HOME/Zenvora/Zenvora.sql, made with a starter book on first run).
# Installs missing packages first.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/install-deps.sh" "$top/scripts/run-packages.txt"
cmake -S "$top" -B "$top/build" -G Ninja
cmake --build "$top/build" --parallel "$(nproc)" --target zenvora
exec "$top/build/app/zenvora" "$@"
