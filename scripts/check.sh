#!/usr/bin/env bash
# From a checkout to passing tests: installs what is missing, then formatting, the builds with their tests, and the
# static analyses. With arguments, only the named steps: format, cppcheck, clang, tidy, sanitize, release.
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
    ctest --preset "$1" -j "$((2 * $(nproc)))"  # Many a test waits for a child.
}

check_clang() {
    cmake --preset clang
    cmake --build --preset clang
}

# What is delivered; the tests pass through both compilers' warnings alone.
check_tidy() {
    cmake --preset clang
    sources | grep '\.cpp$' | grep -v '^tests/' | xargs -P "$(nproc)" -n 4 clang-tidy-14 --quiet -p build/clang
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
        *)
            echo "There is no step named $1; the steps are format, cppcheck, clang, tidy, sanitize and release." >&2
            exit 2
            ;;
    esac
    echo "== $1 took $((SECONDS - start)) s"
}

[ $# -gt 0 ] || set -- format cppcheck clang tidy sanitize release
for step in "$@"; do
    run_step "$step"
done
