#!/bin/bash
# apparmor.sh VERSION: the packages below /packages on a kernel with AppArmor, and what it says of the process that faces
# the network. It runs in a machine of its own, as root, and goes on where it was when that has been started again.
set -euo pipefail
version=$1
. "$(dirname "$0")/a-trial.sh"
PROFILE=/etc/apparmor.d/mngsrvraid-doors
DOORS=/usr/lib/mngsrvraid/bin/mngsrvraid-doors
SETTINGS=/etc/mngsrvraid/mngsrvraidd.toml
SOCKET=/run/mngsrvraid/mngsrvraid.sock
TLS=https://127.0.0.1:8443
PLAIN=('http://127.0.0.1:8282' 'http://[::1]:8282')
PATHS=(/ /metrics /raid.json /raid.xml /history /healthz /live.js /redfish/v1/ '/redfish/v1/Systems/1/Storage?$expand=*($levels=3)')
ALARMS=/var/lib/the-alarms

# What the kernel had against the doors, or would have had, since the log was cleared: each kind of line with its number.
kernel_log() {
    dmesg | { grep -E 'apparmor="(ALLOWED|DENIED)".*"mngsrvraid-doors' || true; } |
        sed -E 's/.*(apparmor=)/\1/; s/ (pid|requested_mask|fsuid|ouid)=[^ ]*//g' | sort | uniq -c
}

nothing_logged() {
    kernel_log >/run/kernel-log
    [ ! -s /run/kernel-log ] || { cat /run/kernel-log >&2; fail "the kernel has something against it"; }
    ! dmesg | grep -iE 'audit.*(lost|suppressed|limit exceeded)' || fail "lines of the kernel are lost"
    say "$(pgrep -fc "^$DOORS") process of the doors, $(cat "/proc/$(doors)/attr/current"): 0 lines in the kernel's log"
}

doors() {
    pgrep -f "^$DOORS"
}

confined_as() {
    is "mngsrvraid-doors ($1)" cat "/proc/$(doors)/attr/current"
}

# answers STATUS CURL-OPTION...
answers() {
    local wanted=$1 found
    shift
    found=$(curl -sS -m 60 --cacert /etc/mngsrvraid/tls.crt -o /run/answer -w '%{http_code}' "$@") || fail "$*: $found"
    [ "$found" = "$wanted" ] || fail "$*: $found and not $wanted: $(head -c 300 /run/answer)"
}

is_open() {
    curl -sS -f -m 10 --unix-socket "$SOCKET" http://localhost/healthz
}

# By every door: what is to be had with an account, without, with a session, in streams, at once and by other clients.
ask_doors() {
    becomes_true is_open
    local path door token
    for path in "${PATHS[@]}"; do
        answers 200 -g --unix-socket "$SOCKET" "http://localhost$path"
    done
    for door in "${PLAIN[@]}" "$TLS"; do
        answers 401 "$door/"
        answers 200 -u "$(cat /etc/the-account)" "$door/metrics"
        answers 201 -D /run/headers -H 'Content-Type: application/json' "$door/redfish/v1/SessionService/Sessions" \
            -d "{\"UserName\": \"$(cut -d: -f1 /etc/the-account)\", \"Password\": \"$(cut -d: -f2 /etc/the-account)\"}"
        token=$(sed -n 's/^X-Auth-Token: *//Ip' /run/headers | tr -d '\r')
        for path in "${PATHS[@]}"; do
            answers 200 -g -H "X-Auth-Token: $token" "$door$path"
        done
        curl -sS -m 60 -N --cacert /etc/mngsrvraid/tls.crt -H "X-Auth-Token: $token" "$door/live" >/run/stream &
        becomes_true grep '^retry:' /run/stream
        answers 303 -H "X-Auth-Token: $token" -X POST "$door/refresh"
        becomes_true grep '^data:' /run/stream
        kill $!
        answers 400 -H "X-Auth-Token: $token" -H 'Content-Type: text/xml' -d '<no document' "$door/cimom"
        answers 204 -H "X-Auth-Token: $token" -X DELETE \
            "$door$(sed -n 's/^Location: *//Ip' /run/headers | tr -d '\r' | sed -E 's,^https?://[^/]*,,')"
    done
    curl -sS -m 60 -Z -o /dev/null "${PLAIN[0]}/healthz?[1-100]" 2>/run/words || fail "a hundred at a time"
    wbemcli -nl cm "http://$(cat /etc/the-account)@127.0.0.1:8282/root/zorbalt:ZORBALT_MngSrvRaid" GetInfo >/run/answer
    grep -q '<RAID version="1">' /run/answer || fail "WBEM: $(head -c 300 /run/answer)"
}

# What happens to the process while it lives, and to the next one.
live_on() {
    local killed
    printf 'other\n' | mngsrvraidd passwd monitoring
    echo monitoring:other >/etc/the-account
    systemctl reload mngsrvraidd
    ask_doors
    killed=$(doors)
    kill -9 "$killed"
    becomes_true is_open
    [ "$killed" != "$(doors)" ] || fail "the same process"
    ask_doors
    printf 'secret\n' | mngsrvraidd passwd monitoring
    echo monitoring:secret >/etc/the-account
    systemctl restart mngsrvraidd
    becomes_true is_open
}

# without PATTERN: the profile without the rules that it matches, and the service under it
without() {
    grep -vE "$1" "$PROFILE" >/run/profile
    ! cmp -s "$PROFILE" /run/profile || fail "no rule \"$1\""
    apparmor_parser -r -T /run/profile
    dmesg --clear
    systemctl restart mngsrvraidd
}

# forbidden WORDS OF THE KERNEL, COMMANDS: of a shell in the place of the doors
forbidden() {
    dmesg --clear
    ! "$DOORS" -c "$2" >/run/answer 2>&1 || fail "$2: $(cat /run/answer)"
    kernel_log | grep -E "DENIED.*$1" || fail "$2: $(cat /run/answer; kernel_log)"
}

a_shell_in_its_place() {
    mount --bind /bin/bash "$DOORS"
    is "it runs" "$DOORS" -c 'echo it runs'
    forbidden 'operation="open".*name="/etc/shadow"' 'read -r word </etc/shadow'
    forbidden 'operation="open".*name="/etc/mngsrvraid/tls.key"' 'read -r word </etc/mngsrvraid/tls.key'
    forbidden 'operation="open".*name="/var/lib/mngsrvraid/history.db"' 'read -r word </var/lib/mngsrvraid/history.db'
    forbidden 'operation="mknod".*name="/run/mngsrvraid/mine"' 'echo mine >/run/mngsrvraid/mine'
    forbidden 'operation="exec".*name="/(usr/)?bin/cat"' '/bin/cat /etc/hostname'
    forbidden 'operation="exec".*name="/opt/zorbalt/vdk/cli/vdkcli"' '/opt/zorbalt/vdk/cli/vdkcli -v'
    forbidden 'operation="create".*family="inet".*sock_type="dgram"' 'echo word >/dev/udp/127.0.0.1/53'
    forbidden 'operation="signal"' 'kill -CONT '"$$"
    umount "$DOORS"
}

has_critical() {
    mngsrvraid events | grep 'CRITICAL.*began'
}

has_alarm() {
    curl -sS -m 10 --unix-socket "$SOCKET" http://localhost/metrics | grep '^raid_health 2$'
}

first_boot() {
    say "Debian $(cat /etc/debian_version), kernel $(uname -r), AppArmor $(cat /sys/module/apparmor/parameters/enabled)"
    mkdir -p /etc/gnutls
    echo '# Settings of an administrator.' >/etc/gnutls/config
    apt-get install -q -y --no-install-recommends /packages/*_"$version"_*.deb >/run/words 2>&1 ||
        { cat /run/words >&2; fail "installing"; }
    is enforce sh -c 'sed -n "s/^mngsrvraid-doors (\(.*\))$/\1/p" /sys/kernel/security/apparmor/profiles'

    say "the service on a server that is well"
    mngsrvraidd setup-tls >/dev/null
    printf 'secret\n' | mngsrvraidd passwd monitoring
    echo monitoring:secret >/etc/the-account
    sed -i 's/^#interval = .*/interval = "10s"/; s/^#host = .*/host = "storage7"/; s/^#\(accounts\|tls_certificate\|tls_key\) /\1 /
        s!^#listen = .*!listen = ["unix:'"$SOCKET"'", "127.0.0.1:8282", "[::1]:8282", "https://127.0.0.1:8443"]!' "$SETTINGS"
    echo small >/etc/this-server
    dpkg -i /packages/vdk-tool.deb >/dev/null
    becomes_true systemctl is-active mngsrvraidd
    becomes_true is_open

    say "all doors in complain mode"
    aa-complain "$PROFILE" >/dev/null
    dmesg --clear
    systemctl restart mngsrvraidd
    live_on
    confined_as complain
    nothing_logged

    say "a rule that is missing is told"
    without '^ *network inet6?'
    ask_doors
    kernel_log | grep 'ALLOWED.*family="inet' || fail "not a word"

    say "all doors in enforce mode"
    aa-enforce "$PROFILE" >/dev/null
    dmesg --clear
    systemctl restart mngsrvraidd
    live_on
    confined_as enforce
    nothing_logged

    say "a rule that is missing shuts a door"
    without '^ *network inet6?'
    becomes_true is_open
    ! curl -sS -m 10 "${PLAIN[0]}/healthz" || fail "it is open"
    kernel_log | grep 'DENIED.*family="inet' || fail "not a word"
    apparmor_parser -r -T "$PROFILE"
    systemctl restart mngsrvraidd

    say "the service on made-up servers, by hand"
    dmesg --clear
    for name in service wbem; do
        timeout 300 "/packages/tests/$name" >"/run/$name" 2>&1 || { cat "/run/$name" >&2; fail "$name"; }
    done
    nothing_logged

    say "somebody else in the place of the doors"
    a_shell_in_its_place

    say "a drive fails; the machine is started again"
    becomes_true is_open
    echo levels/raid5-gone >/etc/this-server
    becomes_true has_critical
    has_alarm
    systemd-analyze security --no-pager mngsrvraidd | tail -n 1
    systemctl stop mngsrvraidd
    has_critical >"$ALARMS"
    systemctl reboot
}

second_boot() {
    say "the service runs, no alarm is told again, the doors are confined"
    becomes_true systemctl is-active mngsrvraidd
    ask_doors
    has_alarm
    is "$(cat "$ALARMS")" has_critical
    confined_as enforce
    nothing_logged
    is "" systemctl --failed --no-legend
    say "all as it has to be"
    systemctl poweroff
}

if [ ! -e "$ALARMS" ]; then
    first_boot
else
    second_boot
fi
