# A bare Debian 12 in a scratch folder, for scripts that check what works there. Source it from a Bash script with
# `set -euo pipefail`; the folder is removed when that script exits. Needs root, debootstrap and space below TMPDIR.
# Sets scratch (a folder for the script's own files) and root (the root folder of that Debian).
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
# The mounts of `inside` end with it, but an interrupted debootstrap may leave its own.
remove_root() {
  local mounted
  while IFS= read -r mounted; do
    umount "$mounted"
  done < <(findmnt --list --noheadings --output TARGET | grep -F "$root/" | sort --reverse)
  rm -rf --one-file-system "$scratch"
}
trap remove_root EXIT

# Prints the address of the mirror from which this machine's apt takes Debian 12.
own_mirror() {
  # shellcheck disable=SC2016  # apt expands this, not the shell
  apt-get indextargets --format '$(REPO_URI)' "Created-By: Packages" "Origin: Debian" "Codename: $suite" | head -n 1
}

# Copies what the root needs to reach the same mirror: host names, proxies, certificates.
share_network() {
  cp --dereference /etc/resolv.conf /etc/hosts "$root/etc/"
  apt-config dump | grep '^Acquire::' >"$root/etc/apt/apt.conf.d/90host" || true
  local certificates=/etc/ssl/certs/ca-certificates.crt
  [[ ! -e $certificates ]] || install -D --mode=644 "$certificates" "$root$certificates"
}

# Installs debootstrap's minbase packages into the root. The first argument is a mirror, or empty for this machine's
# own; the others are passed to debootstrap as options.
make_root() {
  local mirror=${1:-$(own_mirror)}
  shift
  [[ -n $mirror ]] || fail "apt has no mirror of $suite here; name one as an argument"
  debootstrap --variant=minbase "$@" "$suite" "$root" "$mirror" >"$scratch/debootstrap.log" ||
    { tail -n 20 "$scratch/debootstrap.log" >&2; fail "debootstrap failed"; }
  share_network
}

# Mounts what a container has below the given root besides /proc: /sys, which is read-only, and a /dev with the usual
# devices, pseudo-terminals of its own and shared memory. Runs in a private mount namespace.
mount_system_folders() {
  local root=$1 device
  mount -t sysfs -o ro,nosuid,nodev,noexec sysfs "$root/sys" 2>/dev/null ||
    { mount --bind /sys "$root/sys" && mount -o remount,bind,ro "$root/sys"; }
  mount -t tmpfs -o mode=755,nosuid,noexec tmpfs "$root/dev"
  for device in null zero full random urandom tty; do
    : >"$root/dev/$device"
    mount --bind "/dev/$device" "$root/dev/$device"  # mknod may be forbidden here
  done
  mkdir "$root/dev/pts" "$root/dev/shm"
  mount -t devpts -o newinstance,ptmxmode=666,mode=620,gid=5,nosuid,noexec devpts "$root/dev/pts"
  mount -t tmpfs -o mode=1777,nosuid,nodev,noexec tmpfs "$root/dev/shm"
  ln -s pts/ptmx "$root/dev/ptmx"
  ln -s /proc/self/fd "$root/dev/fd"
  ln -s fd/0 "$root/dev/stdin"
  ln -s fd/1 "$root/dev/stdout"
  ln -s fd/2 "$root/dev/stderr"
}

# Runs a command line of sh in the root, with its own processes and mounts, which end with it. The arguments before the
# last are environment variables (NAME=VALUE).
inside() {
  # shellcheck disable=SC2016  # the inner shell expands this
  unshare --mount --pid --fork --kill-child --mount-proc="$root/proc" \
    bash -euc "$(declare -f mount_system_folders)"'; mount_system_folders "$0"; exec env -i "$@"' "$root" \
    HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM="${TERM:-dumb}" "${@:1:$#-1}" \
    chroot "$root" sh -c "${*: -1}" </dev/null
}

times=()

# Prints a heading, runs a command and records how long it took.
stage() {
  local title=$1 start=$SECONDS
  shift
  printf '\n######## %s\n' "$title"
  "$@"
  times+=("$(printf '%5d s  %s' $((SECONDS - start)) "$title")")
}
