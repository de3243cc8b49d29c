#!/usr/bin/env bash
# Builds the Debian package from the build folder and inspects it: the
# dependencies computed from the binary (Qt, SQLite) plus the fonts, and
# every file under /usr. Usage: package_test.sh BUILD_DIR VERSION
set -euo pipefail
build=$1 version=$2
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
(cd "$build" && cpack -G DEB -B "$out" >"$out/cpack.log" 2>&1) || { cat "$out/cpack.log"; exit 1; }
deb=$(ls "$out"/zenvora_"$version"_*.deb)

depends=$(dpkg-deb --field "$deb" Depends)
for needed in libqt6widgets6 libqt6gui6 libqt6core6 libsqlite3-0 libcairo2 libpango-1.0-0 libqt6charts6 fonts-noto-cjk fonts-urw-base35 qt6-translations-l10n; do
  grep -q "\b$needed\b" <<<"$depends" || { echo "Depends lacks $needed: $depends"; exit 1; }
done
[ "$(dpkg-deb --field "$deb" Package)" = zenvora ]

files=$(dpkg-deb --contents "$deb" | awk '$1 !~ /^d/ {print $NF}')
outside=$(grep -v '^\./usr/' <<<"$files" || true)
[ -z "$outside" ] || { echo "files outside /usr: $outside"; exit 1; }
for f in ./usr/bin/zenvora ./usr/share/applications/org.zenvora.Zenvora.desktop \
         ./usr/share/metainfo/org.zenvora.Zenvora.metainfo.xml \
         ./usr/share/icons/hicolor/scalable/apps/org.zenvora.Zenvora.svg; do
  grep -qx -- "$f" <<<"$files" || { echo "not packaged: $f"; exit 1; }
done
echo "package $deb: Depends: $depends"
