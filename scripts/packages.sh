# Sourced by the other scripts: makes sure that the Debian packages a job needs are there.

# need_packages NAME...: installs those that are missing, or says what to do and ends.
need_packages() {
    local missing=()
    local name
    for name in "$@"; do
        if ! dpkg-query -W -f '${Status}' "$name" 2>/dev/null | grep -q '^install ok installed$'; then
            missing+=("$name")
        fi
    done
    [ ${#missing[@]} -eq 0 ] && return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if command -v sudo >/dev/null && { [ -t 0 ] || sudo -n true 2>/dev/null; }; then
            as_root=(sudo)
        else
            echo "These Debian packages are missing: ${missing[*]}" >&2
            echo "Install them as root and run this again:" >&2
            echo "    apt-get update && apt-get install -y --no-install-recommends ${missing[*]}" >&2
            exit 1
        fi
    fi
    echo "Installing ${missing[*]}" >&2
    if ! { "${as_root[@]}" apt-get update -q && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}"; } >&2; then
        echo "apt-get could not install ${missing[*]}; see its words above." >&2
        exit 1
    fi
}

BUILD_PACKAGES=(g++ cmake ninja-build libcli11-dev libpugixml-dev libutf8proc-dev nlohmann-json3-dev
    libcrypt-dev libcurl4-gnutls-dev libgnutls28-dev libmicrohttpd-dev libseccomp-dev libsqlite3-dev libsystemd-dev
    libtomlplusplus-dev libxml2-dev pkg-config)
CHECK_PACKAGES=("${BUILD_PACKAGES[@]}" clang-14 clang-format-14 clang-tidy-14 chromium cppcheck curl libgtest-dev
    libgmock-dev libbenchmark-dev libxml2-utils libexpat1-dev locales mandoc groff-base
    zsh fish jq prometheus prometheus-alertmanager python3 python3-jsonschema python3-sushy redfishtool systemd valgrind
    msmtp openssl sblim-wbemcli)
FLEET_PACKAGES=(prometheus prometheus-alertmanager python3)
DEB_PACKAGES=("${BUILD_PACKAGES[@]}" apparmor debhelper debootstrap devscripts dh-apparmor dpkg-dev git lintian)
BENCH_PACKAGES=("${BUILD_PACKAGES[@]}" libbenchmark-dev curl gnuplot-nox nghttp2-client python3 valgrind wrk)
FUZZ_PACKAGES=("${BUILD_PACKAGES[@]}" clang-14 libclang-rt-14-dev libexpat1-dev python3)
VM_PACKAGES=(debootstrap e2fsprogs qemu-system-x86)
