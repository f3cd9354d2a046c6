# Completion of mngsrvraid for fish.

set -l subcommands show smart health get-info get-pd-info capture diff
complete -c mngsrvraid -f

complete -c mngsrvraid -s h -l help -d 'Print a summary with examples'
complete -c mngsrvraid -l version -d 'Print the versions of the command and of the module'
complete -c mngsrvraid -l scenario -x -a '(__fish_complete_directories) small large old awkward half-failed huge empty' -d 'Run against this scenario'
complete -c mngsrvraid -l install-dir -x -a '(__fish_complete_directories)' -d 'Install root to use'
complete -c mngsrvraid -l trace -x -a '1 2 4 8 all' -d 'Trace to standard error'
complete -c mngsrvraid -l trace-file -r -F -d 'Trace to this file'
complete -c mngsrvraid -l app-key -x -d 'Application key of the caller'
complete -c mngsrvraid -l output -r -F -d 'Store what is printed in this file'
complete -c mngsrvraid -l format -x -a 'xml tree table json html prometheus' -d 'Format of what is printed'

set -l none "not __fish_seen_subcommand_from $subcommands"
complete -c mngsrvraid -n $none -a show -d 'What needs attention, then everything, in tables'
complete -c mngsrvraid -n $none -a smart -d 'One drive with its SMART data'
complete -c mngsrvraid -n $none -a health -d 'One line and an exit status for monitoring'
complete -c mngsrvraid -n $none -a get-info -d 'The RAID document of the server'
complete -c mngsrvraid -n $none -a get-pd-info -d 'The document of one drive'
complete -c mngsrvraid -n $none -a capture -d 'Record what the tool answers as a scenario'
complete -c mngsrvraid -n $none -a diff -d 'What changed between two saved documents'

complete -c mngsrvraid -n '__fish_seen_subcommand_from show health' -l document -r -F -d 'A saved document instead of the server'
complete -c mngsrvraid -n '__fish_seen_subcommand_from show' -l smart -d 'With all SMART data'
complete -c mngsrvraid -n '__fish_seen_subcommand_from health' -l verbose -d 'Name each finding'
complete -c mngsrvraid -n '__fish_seen_subcommand_from capture' -l redact -d 'Without serial numbers'
complete -c mngsrvraid -n '__fish_seen_subcommand_from capture' -x -a '(__fish_complete_directories)'
complete -c mngsrvraid -n '__fish_seen_subcommand_from diff' -F
