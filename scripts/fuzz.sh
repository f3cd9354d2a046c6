#!/usr/bin/env bash
# Builds the fuzzers and runs them on their corpora, as many at a time as there are processors.
#   scripts/fuzz.sh [--runs N] [--fast] [--merge] [TARGET...]
# --fast leaves out the sanitizers, for the length of a campaign: the properties are checked all the same, and
# what it learns is run again under the sanitizers by the next run without it.
# --merge runs nothing: it takes what earlier runs have found into fuzz/corpus, as few and small files as cover it.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

ALL_TARGETS=(ctrl_report ld_report pd_report smart_report conversion scenario get_info get_pd_info document)
LONGEST=2048
RESULTS=build/fuzz-runs

runs=20000000
preset=fuzz
merge=
targets=()
while [ $# -gt 0 ]; do
    case "$1" in
        --runs)
            runs=${2:?--runs needs a number}
            shift
            ;;
        --fast) preset=fuzz-fast ;;
        --merge) merge=yes ;;
        -*)
            echo "usage: scripts/fuzz.sh [--runs N] [--fast] [--merge] [TARGET...]" >&2
            exit 2
            ;;
        *)
            if [[ " ${ALL_TARGETS[*]} " != *" $1 "* ]]; then
                echo "There is no target named $1; the targets are ${ALL_TARGETS[*]}." >&2
                exit 2
            fi
            targets+=("$1")
            ;;
    esac
    shift
done
[ ${#targets[@]} -gt 0 ] || targets=("${ALL_TARGETS[@]}")

need_packages "${FUZZ_PACKAGES[@]}"
{
    cmake --preset "$preset"
    cmake --build --preset "$preset" --target "${targets[@]/#/fuzz_}"
} >&2

# Files that the targets write are small and many.
TMPDIR=$(mktemp -d -p "$([ -d /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# run_fuzzer TARGET OPTION...: with its output in the target's log
run_fuzzer() {
    local target=$1
    shift
    "build/$preset/bin/fuzz_$target" -max_len=$LONGEST "$@" >"$RESULTS/$target.log" 2>&1
}

fuzz_target() {
    local target=$1 new=$RESULTS/corpus/$1 verdict="no finding"
    mkdir -p "$new" "$RESULTS/findings"
    local before
    before=$(find "$new" -type f | wc -l)
    # Leaks are looked for once, at the end: before, the target's own items are counted anyway.
    run_fuzzer "$target" -runs="$runs" -dict=fuzz/report.dict -detect_leaks=0 -entropic=0 -timeout=20 -print_final_stats=1 \
        -artifact_prefix="$RESULTS/findings/$target-" "$new" "fuzz/corpus/$target" ||
        verdict="FINDING, see $RESULTS/$target.log"
    local executed speed
    executed=$(sed -n 's/^stat::number_of_executed_units: *//p' "$RESULTS/$target.log")
    speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$RESULTS/$target.log")
    printf '%-14s %10s executions %7s exec/s %5s new inputs  %s\n' "$target" "${executed:-?}" "${speed:-?}" \
        $(($(find "$new" -type f | wc -l) - before)) "$verdict"
    [ "$verdict" = "no finding" ]
}

merge_target() {
    local target=$1 kept=fuzz/corpus/$1 minimal=$TMPDIR/$1
    mkdir -p "$kept" "$RESULTS/corpus/$target" "$minimal"
    run_fuzzer "$target" -set_cover_merge=1 "$minimal" "$kept" "$RESULTS/corpus/$target"
    # Inputs that found something have names of their own and stay.
    find "$kept" -type f -regex '.*/[0-9a-f]*' -delete
    cp "$minimal"/* "$kept/"
    echo "$target: $(find "$kept" -type f | wc -l) inputs, $(du -sb "$kept" | cut -f1) bytes"
}

mkdir -p "$RESULTS"
failed=0
for target in "${targets[@]}"; do
    if [ -n "$merge" ]; then
        merge_target "$target"
        continue
    fi
    while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do
        wait -n || failed=1
    done
    fuzz_target "$target" &
done
while [ "$(jobs -p | wc -l)" -gt 0 ]; do
    wait -n || failed=1
    jobs >/dev/null
done
exit $failed
