#!/usr/bin/env bash
# Checks that a fresh clone passes the README's two commands in a Debian 12 that has nothing but git.
# usage: sudo tools/bare_debian.sh [MIRROR]
# Installs Debian (minbase and git) with debootstrap into a scratch folder, clones this repository's HEAD there and runs
# `./dev demo` and `./dev test` in it. MIRROR defaults to the mirror from which this machine's apt takes Debian 12.
# Needs root, debootstrap and about 3 GB below TMPDIR. Removes everything at the end.
set -euo pipefail
repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/bare_root.sh
source "$repository/tools/bare_root.sh"

in_clone() {
  inside ${QUILLERY_JOBS:+QUILLERY_JOBS="$QUILLERY_JOBS"} "cd /root/quillery && $1"
}

clone() {
  git -c safe.directory="$repository" -C "$repository" bundle create --quiet "$root/root/quillery.bundle" HEAD
  mkdir "$root/root/quillery"
  in_clone "git -c advice.detachedHead=false clone --quiet /root/quillery.bundle . && git log -1 --format='%h %s'"
}

stage "bare $suite" make_root "${1:-}" --include=git
stage "clone" clone
stage "./dev demo" in_clone ./dev\ demo
stage "./dev test" in_clone ./dev\ test
printf '\nA bare Debian passes both commands.\n'
printf '%s\n' "${times[@]}"
