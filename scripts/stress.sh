#!/usr/bin/env bash
# Stress runs, kept out of the test command (several minutes and about 1 GB of disk):
#   1. a 10,000,000-record point set written through tnwShapeEncoder and checked whole with
#      tools/check-shapeset, then read back through tnwDBFDecoder with every record
#      checked; a run of a tenth the size beside it shows that peak memory does not grow with
#      the number of records;
#   2. an FGP set of as many points written and walked as sites through tnwFGPDecoder, beside
#      one of a tenth the size, peak memory again flat;
#   3. the .shp offset limit crossed: records of 4 Mi points until the .shp would pass the
#      2^31 - 1 16-bit words its offsets address (the file layer drops the record bytes).
#   scripts/stress.sh [records]          default 10000000
# STRESS_DIR chooses where the files go (default build-stress/data); they are removed after.
set -euo pipefail
cd "$(dirname "$0")/.."

records=${1:-10000000}
small=$((records / 10))
build=build-stress
data=${STRESS_DIR:-$build/data}

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DTNW_BUILD_TESTS=ON -DTNW_BUILD_CLI=OFF \
    >/dev/null
cmake --build "$build" -j"$(nproc)" --target stress_points >/dev/null
tool=$build/tests/robustness/stress_points

mkdir -p "$data"
trap 'rm -f "$data"/small.* "$data"/points.* "$data"/limit.* "$data"/set*.fgp' EXIT

peak() { sed -n 's/.*peak_rss_kb=\([0-9]*\).*/\1/p' <<<"$1"; }
run() {  # prints the tool's line and keeps it in $line
    line=$("$tool" "$@")
    echo "$line"
}

echo "== $small and $records point records written, checked and read back"
run write "$data/small" "$small"
write_small=$(peak "$line")
run write "$data/points" "$records"
write_full=$(peak "$line")
tools/check-shapeset --quiet --no-peers "$data/points"
run read "$data/small.dbf" "$small"
read_small=$(peak "$line")
run read "$data/points.dbf" "$records"
read_full=$(peak "$line")

echo "== $small and $records points of an FGP set written and walked"
run fgp "$data/set_small" "$small"
fgp_small=$(peak "$line")
run fgp "$data/set" "$records"
fgp_full=$(peak "$line")

# Flat: ten times the records may cost at most 16 MB more at the peak.
status=0
for phase in write read fgp; do
    small_kb=${phase}_small full_kb=${phase}_full
    if ((${!full_kb} > ${!small_kb} + 16384)); then
        echo "FAIL: $phase peak memory grew from ${!small_kb} kB to ${!full_kb} kB"
        status=1
    else
        echo "ok: $phase peak memory ${!small_kb} kB for $small records, ${!full_kb} kB for $records"
    fi
done

echo "== the .shp offset limit"
run shp-limit "$data/limit"
exit $status
