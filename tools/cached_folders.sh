# To be sourced by the scripts that fetch what builds take from elsewhere. They share one cache.
# shellcheck shell=bash

readonly cache=${XDG_CACHE_HOME:-$HOME/.cache}/quillery

fail() {
  echo "fetch.sh: $*" >&2
  exit 1
}

# fetch FOLDER COMMAND...: runs the command in an empty folder, and moves the folder `whole` that it makes there into the
# cache as FOLDER. No-op if the cache has FOLDER.
fetch() {
  local folder=$1
  shift
  [[ ! -d $cache/$folder ]] || return 0
  echo "Fetching $folder" >&2
  mkdir -p "$cache"
  scratch=$(mktemp -d "$cache/fetching.XXXXXX")
  (cd "$scratch" && "$@") >&2
  mv "$scratch/whole" "$cache/$folder" # atomic, so an existing folder is always complete
  rm -rf "$scratch"
}

scratch=
trap 'rm -rf "$scratch"' EXIT
