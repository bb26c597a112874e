#!/bin/sh
# Makes the Debian packages of a release build, checks them with lintian (no error, no
# warning), installs them with apt-get, uses them as a person and as another project would
# (the program's version, manual page and completion, the program and the Python package on the
# sample picture; the examples built against /usr through find_package and pkg-config; a program
# built against the library gets liblorvane0 from dpkg-shlibdeps) and removes them again, also
# when a step fails.
# It changes the machine, so it needs root and skips (status 77) without.
#   debian_check.sh BUILD_DIR SOURCE_DIR
set -eu
build_dir=$1
source_dir=$2
packages="liblorvane0 liblorvane-dev lorvane"
if [ -n "$(find "$build_dir/python" -maxdepth 2 -name '_lorvane*.so' 2>/dev/null)" ]; then
  packages="$packages python3-lorvane"
fi

if [ "$(id -u)" -ne 0 ]; then
  echo "skipped: installing Debian packages needs root (run this test as root, as CI does)"
  exit 77
fi
for package in $packages; do
  if dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q " installed$"; then
    echo "$package is installed already; this check would remove it. Remove it first:"
    echo "  apt-get remove --purge $packages"
    exit 1
  fi
done

work=$(mktemp -d)
installed=false
cleanup() {
  status=$?
  if $installed; then
    echo "\$ apt-get remove --purge $packages"
    # shellcheck disable=SC2086
    apt-get remove --purge -y -q -o DPkg::Lock::Timeout=120 $packages > "$work/remove.txt" 2>&1 ||
      { cat "$work/remove.txt"; status=1; }
  fi
  rm -rf "$work"
  exit "$status"
}
trap cleanup EXIT
trap 'exit 1' HUP INT TERM
. "$source_dir/tests/package/checks.sh"

echo "\$ cpack -G DEB"
(cd "$build_dir" && cpack -G DEB -B "$work/debs") > "$work/cpack.txt" 2>&1 ||
  { cat "$work/cpack.txt"; exit 1; }
cd "$work/debs"
# Only errors and warnings fail; informational tags may stay.
echo "\$ lintian --fail-on error,warning *.deb"
lintian --fail-on error,warning ./*.deb
for deb in *.deb; do
  echo
  echo "\$ dpkg -c $deb"
  dpkg -c "$deb"
  run dpkg-deb --field "$deb" Package Version Depends Recommends Suggests
  case $deb in
    liblorvane0_*)
      expect "Depends: libimage-exiftool-perl, perl, .*libicu72"
      expect "Recommends: atomicparsley" ;;
    python3-lorvane_*)
      expect "Depends: liblorvane0 (= .*python3 (>= 3\.[0-9]*), python3 (<< 3\.[0-9]*)"
      expect "Suggests: python3-dask, python3-distributed" ;;
    *) expect "Depends: liblorvane0 (= " ;;
  esac
done
echo

echo "\$ apt-get install ./*.deb"
installed=true
apt-get install -y -q --no-install-recommends -o DPkg::Lock::Timeout=120 ./*.deb > "$work/install.txt" 2>&1 ||
  { cat "$work/install.txt"; exit 1; }
for package in $packages; do
  dpkg-query -W -f '${Package} ${Version} ${Status}\n' "$package"
done

cd "$source_dir"
run lorvane --version
expect "^lorvane $(dpkg-query -W -f '${Version}' lorvane)\$"
expect "^ExifTool [0-9][0-9.]* (/usr/share/lorvane/binaries)\$"
run man -w lorvane
expect "^/usr/share/man/man1/lorvane.1.gz\$"
man lorvane | grep -q "EXIT STATUS" || { echo "man lorvane shows no manual page"; exit 1; }
# bash-completion loads the completion from its folder the first time "lorvane" is completed.
echo "\$ bash: lorvane sh<TAB>"
# (The loader says 124 when it loaded one.)
bash -c '. /usr/share/bash-completion/bash_completion; _completion_loader lorvane
  complete -p lorvane && COMP_WORDS=(lorvane sh) COMP_CWORD=1 && _lorvane lorvane sh lorvane &&
  echo "${COMPREPLY[*]}"' \
  > "$work/out"
cat "$work/out"
expect "^show\$"
check_program /usr/bin/lorvane
case " $packages " in
  *" python3-lorvane "*) check_python /usr/lib/python3/dist-packages ;;
esac
check_examples_with_cmake
grep "^lorvane_DIR:" "$work/cmake-build/CMakeCache.txt"
grep -q "^lorvane_DIR:PATH=/usr/lib/" "$work/cmake-build/CMakeCache.txt"
check_example_with_pkg_config

# A package of a program built against liblorvane-dev depends on liblorvane0, as its shlibs
# file says, and <lorvane/version.hpp> is the packages' version.
echo "\$ dpkg-shlibdeps -O consumer"
mkdir -p "$work/consumer/debian"
printf 'Source: consumer\n\nPackage: consumer\nArchitecture: any\n' > "$work/consumer/debian/control"
cat > "$work/consumer/consumer.cpp" <<'EOF2'
#include <lorvane/lorvane.hpp>
#include <iostream>
int main() { std::cout << LORVANE_VERSION_STRING << " " << lorvane::ETLanguage::local() << "\n"; }
EOF2
# shellcheck disable=SC2046
c++ -std=c++20 -o "$work/consumer/consumer" "$work/consumer/consumer.cpp" $(pkg-config --cflags --libs lorvane)
run "$work/consumer/consumer"
expect "^$(dpkg-query -W -f '${Version}' liblorvane-dev) english\$"
(cd "$work/consumer" && dpkg-shlibdeps -O consumer) > "$work/out"
cat "$work/out"
expect "^shlibs:Depends=.*liblorvane0 (>= "
