#!/usr/bin/env bash
# The Debian packages of this tree, in build/deb. Without arguments: builds them and installs the command and the service
# on this machine. With arguments, only the named steps, in their order:
#   build       dpkg-buildpackage, in a copy of the tree
#   install     the command, the service and what they need, by apt
#   lint        lintian, what the compiler was to harden, the profile for AppArmor
#   life        in a fresh Debian: installs, upgrades, removes and purges them, under a systemd of its own
#   autopkgtest debian/tests by Debian's own program, in a fresh Debian
#   twice       builds them again in another place at another time: the bytes have to be the same
#   framework   the module alone, against an installed framework
#   apparmor    in a virtual machine whose kernel has AppArmor: what that says of the process that faces the network
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

OUT=$PWD/build/deb
version=$(sed -n '1s/.*(\(.*\)).*/\1/p' debian/changelog)
architecture=$(dpkg --print-architecture)
changes=$OUT/mngsrvraid_${version}_$architecture.changes

# copy_tree FOLDER: the sources as they are, without what has been built
copy_tree() {
    mkdir -p "$1"
    git -c safe.directory="$PWD" ls-files -z --cached --others --exclude-standard |
        { xargs -0 sh -c 'for file; do [ ! -e "$file" ] && [ ! -L "$file" ] || printf "%s\\0" "$file"; done' sh; } |
        tar --null --files-from - -c | tar -x --touch -C "$1"
}

# built FOLDER OPTION...: the packages, in that folder
built() {
    local folder=$1
    shift
    rm -rf "$folder"
    copy_tree "$folder/mngsrvraid"
    {
        (cd "$folder" && dpkg-source -b mngsrvraid) && (cd "$folder/mngsrvraid" && dpkg-buildpackage -us -uc -b "$@")
    } >"$folder/log" 2>&1 || {
        tail -n 40 "$folder/log" >&2
        echo "The packages could not be built; $folder/log has all of it." >&2
        return 1
    }
    rm -r "$folder/mngsrvraid"
}

step_build() {
    built "$OUT"
    echo "$changes"
}

step_install() {
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends --reinstall \
        "$OUT"/libqelp-zorbalt-mngsrvraid_"$version"_*.deb "$OUT"/mngsrvraid_"$version"_*.deb \
        "$OUT"/mngsrvraidd_"$version"_*.deb
    mngsrvraid --version
}

# The packages and their source.
lint_packages() {
    local as_root=()
    [ "$(id -u)" -ne 0 ] || as_root=(--allow-root)
    lintian "${as_root[@]}" --pedantic --display-info --fail-on error,warning,info,pedantic "$changes" "$OUT"/*.dsc
}

# Of all programs and libraries in that folder, and of each source that they are made of: a file may hold nothing that
# functions of the C library or the stack have to be protected from. The system's own startup code has no landing pads, so
# that a file as a whole cannot have them.
check_hardening() {
    local file options flag
    grep -q -e ' -c ' "$OUT/log" || {
        echo "$OUT/log tells of nothing that was compiled" >&2
        return 1
    }
    for flag in -D_FORTIFY_SOURCE=3 -fstack-protector-strong -fstack-clash-protection -fcf-protection=full; do
        if grep -e ' -c ' "$OUT/log" | grep -v -e "$flag"; then
            echo "is compiled without $flag" >&2
            return 1
        fi
    done
    while IFS= read -r -d '' file; do
        if head -c 4 "$file" | grep -q ELF; then
            options=(--nocfprotection --nofortify)
            if ! readelf -d "$file" | grep -q NEEDED; then
                options+=(--nopie --nostackprotector)
            fi
            hardening-check --quiet "${options[@]}" "$file" || return 1
        fi
    done < <(find "$1" -type f -print0)
}

step_lint() {
    lint_packages
    local package files=$OUT/unpacked
    rm -rf "$files"
    for package in "$OUT"/*_"$architecture".deb; do
        [[ $package == *-dbgsym_* ]] || dpkg-deb -x "$package" "$files"
    done
    check_hardening "$files"
    apparmor_parser --skip-kernel-load --skip-cache --base /etc/apparmor.d "$files/etc/apparmor.d/mngsrvraid-doors"
    echo "$(find "$OUT" -name '*.deb' ! -name '*-dbgsym_*' | wc -l) packages: nothing to complain about"
}

step_life() {
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    "${as_root[@]}" tests/packages/life.sh "$OUT" "$version"
}

step_autopkgtest() {
    need_packages autopkgtest
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    "${as_root[@]}" tests/packages/autopkgtest.sh "$changes"
}

# Time and place go into neither names nor bytes.
step_twice() {
    local second=$PWD/build/deb-again/at/another/place
    TZ=Pacific/Chatham LC_ALL=C.UTF-8 built "$second"
    local package
    for package in "$OUT"/*.deb; do
        cmp "$package" "$second/${package##*/}"
        echo "${package##*/}: the same bytes"
    done
}

# The portable build's own libraries and headers stand in for the framework that is installed.
step_framework() {
    local root=$PWD/build/deb-framework/root
    rm -rf "${root%/root}"
    mkdir -p "$root"
    for package in "$OUT"/libqelp-zorbalt-mngsrvraid{,-dev}_"$version"_*.deb; do
        dpkg-deb -x "$package" "$root"
    done
    mkdir "$root/framework"
    cp -r "$root/usr/lib/mngsrvraid/lib" "$root/usr/include/mngsrvraid/." "$root/framework"
    mkdir "$root/framework/include"
    mv "$root/framework/qel" "$root/framework/include"
    ZORBALT_FRAMEWORK_DIR=$root/framework built "${root%/root}/packages" -Ppkg.mngsrvraid.framework
    local package files
    package=$(echo "${root%/root}"/packages/libqelp-zorbalt-mngsrvraid_"$version"_*.deb)
    files=$(dpkg-deb -c "$package" | sed -n 's|.*/framework/cim/\(.*[.]so\)$|\1|p' | sort | tr '\n' ' ')
    echo "$package: $files"
    [ "$files" = "libqel_MngSrv_QelLib.so libqelp_ZORBALT_MngSrvRaid.so " ]
}

step_apparmor() {
    need_packages "${VM_PACKAGES[@]}"
    tests/packages/vm.sh "$OUT" "$version"
}

[ $# -gt 0 ] || set -- build install
need_packages "${DEB_PACKAGES[@]}"
for step in "$@"; do
    case "$step" in
        build | install | lint | life | autopkgtest | twice | framework | apparmor) "step_$step" ;;
        *)
            echo "There is no step named $step; the steps are build, install, lint, life, autopkgtest, twice, framework and apparmor." >&2
            exit 2
            ;;
    esac
done
