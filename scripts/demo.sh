#!/usr/bin/env bash
# From a checkout to the main job: installs what is missing, builds, stores the RAID configuration of a made-up server
# as XML, read by the module file that goes to production, and shows what it comes to.
#   scripts/demo.sh watch     watches a made-up server that loses a drive, is rebuilt and recovers within a minute
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

if [ $# -gt 1 ] || [ "${1:-watch}" != watch ]; then
    echo "usage: scripts/demo.sh [watch]" >&2
    exit 2
fi
need_packages "${BUILD_PACKAGES[@]}"
{
    cmake --preset release -DZORBALT_BUILD_TESTS=OFF -DZORBALT_BENCH=OFF
    cmake --build --preset release --target mngsrvraid mngsrvraidd
} >&2
if [ "${1:-}" = watch ]; then
    configuration=build/release/watch.toml
    printf 'interval = "2s"\nsmart_interval = "0"\ncalm = "4s"\n[[channel]]\nkind = "journal"\nlevel = "ok"\nstderr = true\n' \
        > "$configuration"
    echo "A made-up server for a minute; the events as they come:" >&2
    timeout --signal TERM 60 build/release/bin/mngsrvraidd --config "$configuration" --scenario watch/loses-drive ||
        [ $? -eq 124 ]
    exit
fi
command=build/release/bin/mngsrvraid
document=build/release/large.xml
"$command" --scenario large --output "$document" get-info
printf '\nThe RAID document of the made-up server "large" is in %s; this is what %s shows of it:\n\n' \
    "$document" "$command" >&2
exec "$command" --scenario large show
