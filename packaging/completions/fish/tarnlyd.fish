# fish completion for tarnlyd

complete -c tarnlyd -f
complete -c tarnlyd -l sim-host -x -a '(__fish_print_hostnames)' -d 'The simulator\'s host'
complete -c tarnlyd -l sim-port -x -d 'The port of the simulator\'s web API'
complete -c tarnlyd -l port -x -d 'The port to listen on, if not 28086; 0 for any'
complete -c tarnlyd -l name -x -d 'The name to be found by'
complete -c tarnlyd -l data-dir -x -a '(__fish_complete_directories)' -d 'The folder of the settings'
complete -c tarnlyd -l nav-db -r -F -d 'The navigation database with the fixes of scripts'
complete -c tarnlyd -l situations -x -a '(__fish_complete_directories)' -d 'The folder of situations'
complete -c tarnlyd -l status-file -r -F -d 'Keep a file that tells how the companion stands'
complete -c tarnlyd -l advertise -d 'Publish by DNS-SD, whatever the settings say'
complete -c tarnlyd -l no-advertise -d 'Listen without publishing by DNS-SD'
complete -c tarnlyd -l no-page -d 'Show browsers a short page in place of the lesson page'
complete -c tarnlyd -l max-clients -x -d 'The most connections at once'
complete -c tarnlyd -l allow-origin -x -d 'Let the web pages of one origin use the companion'
complete -c tarnlyd -l status -d 'Print how the companion stands, and exit'
complete -c tarnlyd -s h -l help -d 'Print a summary of the options'
complete -c tarnlyd -l version -d 'Print the version'
