#!/usr/bin/env bash
# Which lines and branches of the module its tests execute: a line a file, then what is not executed. Fails below
# 100 % of the lines or 95 % of the branches. Branches that only an exception takes are not counted: they are swept by
# the tests that make everything fail once.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages "${CHECK_PACKAGES[@]}" gcovr
tests=(itemconv_test report_test readers_test provider_test)
{
    cmake --preset coverage
    cmake --build --preset coverage --target "${tests[@]}"
} >&2
find build/coverage -name '*.gcda' -delete
for test in "${tests[@]}"; do
    "build/coverage/bin/$test" --gtest_brief=1 >&2
done

# report OPTION...
report() {
    gcovr --root . --exclude-throw-branches --exclude-unreachable-branches \
        --filter 'module/' "$@" build/coverage/{module,tests}
}
report --branches
report --fail-under-line 100 --fail-under-branch 95
