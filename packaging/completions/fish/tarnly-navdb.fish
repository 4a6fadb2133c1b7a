# fish completion for tarnly-navdb

set -l none 'not __fish_seen_subcommand_from build find'
complete -c tarnly-navdb -f
complete -c tarnly-navdb -s h -l help -d 'Print a summary of the options'
complete -c tarnly-navdb -n $none -l version -d 'Print the version'
complete -c tarnly-navdb -n $none -a build -d 'Make a database of the simulator\'s navigation data'
complete -c tarnly-navdb -n $none -a find -d 'Show all places of a name'
complete -c tarnly-navdb -n '__fish_seen_subcommand_from build' -a '(__fish_complete_directories)'
complete -c tarnly-navdb -n '__fish_seen_subcommand_from build' -s o -l output -r -F -d 'The database to write'
complete -c tarnly-navdb -n '__fish_seen_subcommand_from find' -l nav-db -r -F -d 'The database'
complete -c tarnly-navdb -n '__fish_seen_subcommand_from find' -l json -d 'Print one JSON object a line'
