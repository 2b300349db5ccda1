#!/usr/bin/env bash
# Builds the libFuzzer targets with clang, ASan and UBSan, and runs each for a while.
#   scripts/fuzz.sh            10 seconds per target, about a minute in all
#   FUZZ_SECONDS=600 scripts/fuzz.sh [target...]
# Targets: dbf delimited gpl shape_details wkt shape_writer convert fgp. Each starts from the working
# corpus in build-fuzz/corpus/<target>, the seeds in fuzz/corpus/<target> (fuzz/make-seeds.sh)
# and the inputs of earlier findings in tests/robustness/data/findings/<target>, with the
# dictionaries in fuzz/dict/. Findings are left in build-fuzz/findings/<target>/.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${FUZZ_SECONDS:-10}
targets=("$@")
[[ ${#targets[@]} -eq 0 ]] && targets=(dbf delimited gpl shape_details wkt shape_writer convert fgp)

build=build-fuzz
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++-14 \
    -DTNW_BUILD_FUZZERS=ON -DTNW_BUILD_TESTS=OFF -DTNW_BUILD_CLI=OFF \
    -DTNW_SANITIZE=address,undefined -DCMAKE_CXX_FLAGS=-fsanitize=fuzzer-no-link >/dev/null
cmake --build "$build" -j"$(nproc)" --target "${targets[@]/#/fuzz_}"

# Inputs long enough to cross the readers' limits: a .dbf header of 32,767 bytes, a line of
# 32,767 characters.
max_len() {
    case $1 in
        dbf | delimited | gpl | convert) echo 70000 ;;
        fgp) echo 16384 ;;
        *) echo 4096 ;;
    esac
}

# The dictionary of a target: the shape writer reads well-known text, a conversion reads tables
# and text, a GPL log text and a table.
dictionary() {
    case $1 in
        shape_writer) echo fuzz/dict/wkt.dict ;;
        convert)
            cat fuzz/dict/dbf.dict fuzz/dict/delimited.dict >"$build/convert.dict"
            echo "$build/convert.dict"
            ;;
        gpl)
            cat fuzz/dict/dbf.dict fuzz/dict/gpl.dict >"$build/gpl.dict"
            echo "$build/gpl.dict"
            ;;
        *) echo "fuzz/dict/$1.dict" ;;
    esac
}

status=0
for t in "${targets[@]}"; do
    corpus="$build/corpus/$t"
    findings="$build/findings/$t"
    mkdir -p "$corpus" "$findings"
    inputs=("$corpus" "fuzz/corpus/$t")
    [[ -d tests/robustness/data/findings/$t ]] && inputs+=("tests/robustness/data/findings/$t")
    echo "== fuzz_$t for ${seconds}s"
    if ! "$build/fuzz/fuzz_$t" "${inputs[@]}" -dict="$(dictionary "$t")" -max_len="$(max_len "$t")" \
            -max_total_time="$seconds" -timeout=10 \
            -rss_limit_mb=2048 -artifact_prefix="$findings/" -print_final_stats=1 \
            2>"$build/fuzz_$t.log"; then
        echo "fuzz_$t found a problem; see $build/fuzz_$t.log and $findings/"
        tail -n 40 "$build/fuzz_$t.log"
        status=1
    else
        grep -E "stat::number_of_executed_units|cov:" "$build/fuzz_$t.log" | tail -n 2
    fi
done
exit $status
