#!/usr/bin/env bash
# Calls both methods of the module over and over, and shows that a host that never ends loses nothing by it:
#
#     scripts/endurance.sh [CALLS]      100000 calls where no number is given; about ten minutes
#
# Prints what the process holds as it goes: memory, descriptors, children, threads, mapped files, result files. Three
# runs: without a trace; a tenth of the calls with all trace levels in a file; a tenth of them among threads that are
# busy with memory and trace while the module forks. The tables and a plot of the first go to build/endurance/. Ends
# with a failure when something grows, a call is answered otherwise than the first, or none comes back for a minute.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

calls=${1:-100000}
if ! [[ $calls =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: scripts/endurance.sh [CALLS]" >&2
    exit 2
fi
need_packages "${CHECK_PACKAGES[@]}"
{
    cmake --preset release
    cmake --build --preset release --target unkind_host_endurance
} >&2
results=build/endurance
mkdir -p "$results"

# run NAME CALLS [OPTION...]
run() {
    local name=$1 count=$2
    shift 2
    echo "== $name: $count calls"
    local every=$((count < 20 ? 1 : count / 20))
    build/release/bin/unkind_host_endurance --every "$every" "$@" "$count" | tee "$results/$name.txt"
}

run plain "$calls"
scripts/endurance_plot.py "$results/plain.txt" >"$results/plain.svg"
tenth=$(((calls + 9) / 10))
run trace "$tenth" --trace "$results/trace.log"
rm "$results/trace.log"
run busy "$tenth" --noise 4
echo "Nothing grew. The tables are in $results/, the first as a plot in $results/plain.svg"
