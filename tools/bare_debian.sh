#!/usr/bin/env bash
# Shows that a clean clone passes the README's two commands in a Debian 12 that has nothing but git.
# usage: sudo tools/bare_debian.sh [MIRROR]
# Makes a root with debootstrap (minbase and git) in a scratch folder, clones this repository's HEAD there and runs
# `./dev demo` and `./dev test` in it. MIRROR is where this machine's own apt takes Debian 12 from, unless given.
# Needs root, debootstrap and some 3 GB below TMPDIR; all of it is removed again.
set -euo pipefail
repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
readonly suite=bookworm

fail() {
  echo "bare_debian.sh: $*" >&2
  exit 1
}

((EUID == 0)) || fail "this needs root"
command -v debootstrap >/dev/null || fail "this needs debootstrap"
own_mirror() {
  # shellcheck disable=SC2016  # the format is apt's
  apt-get indextargets --format '$(REPO_URI)' "Created-By: Packages" "Origin: Debian" "Codename: $suite" | head -n 1
}
mirror=${1:-$(own_mirror)}
[[ -n $mirror ]] || fail "apt knows no mirror of $suite here; name one"

scratch=$(mktemp -d "${TMPDIR:-/tmp}/quillery-bare.XXXXXX")
root=$scratch/root
cleanup() {
  ! mountpoint --quiet "$root/proc" || umount "$root/proc"
  rm -rf --one-file-system "$scratch"
}
trap cleanup EXIT

# How this machine reaches its mirror: names, proxies, certificates.
share_network() {
  cp --dereference /etc/resolv.conf /etc/hosts "$root/etc/"
  apt-config dump | grep '^Acquire::' >"$root/etc/apt/apt.conf.d/90host" || true
  local certificates=/etc/ssl/certs/ca-certificates.crt
  [[ ! -e $certificates ]] || install -D --mode=644 "$certificates" "$root$certificates"
}

# Runs a command in the root, with processes and mounts of its own: both are gone when it ends.
inside() {
  unshare --mount --pid --fork --kill-child --mount-proc="$root/proc" \
    env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM="${TERM:-dumb}" ${QUILLERY_JOBS:+QUILLERY_JOBS="$QUILLERY_JOBS"} \
    chroot "$root" sh -c "cd /root/quillery && $1" </dev/null
}

times=()
stage() {
  local name=$1 start=$SECONDS
  shift
  printf '\n######## %s\n' "$name"
  "$@"
  times+=("$(printf '%5d s  %s' $((SECONDS - start)) "$name")")
}

make_root() {
  debootstrap --variant=minbase --include=git "$suite" "$root" "$mirror" >"$scratch/debootstrap.log" ||
    { tail -n 20 "$scratch/debootstrap.log" >&2; fail "debootstrap failed"; }
  share_network
}

clone() {
  git -c safe.directory="$repository" -C "$repository" bundle create --quiet "$root/root/quillery.bundle" HEAD
  mkdir "$root/root/quillery"
  inside "git -c advice.detachedHead=false clone --quiet /root/quillery.bundle . && git log -1 --format='%h %s'"
}

stage "bare $suite" make_root
stage "clone" clone
stage "./dev demo" inside ./dev\ demo
stage "./dev test" inside ./dev\ test
printf '\nA bare Debian passes both commands.\n'
printf '%s\n' "${times[@]}"
