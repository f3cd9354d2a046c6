#!/usr/bin/env bash
# Lets every allocation, every system call and every line of the trace of the module's calls fail, one after the other, and
# prints what came of each kind; tests/whole/faults/README.md explains the table. Takes about five minutes of one core. With
# an argument, another preset than release. Ends with status 1 when there are findings.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "${CHECK_PACKAGES[@]}"
preset="${1:-release}"
{
    cmake --preset "$preset"
    cmake --build --preset "$preset" --target faults
} >&2

findings=no
table=$(mktemp)
trap 'rm -f "$table"' EXIT
for scene in checks folders get-info sas-drive sata-drive traced-drive life; do
    echo "== $scene" | tee -a "$table"
    "build/$preset/bin/faults" "$scene" | tee -a "$table" || findings=yes
done
awk '/^total/ { points += $2; findings += $4 } END { print "== " points " points, " findings " findings" }' "$table"
[ "$findings" = no ]
