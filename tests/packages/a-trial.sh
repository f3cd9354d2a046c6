# Sourced by what runs in a Debian of its own.

say() {
    echo "-- $SECONDS s: $*"
}

fail() {
    echo "FAILED: $*" >&2
    systemctl status --no-pager --full mngsrvraidd >&2 || true
    journalctl --no-pager --unit mngsrvraidd --lines 30 >&2 || true
    exit 1
}

# is WANTED COMMAND...: it prints that, whatever its status
is() {
    local wanted=$1 found
    shift
    found=$("$@" 2>&1) || true
    [ "$found" = "$wanted" ] || fail "$*: \"$found\" and not \"$wanted\""
}

# ends_with STATUS COMMAND...
ends_with() {
    local wanted=$1 status=0
    shift
    "$@" || status=$?
    [ "$status" -eq "$wanted" ] || fail "$*: ended with $status and not $wanted"
}

# becomes_true COMMAND...: within minutes, of which an emulated or a busy machine needs some
becomes_true() {
    for _ in $(seq 600); do
        ! "$@" >/dev/null 2>&1 || return 0
        sleep 0.2
    done
    fail "never true: $*"
}
