#!/usr/bin/env bash
# Builds the benchmark in Release and runs the four workloads at full size against shapelib and
# GDAL (each rival only where its -dev package is installed). Arguments go to tnw-bench, e.g.
#   scripts/bench.sh                 W1-W4, N = 1,000,000, median of 5 runs
#   scripts/bench.sh -w W3 -r 3      one workload, fewer runs
#   scripts/bench.sh -n 10000 -r 1   the smoke size: do the implementations agree?
# Then W5, the tool end to end against ogr2ogr (bench/cli_bench.py), unless TNW_BENCH_CLI=0.
# The written sets and the inputs (about 1 GB at full size) go to $TNW_BENCH_DIR, by default
# build-bench/bench-data.
set -euo pipefail
cd "$(dirname "$0")/.."

build=build-bench
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DTNW_BUILD_BENCHMARKS=ON \
      -DTNW_BUILD_TESTS=OFF -DTNW_BUILD_CLI=ON >/dev/null
cmake --build "$build" --target tnw-bench tnw_cli -j"$(nproc)" >/dev/null
"$build/bench/tnw-bench" -d "${TNW_BENCH_DIR:-$build/bench-data}" "$@"
# W5, the tool end to end against ogr2ogr; TNW_BENCH_CLI=0 leaves it out.
if [[ "${TNW_BENCH_CLI:-1}" != 0 ]]; then
    bench/cli_bench.py --tnw "$build/apps/tnw/tnw" -d "${TNW_BENCH_DIR:-$build/bench-data}/cli"
fi
