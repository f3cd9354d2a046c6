#!/usr/bin/env bash
# A fleet of N servers on this machine, with Prometheus, Alertmanager and fleet/'s own rules: one of them loses a drive
# and is mended. Is that told with its place, model and serial number, within two scrapes, and is nothing else?
#   scripts/fleet.sh [N]     50 unless said otherwise
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

case "${1:-50}" in
[2-9] | [1-9][0-9] | 1[0-9][0-9]) ;;
*)
    echo "usage: scripts/fleet.sh [N], of 2 to 199" >&2
    exit 2
    ;;
esac
need_packages "${BUILD_PACKAGES[@]}" "${FLEET_PACKAGES[@]}"
{
    cmake --preset release -DZORBALT_BUILD_TESTS=OFF -DZORBALT_BENCH=OFF
    cmake --build --preset release --target mngsrvraidd mngsrvraid-doors mngsrvraid-set-up
} >&2
exec python3 scripts/fleet.py build/release/bin check "${1:-50}"
