#!/usr/bin/env bash
# life.sh FOLDER VERSION: the packages in that folder live through what an administrator does with them, in a fresh Debian
# with a systemd of its own: tests/packages/administrator.sh. Wants root, and for that systemd a kernel that lets it mount
# control groups of version 2; without them what the running service is to do is left out, and that is said.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/a-debian.sh"
packages=$1
version=$2
previous=$version~previous

if [ "$(id -u)" -ne 0 ]; then
    echo "A Debian of its own wants root: mounts, and a systemd." >&2
    exit 1
fi
unified=/sys/fs/cgroup
[ -e "$unified/cgroup.procs" ] || unified=/sys/fs/cgroup/unified

work=$(mktemp -d)
root=$work/root
group=$unified/mngsrvraid-life-$$
keeper=
clean_up() {
    {
        [ ! -e "$group/cgroup.kill" ] || echo 1 >"$group/cgroup.kill"
        [ -z "$keeper" ] || kill -KILL "$keeper" || true
        wait || true
        for _ in $(seq 50); do
            [ -d "$group" ] || break
            find "$group" -depth -type d -exec rmdir {} + || sleep 0.1
        done
    } 2>/dev/null
    rm -rf "$work"
}
trap clean_up EXIT

# A package like it, of that version before, whose configuration was another.
make_previous() {
    local file=$1 folder=$work/unpacked
    dpkg-deb -R "$file" "$folder"
    sed -i "s/^Version: .*/Version: $previous/; s/(= $version)/(= $previous)/g" "$folder/DEBIAN/control"
    if [ -e "$folder/etc/mngsrvraid/mngsrvraidd.toml" ]; then
        echo "# The last line of the configuration before." >>"$folder/etc/mngsrvraid/mngsrvraidd.toml"
    fi
    dpkg-deb -b --root-owner-group -Znone "$folder" "$root/packages/previous" >/dev/null
    rm -r "$folder"
}

SECONDS=0
make_debian "$root" curl procps sblim-wbemcli systemd-sysv
mkdir -p "$root/packages/previous" "$root/packages/tests"
cp "$packages"/*_"$version"_*.deb "$root/packages"
rm -f "$root"/packages/*-dbgsym_*
cp "$here"/../../debian/tests/* "$here"/{a-trial,administrator}.sh "$root/packages/tests"
for file in "$root"/packages/*.deb; do
    make_previous "$file"
done
make_tool "$root/packages"
cp /etc/resolv.conf "$root/etc/resolv.conf"

# inside COMMAND...: in that Debian
inside() {
    nsenter --target "$init" --cgroup --ipc --mount --pid --uts --root \
        env -i -C / PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"
}

# A process of it has the id $init: a systemd, or one that does nothing.
start() {
    exec unshare --cgroup --fork --ipc --mount --pid --uts --kill-child sh -euc '
        mount --make-rprivate /
        mount --bind "$1" "$1"
        cd "$1"
        shift
        mount -t proc proc proc
        # What its systemd sets of the kernel is of this machine, too.
        mount --bind proc/sys proc/sys
        mount -o remount,bind,ro proc/sys
        mount -t sysfs -o ro sysfs sys
        mount -t cgroup2 cgroup2 sys/fs/cgroup || [ "$1" = sleep ]
        mount -t tmpfs tmpfs run
        mount -t tmpfs tmpfs dev
        for node in null zero full random urandom tty; do
            touch "dev/$node"
            mount --bind "/dev/$node" "dev/$node"
        done
        ln -s /proc/self/fd dev/fd
        mkdir dev/pts dev/shm
        mount -t devpts -o newinstance,ptmxmode=0666 devpts dev/pts
        ln -s pts/ptmx dev/ptmx
        mount -t tmpfs tmpfs dev/shm
        touch dev/console
        exec env -i container=trial PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot . "$@"' sh "$root" "$@"
}

# is_up PROGRAM COMMAND...: whether that program has come to be the first one, and the command says so there
is_up() {
    init=$(pgrep -P "$(pgrep -P "$keeper" -x unshare || echo "$keeper")" -x "$1" || true)
    shift
    [ -n "$init" ] && inside "$@" 2>/dev/null | grep -qE 'running|degraded'
}

# comes_up PROGRAM COMMAND...: within half a minute
comes_up() {
    for _ in $(seq 300); do
        ! is_up "$@" || return 0
        kill -0 "$keeper" 2>/dev/null || return 1
        sleep 0.1
    done
    return 1
}

boot() {
    mkdir "$group" || return
    (echo "$BASHPID" >"$group/cgroup.procs" && start /lib/systemd/systemd) </dev/null >"$work/console" 2>&1 &
    keeper=$!
    comes_up systemd systemctl is-system-running
}

echo "-- $SECONDS s: a fresh Debian"
init=
if ! boot; then
    cat "$work/console" >&2 || true
    echo "-- no systemd runs in it, for which it needs control groups (version 2): what the running service is to do is left out" >&2
    [ -z "$keeper" ] || kill "$keeper" 2>/dev/null || true
    (start sleep infinity) </dev/null >"$work/console" 2>&1 &
    keeper=$!
    comes_up sleep echo running || { cat "$work/console" >&2; exit 1; }
fi
inside /packages/tests/administrator.sh "$version" "$previous"
