#!/usr/bin/env bash
# Builds the fuzzers and runs each of them for its share of SECONDS (default: 60). They start from
# the inputs in fuzz/corpus and from those that earlier runs kept in build/fuzz/corpus.
# Usage: tools/run_fuzz.sh [SECONDS] [FUZZER]…    (fuzz_query, fuzz_links …; default: all)
# With FUZZ_SEED=N every run takes the same inputs, as many as the time allows; otherwise they are
# random. A finding ends the run. Its input is in build/fuzz/findings;
# build/fuzz/bin/FUZZER FILE replays it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

tools/install_dependencies.sh build fuzz
seconds=${1:-60}
shift $(($# > 0 ? 1 : 0))
fuzzers=("$@")
[ ${#fuzzers[@]} -gt 0 ] || fuzzers=(fuzz_property_list fuzz_query fuzz_message_url fuzz_links
                                     fuzz_mail_header fuzz_maildir_name fuzz_mail_configuration
                                     fuzz_message_file)
log=build/fuzz/build.log
mkdir -p build/fuzz/findings

if ! { cmake --preset fuzz && cmake --build --preset fuzz; } >"$log" 2>&1 </dev/null; then
    tail -n 60 "$log" >&2
    echo "The build failed; all of its output is in $log" >&2
    exit 1
fi

for fuzzer in "${fuzzers[@]}"; do
    seeds=fuzz/corpus/${fuzzer#fuzz_}
    found=build/fuzz/corpus/${fuzzer#fuzz_}
    report=build/fuzz/$fuzzer.log
    mkdir -p "$found"
    if ! "build/fuzz/bin/$fuzzer" -max_total_time=$((seconds / ${#fuzzers[@]})) -timeout=10 \
         -seed="${FUZZ_SEED:-0}" \
         -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="build/fuzz/findings/$fuzzer-" \
         "$found" "$seeds" >"$report" 2>&1; then
        tail -n 60 "$report" >&2
        echo "$fuzzer found something; see build/fuzz/findings" >&2
        exit 1
    fi
    echo "$fuzzer: $(sed -n 's/^stat::number_of_executed_units: *//p' "$report") inputs, nothing found"
done
