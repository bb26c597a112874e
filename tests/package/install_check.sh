#!/bin/sh
# Installs the build tree into a temporary prefix and then moves it, since an installed tree
# must not depend on where it was put. There it is used as a person and as another project
# would: the installed program and Python package run without LD_LIBRARY_PATH, and the examples
# build through the CMake package and through pkg-config, and run.
#   install_check.sh BUILD_DIR SOURCE_DIR LIBDIR [PYTHON_DIR]   (PYTHON_DIR: with the package)
set -eu
build_dir=$1
source_dir=$2
libdir=$3
python_dir=${4:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
. "$source_dir/tests/package/checks.sh"
cd "$source_dir"

prefix=$work/prefix
cmake --install "$build_dir" --prefix "$work/staged" > /dev/null
mv "$work/staged" "$prefix"

# The program takes the library and the binaries folder from its own prefix.
run ldd "$prefix/bin/lorvane"
expect "liblorvane.so.0 => $prefix/bin/../$libdir/liblorvane.so.0"
check_program "$prefix/bin/lorvane"
if [ -n "$python_dir" ]; then
  PYTHONPATH="$prefix/$python_dir" check_python "$prefix/$python_dir"
fi

check_examples_with_cmake -DCMAKE_PREFIX_PATH="$prefix"
check_package_capitalised -DCMAKE_PREFIX_PATH="$prefix"
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig" LD_LIBRARY_PATH="$prefix/$libdir"
check_example_with_pkg_config
