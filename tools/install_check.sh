#!/usr/bin/env bash
# Checks that our Debian package installs in a bare Debian 12, works there, and leaves nothing behind when purged.
# usage: sudo tools/install_check.sh PACKAGE.deb [MIRROR]
# Installs Debian (minbase) with debootstrap into a scratch folder, then the dependencies that the package declares and
# nothing else, then the package with dpkg alone. Runs the self-test, one sort, and the menu-bar program on a virtual
# display. Purges the package and compares every file and folder with the state before the installation. Then installs
# it again, beside a session bus and a launcher, which start the program by its installed entries, and updates it to a
# newer package as the program does, with the build's tools/install_update, which is beside the package. MIRROR defaults
# to the mirror from which this machine's apt takes Debian 12. Needs root, debootstrap, Xvfb and 1 GB below TMPDIR.
set -euo pipefail
repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/bare_root.sh
source "$repository/tools/bare_root.sh"

package=${1:-}
[[ -f $package ]] || fail "usage: sudo tools/install_check.sh PACKAGE.deb [MIRROR]"
command -v Xvfb >/dev/null || fail "this needs Xvfb (the package xvfb)"
name=$(dpkg-deb --field "$package" Package)

# The files in which dpkg records every package, so they differ after any purge.
readonly kept_by_dpkg='(var/lib/dpkg|var/log/dpkg\.log)(/|$)'

# Runs a command line as an ordinary user whose home folder has the sample bookmark file.
as_user() {
  inside "${@:1:$#-1}" HOME=/tmp/home XDG_RUNTIME_DIR=/tmp/home/run "cd / && exec setpriv --reuid=1000 --regid=1000 \
    --clear-groups ${*: -1}"
}

install_dependencies() {
  local needed
  needed=$(dpkg-deb --field "$package" Depends)
  inside DEBIAN_FRONTEND=noninteractive "apt-get update --quiet=2 && apt-get satisfy --yes --quiet=2 \
    --no-install-recommends '$needed'" >"$scratch/apt.log" 2>&1 || { tail -n 20 "$scratch/apt.log" >&2; return 1; }
  grep --count '^Setting up ' "$scratch/apt.log" | sed 's/$/ packages/'
}

# Lists every file of the root, sorted by name: type, mode and owner, and the checksum of a regular file.
listing() {
  (
    cd "$root"
    find . -xdev -path ./proc -prune -o -printf '%P\t%y %m %U:%G %l\n'
    find . -xdev -path ./proc -prune -o -type f -print0 | xargs -0 sha256sum | sed -E 's|^(\S+)  \./(.*)|\2\tsha256 \1|'
  ) | LC_ALL=C sort
}

install_package() {
  cp "$package" "$root/root/package.deb"
  inside "dpkg --install /root/package.deb && dpkg --verify $name"
  rm "$root/root/package.deb"
}

self_test() {
  local printed
  printed=$(as_user "quillery --self-test")
  echo "$printed"
  [[ $(grep --count '^PASS: ' <<<"$printed") == 2 ]] || fail "the self-test did not print its two lines"
}

sort_once() {
  local file=$root/tmp/home/Library/Safari/Bookmarks.plist
  install -D "$repository/tests/data/demo/Bookmarks.xml.plist" "$file"
  mkdir --mode=700 "$root/tmp/home/run"
  chown --recursive 1000:1000 "$root/tmp/home"
  as_user "quilleryctl sort"
  ! cmp --quiet "$repository/tests/data/demo/Bookmarks.xml.plist" "$file" || fail "the bookmark file did not change"
}

# Xvfb runs outside the root, so that the program has only what its package brings. There is no tray, so the program
# prints a line about that once its menu is ready; then it gets SIGTERM.
start_on_screen() {
  exec {displays}< <(exec Xvfb -displayfd 1 -ac -nolisten tcp 2>"$scratch/Xvfb.log")
  readonly server=$!
  trap 'kill $server; remove_root' EXIT
  read -r display <&"$displays" || fail "Xvfb did not start: $(cat "$scratch/Xvfb.log")"
  as_user DISPLAY=":$display" "timeout 60 sh -c 'cd /tmp/home && mkfifo lines && { quillery 2>lines & }
    exec 3<lines && read -r line <&3; echo \"\$line\"; kill -TERM \$! && wait \$!; echo \"status \$?\"'" |
    tee "$scratch/screen"
  grep --quiet '^quillery: no system tray' "$scratch/screen" || fail "the program did not report that there is no tray"
  grep --quiet --line-regexp 'status 0' "$scratch/screen" || fail "the program did not exit with status 0"
}

purge() {
  rm -r "$root/tmp/home"
  inside "dpkg --purge $name"
}

# The bus starts the program by its service file, and a launcher by its desktop entry; then it quits.
start_by_others() {
  local identifier object
  inside DEBIAN_FRONTEND=noninteractive "apt-get install --yes --quiet=2 --no-install-recommends dbus-daemon \
    libglib2.0-bin" >"$scratch/apt.log" 2>&1 || { tail -n 20 "$scratch/apt.log" >&2; return 1; }
  install_package
  inside "useradd --uid=1000 --home-dir=/tmp/home person"  # a bus serves no user without a name
  install -d --owner=1000 --group=1000 --mode=700 "$root/tmp/home" "$root/tmp/home/run"
  identifier=$(basename "$root"/usr/share/dbus-1/services/*quillery.service .service)
  object=/${identifier//.//}
  cat >"$root/tmp/home/start" <<END
set -eu
application() { gdbus call --session --dest $identifier --object-path $object --method "org.freedesktop.Application.\$@"; }
quit() {
  gdbus wait --session --timeout 30 $identifier
  application ActivateAction quit [] {}
  until gdbus call --session --dest org.freedesktop.DBus --object-path / \
    --method org.freedesktop.DBus.NameHasOwner $identifier | grep -q false; do sleep 0.1; done
}
application Activate {} && quit && echo 'started by the bus'
gio launch /usr/share/applications/$identifier.desktop && quit && echo 'started by a launcher'
END
  as_user DISPLAY=":$display" "timeout 120 dbus-run-session -- sh /tmp/home/start" | tee "$scratch/started"
  [[ $(grep --count '^started by ' "$scratch/started") == 2 ]] || fail "the program could not be started"
}

# The same package as another version.
make_version() {
  rm -rf "$scratch/other"
  dpkg-deb --raw-extract "$package" "$scratch/other"
  sed --in-place "s/^Version: .*/Version: $1/" "$scratch/other/DEBIAN/control"
  dpkg-deb --root-owner-group -Znone --build "$scratch/other" "$scratch/other.deb" >/dev/null
  install --owner=1000 --group=1000 --mode=400 "$scratch/other.deb" "$root/tmp/home/update/quillery.deb"
}

# Installs a version with apt, from a file that only its user may read. Without polkit, nobody is asked for permission.
update_to() {
  make_version "$1"
  inside "/root/install_update /tmp/home/update/quillery.deb"
}

update() {
  install -d --owner=1000 --group=1000 --mode=700 "$root/tmp/home/update"
  install "$(dirname "$package")/tools/install_update" "$root/root/"
  printf '#!/bin/sh\nexec "$@"\n' >"$root/usr/bin/pkexec"
  chmod 755 "$root/usr/bin/pkexec"
  update_to 99.0.0-1
  [[ $(inside "dpkg-query --show --showformat '\${Version}' $name") == 99.0.0-1 ]] || fail "the update is not installed"
  ! update_to 0.0.9-1 || fail "an older version was installed"
}

compare() {
  local changed
  changed=$(LC_ALL=C comm -3 "$scratch/before" "$scratch/after" | sed 's/^\t//' | cut -f 1 | sort -u)
  echo "Changed only in dpkg's own records:"
  grep -E "^$kept_by_dpkg" <<<"$changed" | sed 's/^/  /'
  changed=$(grep -vE "^$kept_by_dpkg" <<<"$changed") || return 0
  echo "$changed"
  fail "these differ from before the installation"
}

stage "bare $suite" make_root "${2:-}"
stage "dependencies of $name" install_dependencies
listing >"$scratch/before"
stage "dpkg --install" install_package
stage "quillery --self-test" self_test
stage "quilleryctl sort" sort_once
stage "quillery on a display" start_on_screen
stage "dpkg --purge" purge
listing >"$scratch/after"
stage "leftovers" compare
stage "a bus and a launcher" start_by_others
stage "an update" update
printf '\nThe package installs, works, can be updated and leaves nothing behind when purged.\n'
printf '%s\n' "${times[@]}"
