#!/usr/bin/env bash
# From a checkout to the main job: installs what is missing, builds, and shows the RAID configuration of a made-up
# server as XML, read by the module file that goes to production.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "${BUILD_PACKAGES[@]}"
{
    cmake --preset release -DZORBALT_BUILD_TESTS=OFF -DZORBALT_BENCH=OFF
    cmake --build --preset release --target mngsrvraid
} >&2
exec build/release/bin/mngsrvraid --scenario large get-info
