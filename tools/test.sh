#!/bin/sh
# Sets up a Debian 12 machine, builds Lorvane and runs all its tests.
set -eu
cd "$(dirname "$0")/.."
tools/setup-debian.sh
extra=""
if [ "${CI:-}" = "true" ]; then
  extra="-DLORVANE_WARNINGS_AS_ERRORS=ON"
fi
cmake --preset default $extra
cmake --build --preset default
ctest --preset default
