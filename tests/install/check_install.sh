#!/bin/sh
# usage: check_install.sh BUILD_DIR CONSUMER_DIR WORK_DIR CXX "CXXFLAGS" README
set -eu
build=$1 src=$2 work=$3 cxx=$4 flags=$5 readme=$6
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
# The rpath in the .pc file lets the program run without LD_LIBRARY_PATH.
"$work/consumer-pc" "$work/pc.log"

echo "-- the README's C++ example"
sed -n '/^```cpp$/,/^```$/p' "$readme" | sed '1d;$d' > "$work/example.cpp"
# shellcheck disable=SC2046,SC2086
"$cxx" -std=c++17 $flags "$work/example.cpp" $(pkg-config --cflags --libs zradutils) -o "$work/example"
printf '{"name":"a"}' > "$work/settings.json"
out=$(cd "$work" && ./example)
test "$out" = "width 1280, md5 $(md5sum < "$work/settings.json" | cut -c1-32)"
test "$(cat "$work/settings.json")" = '{"name":"a","window":{"width":1280}}'
test ! -e "$work/zrad.log"
