"""Tests which of macOS's tools tools/macos/make_dmg.sh calls, with which arguments and in which order.

The tools are stand-ins that record their arguments. So this tests the script, not how Apple's tools react to it.
"""

import os
import pathlib
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "tools/macos/make_dmg.sh"
FRAMEWORK = "Contents/Frameworks/Sparkle.framework"

STAND_IN = """#!/bin/sh
name=$(basename "$0")
echo "$name $*" >>"$CALLS"
case "$name $*" in $FAILING) exit 1 ;; esac
for last; do :; done
case $name in
  uname) echo "$SYSTEM" ;;
  plutil)
    case $2 in
      CFBundleShortVersionString) echo 1.2.3 ;;
      CFBundleIdentifier) echo com.fenwarde.quillery ;;
      SUPublicEDKey) echo "$KEY" ;;
    esac ;;
  ditto)
    case $1 in
      -c) [ -e "$4" ] && echo archive >"$5" ;;
      *) cp -R "$1" "$2" ;;
    esac ;;
  dsymutil) [ -e "$1" ] && mkdir "$3" ;;
  hdiutil)
    if [ "$(grep -c '^hdiutil ' "$CALLS")" -le "$BUSY" ]; then
      echo "hdiutil: create failed - Resource busy" >&2
      exit 1
    fi
    echo image >"$last" ;;
  codesign | spctl) [ -e "$last" ] ;;
esac
"""
TOOLS = ("uname", "plutil", "ditto", "codesign", "dsymutil", "hdiutil", "sleep", "spctl", "xcrun")
# What the maker's release has in place of the placeholders.
KEY = "dIvUYRGgPUUFQWSBZs05MfLfaYKRlD3p7ZpLdkPbFx0="
MAKER = {"QUILLERY_SIGNING_IDENTITY": "Maker"}
NOTARY = {**MAKER, "QUILLERY_NOTARY_PROFILE": "profile"}


class DiskImage(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        tools = self.folder / "tools"
        tools.mkdir()
        for name in TOOLS:
            (tools / name).write_text(STAND_IN)
            (tools / name).chmod(0o755)
        self.application = self.make_application(self.folder)
        self.calls = self.folder / "calls"

    @staticmethod
    def make_application(folder):
        application = folder / "Quillery.app"
        version = application / FRAMEWORK / "Versions/B"
        for part in ("XPCServices/Downloader.xpc", "XPCServices/Installer.xpc", "Updater.app"):
            (version / part).mkdir(parents=True)
        (version / "Autoupdate").touch()
        (version.parent / "Current").symlink_to("B")
        (application / "Contents/MacOS").mkdir()
        for program in ("Quillery", "quilleryctl"):
            (application / "Contents/MacOS" / program).write_bytes(b"\xcf\xfa\xed\xfe\0https://fenwarde.test/\0")
        (application / "Contents/Info.plist").write_text("<string>https://fenwarde.test/appcast.xml</string>")
        return application

    def run_script(self, system="Darwin", failing="", key=KEY, busy=0, folder=None, **identity):
        folder = folder or self.folder
        environment = {
            "PATH": f"{self.folder}/tools:{os.environ['PATH']}",
            "TMPDIR": str(folder),
            "CALLS": str(self.calls),
            "SYSTEM": system,
            "FAILING": failing or "nothing",
            "KEY": key,
            "BUSY": str(busy),
            **identity,
        }
        arguments = [SCRIPT, folder / "Quillery.app", "quillery.entitlements", folder]
        return subprocess.run(arguments, env=environment, capture_output=True, text=True, check=False)

    def called(self, tool):
        """The arguments of each call of one tool."""
        lines = [line for line in self.calls.read_text().splitlines() if line.startswith(tool + " ")]
        return [line.removeprefix(tool + " ") for line in lines]

    def signed(self):
        """What was signed, in order: paths relative to the application, "." for the application itself."""
        paths = [pathlib.Path(call.split()[-1]) for call in self.called("codesign") if "--sign" in call.split()]
        return [os.path.relpath(path, self.packed(path)) if self.packed(path) else path.name for path in paths]

    def packed(self, path):
        return next((folder for folder in (path, *path.parents) if folder.name == "Quillery.app"), None)

    inside_out = [
        f"{FRAMEWORK}/Versions/Current/XPCServices/Downloader.xpc",
        f"{FRAMEWORK}/Versions/Current/XPCServices/Installer.xpc",
        f"{FRAMEWORK}/Versions/Current/Autoupdate",
        f"{FRAMEWORK}/Versions/Current/Updater.app",
        FRAMEWORK,
        "Contents/MacOS/quilleryctl",
        ".",
    ]

    def test_needs_a_mac(self):
        result = self.run_script(system="Linux")
        self.assertEqual(result.returncode, 1)
        self.assertIn("needs a Mac", result.stderr)
        self.assertEqual(self.called("codesign"), [])

    def test_signs_ad_hoc_without_an_identity_and_reports_it(self):
        result = self.run_script()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.signed(), self.inside_out)
        for call in self.called("codesign"):
            self.assertTrue(call.startswith(("--force --sign - ", "--verify ")), call)
            self.assertNotIn("runtime", call)
        self.assertEqual(self.called("xcrun"), [])
        self.assertIn("Skipped: signing and notarising", result.stdout)
        self.assertTrue((self.folder / "Quillery-1.2.3.dmg").is_file())

    def test_signs_inside_out_with_an_identity_then_the_image(self):
        result = self.run_script(**MAKER)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.signed(), [*self.inside_out, "Quillery-1.2.3.dmg"])
        *code, image = [call for call in self.called("codesign") if "--sign" in call]
        for call in code:
            self.assertTrue(call.startswith("--force --timestamp --options runtime --sign Maker "), call)
        self.assertTrue(image.startswith("--force --timestamp --sign Maker "), image)
        self.assertIn("Skipped: notarising", result.stdout)
        self.assertEqual(self.called("xcrun"), [])

    def test_signs_the_companion_below_the_applications_identifier(self):
        self.run_script(**MAKER)
        named = [call for call in self.called("codesign") if "--identifier" in call]
        self.assertEqual(len(named), 1)
        self.assertRegex(named[0], "--identifier com.fenwarde.quillery.quilleryctl .*/quilleryctl$")

    def test_sets_only_the_applications_entitlements(self):
        self.run_script(**MAKER)
        calls = self.called("codesign")
        keeping = [call.split("/")[-1] for call in calls if "--preserve-metadata=entitlements" in call]
        self.assertEqual(keeping, ["Downloader.xpc", "Installer.xpc"])
        entitled = [call.split("/")[-1] for call in calls if "--entitlements quillery.entitlements" in call]
        self.assertEqual(entitled, ["Quillery.app"])

    def test_notarises_the_application_then_the_image_then_assesses(self):
        result = self.run_script(**NOTARY)
        self.assertEqual(result.returncode, 0, result.stderr)
        image = self.folder / "Quillery-1.2.3.dmg"
        calls = self.calls.read_text().splitlines()
        scratch = self.packed(pathlib.Path(self.called("spctl")[0].split()[-1])).parent.parent
        application, archive = scratch / "image/Quillery.app", scratch / "Quillery.zip"
        start = next(place for place, call in enumerate(calls) if call.startswith("ditto -c"))
        packing, signing = calls[start + 4 : start + 6]
        self.assertTrue(packing.startswith("hdiutil create "), packing)
        self.assertTrue(signing.startswith("codesign "), signing)
        self.assertEqual(
            [*calls[start : start + 4], *calls[start + 6 :]],
            [
                f"ditto -c -k --keepParent {application} {archive}",
                f"xcrun notarytool submit {archive} --keychain-profile profile --wait",
                f"xcrun stapler staple {application}",
                f"xcrun stapler validate {application}",
                f"xcrun notarytool submit {image} --keychain-profile profile --wait",
                f"xcrun stapler staple {image}",
                f"xcrun stapler validate {image}",
                f"spctl --assess --type execute --verbose {application}",
                f"spctl --assess --type open --context context:primary-signature --verbose {image}",
            ],
        )
        self.assertNotIn("Skipped", result.stdout)

    def test_fails_if_gatekeeper_refuses_the_result(self):
        for kind in ("execute", "open"):
            self.assertNotEqual(self.run_script(failing=f"spctl*--type {kind}*", **NOTARY).returncode, 0, kind)

    def test_keeps_the_debug_information_of_both_programs(self):
        self.assertEqual(self.run_script().returncode, 0)
        for program in ("Quillery", "quilleryctl"):
            self.assertTrue((self.folder / f"{program}-1.2.3.dSYM").is_dir(), program)

    def test_works_in_folders_with_spaces(self):
        folder = self.folder / "a b"
        folder.mkdir()
        self.make_application(folder)
        result = self.run_script(folder=folder, **NOTARY)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertTrue((folder / "Quillery-1.2.3.dmg").is_file())

    # --- Refusals and repetitions ---

    def expect_refusal(self, reason, **options):
        result = self.run_script(**MAKER, **options)
        self.assertEqual(result.returncode, 1)
        self.assertIn(reason, result.stderr)
        self.assertEqual(self.called("codesign"), [])
        self.assertEqual(self.called("hdiutil"), [])

    def test_signs_no_release_with_the_placeholder_key(self):
        self.expect_refusal("SUPublicEDKey is the placeholder", key="A" * 43 + "=")

    def test_signs_no_release_with_example_addresses(self):
        for place, content in (
            ("Info.plist", b"<string>https://quillery.example.com/appcast.xml</string>"),
            ("MacOS/Quillery", b"\xcf\xfa\xed\xfe\0support@quillery.example.com\0"),
        ):
            file = self.application / "Contents" / place
            before = file.read_bytes()
            file.write_bytes(content)
            self.expect_refusal("an address of example.com")
            file.write_bytes(before)

    def test_signs_placeholders_ad_hoc(self):
        self.assertEqual(self.run_script(key="A" * 43 + "=").returncode, 0)

    def test_packs_again_while_the_image_is_busy(self):
        result = self.run_script(busy=4)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(len(self.called("hdiutil")), 5)
        self.assertEqual(self.called("sleep"), ["1", "2", "3", "4"])

    def test_gives_up_if_the_image_stays_busy(self):
        result = self.run_script(busy=9)
        self.assertEqual(result.returncode, 1)
        self.assertIn("Resource busy", result.stderr)
        self.assertEqual(len(self.called("hdiutil")), 5)

    def test_does_not_pack_again_after_another_error(self):
        self.assertEqual(self.run_script(failing="hdiutil create*").returncode, 1)
        self.assertEqual(len(self.called("hdiutil")), 1)

    def test_packs_nothing_if_signing_fails(self):
        result = self.run_script(failing="codesign*Autoupdate")
        self.assertNotEqual(result.returncode, 0)
        self.assertEqual(self.called("hdiutil"), [])

    def test_packs_nothing_if_a_signature_is_invalid(self):
        result = self.run_script(failing="codesign --verify*")
        self.assertNotEqual(result.returncode, 0)
        self.assertEqual(self.called("hdiutil"), [])

    def test_fails_if_stapling_fails(self):
        result = self.run_script(failing="xcrun stapler staple*", **NOTARY)
        self.assertNotEqual(result.returncode, 0)

    def test_leaves_the_built_application_unchanged(self):
        self.run_script(**MAKER)
        for call in self.called("codesign"):
            self.assertNotIn(str(self.application), call)
        self.assertEqual([path.name for path in self.folder.glob("quillery-dmg.*")], [])


if __name__ == "__main__":
    unittest.main()
