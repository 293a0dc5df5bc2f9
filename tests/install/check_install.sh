#!/bin/sh
# usage: check_install.sh BUILD_DIR CONSUMER_DIR WORK_DIR CXX "CXXFLAGS"
set -eu
build=$1 src=$2 work=$3 cxx=$4 flags=$5
rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null

echo "-- find_package consumer"
cmake -S "$src" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/consumer" "$work/cmake.log"

echo "-- pkg-config consumer"
pc=$(find "$prefix" -name zradutils.pc)
export PKG_CONFIG_PATH="$(dirname "$pc")"
# shellcheck disable=SC2046,SC2086
"$cxx" -std=c++17 $flags "$src/consumer.cpp" $(pkg-config --cflags --libs zradutils) -o "$work/consumer-pc"
LD_LIBRARY_PATH=$(pkg-config --variable=libdir zradutils) "$work/consumer-pc" "$work/pc.log"
