#!/usr/bin/env bash
# run-one.sh BUILD PROGRAM: runs one fuzz target for SECONDS_EACH, from its seeds and what earlier
# runs kept in BUILD/corpus. Shows one line; after a finding, the log's end, and fails.
set -uo pipefail
build=$1 program=$2
target=${program##*/fuzz_}
here=$(dirname "$0")
corpus=$build/corpus/$target log=$build/corpus/$target.log
mkdir -p "$corpus"
options=(-max_total_time="$SECONDS_EACH" -timeout=20 -rss_limit_mb=2048 -print_final_stats=1
    -artifact_prefix="$corpus-")
[ ! -e "$here/$target.dict" ] || options+=(-dict="$here/$target.dict")
"$program" "${options[@]}" "$corpus" "$build/fuzz_targets/seeds/$target" >"$log" 2>&1
status=$?
runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
echo "$target: ${runs:-0} runs in $SECONDS_EACH s, $(find "$corpus" -type f | wc -l) inputs kept"
[ $status -eq 0 ] && exit
tail -n 40 "$log"
echo "Found a fault in $target: see $log. Mended, its input belongs to fuzz/cases/$target."
exit 1
