#!/usr/bin/env bash
# How far Prometheus goes with fleet/'s rules: 100, 1,000 and 10,000 made-up servers, one after the other, each for
# five minutes after a warm-up. Prints what each takes and draws the growth into build/bench/results/. Half an hour,
# and up to 11 GB.
#   scripts/fleet-bench.sh [N...]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "${BENCH_PACKAGES[@]}" "${FLEET_PACKAGES[@]}"
{
    cmake --preset bench
    cmake --build --preset bench --target mngsrvraid mngsrvraidd mngsrvraid-doors mngsrvraid-set-up bench_servers
} >&2
[ $# -gt 0 ] || set -- 100 1000 10000
mkdir -p build/bench/results
exec python3 scripts/fleet_bench.py build/bench/bin build/bench/results "$@"
