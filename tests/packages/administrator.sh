#!/bin/bash
# administrator.sh VERSION PREVIOUS: what an administrator does with the packages below /packages, and what has to come of
# it. It runs in a Debian of its own, as root.
set -euo pipefail
. "$(dirname "$0")/a-trial.sh"
version=$1
previous=$2
OURS=(libqelp-zorbalt-mngsrvraid libqelp-zorbalt-mngsrvraid-dev mngsrvraid mngsrvraid-simulator mngsrvraidd)
SETTINGS=/etc/mngsrvraid/mngsrvraidd.toml
HISTORY=/var/lib/mngsrvraid/history.db

file_list() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /tmp -o -path /var/tmp -o -path /packages \
        -o -path /var/cache/apt -o -path /var/lib/apt -o -path /var/lib/dpkg -o -path /var/log \
        -o -path /var/cache/ldconfig -o -path /var/lib/systemd \) -prune -o -print | sort
}

# running COMMAND...: where a systemd runs, which may be refused to a Debian of its own; the service is off then
running() {
    [ ! -d /run/systemd/system ] || "$@"
}

install_all() {
    apt-get install -q -y --no-install-recommends -o Dpkg::Options::=--force-confold "$@" >/run/words 2>&1 ||
        { cat /run/words >&2; fail "installing"; }
}

events() {
    mngsrvraid events "$@"
}

critical_begun() {
    events | grep -c 'CRITICAL.*began' || true
}

has_critical() {
    [ "$(critical_begun)" -gt 0 ]
}

is_another_process() {
    [ "$1" != "$(systemctl show --property MainPID --value mngsrvraidd)" ] || fail "the old service still runs"
}

tells_critical() {
    curl -sS -m 5 http://127.0.0.1:8282/metrics | grep '^raid_health 2$' || fail "the alarm is gone"
}

apt-get update -q >/dev/null
# What they depend on comes first, so that what they leave can be told from what that leaves.
mapfile -t others < <(apt-get install -s --no-install-recommends /packages/*_"$version"_*.deb | sed -n 's/^Inst \([^ ]*\) .*/\1/p' |
    grep -vxF "$(printf '%s\n' "${OURS[@]}")")
apt-get install -q -y --no-install-recommends "${others[@]}" >/dev/null 2>&1
file_list >/run/before

say "installed where there is no RAID tool: off, with a word, and nothing made up"
install_all /packages/previous/libqelp-zorbalt-mngsrvraid_*.deb /packages/previous/mngsrvraid_*.deb /packages/previous/mngsrvraidd_*.deb
grep -F 'there is no RAID tool on this machine (/opt/zorbalt/vdk/cli/vdkcli): nothing is watched' /run/words || fail "not a word"
running is inactive systemctl is-active mngsrvraidd
running is enabled systemctl is-enabled mngsrvraidd
running is no systemctl show --property ConditionResult --value mngsrvraidd
[ ! -e "$HISTORY" ] || fail "a history of nothing"
is "mngsrvraidd $previous" sh -c 'echo mngsrvraidd $(dpkg-query -W -f "\${Version}" mngsrvraidd)'
ends_with 3 mngsrvraid health
ends_with 3 mngsrvraid --scenario small health

say "the tool is installed: watched from then on"
echo small >/etc/this-server
sed -i 's/^#interval = .*/interval = "1s"/; s/^#host = .*/host = "storage7"/; s/^#listen = .*/listen = ["unix:\/run\/mngsrvraid\/mngsrvraid.sock", "127.0.0.1:8282"]/' "$SETTINGS"
dpkg -i /packages/vdk-tool.deb
running becomes_true systemctl is-active mngsrvraidd
running becomes_true mngsrvraid health
running becomes_true curl -sS -f -m 5 http://127.0.0.1:8282/healthz
running systemctl status --no-pager mngsrvraidd | sed -n '/Status:/p'

say "a drive fails"
echo levels/raid5-gone >/etc/this-server
running becomes_true has_critical
begun=$(running critical_begun)
running events | tail -n 3
running becomes_true sh -c 'journalctl --no-pager --unit mngsrvraidd | grep CRITICAL'

say "upgraded: the configuration, the history and the alarms are as they were"
settings=$(sha256sum "$SETTINGS")
first=$(running events --format json | head -n 1)
process=$(running systemctl show --property MainPID --value mngsrvraidd)
install_all /packages/libqelp-zorbalt-mngsrvraid_*.deb /packages/mngsrvraid_*.deb /packages/mngsrvraidd_*.deb
is "mngsrvraidd $version" mngsrvraidd --version
running is active systemctl is-active mngsrvraidd
is "$settings" sha256sum "$SETTINGS"
running is_another_process "$process"
running becomes_true curl -sS -f -m 5 http://127.0.0.1:8282/raid.json
running is "$first" sh -c 'mngsrvraid events --format json | head -n 1'
running is "$begun" critical_begun
running tells_critical

say "what is installed does its work"
install_all /packages/mngsrvraid-simulator_*.deb
for name in command service wbem; do
    timeout 120 "/packages/tests/$name" >"/run/$name" 2>&1 || { cat "/run/$name" >&2; fail "$name"; }
    echo "$name: passed"
done

say "removed: the data stay"
known=$(running events | wc -l)
apt-get remove -q -y mngsrvraidd >/dev/null
running is inactive systemctl is-active mngsrvraidd
[ ! -e /usr/sbin/mngsrvraidd ] || fail "still there"
! pgrep -f mngsrvraid-doors || fail "somebody still faces the network"
is "$settings" sha256sum "$SETTINGS"
running is "$known" sh -c "mngsrvraid events | wc -l"

say "installed again: what was known is known"
install_all /packages/mngsrvraidd_*.deb
running becomes_true systemctl is-active mngsrvraidd
running is "$first" sh -c 'mngsrvraid events --format json | head -n 1'

say "the service purged alone: the module still does its work, and its key is there"
echo monitoring:x >/etc/mngsrvraid/accounts
mkdir /etc/mngsrvraid/old
echo sesame | tee /etc/mngsrvraid/old/app.key >/etc/mngsrvraid/app.key
apt-get purge -q -y mngsrvraidd >/run/words 2>&1 || { cat /run/words >&2; fail "purging the service"; }
is app.key ls /etc/mngsrvraid
ends_with 2 mngsrvraid --app-key sesame health

say "purged: nothing is left"
dpkg -P vdk-tool >/dev/null
mapfile -t installed < <(dpkg-query -W -f '${Package}\n' "${OURS[@]}" 2>/dev/null)
apt-get purge -q -y "${installed[@]}" >/run/words 2>&1 || { cat /run/words >&2; fail "purging"; }
rm /etc/this-server
mkdir -p /opt  # That went with the last package that had something there.
file_list >/run/after
diff /run/before /run/after || fail "files are left, or gone"
! getent passwd mngsrvraidd || fail "a user"
running is not-found sh -c 'systemctl daemon-reload; systemctl show --property LoadState --value mngsrvraidd'
say "all as it has to be"
