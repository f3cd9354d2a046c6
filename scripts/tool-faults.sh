#!/usr/bin/env bash
# Reports of a gigabyte, which take a few minutes, 6 GB of memory and 3 GB of disk. With a number, of so many megabytes.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "${CHECK_PACKAGES[@]}"
megabytes=${1:-1024}
{
    cmake --preset release
    cmake --build --preset release --target misbehaviour_test
} >&2
MSRAID_TEST_FLOOD=$megabytes build/release/bin/misbehaviour_test --gtest_filter='FloodTest.*'
