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
case $name in
  uname) echo "$SYSTEM" ;;
  plutil) echo 1.2.3 ;;
  ditto) cp -R "$1" "$2" ;;
  hdiutil) for image; do :; done; echo image >"$image" ;;
esac
"""


class DiskImage(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        tools = self.folder / "tools"
        tools.mkdir()
        for name in ("uname", "plutil", "ditto", "codesign", "hdiutil", "xcrun"):
            (tools / name).write_text(STAND_IN)
            (tools / name).chmod(0o755)
        self.application = self.folder / "Quillery.app"
        version = self.application / FRAMEWORK / "Versions/B"
        (version / "XPCServices/Downloader.xpc").mkdir(parents=True)
        (version / "XPCServices/Installer.xpc").mkdir()
        (version.parent / "Current").symlink_to("B")
        self.calls = self.folder / "calls"

    def run_script(self, system="Darwin", failing="", **identity):
        environment = {
            "PATH": f"{self.folder}/tools:{os.environ['PATH']}",
            "TMPDIR": str(self.folder),
            "CALLS": str(self.calls),
            "SYSTEM": system,
            "FAILING": failing or "nothing",
            **identity,
        }
        arguments = [SCRIPT, self.application, "quillery.entitlements", self.folder]
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
        result = self.run_script(QUILLERY_SIGNING_IDENTITY="Maker")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.signed(), [*self.inside_out, "Quillery-1.2.3.dmg"])
        *code, image = [call for call in self.called("codesign") if "--sign" in call]
        for call in code:
            self.assertTrue(call.startswith("--force --timestamp --options runtime --sign Maker "), call)
        self.assertTrue(image.startswith("--force --timestamp --sign Maker "), image)
        self.assertIn("Skipped: notarising", result.stdout)
        self.assertEqual(self.called("xcrun"), [])

    def test_sets_only_the_applications_entitlements(self):
        self.run_script(QUILLERY_SIGNING_IDENTITY="Maker")
        calls = self.called("codesign")
        keeping = [call.split("/")[-1] for call in calls if "--preserve-metadata=entitlements" in call]
        self.assertEqual(keeping, ["Downloader.xpc", "Installer.xpc"])
        entitled = [call.split("/")[-1] for call in calls if "--entitlements quillery.entitlements" in call]
        self.assertEqual(entitled, ["Quillery.app"])

    def test_notarises_the_signed_image_last(self):
        result = self.run_script(QUILLERY_SIGNING_IDENTITY="Maker", QUILLERY_NOTARY_PROFILE="profile")
        self.assertEqual(result.returncode, 0, result.stderr)
        image = self.folder / "Quillery-1.2.3.dmg"
        self.assertEqual(
            self.calls.read_text().splitlines()[-3:],
            [
                f"xcrun notarytool submit {image} --keychain-profile profile --wait",
                f"xcrun stapler staple {image}",
                f"xcrun stapler validate {image}",
            ],
        )
        self.assertNotIn("Skipped", result.stdout)

    def test_packs_nothing_if_signing_fails(self):
        result = self.run_script(failing="codesign*Autoupdate")
        self.assertNotEqual(result.returncode, 0)
        self.assertEqual(self.called("hdiutil"), [])

    def test_packs_nothing_if_a_signature_is_invalid(self):
        result = self.run_script(failing="codesign --verify*")
        self.assertNotEqual(result.returncode, 0)
        self.assertEqual(self.called("hdiutil"), [])

    def test_fails_if_stapling_fails(self):
        identity = {"QUILLERY_SIGNING_IDENTITY": "Maker", "QUILLERY_NOTARY_PROFILE": "profile"}
        result = self.run_script(failing="xcrun stapler staple*", **identity)
        self.assertNotEqual(result.returncode, 0)

    def test_leaves_the_built_application_unchanged(self):
        self.run_script(QUILLERY_SIGNING_IDENTITY="Maker")
        for call in self.called("codesign"):
            self.assertNotIn(str(self.application), call)
        self.assertEqual([path.name for path in self.folder.glob("quillery-dmg.*")], [])


if __name__ == "__main__":
    unittest.main()
