#!/usr/bin/env bash
# run.sh BIN: runs every benchmark program in BIN, one after the other; each prints its own table.
# Ends with 1 when one of them missed a target.
set -euo pipefail
bin=$1
export QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES='vorn.*=false'
failed=0
for program in "$bin"/bench_*; do
    printf '\n=== %s\n' "$(basename "$program")"
    command=("$program")
    # The window's start is measured on an X server with a session bus.
    [ "$(basename "$program")" != bench_start ] ||
        command=(xvfb-run -a dbus-run-session -- "$program")
    "${command[@]}" || failed=1
done
exit $failed
