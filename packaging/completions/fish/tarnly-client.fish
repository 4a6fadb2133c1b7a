# fish completion for tarnly-client

set -l subcommands discover info status doctor get set watch run move attitude flights load script record catch-up send
set -l none "not __fish_seen_subcommand_from $subcommands"

complete -c tarnly-client -f
complete -c tarnly-client -l instance -x -d 'The companion of this name, where there are several'
complete -c tarnly-client -l host -x -a '(__fish_print_hostnames)' -d 'The companion\'s host name or address'
complete -c tarnly-client -l port -x -d 'The companion\'s port'
complete -c tarnly-client -l password-file -r -F -d 'A file with the pairing password on its first line'
complete -c tarnly-client -l json -d 'Print one JSON object a line'
complete -c tarnly-client -l timeout -x -d 'How long to look for companions and to wait for answers'
complete -c tarnly-client -s h -l help -d 'Print a summary of the options'
complete -c tarnly-client -l version -d 'Print the version'

complete -c tarnly-client -n $none -a discover -d 'List the companions on the network'
complete -c tarnly-client -n $none -a info -d 'Show which simulator the companion is connected with'
complete -c tarnly-client -n $none -a status -d 'Show how the companion on this computer stands'
complete -c tarnly-client -n $none -a doctor -d 'Find out what keeps a lesson from working'
complete -c tarnly-client -n $none -a get -d 'Print the present values of datarefs'
complete -c tarnly-client -n $none -a set -d 'Write datarefs, or elements of array datarefs'
complete -c tarnly-client -n $none -a watch -d 'Print the values of datarefs, or what is recorded'
complete -c tarnly-client -n $none -a run -d 'Trigger a simulator command once'
complete -c tarnly-client -n $none -a move -d 'Move the aircraft, at its height above ground'
complete -c tarnly-client -n $none -a attitude -d 'Put the aircraft into an attitude and airspeed'
complete -c tarnly-client -n $none -a flights -d 'List the saved flights'
complete -c tarnly-client -n $none -a load -d 'Load a saved flight'
complete -c tarnly-client -n $none -a script -d 'Load a script of triggers'
complete -c tarnly-client -n $none -a record -d 'Start or stop the recording of the flight'
complete -c tarnly-client -n $none -a catch-up -d 'Show what has been recorded'
complete -c tarnly-client -n $none -a send -d 'Send a request as it is, and print the answer'

complete -c tarnly-client -n '__fish_seen_subcommand_from status doctor' -l data-dir -x \
    -a '(__fish_complete_directories)' -d 'The companion\'s data folder'
set -l scripting '__fish_seen_subcommand_from script'
complete -c tarnly-client -n $scripting -l check -d 'Only look for what can never fire'
complete -c tarnly-client -n $scripting -l try -d 'Tell what would have fired in recordings'
complete -c tarnly-client -n $scripting -l nav-db -r -F -d 'A navigation database in which to look for the fixes'
set -l examining '__fish_seen_subcommand_from doctor'
complete -c tarnly-client -n $examining -l sim-host -x -a '(__fish_print_hostnames)' -d 'The simulator\'s host'
complete -c tarnly-client -n $examining -l sim-port -x -d 'The port of the simulator\'s web API'
complete -c tarnly-client -n $examining -l reach -d 'Wait for a device to open the companion\'s address'
complete -c tarnly-client -n $examining -l wait -x -d 'How long to wait for the device'
set -l watching '__fish_seen_subcommand_from watch'
complete -c tarnly-client -n $watching -l recording -d 'Print the triggers of the recording as they fire'
complete -c tarnly-client -n $watching -l count -x -d 'End after so many pushes, or triggers'
complete -c tarnly-client -n $watching -l seconds -x -d 'End after this time'
set -l catching_up '__fish_seen_subcommand_from catch-up'
complete -c tarnly-client -n $catching_up -l since -x -d 'Only what lies after this time'
complete -c tarnly-client -n '__fish_seen_subcommand_from record' -a 'start stop'
complete -c tarnly-client -n '__fish_seen_subcommand_from script load' -F
