#!/bin/sh
# Makes the Debian packages of a release build, installs them with apt-get, uses them as a
# person and as another project would (the program on the sample picture; the examples built
# against /usr through find_package and pkg-config) and removes them again, also when a step
# fails. It changes the machine, so it needs root and skips (status 77) without.
#   debian_check.sh BUILD_DIR SOURCE_DIR
set -eu
build_dir=$1
source_dir=$2
packages="liblorvane0 liblorvane-dev lorvane"

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
for deb in *.deb; do
  echo
  echo "\$ dpkg -c $deb"
  dpkg -c "$deb"
  run dpkg-deb --field "$deb" Package Version Depends Recommends
  case $deb in
    liblorvane0_*)
      expect "Depends: libimage-exiftool-perl, perl, .*libicu72"
      expect "Recommends: atomicparsley" ;;
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
check_program /usr/bin/lorvane
check_examples_with_cmake
grep "^Lorvane_DIR:" "$work/cmake-build/CMakeCache.txt"
grep -q "^Lorvane_DIR:PATH=/usr/lib/" "$work/cmake-build/CMakeCache.txt"
check_example_with_pkg_config
