#!/usr/bin/env bash
# run.sh BIN: runs every benchmark program in BIN, one after the other; each prints its own table.
set -euo pipefail
bin=$1
export QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES='vorn.*=false'
for program in "$bin"/bench_*; do
    printf '\n=== %s\n' "$(basename "$program")"
    "$program"
done
