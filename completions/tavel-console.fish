# fish completion for tavel-console

complete -c tavel-console -f
complete -c tavel-console -l agent -r -F -d 'Start this agent'
complete -c tavel-console -s h -l help -d 'Print a summary'
complete -c tavel-console -l timeout -x -d 'Seconds to wait for an answer'

set -l no_command 'not __fish_seen_subcommand_from doctor'
complete -c tavel-console -n $no_command -a doctor -d 'Examine what the agent needs, and try it'
complete -c tavel-console -n $no_command -l demo -d 'Play a short session, and check it'
complete -c tavel-console -n $no_command -l pasteboard -x -d 'Use the pasteboard of that name'
complete -c tavel-console -n $no_command -l raw -d 'Show the protocol\'s lines'
complete -c tavel-console -n $no_command -l replay -r -F -d 'Play a recorded session, and compare the answers'
complete -c tavel-console -n $no_command -l speed -x -d 'So many times as fast as the record'
complete -c tavel-console -n $no_command -l trace -r -F -d 'Record the session in a new file'
complete -c tavel-console -n $no_command -l version -d 'Print the version'
