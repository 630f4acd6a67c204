#!/usr/bin/env bash
# Signs the application, packs it as a disk image, and has Apple notarise both. Runs on a Mac only.
# usage: make_dmg.sh APPLICATION ENTITLEMENTS FOLDER
# Makes FOLDER/NAME-VERSION.dmg and, for reading crash reports, a FOLDER/PROGRAM-VERSION.dSYM of each program. Leaves the
# built application unchanged. Without these two it skips steps, and prints which:
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

# Prints a value of the application's Info.plist.
information() { plutil -extract "$2" raw -o - "$1/Contents/Info.plist"; }

identifier=$(information "$1" CFBundleIdentifier)
version=$(information "$1" CFBundleShortVersionString)
readonly name identifier version image=$3/$name-$version.dmg

# Fails if the application still has the values of product.cmake that the maker has to replace. Users could never update
# such a release, because a program accepts only updates that are signed with the key that it has.
refuse_placeholders() {
  [[ $(information "$1" SUPublicEDKey) =~ [^A=] ]] ||
    fail "SUPublicEDKey is the placeholder; set QUILLERY_FEED_PUBLIC_KEY in product.cmake before you sign a release."
  ! grep --quiet --recursive --text --fixed-strings .example.com "$1/Contents/Info.plist" "$1/Contents/MacOS" ||
    fail "the application has an address of example.com; set the maker's addresses in product.cmake before you sign a release."
}

[[ -z $identity ]] || refuse_placeholders "$1"

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
  # Without an identifier, codesign takes the name of the file, which other programs may have.
  sign --identifier "$identifier.quilleryctl" "$application/Contents/MacOS/quilleryctl"
  sign --entitlements "$entitlements" "$application"
  codesign --verify --deep --strict "$application"
}

# Creates the image. hdiutil attaches it meanwhile, which fails with "Resource busy" if another program, such as
# Spotlight, looks into it at that moment; then it is tried again.
create_image() {
  local attempt output
  for attempt in 1 2 3 4 5; do
    rm -f "$image"
    output=$(hdiutil create -fs HFS+ -format UDZO -volname "$name" -srcfolder "$scratch/image" "$image" 2>&1) && return
    [[ $output == *busy* ]] || break
    sleep "$attempt"
  done
  fail "hdiutil could not create the image: $output"
}

pack() {
  ln -s /Applications "$scratch/image/Applications"
  create_image
  [[ -z $identity ]] || codesign --force --timestamp --sign "$identity" "$image"
}

# Has Apple notarise a file, and staples the ticket to the file or folder $2, so that Macs can check it offline.
notarise() {
  xcrun notarytool submit "$1" --keychain-profile "$profile" --wait
  xcrun stapler staple "$2"
  xcrun stapler validate "$2"
}

# The application has its own ticket, because the ticket of the image stays behind when the application is dragged out.
notarise_application() {
  ditto -c -k --keepParent "$application" "$scratch/$name.zip"
  notarise "$scratch/$name.zip" "$application"
}

# Asks Gatekeeper what it will do on a user's Mac.
assess() {
  spctl --assess --type execute --verbose "$application"
  spctl --assess --type open --context context:primary-signature --verbose "$image"
}

# Runs the command if the image is for other Macs: signed and notarised.
if_notarised() { [[ -z $identity || -z $profile ]] || "$@"; }

for program in "$name" quilleryctl; do
  rm -rf "$3/$program-$version.dSYM"
  dsymutil "$1/Contents/MacOS/$program" -o "$3/$program-$version.dSYM"
done
mkdir "$scratch/image"
ditto "$1" "$application"
sign_application
if_notarised notarise_application
pack
if_notarised notarise "$image" "$image"
if_notarised assess

echo "$image"
if [[ -z $identity ]]; then
  echo "Skipped: signing and notarising, because QUILLERY_SIGNING_IDENTITY is not set. Other Macs refuse this image."
elif [[ -z $profile ]]; then
  echo "Skipped: notarising, because QUILLERY_NOTARY_PROFILE is not set. Other Macs warn about this image."
fi
