#!/usr/bin/env bash
# life.sh FOLDER VERSION: the packages in that folder live through what an administrator does with them, in a fresh Debian
# with a systemd of its own: tests/packages/administrator.sh. Wants root, and a kernel that lets it mount control groups.
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
if [ ! -e "$unified/cgroup.procs" ]; then
    echo "There are no control groups (version 2) on this machine, without which no systemd runs." >&2
    exit 1
fi

work=$(mktemp -d)
root=$work/root
group=$unified/mngsrvraid-life-$$
keeper=
clean_up() {
    if [ -e "$group/cgroup.kill" ]; then
        echo 1 >"$group/cgroup.kill"
    fi
    [ -z "$keeper" ] || wait "$keeper" 2>/dev/null || true
    for _ in $(seq 50); do
        ! { find "$group" -depth -type d -exec rmdir {} + 2>/dev/null; } || break
        sleep 0.1
    done
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

mkdir "$group"
(
    echo "$BASHPID" >"$group/cgroup.procs"
    exec unshare --cgroup --fork --ipc --mount --pid --uts --kill-child sh -euc '
        mount --make-rprivate /
        mount --bind "$1" "$1"
        cd "$1"
        mount -t proc proc proc
        mount -t sysfs -o ro sysfs sys
        mount -t cgroup2 cgroup2 sys/fs/cgroup
        mount -t tmpfs tmpfs run
        mount -t tmpfs tmpfs dev
        for node in null zero full random urandom tty; do
            touch "dev/$node"
            mount --bind "/dev/$node" "dev/$node"
        done
        mkdir dev/pts dev/shm
        mount -t devpts -o newinstance,ptmxmode=0666 devpts dev/pts
        ln -s pts/ptmx dev/ptmx
        mount -t tmpfs tmpfs dev/shm
        touch dev/console
        exec env -i container=trial PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot . /lib/systemd/systemd' sh "$root"
) </dev/null >"$work/console" 2>&1 &
keeper=$!

# inside COMMAND...: in that Debian
inside() {
    nsenter --target "$init" --cgroup --ipc --mount --pid --uts --root \
        env -i -C / PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"
}
echo "-- $SECONDS s: a fresh Debian"
init=
for _ in $(seq 300); do
    init=$(pgrep -P "$(pgrep -P "$keeper" -x unshare || echo "$keeper")" -x systemd || true)
    if [ -n "$init" ] && inside systemctl is-system-running 2>/dev/null | grep -qE 'running|degraded'; then
        break
    fi
    kill -0 "$keeper" || { cat "$work/console" >&2; exit 1; }
    sleep 0.1
done
inside /packages/tests/administrator.sh "$version" "$previous"
