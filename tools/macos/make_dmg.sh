#!/usr/bin/env bash
# Signs the application, packs it as a disk image, and has Apple notarise the image. Runs on a Mac only.
# usage: make_dmg.sh APPLICATION ENTITLEMENTS FOLDER
# Makes FOLDER/NAME-VERSION.dmg and leaves the built application unchanged. Without these two it skips steps, and prints
# which:
#   QUILLERY_SIGNING_IDENTITY  a "Developer ID Application: ..." in the keychain. Without it the signature is ad hoc:
#                              the program runs on this Mac, and other Macs refuse it.
#   QUILLERY_NOTARY_PROFILE    the name of credentials that `xcrun notarytool store-credentials` put in the keychain
set -euo pipefail

fail() {
  echo "make_dmg.sh: $*" >&2
  exit 1
}

[[ $(uname -s) == Darwin ]] || fail "this needs a Mac: a disk image is packed and signed by macOS's own tools."
(($# == 3)) || fail "usage: make_dmg.sh APPLICATION ENTITLEMENTS FOLDER"
[[ -d $1 ]] || fail "there is no application at $1."

readonly identity=${QUILLERY_SIGNING_IDENTITY:-} profile=${QUILLERY_NOTARY_PROFILE:-} entitlements=$2
name=$(basename "$1" .app)
image=$3/$name-$(plutil -extract CFBundleShortVersionString raw -o - "$1/Contents/Info.plist").dmg

scratch=$(mktemp -d "${TMPDIR:-/tmp}/quillery-dmg.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
readonly application=$scratch/image/$name.app

# Signs one piece of code with the hardened runtime, which notarising requires, and a timestamp from Apple. The hardened
# runtime loads only frameworks signed by the same team or by Apple. Ad hoc signatures have no team, so they do without
# it.
sign() {
  if [[ -n $identity ]]; then
    codesign --force --timestamp --options runtime --sign "$identity" "$@"
  else
    codesign --force --sign - "$@"
  fi
}

# Signs from the inside out, because a signature covers the signatures inside.
sign_application() {
  local framework=$application/Contents/Frameworks/Sparkle.framework service
  for service in "$framework"/Versions/Current/XPCServices/*.xpc; do
    sign --preserve-metadata=entitlements "$service"
  done
  sign "$framework/Versions/Current/Autoupdate"
  sign "$framework/Versions/Current/Updater.app"
  sign "$framework"
  sign "$application/Contents/MacOS/quilleryctl"
  sign --entitlements "$entitlements" "$application"
  codesign --verify --deep --strict "$application"
}

pack() {
  ln -s /Applications "$scratch/image/Applications"
  rm -f "$image"
  hdiutil create -quiet -fs HFS+ -format UDZO -volname "$name" -srcfolder "$scratch/image" "$image"
  [[ -z $identity ]] || codesign --force --timestamp --sign "$identity" "$image"
}

notarise() {
  xcrun notarytool submit "$image" --keychain-profile "$profile" --wait
  xcrun stapler staple "$image"
  xcrun stapler validate "$image"
}

mkdir "$scratch/image"
ditto "$1" "$application"
sign_application
pack
[[ -z $identity || -z $profile ]] || notarise

echo "$image"
if [[ -z $identity ]]; then
  echo "Skipped: signing and notarising, because QUILLERY_SIGNING_IDENTITY is not set. Other Macs refuse this image."
elif [[ -z $profile ]]; then
  echo "Skipped: notarising, because QUILLERY_NOTARY_PROFILE is not set. Other Macs warn about this image."
fi
