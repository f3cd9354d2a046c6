#!/usr/bin/env bash
# From a checkout to the main job: installs what is missing, builds, stores the RAID configuration of a made-up server
# as XML, read by the module file that goes to production, and shows what it comes to.
#   scripts/demo.sh watch     watches a made-up server that loses a drive, is rebuilt and recovers within a minute
#   scripts/demo.sh serve [SCENARIO [SECONDS]]
#                             answers browsers and other clients at 127.0.0.1:8282, for so long or until Ctrl-C
#   scripts/demo.sh fleet     five servers, one of which has lost a drive, and what Prometheus and Alertmanager say of them
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

case "$#:${1:-}" in
0: | 1:watch | 1:fleet | [123]:serve) ;;
*)
    echo "usage: scripts/demo.sh [watch | fleet | serve [SCENARIO [SECONDS]]]" >&2
    exit 2
    ;;
esac
# ZORBALT_DEMO_BUILD names a folder in which that is built already, ZORBALT_DEMO_PORT another port.
build=${ZORBALT_DEMO_BUILD:-}
if [ -z "$build" ]; then
    build=build/release
    need_packages "${BUILD_PACKAGES[@]}"
    {
        cmake --preset release -DZORBALT_BUILD_TESTS=OFF -DZORBALT_BENCH=OFF
        cmake --build --preset release --target mngsrvraid mngsrvraidd mngsrvraid-doors mngsrvraid-set-up
    } >&2
fi
if [ "${1:-}" = fleet ]; then
    need_packages "${FLEET_PACKAGES[@]}"
    exec python3 scripts/fleet.py "$build/bin" show 5
fi
if [ "${1:-}" = watch ]; then
    configuration=$build/watch.toml
    printf 'interval = "2s"\nsmart_interval = "0"\ncalm = "4s"\n[[channel]]\nkind = "journal"\nlevel = "ok"\nstderr = true\n' \
        > "$configuration"
    echo "A made-up server for a minute; the events as they come:" >&2
    timeout --signal TERM 60 "$build/bin/mngsrvraidd" --config "$configuration" --scenario watch/loses-drive ||
        [ $? -eq 124 ]
    exit
fi

# Whether the service at a port of this machine is well; bash is a client itself.
answers() {
    { exec 3<> "/dev/tcp/127.0.0.1/$1"; } 2>/dev/null || return
    printf 'GET /healthz HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n' >&3
    local status
    IFS= read -r -t 5 status <&3 || status=
    exec 3>&-
    [[ $status == "HTTP/1.1 200"* ]]
}

serve() {
    local scenario=$1 seconds=$2 configuration=$build/serve.toml port=${ZORBALT_DEMO_PORT:-8282}
    printf 'interval = "5s"\nsmart_interval = "1m"\ncalm = "4s"\nlisten = ["127.0.0.1:%s"]\n[[channel]]\nkind = "journal"\nlevel = "ok"\nstderr = true\n' \
        "$port" > "$configuration"
    timeout --foreground --signal TERM "$seconds" "$build/bin/mngsrvraidd" --config "$configuration" --scenario "$scenario" &
    service=$!
    trap 'kill "$service" 2>/dev/null && wait "$service"' EXIT
    trap 'exit 0' INT TERM
    until answers "$port"; do
        kill -0 "$service" 2>/dev/null || exit 4
        sleep 0.2
    done
    cat >&2 <<EOF

The made-up server "$scenario" is at http://127.0.0.1:$port/ until Ctrl-C. Open that in a browser, or type

    curl http://127.0.0.1:$port/redfish/v1/Systems/1/Storage
    curl http://127.0.0.1:$port/metrics
    curl http://127.0.0.1:$port/raid.json
    curl -i -X POST http://127.0.0.1:$port/refresh
    wbemcli cm http://127.0.0.1:$port/root/zorbalt:ZORBALT_MngSrvRaid GetInfo
    wbemcli ei http://127.0.0.1:$port/root/zorbalt:ZORBALT_MngSrvRaidHealth

(wbemcli is in Debian's package sblim-wbemcli.) A server that changes: scripts/demo.sh serve watch/loses-drive

EOF
    wait "$service" || [ $? -eq 124 ]
}

if [ "${1:-}" = serve ]; then
    serve "${2:-large}" "${3:-0}"
    exit
fi
command=$build/bin/mngsrvraid
document=$build/large.xml
"$command" --scenario large --output "$document" get-info
printf '\nThe RAID document of the made-up server "large" is in %s; this is what %s shows of it:\n\n' \
    "$document" "$command" >&2
exec "$command" --scenario large show
