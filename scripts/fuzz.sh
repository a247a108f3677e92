#!/bin/bash
# Builds the fuzzers and runs them for some time each.
#
#   scripts/fuzz.sh [SECONDS] [FUZZERS...]    60 seconds of each of reader, headers, encoder, names and exr by default
#
# What they learn stays in build/fuzz/corpus; an input that fails is kept in build/fuzz/failures.
set -euo pipefail

project=$(cd "$(dirname "$0")/.." && pwd)
cd "$project"
scripts/install-dependencies.sh build test fuzz

seconds=${1:-60}
shift || true
fuzzers=("$@")
[[ ${#fuzzers[@]} -gt 0 ]] || fuzzers=(reader headers encoder names exr)

cmake --preset fuzz -DZET_WERROR="${ZET_WERROR:-OFF}"
cmake --build --preset fuzz -j "$(nproc)" --target "${fuzzers[@]/#/fuzz_}"

mkdir -p build/fuzz/failures
for fuzzer in "${fuzzers[@]}"; do
    corpus=build/fuzz/corpus/$fuzzer
    dictionary=tests/fuzz/$fuzzer.dict
    mkdir -p "$corpus"
    options=(-max_total_time="$seconds" -print_final_stats=1 -artifact_prefix=build/fuzz/failures/"$fuzzer"-)
    [[ ! -f $dictionary ]] || options+=(-dict="$dictionary")
    echo "Fuzzing $fuzzer for $seconds s"
    log=build/fuzz/$fuzzer.log
    if ! build/fuzz/bin/fuzz_"$fuzzer" "${options[@]}" "$corpus" tests/fuzz/seeds/"$fuzzer" >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        exit 1
    fi
    # The last line with the coverage: edges, and the finer features.
    grep -E 'cov: ' "$log" | tail -n 1
    grep -E 'number_of_executed_units|peak_rss' "$log"
done
