#!/bin/sh
# Runs each fuzz target of the asan preset for SECONDS (default 60), two at a time, each
# starting from its checked-in seeds; new inputs go to a temporary folder, so the seeds stay as
# they are. Fails when a target finds a crash, a leak or a broken property: the input that did
# it is kept in build/asan/findings/. Usage: tools/fuzz.sh [SECONDS]
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-60}
build=build/asan/tests/fuzz
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p build/asan/findings

run() {
  name=$1
  mkdir -p "$work/$name"
  if "$build/lorvane-fuzz-$name" -max_total_time="$seconds" -print_final_stats=1 \
      -artifact_prefix="build/asan/findings/$name-" "$work/$name" "tests/fuzz/corpus/$name" \
      >"$work/$name.log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/$name.log")
    echo "fuzz $name: no finding in ${seconds} s, $runs runs ($((runs / seconds)) per second)"
  else
    tail -n 60 "$work/$name.log"
    echo "fuzz $name: FAILED"
    return 1
  fi
}

failed=0
set --
for program in "$build"/lorvane-fuzz-*; do
  set -- "$@" "${program##*/lorvane-fuzz-}"
done
if [ ! -x "$build/lorvane-fuzz-$1" ]; then
  echo "no fuzz targets in $build: build the asan preset first" >&2
  exit 1
fi
while [ $# -gt 0 ]; do
  run "$1" &
  first=$!
  second=""
  if [ $# -gt 1 ]; then
    run "$2" &
    second=$!
  fi
  wait "$first" || failed=1
  if [ -n "$second" ]; then
    wait "$second" || failed=1
    shift
  fi
  shift
done
exit "$failed"
