#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer and runs every test (the
# Python module's among them, and an install into a temporary prefix that a host project is
# built against), the benchmark at a small size (do the implementations agree?) and a short
# fuzzing run.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh --tests

build=build-test
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DTNW_SANITIZE=address,undefined \
    -DTNW_BUILD_BENCHMARKS=ON -DTNW_BUILD_PYTHON=ON >/dev/null
cmake --build "$build" -j"$(nproc)"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest --test-dir "$build" --output-on-failure -j"$(nproc)"

# A short fuzzing run of every reader (about a minute in all).
FUZZ_SECONDS=${FUZZ_SECONDS:-15} scripts/fuzz.sh
