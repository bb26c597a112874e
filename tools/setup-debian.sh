#!/bin/sh
# Installs what Lorvane needs to build, test and run on Debian 12, with GCC and with Clang (whose
# sanitizer and libFuzzer runtimes come in a package of their own), and the Python package for
# Debian's /usr/bin/python3 with its tests and Dask. Run as root (or with sudo).
set -eu
if [ "$(id -u)" -ne 0 ]; then
  exec sudo "$0" "$@"
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -q
apt-get install -y -q --no-install-recommends \
  g++ cmake ninja-build pkg-config python3 \
  clang libclang-rt-14-dev \
  dpkg-dev libicu-dev nlohmann-json3-dev googletest libgtest-dev libbenchmark-dev \
  lintian man-db bash-completion file binutils \
  perl libimage-exiftool-perl atomicparsley \
  libjpeg-turbo-progs \
  python3-dev pybind11-dev python3-pybind11 python3-pytest python3-dask python3-distributed
