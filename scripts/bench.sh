#!/usr/bin/env bash
# Measures what the module costs beside the tool: builds as released, runs every benchmark side by side, prints a
# table with the goals and draws the plot of growth into build/bench/results/. Eight minutes on two cores, and 9 GB.
#
#   scripts/bench.sh                 everything
#   scripts/bench.sh --instructions  only the instruction counts, compared with those in the repository
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "${BENCH_PACKAGES[@]}"

build() {
    cmake --preset bench
    cmake --build --preset bench
}

# run PROGRAM [OPTION...]: its results into a file of its name.
run() {
    local name=$1
    shift
    echo "== $name"
    ZORBALT_INSTALL_DIR="$PWD/build/bench" "build/bench/bin/bench_$name" "$@" \
        --benchmark_out="$results/$name.json" --benchmark_out_format=json >"$results/$name.log" 2>&1 ||
        { cat "$results/$name.log" >&2; exit 1; }
}

build >/dev/null || { build; exit 1; }
if [ "${1-}" = --instructions ]; then
    exec bench/instructions.py build/bench/bin/bench_instructions
fi

results=build/bench/results
mkdir -p "$results"
repetitions=(--benchmark_repetitions=3 --benchmark_min_time=0.1)
run memory
run readers "${repetitions[@]}" --benchmark_enable_random_interleaving=true
run conversion "${repetitions[@]}"
run call --benchmark_repetitions=5 --benchmark_min_time=1
run big_host
bench/table.py "$results"
