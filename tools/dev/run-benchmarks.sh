#!/usr/bin/env bash
# run-benchmarks.sh BUILD_DIR [FILTER]: runs every benchmark binary of the build and prints, for
# each group "name/impl", the time of every peer and the ratio of ours ("osl") to it.
set -eu
build=$1
filter=${2:-.}
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
status=0
for bin in "$build"/bench/osl_*_bench; do
    [ -x "$bin" ] || continue
    name=$(basename "$bin")
    echo "== $name"
    "$bin" --benchmark_filter="$filter" --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
        --benchmark_out="$out/$name.json" --benchmark_out_format=json || status=1
    python3 "$(dirname "$0")/bench_ratios.py" "$out/$name.json" || status=1
done
exit $status
