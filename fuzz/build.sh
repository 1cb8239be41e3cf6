#!/usr/bin/env bash
# Builds the fuzz targets as OSS-Fuzz calls for it: with CC, CXX, CFLAGS, CXXFLAGS and
# LIB_FUZZING_ENGINE from the environment, into $OUT, each with its seeds and dictionary. The
# programs use the system's Qt, minizip and libudev.
set -euo pipefail
cd "$(dirname "$0")/.."
export CC=${CC:-clang} CXX=${CXX:-clang++}
export LIB_FUZZING_ENGINE=${LIB_FUZZING_ENGINE:--fsanitize=fuzzer}
export CXXFLAGS=${CXXFLAGS:--O1 -g1 -fsanitize=address,undefined,fuzzer-no-link}
work=${WORK:-build}/oss-fuzz
OUT=${OUT:-$work/out}
mkdir -p "$OUT"
cmake -S . -B "$work" -G Ninja -DVORN_BUILD_TESTS=OFF -DVORN_BUILD_FUZZERS=ON \
    -DVORN_FUZZING_ENGINE="$LIB_FUZZING_ENGINE"
cmake --build "$work" --target fuzzers
for program in "$work"/bin/fuzz_*; do
    target=${program##*/fuzz_}
    cp "$program" "$OUT"
    zip -qjr "$OUT/fuzz_${target}_seed_corpus.zip" "$work/fuzz_targets/seeds/$target"
    [ ! -e "fuzz/$target.dict" ] || cp "fuzz/$target.dict" "$OUT/fuzz_$target.dict"
done
