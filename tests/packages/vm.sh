#!/usr/bin/env bash
# vm.sh FOLDER VERSION: the packages in that folder in a virtual machine with Debian's own kernel, which has AppArmor:
# tests/packages/apparmor.sh. Wants root. The machine is emulated, which does everywhere and takes some ten minutes; it has
# no network.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/a-debian.sh"
packages=$1
version=$2

if [ "$(id -u)" -ne 0 ]; then
    echo "A Debian of its own wants root: what lies in it belongs to root." >&2
    exit 1
fi
if [ "$(dpkg --print-architecture)" != amd64 ]; then
    echo "The emulated machine is an amd64; this one is not." >&2
    exit 1
fi
work=$(mktemp -d)
root=$work/root
trap 'rm -rf "$work"' EXIT

SECONDS=0
make_debian "$root" apparmor apparmor-utils curl initramfs-tools linux-image-cloud-amd64 procps sblim-wbemcli systemd-sysv udev
mkdir -p "$root/packages/tests"
cp "$packages"/*_"$version"_*.deb "$root/packages"
rm -f "$root"/packages/*-dbgsym_* "$root"/packages/*-dev_*
cp "$here"/../../debian/tests/* "$here"/{a-trial,apparmor}.sh "$root/packages/tests"
make_tool "$root/packages"
cp /etc/resolv.conf "$root/etc/resolv.conf"
chroot "$root" sh -c 'apt-get update && apt-get clean && apt-get install -y --download-only --no-install-recommends /packages/*_*.deb' \
    >"$work/log" 2>&1 || { tail -n 20 "$work/log" >&2; exit 1; }

# What it prints goes to the second serial line; the first is the kernel's.
cat >"$root/etc/systemd/system/trial.service" <<UNIT
[Unit]
After=multi-user.target

[Service]
ExecStart=/bin/sh -c '/packages/tests/apparmor.sh $version || systemctl poweroff'
Environment=LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive SYSTEMD_COLORS=0
StandardOutput=tty
StandardError=tty
TTYPath=/dev/ttyS1
UNIT
mkdir -p "$root/etc/systemd/system/multi-user.target.wants"
ln -s ../trial.service "$root/etc/systemd/system/multi-user.target.wants/trial.service"
cp "$root"/boot/vmlinuz-* "$work/kernel"
cp "$root"/boot/initrd.img-* "$work/initrd"
mke2fs -q -t ext4 -d "$root" "$work/disk" 2G >/dev/null
echo "-- $SECONDS s: a fresh Debian"

# No line of the kernel's log may be lost.
timeout 1800 nice qemu-system-x86_64 -accel tcg,thread=multi -cpu max -smp 2 -m 2048 -nodefaults -no-user-config -display none -nic none \
    -kernel "$work/kernel" -initrd "$work/initrd" -append "root=/dev/vda rw console=ttyS0 security=apparmor apparmor=1 \
audit_backlog_limit=8192 log_buf_len=16M sysctl.kernel.printk_ratelimit=0" \
    -drive file="$work/disk",format=raw,if=virtio,cache=unsafe -device virtio-rng-pci \
    -serial file:"$work/console" -serial stdio </dev/null | sed -u 's,\r,,g' | tee "$work/words"
if ! tail -n 1 "$work/words" | grep -q 'all as it has to be$'; then
    tail -n 30 "$work/console" >&2
    exit 1
fi
