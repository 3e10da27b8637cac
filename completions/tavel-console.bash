# bash completion for tavel-console. Bash 3.2 of macOS can read it, too.

_tavel_console() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} reply options
  COMPREPLY=()
  case $previous in
    --agent | --replay | --trace)
      compopt -o filenames 2>/dev/null
      while IFS= read -r reply; do COMPREPLY+=("$reply"); done < <(compgen -f -- "$current")
      return
      ;;
    --pasteboard | --speed | --timeout)
      return
      ;;
  esac
  options="--agent --demo -h --help --pasteboard --raw --replay --speed --timeout --trace --version"
  case " ${COMP_WORDS[*]:1:COMP_CWORD-1} ",$current in
    *" doctor "*,*) COMPREPLY=($(compgen -W "--agent -h --help --timeout" -- "$current")) ;;
    *,-*) COMPREPLY=($(compgen -W "$options" -- "$current")) ;;
    *) COMPREPLY=($(compgen -W "doctor" -- "$current")) ;;
  esac
}

complete -F _tavel_console tavel-console
