#!/usr/bin/env bash
# Builds the fuzzers and runs them, as many at a time as there are processors. They start from fuzz/corpus, the seeds and
# what earlier runs have found.
#   scripts/fuzz.sh [--runs N] [--fast] [--merge] [TARGET...]
# --fast leaves out the sanitizers, for the length of a campaign: the properties are checked all the same, and
# what it learns is run again under the sanitizers by the next run without it.
# --merge fuzzes nothing: it makes fuzz/corpus anew out of all these inputs, as few and small ones as reach every edge
# that all of them reach, and fails, changing nothing, where that is more than the tree is to hold.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

ALL_TARGETS=(ctrl_report ld_report pd_report smart_report conversion scenario get_info get_pd_info document expectations
    watch redaction history configuration redfish wbem doors)
LONGEST=4096
RESULTS=build/fuzz-runs
MERGED=$RESULTS/merged

runs=20000000
presets=(fuzz)
merge=
targets=()
while [ $# -gt 0 ]; do
    case "$1" in
        --runs)
            runs=${2:?--runs needs a number}
            shift
            ;;
        --fast) presets=(fuzz-fast) ;;
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

steady=()
if [ -n "$merge" ]; then
    # Each has edges that the other lacks: without sanitizers the compiler folds some branches and copies others.
    presets=(fuzz-fast fuzz)
    # Which way the sanitizers' checks go depends on addresses, too.
    setarch -R true 2>/dev/null && steady=(setarch -R)
fi

need_packages "${FUZZ_PACKAGES[@]}"
for preset in "${presets[@]}"; do
    cmake --preset "$preset"
    cmake --build --preset "$preset" --target "${targets[@]/#/fuzz_}"
done >&2

# Files that the targets write are small and many.
TMPDIR=$(mktemp -d -p "$([ -d /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# run_fuzzer PRESET TARGET OPTION...: with its output in the target's log
run_fuzzer() {
    local fuzzer=build/$1/bin/fuzz_$2 log=$RESULTS/$2.log
    shift 2
    "${steady[@]}" "$fuzzer" -max_len=$LONGEST "$@" >"$log" 2>&1
}

# find_inputs TARGET: sets `inputs` to the folders of all that it starts from; the first takes what it finds
find_inputs() {
    inputs=("$RESULTS/corpus/$1" "$RESULTS/seeds/$1" "fuzz/corpus/$1")
    mkdir -p "${inputs[@]}"
}

count_files() {
    find "$1" -type f | wc -l
}

fuzz_target() {
    local target=$1 verdict="no finding" inputs before
    find_inputs "$target"
    before=$(count_files "${inputs[0]}")
    # Leaks are looked for once, at the end: before, the target's own items are counted anyway.
    run_fuzzer "${presets[0]}" "$target" -runs="$runs" -dict=fuzz/report.dict -detect_leaks=0 -entropic=0 -timeout=20 \
        -print_final_stats=1 -artifact_prefix="$RESULTS/findings/$target-" "${inputs[@]}" ||
        verdict="FINDING, see $RESULTS/$target.log"
    local executed speed
    executed=$(sed -n 's/^stat::number_of_executed_units: *//p' "$RESULTS/$target.log")
    speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$RESULTS/$target.log")
    printf '%-14s %10s executions %7s exec/s %5s new inputs  %s\n' "$target" "${executed:-?}" "${speed:-?}" \
        $(($(count_files "${inputs[0]}") - before)) "$verdict"
    [ "$verdict" = "no finding" ]
}

# count_edges PRESET TARGET FOLDER...: how many the inputs reach
count_edges() {
    if ! run_fuzzer "$1" "$2" -runs=0 "${@:3}"; then
        echo "$2 fails for one of its inputs, see $RESULTS/$2.log" >&2
        return 1
    fi
    sed -n 's/.*INITED cov: \([0-9]*\) .*/\1/p' "$RESULTS/$2.log"
}

ROW='%-14s %5s %7s  %6s %6s  %11s %6s\n'

# merge_target TARGET: makes its corpus in $MERGED
merge_target() {
    local target=$1 chosen=$MERGED/$1 inputs preset before after edges=()
    find_inputs "$target"
    # Inputs that found something have names of their own and stay.
    find "$chosen" -type f -regextype posix-extended -regex '.*/[0-9a-f]{40}' -delete
    for preset in "${presets[@]}"; do
        run_fuzzer "$preset" "$target" -set_cover_merge=1 -use_counters=0 "$chosen" "${inputs[@]}"
    done
    for preset in "${presets[@]}"; do
        before=$(count_edges "$preset" "$target" "${inputs[@]}")
        after=$(count_edges "$preset" "$target" "$chosen")
        edges+=("$before" "$after")
    done
    printf "$ROW" "$target" "$(count_files "$chosen")" "$(cat "$chosen"/* | wc -c)" "${edges[@]}"
    # The sanitizers' own edges are not held to it: what was run before decides about some.
    if [ "${edges[1]}" -lt "${edges[0]}" ]; then
        echo "What was chosen for $target does not reach every edge; fuzz/corpus stays as it was." >&2
        return 1
    fi
}

merge_targets() {
    local target
    rm -rf "$MERGED"
    cp -r fuzz/corpus "$MERGED"
    printf "$ROW" target files bytes edges: after sanitizers: after
    for target in "${targets[@]}"; do
        mkdir -p "$MERGED/$target"
        merge_target "$target"
    done
    if ! cmake -D CORPORA="$MERGED" -P fuzz/CorpusSize.cmake; then
        echo "fuzz/corpus stays as it was; what was chosen is in $MERGED." >&2
        return 1
    fi
    rm -r fuzz/corpus
    cp -r "$MERGED" fuzz/corpus
}

mkdir -p "$RESULTS/findings"
rm -rf "$RESULTS/seeds"
python3 fuzz/seeds.py portable/vdksim/scenarios "$RESULTS/seeds"

if [ -n "$merge" ]; then
    merge_targets
    exit
fi

failed=0
for target in "${targets[@]}"; do
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
