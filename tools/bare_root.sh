# A bare Debian 12 in a scratch folder, for scripts that show what works there. It is sourced, not run, by a Bash script
# with `set -euo pipefail`; all of it is removed when that script ends. Needs root, debootstrap and room below TMPDIR.
# Sets scratch (a folder for the script's own files) and root (the Debian's).
# shellcheck shell=bash

readonly suite=bookworm

fail() {
  echo "$(basename "$0"): $*" >&2
  exit 1
}

((EUID == 0)) || fail "this needs root"
command -v debootstrap >/dev/null || fail "this needs debootstrap"

scratch=$(mktemp -d "${TMPDIR:-/tmp}/quillery-bare.XXXXXX")
root=$scratch/root
remove_root() {
  ! mountpoint --quiet "$root/proc" || umount "$root/proc"
  rm -rf --one-file-system "$scratch"
}
trap remove_root EXIT

# Where this machine's own apt takes Debian 12 from.
own_mirror() {
  # shellcheck disable=SC2016  # the format is apt's
  apt-get indextargets --format '$(REPO_URI)' "Created-By: Packages" "Origin: Debian" "Codename: $suite" | head -n 1
}

# How this machine reaches its mirror: names, proxies, certificates.
share_network() {
  cp --dereference /etc/resolv.conf /etc/hosts "$root/etc/"
  apt-config dump | grep '^Acquire::' >"$root/etc/apt/apt.conf.d/90host" || true
  local certificates=/etc/ssl/certs/ca-certificates.crt
  [[ ! -e $certificates ]] || install -D --mode=644 "$certificates" "$root$certificates"
}

# Makes the root: the packages of debootstrap's minbase. The first argument is a mirror, or empty for this machine's
# own; the others are further options of debootstrap.
make_root() {
  local mirror=${1:-$(own_mirror)}
  shift
  [[ -n $mirror ]] || fail "apt knows no mirror of $suite here; name one"
  debootstrap --variant=minbase "$@" "$suite" "$root" "$mirror" >"$scratch/debootstrap.log" ||
    { tail -n 20 "$scratch/debootstrap.log" >&2; fail "debootstrap failed"; }
  share_network
}

# Runs a command line of sh in the root, with processes and mounts of its own: both are gone when it ends. The
# arguments before the last are settings of its environment (NAME=VALUE).
inside() {
  unshare --mount --pid --fork --kill-child --mount-proc="$root/proc" \
    env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM="${TERM:-dumb}" "${@:1:$#-1}" \
    chroot "$root" sh -c "${*: -1}" </dev/null
}

times=()

# Runs a command under a heading and remembers how long it took.
stage() {
  local title=$1 start=$SECONDS
  shift
  printf '\n######## %s\n' "$title"
  "$@"
  times+=("$(printf '%5d s  %s' $((SECONDS - start)) "$title")")
}
