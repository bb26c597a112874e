#!/bin/sh
# The README's first three programs are examples/read_sample.cpp, read_files.cpp and
# write_tag.cpp, letter for letter, and the first built example runs.
#   readme_example_check.sh SOURCE_DIR EXAMPLE_PROGRAM
set -eu
source_dir=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
. "$source_dir/tests/package/checks.sh"
cd "$source_dir"

block=0
for example in read_sample.cpp read_files.cpp write_tag.cpp; do
  block=$((block + 1))
  awk -v wanted="$block" '/^```cpp$/ { seen++; inside = (seen == wanted); next }
    inside && /^```$/ { exit } inside' README.md > "$work/readme.cpp"
  diff -u "examples/$example" "$work/readme.cpp" ||
    { echo "README.md's program number $block is no longer examples/$example"; exit 1; }
done
run "$2"
expect "Orientation: Rotate 90 CW"
