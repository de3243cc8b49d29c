#!/usr/bin/env bash
# Installs the Debian packages listed in scripts/packages.txt (and in any list
# files given as arguments) that are not installed yet. Needs root (or sudo)
# only when something is missing.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
mapfile -t packages < <(cat "$here/packages.txt" "$@" | grep -v '^\s*\(#\|$\)')
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
echo "installing: ${missing[*]}"
$sudo apt-get update
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y "${missing[@]}"
