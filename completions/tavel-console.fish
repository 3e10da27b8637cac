# fish completion for tavel-console

complete -c tavel-console -f
complete -c tavel-console -l agent -r -F -d 'Start this agent'
complete -c tavel-console -l demo -d 'Play a short session, and check it'
complete -c tavel-console -s h -l help -d 'Print a summary'
complete -c tavel-console -l pasteboard -x -d 'Use the pasteboard of that name'
complete -c tavel-console -l raw -d 'Show the protocol\'s lines'
complete -c tavel-console -l timeout -x -d 'Seconds to wait for an answer'
complete -c tavel-console -l version -d 'Print the version'
