#!/usr/bin/env bash
# Runs the fuzzers one after another under both sanitizers, 60 seconds each, all or the named ones.
# What they gather stays in build/; an input that ends one is left in build/fuzz/found.
# Usage: scripts/fuzz.sh [SECONDS] [SUBJECT...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds=60
if [[ ${1:-} =~ ^[0-9]+$ ]]; then
    seconds=$1
    shift
fi
subjects=("$@")
if [[ ${#subjects[@]} -eq 0 ]]; then
    subjects=(fuzz/fuzz_*.cpp)
    subjects=("${subjects[@]#fuzz/fuzz_}")
    subjects=("${subjects[@]%.cpp}")
fi

scripts/install-deps.sh build fuzz
scripts/build.sh fuzz "${subjects[@]/#/fuzz_}"

export LSAN_OPTIONS=suppressions=$PWD/fuzz/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1
mkdir -p build/fuzz/found
for subject in "${subjects[@]}"; do
    gathered=build/fuzz/corpus/$subject
    log=build/fuzz/$subject.log
    mkdir -p "$gathered"
    longest=1024
    if [[ $subject == savedfile ]]; then
        longest=4096 # a file with its 16 rows takes more than 2 kB
    fi
    if ! "build/fuzz/bin/fuzz_$subject" -max_total_time="$seconds" -timeout=10 -max_len="$longest" \
        -close_fd_mask=1 -print_final_stats=1 -artifact_prefix="build/fuzz/found/$subject-" \
        "$gathered" "fuzz/corpus/$subject" 2>"$log"; then
        cat "$log" >&2
        exit 1
    fi
    # The last line of the run, and the number of executions after it.
    awk -v subject="$subject" '
        / cov: / { for (i = 1; i < NF; ++i) if ($i == "cov:") coverage = $(i + 1) }
        /^stat::number_of_executed_units/ { runs = $2 }
        /^stat::average_exec_per_sec/ { rate = $2 }
        /^stat::peak_rss_mb/ { memory = $2 }
        END { printf "%-16s %10d runs %7d/s %6d edges %5d MB\n", subject, runs, rate, coverage, memory }
    ' "$log"
done
