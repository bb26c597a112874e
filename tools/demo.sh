#!/bin/sh
# Sets up a Debian 12 machine, builds Lorvane and shows the metadata of the sample file.
set -eu
cd "$(dirname "$0")/.."
tools/setup-debian.sh
cmake --preset release -DLORVANE_BUILD_TESTS=OFF -DLORVANE_BUILD_BENCHMARKS=OFF
cmake --build --preset release --target lorvane-show
build/release/apps/lorvane-show "$@" tests/data/plain.jpg
