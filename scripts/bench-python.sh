#!/usr/bin/env bash
# Builds the Python module in Release (build-bench) and runs W1, W3 and W4 from Python against
# GDAL's Python bindings and pyshp. Arguments go to bench/python_bench.py, e.g.
#   scripts/bench-python.sh                  N = 1,000,000, median of 3 runs
#   scripts/bench-python.sh -n 10000 -r 1    the smoke size
set -euo pipefail
cd "$(dirname "$0")/.."

build=build-bench
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DTNW_BUILD_BENCHMARKS=ON -DTNW_BUILD_PYTHON=ON \
      -DTNW_BUILD_TESTS=OFF -DTNW_BUILD_CLI=OFF >/dev/null
cmake --build "$build" --target tnw_python -j"$(nproc)" >/dev/null
PYTHONPATH="$build/python" exec /usr/bin/python3 bench/python_bench.py \
    -d "${TNW_BENCH_DIR:-$build/bench-data}" "$@"
