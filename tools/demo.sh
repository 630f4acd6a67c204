#!/usr/bin/env bash
# Sorts the sample bookmark files in a scratch home folder, shows the result and checks it.
# usage: demo.sh BUILD_FOLDER
# Exit status 1 if a check fails. Touches nothing outside the scratch folder.
set -euo pipefail
build=$1
samples=$(cd "$(dirname "${BASH_SOURCE[0]}")/../tests/data/demo" && pwd)
scratch=$(mktemp -d "${TMPDIR:-/tmp}/quillery-demo.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
failures=0

if [[ -t 1 && -z ${NO_COLOR:-} && ${TERM:-dumb} != dumb ]]; then
  bold=$'\e[1m' dim=$'\e[2m' green=$'\e[32m' red=$'\e[31m' plain=$'\e[0m'
else
  bold='' dim='' green='' red='' plain=''
fi

# Makes a scratch home with one of the samples and sets home, bookmarks and backups to its paths.
prepare() {
  home=$scratch/$1
  bookmarks=$home/Library/Safari/Bookmarks.plist
  backups="$home/Library/Application Support/Quillery/Backups"
  mkdir -p "$home/Library/Safari" "$home/run"
  cp "$samples/Bookmarks.$1.plist" "$bookmarks"
}

# Sorts once, unattended, without a session bus, so Safari counts as closed.
sort_once() {
  env HOME="$home" XDG_RUNTIME_DIR="$home/run" DBUS_SESSION_BUS_ADDRESS="unix:path=$home/run/no-bus" \
    "$build/quilleryctl" sort
}

# Runs a command as a check: prints the text with a tick if it succeeds, with a cross if it fails.
expect() {
  local what=$1
  shift
  if "$@"; then
    echo "  ${green}✓${plain} $what"
  else
    echo "  ${red}✗ $what${plain}"
    failures=$((failures + 1))
  fi
}

equals() { [[ $1 == "$2" ]]; }
backup_count() { find "$backups" -type f | wc -l; }
begins_with() { equals "$(head -c "${#1}" "$2")" "$1"; }

# Prints the width of a line in terminal columns.
columns() { printf '%s' "$1" | LC_ALL=C.UTF-8 wc -L; }

# Prints a line of a tree, padded to the given width; folders are bold.
field() {
  local line=$1 width=$2 emphasis='' space
  [[ $line != *▸* ]] || emphasis=$bold
  space=$((width - $(columns "$line")))
  printf '%s%s%s%*s' "$emphasis" "$line" "${emphasis:+$plain}" $((space > 0 ? space : 0)) ''
}

# Prints two trees side by side.
show_trees() {
  local before after index width=44
  mapfile -t before <<<"$1"
  mapfile -t after <<<"$2"
  printf '\n  %s%-*s%s%s\n' "$dim" "$width" before after "$plain"
  for ((index = 0; index < ${#before[@]} || index < ${#after[@]}; ++index)); do
    printf '  %s%s\n' "$(field "${before[index]:-}" "$width")" "$(field "${after[index]:-}" 0)"
  done
}

# Runs the demo with one format, whose files begin with the given bytes.
demonstrate() {
  local format=$1 start=$2 name=$3
  prepare "$format"
  printf '\n%s%s%s  %s\n' "$bold" "$name" "$plain" \
    "${dim}~/Library/Safari/Bookmarks.plist, $(stat -c %s "$bookmarks") bytes$plain"
  local before after result status=0 backup
  before=$("$build/tools/bookmark_tree" "$bookmarks")
  result=$(sort_once) || status=$?
  after=$("$build/tools/bookmark_tree" "$bookmarks")
  show_trees "$before" "$after"
  printf '\n%s$ quilleryctl sort%s\n%s\n\n' "$dim" "$plain" "${result//"$home"/\~}"

  expect "the sort succeeded: exit status 0 and a message" equals "$status ${result%%:*}" "0 Bookmarks sorted"
  expect "no title was lost or added" equals "$(sort <<<"$before" | tr -d ' ')" "$(sort <<<"$after" | tr -d ' ')"
  expect "the file kept its format" begins_with "$start" "$bookmarks"
  expect "there is one backup" equals "$(backup_count)" 1
  backup=$(find "$backups" -type f || true)
  expect "the message names the backup" equals "${result##*$'\n'}" "Backup: $backup"
  expect "the backup has the old bytes" cmp --silent "$samples/Bookmarks.$format.plist" "$backup"
  expect "only you can read the backup: mode 0600, in a folder of mode 0700" \
    equals "$(stat -c %a "$backup") $(stat -c %a "$backups")" "600 700"

  cp "$bookmarks" "$home/sorted"
  status=0
  result=$(sort_once) || status=$?
  expect "a second sort finds the file in order and prints nothing" equals "$status$result" 0
  expect "the second sort neither writes the file nor makes a backup" \
    equals "$(cmp "$home/sorted" "$bookmarks" && backup_count)" 1
}

demonstrate binary bplist00 "A binary bookmark file"
demonstrate xml "<?xml" "The same bookmarks as XML"

echo
if ((failures > 0)); then
  echo "${red}$failures checks failed.${plain}"
  exit 1
fi
echo "Folders come first, then bookmarks, each in natural order. The entries of the root, the Reading List and Safari's"
echo "own entries (com.apple.…) stay where they were. The scratch home folder is removed."
