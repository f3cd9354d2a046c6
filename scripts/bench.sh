#!/usr/bin/env bash
# Measures what the module costs beside the tool: builds as released, runs every benchmark side by side, prints a
# table with the goals and draws the plot of growth into build/bench/results/. Half an hour on two cores.
#
#   scripts/bench.sh                 everything, with reports of up to a million drives (for a machine of 20 GB)
#   scripts/bench.sh --quick         up to ten thousand, more briefly
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
sizes=()
repetitions=(--benchmark_repetitions=3 --benchmark_min_time=0.1)
if [ "${1-}" = --quick ]; then
    sizes=(--benchmark_filter='-/(100000|1000000)(/|$)')
    repetitions=(--benchmark_repetitions=3 --benchmark_min_time=0.02)
fi
run memory
run readers "${sizes[@]}" "${repetitions[@]}" --benchmark_enable_random_interleaving=true
run conversion "${sizes[@]}" "${repetitions[@]}"
run call --benchmark_repetitions=5 --benchmark_min_time=2
run big_host
bench/table.py "$results"
