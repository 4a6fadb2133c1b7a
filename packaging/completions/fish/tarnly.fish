# fish completion for tarnly

complete -c tarnly -f
complete -c tarnly -l background -d 'Start without opening a window'
complete -c tarnly -l sim-host -x -a '(__fish_print_hostnames)' -d 'The simulator\'s host'
complete -c tarnly -l sim-port -x -d 'The port of the simulator\'s web API'
complete -c tarnly -l port -x -d 'The port to listen on, if not 28086; 0 for any'
complete -c tarnly -l name -x -d 'The name to be found by'
complete -c tarnly -l data-dir -x -a '(__fish_complete_directories)' -d 'The folder of the settings'
complete -c tarnly -l nav-db -r -F -d 'The navigation database with the fixes of scripts'
complete -c tarnly -l situations -x -a '(__fish_complete_directories)' -d 'The folder of situations'
complete -c tarnly -l status-file -r -F -d 'Keep a file that tells how the companion stands'
complete -c tarnly -l advertise -d 'Publish by DNS-SD, whatever the settings say'
complete -c tarnly -l no-advertise -d 'Listen without publishing by DNS-SD'
complete -c tarnly -l max-clients -x -d 'The most connections at once'
complete -c tarnly -l allow-origin -x -d 'Let the web pages of one origin use the companion'
complete -c tarnly -l status -d 'Print how the companion stands, and exit'
complete -c tarnly -s h -l help -d 'Print a summary of the options'
complete -c tarnly -l version -d 'Print the version'
