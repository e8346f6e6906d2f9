#!/usr/bin/env bash
# run-fuzzers.sh BUILD_DIR [SECONDS]: runs every libFuzzer target of a fuzz build for SECONDS
# (default 60) each, starting from its corpus in fuzz/corpus/<name>. New interesting inputs go to
# BUILD_DIR/fuzz-new/<name> (merge the ones worth keeping with -merge=1); a crash leaves its input
# in BUILD_DIR/fuzz-crashes/ and makes the run fail.
set -u
build=$1
seconds=${2:-60}
root=$(cd "$(dirname "$0")/../.." && pwd)
status=0
found=0
mkdir -p "$build/fuzz-crashes"
for bin in "$build"/fuzz/fuzz_*; do
    [ -x "$bin" ] || continue
    found=1
    name=${bin##*/fuzz_}
    new=$build/fuzz-new/$name
    mkdir -p "$new"
    echo "== $name: ${seconds}s"
    if ! "$bin" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$build/fuzz-crashes/$name-" "$new" "$root/fuzz/corpus/$name" \
        >"$build/fuzz-$name.log" 2>&1; then
        echo "FAIL $name: see $build/fuzz-$name.log and $build/fuzz-crashes/"
        tail -30 "$build/fuzz-$name.log"
        status=1
    else
        grep -E 'stat::number_of_executed_units|stat::new_units_added' "$build/fuzz-$name.log" | tr '\n' ' '
        echo
    fi
done
[ $found -eq 1 ] || { echo "run-fuzzers: no fuzz target in $build/fuzz" >&2; exit 1; }
exit $status
