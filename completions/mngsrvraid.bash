# Completion of mngsrvraid for bash.

_mngsrvraid() {
    local subcommands="show smart health get-info get-pd-info capture diff"
    local options="--help --version --scenario --install-dir --trace --trace-file --app-key --output --format"
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local subcommand="" each
    for each in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case " $subcommands " in *" $each "*) subcommand=$each && break ;; esac
    done
    COMPREPLY=()
    case $previous in
        --format)
            mapfile -t COMPREPLY < <(compgen -W "xml tree table json html prometheus" -- "$word")
            return
            ;;
        --trace)
            mapfile -t COMPREPLY < <(compgen -W "1 2 4 8 all" -- "$word")
            return
            ;;
        --scenario)
            mapfile -t COMPREPLY < <(compgen -d -- "$word"
                compgen -W "small large old awkward half-failed huge empty" -- "$word")
            return
            ;;
        --install-dir)
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            return
            ;;
        --trace-file | --output | --document)
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
        --app-key) return ;;
    esac
    case $subcommand in
        show) options+=" --document --smart" ;;
        health) options+=" --document --verbose" ;;
        capture) options+=" --redact" ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ -z $subcommand ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$subcommands" -- "$word")
    elif [[ $subcommand == capture ]]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
    elif [[ $subcommand == diff ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}

complete -o filenames -F _mngsrvraid mngsrvraid
