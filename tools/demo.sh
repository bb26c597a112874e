#!/bin/sh
# Sets up a Debian 12 machine, builds Lorvane and shows the metadata of the sample picture
# (a JPEG with EXIF, IPTC and XMP tags written by ExifTool), in German and in English.
# Further arguments go to `lorvane show`, e.g. tools/demo.sh --lang fr.
set -eu
cd "$(dirname "$0")/.."
tools/setup-debian.sh
cmake --preset release -DLORVANE_BUILD_TESTS=OFF -DLORVANE_BUILD_BENCHMARKS=OFF
cmake --build --preset release --target lorvane-cli
if [ "$#" -gt 0 ]; then
  exec build/release/apps/lorvane show "$@" tests/data/sample.jpg
fi
for language in de en; do
  echo
  echo "\$ lorvane show --lang $language tests/data/sample.jpg"
  build/release/apps/lorvane show --lang "$language" tests/data/sample.jpg
done
