# shellcheck shell=bash
# Bash completion for quilleryctl. The package bash-completion loads this file; the functions use nothing of it.

_quilleryctl_names() {
  local words=$1
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "${COMP_WORDS[COMP_CWORD]}")
}

# The names of backups are untrusted, and "compgen -W" would execute commands in them.
_quilleryctl_backups() {
  local name names
  mapfile -t names < <(quilleryctl backups --quiet 2>/dev/null)
  for name in "${names[@]}"; do
    [[ $name != "${COMP_WORDS[COMP_CWORD]}"* ]] || COMPREPLY+=("$(printf '%q' "$name")")
  done
}

_quilleryctl_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
}

_quilleryctl() {
  local word=${COMP_WORDS[COMP_CWORD]} command='' operands=0 index
  for ((index = 1; index < COMP_CWORD; ++index)); do
    [[ ${COMP_WORDS[index]} != -* ]] || continue
    if [[ -z $command ]]; then command=${COMP_WORDS[index]}; else operands=$((operands + 1)); fi
  done
  COMPREPLY=()
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --color) _quilleryctl_names 'always never auto'; return ;;
    -o | --output) _quilleryctl_files; return ;;
  esac
  case $word:$command:$operands in
    -*::*) _quilleryctl_names '--help --version' ;;
    -*:preview:*) _quilleryctl_names '--all --color --json --quiet --help' ;;
    -*:sort:*) _quilleryctl_names '--color --dry-run --output --quiet --help' ;;
    -*:check:* | -*:backups:* | -*:next:*) _quilleryctl_names '--color --json --quiet --help' ;;
    -*:restore:*) _quilleryctl_names '--color --foreign --quiet --help' ;;
    -*) _quilleryctl_names '--color --quiet --help' ;;
    *::*) _quilleryctl_names 'preview sort check backups restore undo next' ;;
    *:preview:* | *:sort:* | *:check:* | *:backups:0 | *:undo:0 | */*:restore:0 | *:restore:1) _quilleryctl_files ;;
    *:restore:0) _quilleryctl_backups ;;
  esac
}

complete -F _quilleryctl quilleryctl
