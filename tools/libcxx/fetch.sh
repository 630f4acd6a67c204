#!/usr/bin/env bash
# Unpacks what builds with libc++ take from Debian, unless it is in the cache, and prints the cache's path. The arguments
# select what is needed:
#
#   libcxx-19         libc++, whose packages cannot be installed beside those of its other versions
#   abseil-20220623   the sources of Abseil
#
# apt checks the signatures.
set -euo pipefail

# shellcheck source=tools/cached_folders.sh
source "$(dirname "${BASH_SOURCE[0]}")/../cached_folders.sh"

readonly libcxx_packages=(libc++-19-dev libc++1-19 libc++abi-19-dev libc++abi1-19 libunwind-19 libunwind-19-dev)

# Runs apt-get in the current folder, as any user.
apt() { apt-get --quiet --quiet -o APT::Sandbox::User="$(id -un)" "$@"; }

libcxx() {
  local package
  apt download "${libcxx_packages[@]}"
  for package in *.deb; do
    dpkg --extract "$package" unpacked
  done
  mv unpacked/usr/lib/llvm-19 whole
}

# Takes the sources from where this system takes its packages, which usually does not list sources.
abseil() {
  local own=(-o Dir::Etc::SourceList="$PWD/sources.list" -o Dir::Etc::SourceParts=/dev/null -o Dir::State::Lists="$PWD/lists"
    -o Dir::Cache::srcpkgcache= -o Dir::Cache::pkgcache=)
  mkdir -p lists/partial
  # shellcheck disable=SC2016  # apt fills in these
  apt-get indextargets --format 'deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' |
    sort -u >sources.list
  [[ -s sources.list ]] || fail "apt has no lists of Debian's packages; 'apt-get update' fetches them."
  apt "${own[@]}" update
  apt "${own[@]}" source --download-only abseil
  mkdir whole
  tar --extract --file abseil_*.orig.tar.gz --directory whole --strip-components=1
}

for folder in "$@"; do
  fetch "$folder" "${folder%-*}" # a function is named after each
done
echo "$cache"
