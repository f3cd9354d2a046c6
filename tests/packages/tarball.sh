#!/bin/sh
# tarball.sh BUILD CPACK: the tarball of that build, unpacked somewhere, does its work there.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

"$2" --config "$1/CPackConfig.cmake" -B "$folder" -D CPACK_STRIP_FILES=OFF >"$folder/log" || { cat "$folder/log"; exit 1; }
mkdir "$folder/root"
tar -xzf "$folder"/mngsrvraid-*.tar.gz -C "$folder/root"
cd "$folder/root/usr/local/zorbalt"
grep -x 'ExecStart=/usr/local/zorbalt/bin/mngsrvraidd' lib/systemd/system/mngsrvraidd.service
bin/mngsrvraidd --version
bin/mngsrvraid --scenario small health
"$1/bin/mngsrvraid" --scenario small get-info >"$folder/built"
bin/mngsrvraid --scenario small get-info >"$folder/unpacked"
cmp "$folder/built" "$folder/unpacked"
