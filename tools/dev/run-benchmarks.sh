#!/usr/bin/env bash
# run-benchmarks.sh BUILD_DIR [FILTER]: runs every benchmark binary of the build, keeps the raw
# JSON in bench/results/ and writes bench/REPORT.md: per hot path, ours against each peer with the
# ratio and its target (bench/targets.txt).
set -eu
build=$1
filter=${2:-.}
root=$(cd "$(dirname "$0")/../.." && pwd)
results=$root/bench/results
mkdir -p "$results"
status=0
for bin in "$build"/bench/osl_*_bench; do
    [ -x "$bin" ] || continue
    name=$(basename "$bin")
    echo "== $name"
    "$bin" --benchmark_filter="$filter" --benchmark_repetitions=3 --benchmark_enable_random_interleaving=true \
        --benchmark_report_aggregates_only=true \
        --benchmark_out="$results/$name.json" --benchmark_out_format=json >/dev/null || status=1
done
python3 "$root/tools/dev/bench_report.py" "$results" "$root/bench/targets.txt" "$root/bench/REPORT.md" || status=1
exit $status
