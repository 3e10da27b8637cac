# bash completion for tavel-console. Bash 3.2 of macOS can read it, too.

_tavel_console() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} reply
  COMPREPLY=()
  case $previous in
    --agent)
      compopt -o filenames 2>/dev/null
      while IFS= read -r reply; do COMPREPLY+=("$reply"); done < <(compgen -f -- "$current")
      return
      ;;
    --pasteboard | --timeout)
      return
      ;;
  esac
  COMPREPLY=($(compgen -W "--agent --demo -h --help --pasteboard --raw --timeout --version" -- "$current"))
}

complete -F _tavel_console tavel-console
