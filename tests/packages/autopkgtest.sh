#!/usr/bin/env bash
# autopkgtest.sh CHANGES: debian/tests, run by Debian's own program on the packages that belong to that file, in a fresh
# Debian. Wants root. A chroot is less than a container; what these tests want of one is that it is a file system of its own.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/a-debian.sh"

if [ "$(id -u)" -ne 0 ]; then
    echo "A Debian of its own wants root." >&2
    exit 1
fi
# Mounts that end with this.
[ -n "${HAS_OWN_MOUNTS:-}" ] || HAS_OWN_MOUNTS=yes exec unshare --mount "$0" "$@"

work=$(mktemp -d)
root=$work/root
clean_up() {
    umount -l "$root/dev" "$root/proc" "$root" 2>/dev/null || true
    rm -rf --one-file-system "$work"
}
trap clean_up EXIT

make_debian "$root" ca-certificates
mount --bind "$root" "$root"
mount -t proc proc "$root/proc"
mount --rbind /dev "$root/dev"
autopkgtest --ignore-restrictions=isolation-container -B "$1" -- chroot "$root" >"$work/log" 2>&1 ||
    { tail -n 60 "$work/log" >&2; exit 1; }
sed -n '/@@ summary/,/^autopkgtest/{/@@\|^autopkgtest/!p}' "$work/log"
