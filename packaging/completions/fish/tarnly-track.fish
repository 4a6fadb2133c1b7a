# fish completion for tarnly-track

set -l none 'not __fish_seen_subcommand_from list show export plot grade replay'

complete -c tarnly-track -f
complete -c tarnly-track -s h -l help -d 'Print a summary of the options'
complete -c tarnly-track -n $none -l version -d 'Print the version'

complete -c tarnly-track -n $none -a list -d 'List the recordings of a folder, one a line'
complete -c tarnly-track -n $none -a show -d 'Show one recording in full'
complete -c tarnly-track -n $none -a export -d 'Make a file of another format of a recording'
complete -c tarnly-track -n $none -a plot -d 'Draw recordings on a page for browsers'
complete -c tarnly-track -n $none -a grade -d 'Tell how well a recorded flight was flown'
complete -c tarnly-track -n $none -a replay -d 'Fly a recording again, as a simulator'

complete -c tarnly-track -n '__fish_seen_subcommand_from list show grade' -l json -d 'Print JSON objects'
complete -c tarnly-track -n '__fish_seen_subcommand_from list' -a '(__fish_complete_directories)'
complete -c tarnly-track -n '__fish_seen_subcommand_from show export plot grade replay' -F
set -l exporting '__fish_seen_subcommand_from export'
complete -c tarnly-track -n $exporting -l format -x -a 'gpx kml csv geojson' -d 'The format'
complete -c tarnly-track -n '__fish_seen_subcommand_from export plot' -s o -l output -r -F -d 'The file to write'
complete -c tarnly-track -n $exporting -l aircraft -x -d 'What the aircraft is called'
complete -c tarnly-track -n $exporting -l utc-start -x -d 'When the recording was begun'
set -l plotting '__fish_seen_subcommand_from plot'
complete -c tarnly-track -n $plotting -l svg -d 'Draw a picture that stands still'
complete -c tarnly-track -n $plotting -l script -r -F -d 'Mark what this script would have done'
complete -c tarnly-track -n $plotting -l tolerances -r -F -d 'Grade the flights by this'
complete -c tarnly-track -n $plotting -l nav-db -r -F -d 'Where to look for the fixes of the script'
set -l replaying '__fish_seen_subcommand_from replay'
complete -c tarnly-track -n $replaying -l speed -x -d 'How many times as fast'
complete -c tarnly-track -n $replaying -l from -x -d 'Seconds of the recording to begin at'
complete -c tarnly-track -n $replaying -l repeat -d 'Begin again at the end'
complete -c tarnly-track -n $replaying -l paused -d 'Stand at the beginning at first'
complete -c tarnly-track -n $replaying -l port -x -d 'Port of the web interface'
complete -c tarnly-track -n $replaying -l udp-port -x -d 'UDP port for loading situations'
