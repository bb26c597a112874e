#!/bin/sh
# Installs the build tree into a temporary prefix and builds the consumer project against it,
# once through the CMake package and once through pkg-config; both programs must run.
set -eu
build_dir=$1
source_dir=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The example reads tests/data/sample.jpg, relative to the repository.
cd "$source_dir/../.."
cmake --install "$build_dir" --prefix "$work/prefix" > /dev/null
cmake -S "$source_dir" -B "$work/cmake-build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" > /dev/null
cmake --build "$work/cmake-build" > /dev/null
LD_LIBRARY_PATH="$work/prefix/lib" "$work/cmake-build/consumer"

export PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig"
c++ -std=c++20 -o "$work/pkg-consumer" "$source_dir/main.cpp" $(pkg-config --cflags --libs lorvane)
LD_LIBRARY_PATH="$work/prefix/lib" "$work/pkg-consumer"
