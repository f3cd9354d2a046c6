#!/usr/bin/env bash
# From a checkout to the main job: installs what is missing, builds, stores the RAID configuration of a made-up server
# as XML, read by the module file that goes to production, and shows what it comes to.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "${BUILD_PACKAGES[@]}"
{
    cmake --preset release -DZORBALT_BUILD_TESTS=OFF -DZORBALT_BENCH=OFF
    cmake --build --preset release --target mngsrvraid
} >&2
command=build/release/bin/mngsrvraid
document=build/release/large.xml
"$command" --scenario large --output "$document" get-info
printf '\nThe RAID document of the made-up server "large" is in %s; this is what %s shows of it:\n\n' \
    "$document" "$command" >&2
exec "$command" --scenario large show
