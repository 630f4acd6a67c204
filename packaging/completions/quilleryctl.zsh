#compdef quilleryctl
# Zsh completion for quilleryctl.

_quilleryctl_backups() {
  local -a names
  names=(${(f)"$(quilleryctl backups --quiet 2>/dev/null)"})
  if [[ $PREFIX == */* ]]; then
    _files
  else
    _describe -V 'backup' names
  fi
}

_quilleryctl() {
  local curcontext=$curcontext state line
  local -a commands quiet json
  commands=(
    'preview:show what a sort would move'
    'sort:sort once'
    'check:print whether a sort is needed'
    'backups:list the backups'
    'restore:restore a backup'
    'undo:restore the last backup'
    'next:print when the next sort is due'
  )
  quiet=('(-q --quiet)'{-q,--quiet}'[print as little as possible]' '--color[use colours]:when:(always never auto)')
  json=('(-j --json)'{-j,--json}'[print JSON for programs]')
  _arguments -C '(- *)'{-h,--help}'[print the help]' '(- *)--version[print the version]' \
    '1: :->command' '*:: :->arguments'
  case $state in
    command) _describe 'command' commands ;;
    arguments)
      case $line[1] in
        preview)
          _arguments $quiet '(-a --all)'{-a,--all}'[show the whole tree]' \
            $json '*:bookmark file:_files'
          ;;
        sort)
          _arguments $quiet '(-n --dry-run)'{-n,--dry-run}'[only show what a sort would move]' \
            '(-o --output)'{-o,--output}'[write a sorted copy]:new file:_files' '*:bookmark file:_files'
          ;;
        check) _arguments $quiet $json '*:bookmark file:_files' ;;
        backups) _arguments $quiet $json '1:bookmark file:_files' ;;
        undo) _arguments $quiet '1:bookmark file:_files' ;;
        restore) _arguments $quiet '--foreign[restore any bookmark file]' '1:backup:_quilleryctl_backups' '2:bookmark file:_files' ;;
        next) _arguments $quiet $json ;;
      esac
      ;;
  esac
}

_quilleryctl "$@"
