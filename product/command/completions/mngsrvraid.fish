# Completion of mngsrvraid for fish.

# The subcommand that was typed; the values of options may be any words.
function __mngsrvraid_subcommand
    set -l words (commandline -opc)
    set -e words[1]
    while set -q words[1]
        switch $words[1]
            case --scenario --install-dir --timeout --trace --trace-file --app-key --output --host --format --document --redact-word --jobs --since --history --config \
                    --expect --save --accept-until --reason --max-temperature --max-media-errors --max-media-error-growth --min-spares
                set -e words[1]
            case show smart health expect get-info get-pd-info capture redact diff history events test-alert
                echo $words[1]
                return
        end
        set -e words[1]
    end
end

function __mngsrvraid_is
    contains -- "$(__mngsrvraid_subcommand)" $argv
end

set -l scenarios awkward empty half-failed huge large old small well \
    faults/bare-version faults/broken-header faults/dead faults/endless faults/flaky faults/flood \
    faults/held-open faults/killed faults/late faults/marker faults/one-line faults/shell-killed \
    faults/silent faults/slow faults/still-writing faults/stopped faults/truncated-title \
    half-told/bare-controller half-told/cut-controller half-told/lost-drives half-told/lost-groups \
    half-told/missing-drive half-told/no-logical-drive half-told/odd-replacement \
    half-told/other-language half-told/other-title half-told/silent-controller \
    half-told/told-twice half-told/unknown-group half-told/unknown-logical-drive \
    half-told/wrong-count levels/backup-unit-worn levels/controller-failed \
    levels/controller-needs-attention levels/failed-spare levels/logical-drive-initializing \
    levels/logical-drive-offline levels/logical-drive-reconstructing levels/raid0-announced \
    levels/raid0-lost levels/raid1-announced levels/raid1-dropped-out levels/raid1-gone \
    levels/raid1-rebuilding levels/raid10-gone levels/raid10-pulled-while-rebuilding \
    levels/raid10-rebuilding levels/raid5-gone levels/raid5-pulled levels/raid5-rebuilding \
    levels/raid50-gone levels/raid6-degraded-unexplained levels/raid6-one-gone \
    levels/raid6-one-gone-one-rebuilding levels/raid6-partially-degraded-unexplained \
    levels/raid6-two-gone levels/raid60-one-gone levels/raid60-two-gone levels/raid7-gone \
    levels/smart-at-thresh levels/smart-at-threshold levels/unused-bad watch/flaps \
    watch/flaps/by-inquiry watch/grows-errors watch/grows-errors/by-inquiry watch/half-told \
    watch/half-told/by-inquiry watch/hangs watch/hangs/by-inquiry watch/loses-drive \
    watch/loses-drive/by-inquiry watch/moves watch/moves/by-inquiry
complete -c mngsrvraid -f

complete -c mngsrvraid -s h -l help -d 'Print a summary with examples'
complete -c mngsrvraid -l version -d 'Print the versions of the command and of the module'
complete -c mngsrvraid -l scenario -x -a "(__fish_complete_directories) $scenarios" -d 'Run against this scenario'
complete -c mngsrvraid -l install-dir -x -a '(__fish_complete_directories)' -d 'Install root to use'
complete -c mngsrvraid -l trace -x -a '1 2 4 8 all' -d 'Trace to standard error'
complete -c mngsrvraid -l timeout -x -d 'End the tool after these seconds'
complete -c mngsrvraid -l trace-file -r -F -d 'Trace to this file'
complete -c mngsrvraid -l app-key -x -d 'Application key of the caller'
complete -c mngsrvraid -l host -x -d 'What the server is called'
complete -c mngsrvraid -l compact -d 'JSON without the items of the documents'
complete -c mngsrvraid -l output -r -F -d 'Store what is printed in this file'
complete -c mngsrvraid -n 'not __mngsrvraid_is diff' -l format -x -a 'xml tree table json html prometheus' -d 'Format of what is printed'

complete -c mngsrvraid -n '__mngsrvraid_is ""' -a show -d 'What needs attention, then everything, in tables'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a smart -d 'One drive with its SMART data'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a health -d 'One line and an exit status for monitoring'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a expect -d 'Save what this server ought to have'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a get-info -d 'The RAID document of the server'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a get-pd-info -d 'The document of one drive'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a capture -d 'Record what the tool answers as a scenario'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a redact -d 'Replace serial numbers and the like in a capture'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a diff -d 'What changed between two documents or captures'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a history -d 'The parts that the service has seen, or what happened to one'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a events -d 'What has happened'
complete -c mngsrvraid -n '__mngsrvraid_is ""' -a test-alert -d 'Send a test event through all channels of the service'

complete -c mngsrvraid -n '__mngsrvraid_is show health expect' -l document -r -F -d 'A saved document instead of the server'
complete -c mngsrvraid -n '__mngsrvraid_is show health' -l expect -r -F -d 'What is not as it was saved'
complete -c mngsrvraid -n '__mngsrvraid_is show health' -l max-temperature -x -d 'Warn above these degrees Celsius'
complete -c mngsrvraid -n '__mngsrvraid_is show health' -l max-media-errors -x -d 'Warn above so many of a drive'
complete -c mngsrvraid -n '__mngsrvraid_is show health' -l max-media-error-growth -x -d 'Warn when so many more than when it was saved'
complete -c mngsrvraid -n '__mngsrvraid_is show health' -l min-spares -x -d 'Fewest good spares of a controller'
complete -c mngsrvraid -n '__mngsrvraid_is expect' -l save -r -F -d 'Save to this file'
complete -c mngsrvraid -n '__mngsrvraid_is expect' -l accept-until -x -d 'What is not well is known up to this day'
complete -c mngsrvraid -n '__mngsrvraid_is expect' -l reason -x -d 'Why it is accepted'
complete -c mngsrvraid -n '__mngsrvraid_is show' -l smart -d 'With all SMART data'
complete -c mngsrvraid -n '__mngsrvraid_is show' -l jobs -x -d 'With so many drives at a time'
complete -c mngsrvraid -n '__mngsrvraid_is health' -l verbose -d 'Name each finding'
complete -c mngsrvraid -n '__mngsrvraid_is capture' -l redact -d 'Without serial numbers'
complete -c mngsrvraid -n '__mngsrvraid_is capture redact' -l redact-word -x -d 'And without this word'
complete -c mngsrvraid -n '__mngsrvraid_is capture redact' -x -a '(__fish_complete_directories)'
complete -c mngsrvraid -n '__mngsrvraid_is diff' -l all -d 'With what always moves'
complete -c mngsrvraid -n '__mngsrvraid_is diff' -l format -x -a 'table json' -d 'Format of what is printed'
complete -c mngsrvraid -n '__mngsrvraid_is diff' -F -a "$scenarios"
complete -c mngsrvraid -n '__mngsrvraid_is history events' -l since -x -d 'From when on, such as 30d, 12h or 2031-04-05'
complete -c mngsrvraid -n '__mngsrvraid_is history events show' -l history -r -F -d 'The file of what is remembered'
complete -c mngsrvraid -n '__mngsrvraid_is events' -l follow -d 'And what happens from now on'
complete -c mngsrvraid -n '__mngsrvraid_is test-alert' -l config -r -F -d 'Configuration of the service'
complete -c mngsrvraid -n '__mngsrvraid_is history' -l format -x -a 'table json html' -d 'Format of what is printed'
complete -c mngsrvraid -n '__mngsrvraid_is events' -l format -x -a 'table json' -d 'Format of what is printed'
