# Steps shared by the package checks, sourced by them. They run in the source folder (the
# examples read tests/data/sample.jpg) and keep their files in $work.

# Prints a command and its output; the output stays in $work/out for `expect`.
run() {
  echo "\$ $*"
  "$@" > "$work/out"
  cat "$work/out"
}

expect() {
  grep -q -- "$1" "$work/out" || { echo "missing from the output above: $1"; exit 1; }
}

# The installed program shows the sample picture with the catalogue's titles and labels.
check_program() {
  run "$1" show tests/data/sample.jpg
  expect "Camera Model Name  *DemoCam One"
  expect "Rotate 90 CW  \\[6\\]"
}

# Debian's Python reads the sample picture with the installed package and finds a tag in the
# catalogue (PYTHONPATH names the package's folder where it isn't Python's own).
check_python() {
  run /usr/bin/python3 -c 'import lorvane
with lorvane.Reader(jobs=1) as reader:
    print("Orientation:", reader.read("tests/data/sample.jpg")["EXIF:Orientation"].value)
print(lorvane.tag("EXIF:Orientation").title("de"), lorvane.__file__)'
  expect "Orientation: Rotate 90 CW"
  expect "^Ausrichtung $1/lorvane/__init__.py\$"
}

# examples/ as a project of its own, finding Lorvane with find_package; extra arguments go to
# its configure step.
check_examples_with_cmake() {
  echo "\$ cmake -S examples $*"
  cmake -S examples -B "$work/cmake-build" -G Ninja "$@" > "$work/configure.txt" ||
    { cat "$work/configure.txt"; exit 1; }
  cmake --build "$work/cmake-build" > /dev/null
  run "$work/cmake-build/lorvane-example-read-sample"
  expect "Orientation: Rotate 90 CW"
  run "$work/cmake-build/lorvane-example-tag-names-as-json"
  expect '\["EXIF:Orientation","XMP:Title"\]'
  run "$work/cmake-build/lorvane-example-read-files" tests/data/sample.jpg
  expect "Orientation: Rotate 90 CW"
  cp tests/data/sample.jpg "$work/written.jpg"
  run "$work/cmake-build/lorvane-example-write-tag" "EXIF:Orientation=Rotate 180" "$work/written.jpg"
  expect "written.jpg: written"
  run "$work/cmake-build/lorvane-example-read-files" "$work/written.jpg"
  expect "Orientation: Rotate 180"
}

# examples/ finds the package as find_package(lorvane), the spelling of its target and of
# pkg-config's name; the project's own spelling finds it too, with its json component.
check_package_capitalised() {
  mkdir -p "$work/capitalised"
  printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(Capitalised LANGUAGES CXX)' \
    'find_package(Lorvane CONFIG REQUIRED COMPONENTS json)' \
    'message(STATUS "found ${Lorvane_DIR} json ${Lorvane_json_FOUND}")' \
    > "$work/capitalised/CMakeLists.txt"
  run cmake -S "$work/capitalised" -B "$work/capitalised/build" "$@"
  expect "found .*/cmake/lorvane json TRUE"
}

# The README's example built by hand with the flags pkg-config gives.
check_example_with_pkg_config() {
  echo "\$ c++ examples/read_sample.cpp \$(pkg-config --cflags --libs lorvane)"
  # shellcheck disable=SC2046
  c++ -std=c++20 -o "$work/pkg-config-example" examples/read_sample.cpp \
    $(pkg-config --cflags --libs lorvane)
  run "$work/pkg-config-example"
  expect "Orientation: Rotate 90 CW"
  echo "\$ c++ examples/read_files.cpp \$(pkg-config --cflags --libs lorvane)"
  # shellcheck disable=SC2046
  c++ -std=c++20 -o "$work/pkg-config-reader" examples/read_files.cpp \
    $(pkg-config --cflags --libs lorvane)
  run "$work/pkg-config-reader" tests/data/sample.jpg
  expect "Orientation: Rotate 90 CW"
}

unset LD_LIBRARY_PATH LORVANE_RESOURCE_DIR CMAKE_PREFIX_PATH PKG_CONFIG_PATH
export LANGUAGE=en
