#compdef quilleryctl
# What Zsh offers after "quilleryctl".

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
  local -a commands quiet
  commands=(
    'preview:show what a sort would move'
    'sort:sort once'
    'check:say whether the bookmarks are in order'
    'backups:list the backups'
    'restore:bring a backup back'
    'next:say when the next sort is due'
  )
  quiet=('(-q --quiet)'{-q,--quiet}'[print no more than is needed]')
  _arguments -C '(- *)'{-h,--help}'[print what there is to know]' '(- *)--version[print the version]' \
    '1: :->command' '*:: :->arguments'
  case $state in
    command) _describe 'command' commands ;;
    arguments)
      case $line[1] in
        preview)
          _arguments $quiet '(-a --all)'{-a,--all}'[the whole tree]' '(-j --json)'{-j,--json}'[for programs]' \
            '1:bookmark file:_files'
          ;;
        sort | check) _arguments $quiet '1:bookmark file:_files' ;;
        restore) _arguments $quiet '1:backup:_quilleryctl_backups' '2:bookmark file:_files' ;;
        backups | next) _arguments $quiet ;;
      esac
      ;;
  esac
}

_quilleryctl "$@"
