#!/usr/bin/env bash
# check.sh BUILD SOURCE COMPILER: installs the serial library into a folder of its own and builds the
# documented example against it, through CMake and through pkg-config, with warnings as errors.
set -euo pipefail
build=$1 source=$2 compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --component serial --prefix "$work/prefix" >/dev/null

cat >"$work/CMakeLists.txt" <<'PROJECT'
cmake_minimum_required(VERSION 3.25)
project(user LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 20)
find_package(VornSerial REQUIRED)
add_executable(user serial-example.cpp)
target_compile_options(user PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
target_link_libraries(user PRIVATE Vorn::Serial)
PROJECT
cp "$source/docs/serial-example.cpp" "$work"
cmake -S "$work" -B "$work/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/build" >/dev/null

pc=$(dirname "$(find "$work/prefix" -name vorn-serial.pc)")
flags=$(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs vorn-serial)
# shellcheck disable=SC2086
"$compiler" -std=c++20 -Wall -Wextra -Werror "$work/serial-example.cpp" -o "$work/user" $flags

for program in "$work/build/user" "$work/user"; do
    if message=$("$program" /nowhere 2>&1); then
        echo "$program opened a port that does not exist" >&2
        exit 1
    fi
    grep -q "There is no serial device /nowhere" <<<"$message"
done

# What the documentation shows is what was built.
# shellcheck disable=SC2016
diff <(sed -n '/^```cpp$/,/^```$/p' "$source/docs/serial.md" | sed '1d;$d') \
    "$source/docs/serial-example.cpp"
