#!/bin/sh
# Sets up a Debian 12 machine, builds Lorvane and shows the metadata of the sample picture
# (a JPEG with EXIF, IPTC and XMP tags written by ExifTool) in German, turns it by a German
# label on a copy, and shows the copy's orientation again.
# Further arguments go to `lorvane show`, e.g. tools/demo.sh --lang fr. LORVANE_DEMO_SKIP_SETUP=1
# skips the package installation on a machine that has the packages.
set -eu
cd "$(dirname "$0")/.."
[ -n "${LORVANE_DEMO_SKIP_SETUP:-}" ] || tools/setup-debian.sh
cmake --preset release -DLORVANE_BUILD_TESTS=OFF -DLORVANE_BUILD_BENCHMARKS=OFF
# All of it, so that `cmake --install build/release` can follow (the man page is a target too).
cmake --build --preset release
lorvane=build/release/apps/lorvane
if [ "$#" -gt 0 ]; then
  exec "$lorvane" show "$@" tests/data/sample.jpg
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp tests/data/sample.jpg "$work/sample.jpg"
cd "$work"
run() {
  echo
  echo "\$ lorvane $*"
  "$OLDPWD/$lorvane" "$@"
}
run show --lang de sample.jpg
run set --lang de "EXIF:Orientation=90° gegen den Uhrzeigersinn" -- sample.jpg
run tags --lang de EXIF:Orientation
echo
echo "\$ lorvane show --lang de sample.jpg | grep -e ^EXIF -e Ausrichtung"
"$OLDPWD/$lorvane" show --lang de sample.jpg | grep -e '^EXIF' -e Ausrichtung
