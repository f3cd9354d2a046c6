# Completion of mngsrvraid for bash.

_mngsrvraid() {
    local subcommands="show smart health expect get-info get-pd-info capture redact diff history events test-alert"
    local options="--help --version --scenario --install-dir --timeout --trace --trace-file --app-key --output --host --format --compact"
    local valued="--scenario --install-dir --timeout --trace --trace-file --app-key --output --host --format --document --redact-word --jobs --since --history --config
        --expect --save --accept-until --reason --max-temperature --max-media-errors --max-media-error-growth --min-spares"
    local judging="--expect --max-temperature --max-media-errors --max-media-error-growth --min-spares"
    local scenarios="awkward empty half-failed huge large old small well
        faults/bare-version faults/broken-header faults/dead faults/endless faults/flaky faults/flood
        faults/held-open faults/killed faults/late faults/marker faults/one-line faults/shell-killed
        faults/silent faults/slow faults/still-writing faults/stopped faults/truncated-title
        half-told/bare-controller half-told/cut-controller half-told/lost-drives
        half-told/lost-groups half-told/missing-drive half-told/no-logical-drive
        half-told/odd-replacement half-told/other-language half-told/other-title
        half-told/silent-controller half-told/told-twice half-told/unknown-group
        half-told/unknown-logical-drive half-told/wrong-count levels/backup-unit-worn
        levels/controller-failed levels/controller-needs-attention levels/failed-spare
        levels/logical-drive-initializing levels/logical-drive-offline
        levels/logical-drive-reconstructing levels/raid0-announced levels/raid0-lost
        levels/raid1-announced levels/raid1-dropped-out levels/raid1-gone levels/raid1-rebuilding
        levels/raid10-gone levels/raid10-pulled-while-rebuilding levels/raid10-rebuilding
        levels/raid5-gone levels/raid5-pulled levels/raid5-rebuilding levels/raid50-gone
        levels/raid6-degraded-unexplained levels/raid6-one-gone levels/raid6-one-gone-one-rebuilding
        levels/raid6-partially-degraded-unexplained levels/raid6-two-gone levels/raid60-one-gone
        levels/raid60-two-gone levels/raid7-gone levels/smart-at-thresh levels/smart-at-threshold
        levels/unused-bad watch/flaps watch/flaps/by-inquiry watch/grows-errors
        watch/grows-errors/by-inquiry watch/half-told watch/half-told/by-inquiry watch/hangs
        watch/hangs/by-inquiry watch/loses-drive watch/loses-drive/by-inquiry watch/moves
        watch/moves/by-inquiry"
    # Bash takes the equals sign of --format=json for a word of its own.
    local word=${COMP_WORDS[COMP_CWORD]#=} previous=${COMP_WORDS[COMP_CWORD - 1]}
    if [[ $previous == "=" ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    local subcommand="" position
    for ((position = 1; position < COMP_CWORD; position++)); do
        if [[ " $valued " == *" ${COMP_WORDS[position]} "* ]]; then
            ((position++)) # its value may be any word
            [[ ${COMP_WORDS[position]} == "=" ]] && ((position++))
        elif [[ " $subcommands " == *" ${COMP_WORDS[position]} "* ]]; then
            subcommand=${COMP_WORDS[position]}
            break
        fi
    done
    COMPREPLY=()
    case $previous in
        --format)
            local formats="xml tree table json html prometheus"
            [[ $subcommand == diff || $subcommand == events ]] && formats="table json"
            [[ $subcommand == history ]] && formats="table json html"
            mapfile -t COMPREPLY < <(compgen -W "$formats" -- "$word")
            return
            ;;
        --trace)
            mapfile -t COMPREPLY < <(compgen -W "1 2 4 8 all" -- "$word")
            return
            ;;
        --scenario)
            mapfile -t COMPREPLY < <(compgen -d -- "$word"
                compgen -W "$scenarios" -- "$word")
            return
            ;;
        --install-dir)
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            return
            ;;
        --trace-file | --output | --document | --expect | --save | --history | --config)
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
        --app-key | --host | --timeout | --jobs | --redact-word | --since | --accept-until | --reason | --max-* | --min-spares) return ;;
    esac
    case $subcommand in
        show) options+=" --document --smart --jobs --history $judging" ;;
        health) options+=" --document --verbose $judging" ;;
        expect) options+=" --save --document --accept-until --reason" ;;
        capture) options+=" --redact --redact-word" ;;
        redact) options+=" --redact-word" ;;
        diff) options+=" --all" ;;
        history) options+=" --since --history" ;;
        events) options+=" --since --history --follow" ;;
        test-alert) options+=" --config" ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ -z $subcommand ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$subcommands" -- "$word")
    elif [[ $subcommand == capture || $subcommand == redact ]]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
    elif [[ $subcommand == diff ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$word"
            compgen -W "$scenarios" -- "$word")
    fi
}

complete -o filenames -F _mngsrvraid mngsrvraid
