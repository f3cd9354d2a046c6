# Sourced by what makes a Debian of its own, in "$work", for the packages of "$version" in the folder "$packages".

# make_debian ROOT PACKAGE...: a fresh one with those. The machine that this one installs from is asked again; where its own
# settings for that lie, they hold.
make_debian() {
    local root=$1 mirror
    shift
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Codename: bookworm' | head -n 1)
    debootstrap --variant=minbase --include="$(IFS=,; echo "$*")" bookworm "$root" "$mirror" >"$work/log" 2>&1 ||
        { tail -n 20 "$work/log" >&2; exit 1; }
}

# make_tool FOLDER: the RAID tool of that machine as a package of its vendor's, vdk-tool.deb: the simulator, told by
# /etc/this-server what it is to show.
make_tool() {
    local folder=$work/tool
    mkdir -p "$folder/DEBIAN" "$folder/opt/zorbalt/vdk/cli"
    dpkg-deb -x "$packages"/mngsrvraid-simulator_"$version"_*.deb "$work/simulator"
    mv "$work/simulator/usr/share/mngsrvraid/scenarios" "$work/simulator/usr/lib/mngsrvraid/vdksim/vdkcli" "$folder/opt/zorbalt/vdk"
    rm -r "$work/simulator"
    cat >"$folder/opt/zorbalt/vdk/cli/vdkcli" <<'TOOL'
#!/bin/sh
VDKSIM_SCENARIO=/opt/zorbalt/vdk/scenarios/$(cat /etc/this-server) exec /opt/zorbalt/vdk/vdkcli "$@"
TOOL
    chmod 755 "$folder/opt/zorbalt/vdk/cli/vdkcli"
    printf 'Package: vdk-tool\nVersion: 1\nArchitecture: all\nMaintainer: its vendor <vendor@mngsrvraid.example>\nDescription: stands for the tool\n' \
        >"$folder/DEBIAN/control"
    dpkg-deb -b --root-owner-group -Znone "$folder" "$1/vdk-tool.deb" >/dev/null
    rm -r "$folder"
}
