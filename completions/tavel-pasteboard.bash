# bash completion for tavel-pasteboard. Bash 3.2 of macOS can read it, too.

_tavel_pasteboard_types="text html rtf png jpeg tiff webp svg gif pdf file-url"

_tavel_pasteboard_files() {
  local reply
  compopt -o filenames 2>/dev/null
  while IFS= read -r reply; do COMPREPLY+=("$reply"); done < <(compgen -f -- "$1")
}

# The options after each command; --pasteboard may stand anywhere.
_tavel_pasteboard_options() {
  case $1 in
    '') echo "-h --help --pasteboard --version" ;;
    copy) echo "-h --help --pasteboard --type" ;;
    paste) echo "--force -h --help --pasteboard --type" ;;
    *) echo "-h --help --pasteboard" ;;
  esac
}

# The first word that is neither an option nor its value.
_tavel_pasteboard_command() {
  local index
  for ((index = 1; index < COMP_CWORD; index++)); do
    case ${COMP_WORDS[index]} in
      --pasteboard) ((index++)) ;;
      -*) ;;
      *)
        echo "${COMP_WORDS[index]}"
        return
        ;;
    esac
  done
}

# Readline takes TYPE=FILE for three words.
_tavel_pasteboard_assignment() {
  local current=$1 previous=$2
  if [ "$current" = "=" ]; then
    _tavel_pasteboard_files ""
  elif [ "$previous" = "=" ]; then
    _tavel_pasteboard_files "$current"
  else
    compopt -o nospace 2>/dev/null
    COMPREPLY=($(compgen -S = -W "$_tavel_pasteboard_types" -- "$current"))
  fi
}

_tavel_pasteboard() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command
  COMPREPLY=()
  command=$(_tavel_pasteboard_command)
  case $previous in
    --pasteboard) return ;;
    --type)
      COMPREPLY=($(compgen -W "$_tavel_pasteboard_types" -- "$current"))
      return
      ;;
  esac
  case $command,$current in
    *,-*) COMPREPLY=($(compgen -W "$(_tavel_pasteboard_options "$command")" -- "$current")) ;;
    ,*) COMPREPLY=($(compgen -W "clear copy copy-files count paste paste-files set types" -- "$current")) ;;
    copy,* | copy-files,*) _tavel_pasteboard_files "$current" ;;
    set,*) _tavel_pasteboard_assignment "$current" "$previous" ;;
  esac
}

complete -F _tavel_pasteboard tavel-pasteboard
