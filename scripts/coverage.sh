#!/usr/bin/env bash
# Builds a Debug build with --coverage (no sanitizers) in build-coverage/, runs every test and
# prints the line and function coverage of src/ by the suite.
#   scripts/coverage.sh            the summary
#   scripts/coverage.sh --files    also the figure per file
set -euo pipefail
cd "$(dirname "$0")/.."

build=build-coverage
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DTNW_SANITIZE= \
    -DCMAKE_CXX_FLAGS=--coverage -DCMAKE_EXE_LINKER_FLAGS=--coverage \
    -DCMAKE_SHARED_LINKER_FLAGS=--coverage >/dev/null
cmake --build "$build" -j"$(nproc)"

# Counts from an earlier run would add up with this one's.
find "$build" -name '*.gcda' -delete
ctest --test-dir "$build" --output-on-failure -j"$(nproc)" >/dev/null || {
    ctest --test-dir "$build" --rerun-failed --output-on-failure
    exit 1
}

args=(--root . --filter src/ --object-directory "$build" --exclude-directories "$build/CMakeFiles"
      --print-summary)
if [[ "${1:-}" == "--files" ]]; then
    gcovr "${args[@]}"
else
    gcovr "${args[@]}" --output /dev/null
fi
