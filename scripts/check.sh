#!/usr/bin/env bash
# From a checkout to passing tests: installs what is missing, then formatting, the builds with their tests, and the
# static analyses. With arguments, only the named steps: format, cppcheck, clang, tidy, sanitize, release, packages.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "${CHECK_PACKAGES[@]}"

sources() {
    git -c safe.directory="$PWD" ls-files -- '*.h' '*.cpp'
}

check_format() {
    sources | xargs clang-format-14 --dry-run -Werror
}

# What is delivered; it takes the macros of the tests for broken syntax. What is suppressed has its reason there.
check_cppcheck() {
    local shown=(module/*/include portable/*/include product/*/include)
    cppcheck --quiet --error-exitcode=1 -j "$(nproc)" --std=c++20 --language=c++ --library=posix \
        --enable=warning,performance,portability,style --inline-suppr \
        --suppressions-list=.cppcheck-suppressions \
        --template='{file}:{line}: {severity}: {message} [{id}]' \
        "${shown[@]/#/-I}" -Iportable/framework \
        module portable product
}

# build_and_test PRESET
build_and_test() {
    cmake --preset "$1"
    cmake --build --preset "$1"
    ctest --preset "$1" -j "$((4 * $(nproc)))"  # Many a test waits for a child.
}

configure_clang() {
    cmake --preset clang >/dev/null
}

# The second compiler's warnings, which its front end gives alone.
check_clang() {
    configure_clang
    cmake --build --preset clang --target test_headers
    scripts/front_end.py build/clang
}

# What is delivered, as its sources are joined, so that the standard's headers are looked through once for each folder.
# The inclusion of a source, which is what joins them, is no news then; by hand it would define things twice. Tests,
# fuzzers and benchmarks pass through both compilers' warnings alone.
check_tidy() {
    configure_clang
    sed -n "s|^ *\"file\": \"\($PWD/.*\)\".*|\1|p" build/clang/compile_commands.json |
        grep -E "^$PWD/(build/clang/)?(module|portable|product)/" |
        xargs -P "$(nproc)" -n 1 clang-tidy-14 --quiet --checks=-bugprone-suspicious-include -p build/clang 2>&1 |
        { grep -vE '^[0-9]+ warnings? (and [0-9]+ errors? )?generated\.$|^$' || true; }
}

# What people install, and what becomes of it on their machines.
check_packages() {
    scripts/deb.sh build lint life
}

run_step() {
    echo "== $1"
    local start=$SECONDS
    case "$1" in
        format) check_format ;;
        cppcheck) check_cppcheck ;;
        release | sanitize) build_and_test "$1" ;;
        clang) check_clang ;;
        tidy) check_tidy ;;
        packages) check_packages ;;
        *)
            echo "There is no step named $1; the steps are format, cppcheck, clang, tidy, sanitize, release and packages." >&2
            exit 2
            ;;
    esac
    echo "== $1 took $((SECONDS - start)) s"
}

[ $# -gt 0 ] || set -- format cppcheck clang tidy sanitize release packages
for step in "$@"; do
    run_step "$step"
done
