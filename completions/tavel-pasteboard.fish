# fish completion for tavel-pasteboard

set -l commands clear copy copy-files count paste paste-files set types
set -l types text html rtf png jpeg tiff webp svg gif pdf file-url

complete -c tavel-pasteboard -f
complete -c tavel-pasteboard -s h -l help -d 'Print a summary'
complete -c tavel-pasteboard -l pasteboard -x -d 'Use the pasteboard of that name'

set -l no_command "not __fish_seen_subcommand_from $commands"
complete -c tavel-pasteboard -n $no_command -l version -d 'Print the version'
complete -c tavel-pasteboard -n $no_command -a clear -d 'Remove everything'
complete -c tavel-pasteboard -n $no_command -a copy -d 'Copy a file\'s content, or standard input'
complete -c tavel-pasteboard -n $no_command -a copy-files -d 'Copy references to files'
complete -c tavel-pasteboard -n $no_command -a count -d 'Tell the change count'
complete -c tavel-pasteboard -n $no_command -a paste -d 'Write the content to standard output'
complete -c tavel-pasteboard -n $no_command -a paste-files -d 'List the copied files'
complete -c tavel-pasteboard -n $no_command -a set -d 'Copy one thing in several types'
complete -c tavel-pasteboard -n $no_command -a types -d 'List the types'

complete -c tavel-pasteboard -n '__fish_seen_subcommand_from copy copy-files' -F
complete -c tavel-pasteboard -n '__fish_seen_subcommand_from copy paste' -l type -x -a "$types" -d 'The type'
complete -c tavel-pasteboard -n '__fish_seen_subcommand_from paste' -l force -d 'Write to a terminal, too'

# TYPE=FILE
set -l has_type 'string match -q "*=*" -- (commandline -ct)'
complete -c tavel-pasteboard -n "__fish_seen_subcommand_from set; and not $has_type" -a "$types=" -d 'The type'
complete -c tavel-pasteboard -n "__fish_seen_subcommand_from set; and $has_type" -F
