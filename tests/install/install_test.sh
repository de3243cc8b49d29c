#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what a desktop needs:
# the program, its menu entry, its icons and its AppStream metadata, with
# both validators. Usage: install_test.sh BUILD_DIR VERSION
set -euo pipefail
build=$1 version=$2
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null

id=org.zenvora.Zenvora
icons=share/icons/hicolor
for f in bin/zenvora share/applications/$id.desktop share/metainfo/$id.metainfo.xml \
         $icons/scalable/apps/$id.svg $icons/48x48/apps/$id.png $icons/256x256/apps/$id.png; do
  [ -f "$prefix/$f" ] || { echo "not installed: $f"; exit 1; }
done
# Nothing else lands outside these folders.
unexpected=$(cd "$prefix" && find . -type f | grep -vE '^\./(bin/zenvora|share/(applications|metainfo|icons/hicolor)/)' || true)
[ -z "$unexpected" ] || { echo "unexpected files: $unexpected"; exit 1; }

# A PNG's width and height are the big-endian words at bytes 16 and 20.
for size in 48 256; do
  read -r w h < <(od -An -tu1 -j16 -N8 "$prefix/$icons/${size}x${size}/apps/$id.png" |
                  awk '{print ($1*16777216+$2*65536+$3*256+$4), ($5*16777216+$6*65536+$7*256+$8)}')
  [ "$w $h" = "$size $size" ] || { echo "icon ${size}: ${w}x${h}"; exit 1; }
done

desktop-file-validate "$prefix/share/applications/$id.desktop"
appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml" >/dev/null
grep -qx 'Name=家計簿 Zenvora' "$prefix/share/applications/$id.desktop"
grep -q "<release version=\"$version\"" "$prefix/share/metainfo/$id.metainfo.xml"

# The installed program answers --help and --version without a display.
env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$prefix/bin/zenvora" --version | grep -qx "Zenvora $version"
env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$prefix/bin/zenvora" --help | grep -q -- '--book PATH'
echo "installed and validated under $prefix"
