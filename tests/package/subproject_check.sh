#!/bin/sh
# Configures a project that takes Lorvane in with add_subdirectory, with GoogleTest and Google
# Benchmark out of reach (nlohmann/json stays: the library needs it to build) and the folders
# that hold perl, ExifTool and AtomicParsley ignored: it must configure, and warn that the
# binaries folder lacks the tools.
#   subproject_check.sh SOURCE_DIR CXX_COMPILER MAKE_PROGRAM
set -eu
source_dir=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake -S "$source_dir/tests/package/subproject" -B "$work" -G Ninja --no-warn-unused-cli \
  -DLORVANE_SOURCE_DIR="$source_dir" \
  -DCMAKE_CXX_COMPILER="$2" -DCMAKE_MAKE_PROGRAM="$3" \
  -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON \
  -DCMAKE_IGNORE_PATH="/usr/local/bin;/usr/bin;/bin;/usr/local/share/perl5;/usr/share/perl5" \
  > "$work/configure.txt" 2>&1 || { cat "$work/configure.txt"; exit 1; }
cat "$work/configure.txt"
# CMake wraps the warning's lines.
tr -s ' \n' '  ' < "$work/configure.txt" |
  grep -q "binaries folder will lack 'perl', 'exiftool', 'perllib', 'atomicparsley'"
