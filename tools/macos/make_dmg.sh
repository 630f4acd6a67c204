#!/usr/bin/env bash
# Signs the application, packs it as a disk image, and has Apple notarise that; on a Mac, of course.
# usage: make_dmg.sh APPLICATION ENTITLEMENTS FOLDER
# Makes FOLDER/NAME-VERSION.dmg; the application itself stays as it was built. What it cannot do without the maker's
# identity it leaves out, and says so:
#   QUILLERY_SIGNING_IDENTITY  a "Developer ID Application: ..." in the keychain. Without it the signature is ad hoc:
#                              the program runs on this Mac, and others refuse it.
#   QUILLERY_NOTARY_PROFILE    what `xcrun notarytool store-credentials` keeps in the keychain under that name
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

# Signs one piece of code: with the hardened runtime, which notarising asks for, and a time from Apple. The hardened
# runtime loads no framework of somebody else's, which is what an ad hoc signature makes of all of them, so that has
# none of it.
sign() {
  if [[ -n $identity ]]; then
    codesign --force --timestamp --options runtime --sign "$identity" "$@"
  else
    codesign --force --sign - "$@"
  fi
}

# Signs from the inside out, because a signature covers those within.
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
  echo "Left out: signing and notarising, because QUILLERY_SIGNING_IDENTITY is not set. Other Macs will refuse this image."
elif [[ -z $profile ]]; then
  echo "Left out: notarising, because QUILLERY_NOTARY_PROFILE is not set. Other Macs will warn of this image."
fi
