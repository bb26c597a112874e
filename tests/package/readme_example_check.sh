#!/bin/sh
# The README's first program is examples/read_sample.cpp, letter for letter, and the built
# example runs.
#   readme_example_check.sh SOURCE_DIR EXAMPLE_PROGRAM
set -eu
source_dir=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
. "$source_dir/tests/package/checks.sh"
cd "$source_dir"

awk '/^```cpp$/ { inside = 1; next } inside && /^```$/ { exit } inside' README.md > "$work/readme.cpp"
diff -u examples/read_sample.cpp "$work/readme.cpp" ||
  { echo "README.md's first program is no longer examples/read_sample.cpp"; exit 1; }
run "$2"
expect "Orientation: Rotate 90 CW"
