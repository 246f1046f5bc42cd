#!/usr/bin/env bash
# Installs the Linux build into a folder and builds the smallest host against
# it, once through CMake and once through pkg-config.
set -eu -o pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install build/linux-release --prefix "$work/tarvix" >/dev/null

mkdir "$work/host"
cp examples/minimal/main.cpp "$work/host"
cat >"$work/host/CMakeLists.txt" <<'T'
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 20)
find_package(tarvix 2 REQUIRED)
add_executable(host main.cpp)
target_link_libraries(host tarvix::tarvix)
T
cmake -S "$work/host" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/tarvix" >/dev/null
cmake --build "$work/build" >/dev/null

# Moved, the folder serves pkg-config all the same.
mv "$work/tarvix" "$work/moved"
export PKG_CONFIG_PATH=$work/moved/lib/pkgconfig:$work/moved/lib/x86_64-linux-gnu/pkgconfig
[ "$(pkg-config --modversion tarvix)" = "$(sed -n 's/#define TARVIX_VERSION "\(.*\)"/\1/p' include/tarvix/version.h)" ]
# shellcheck disable=SC2046
g++ -std=c++20 "$work/host/main.cpp" $(pkg-config --cflags --libs tarvix) -Wl,-rpath,"$(pkg-config --variable=libdir tarvix)" -o "$work/plain"

# It runs until its window is closed, so being stopped is a good end.
code=0
SDL_VIDEODRIVER=dummy timeout 2 "$work/plain" || code=$?
[ $code = 124 ] || { echo "the host ended with $code"; exit 1; }
"$work/moved/bin/tvpack" --help >/dev/null
