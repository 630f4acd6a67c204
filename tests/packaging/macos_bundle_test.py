"""Tests of the parts of the macOS application bundle that any system can read: Info.plist, entitlements and icon.

usage: macos_bundle_test.py BUILD_FOLDER
"""

import base64
import pathlib
import plistlib
import re
import struct
import sys
import unittest

BUILD = pathlib.Path(sys.argv.pop(1))
SOURCE = pathlib.Path(__file__).resolve().parents[2] / "packaging/macos"
MADE = BUILD / "packaging/macos"


def product(name):
    """A product value as compiled into the program."""
    return re.search(f'{name} = "(.*)"', (BUILD / "platform/product.h").read_text()).group(1)


class Information(unittest.TestCase):
    def setUp(self):
        self.information = plistlib.loads((MADE / "Info.plist").read_bytes())

    def test_matches_the_product_values_of_the_program(self):
        self.assertEqual(self.information["CFBundleIdentifier"], product("bundleIdentifier"))
        for key in ("CFBundleName", "CFBundleDisplayName", "CFBundleExecutable"):
            self.assertEqual(self.information[key], product("name"), key)
        for key in ("CFBundleVersion", "CFBundleShortVersionString"):
            self.assertEqual(self.information[key], product("version"), key)
        self.assertEqual(self.information["NSHumanReadableCopyright"], product("copyright"))

    def test_has_no_placeholder_or_empty_value(self):
        self.assertNotRegex((MADE / "Info.plist").read_text(), "@|\\$")
        for key, value in self.information.items():
            self.assertNotEqual(value, "", key)

    def test_is_an_application_without_a_dock_icon(self):
        self.assertEqual(self.information["CFBundlePackageType"], "APPL")
        self.assertIs(self.information["LSUIElement"], True)

    def test_sorts_titles_by_the_users_language(self):
        self.assertIs(self.information["CFBundleAllowMixedLocalizations"], True)

    def test_is_never_terminated_while_it_runs_in_the_background(self):
        for key in ("NSSupportsAutomaticTermination", "NSSupportsSuddenTermination"):
            self.assertIs(self.information[key], False, key)

    def test_requires_macos_12(self):
        self.assertEqual(self.information["LSMinimumSystemVersion"], "12.0")

    def test_has_the_update_feed_its_key_and_its_interval(self):
        self.assertEqual(self.information["SUFeedURL"], product("feedAddress"))
        self.assertRegex(self.information["SUFeedURL"], "^https://")
        self.assertEqual(self.information["SUPublicEDKey"], product("feedPublicKey"))
        self.assertEqual(len(base64.b64decode(self.information["SUPublicEDKey"], validate=True)), 32)
        self.assertIs(self.information["SUEnableAutomaticChecks"], True)
        self.assertEqual(self.information["SUScheduledCheckInterval"], 24 * 60 * 60)

    def test_verifies_updates_before_it_unpacks_them(self):
        self.assertIs(self.information["SUVerifyUpdateBeforeExtraction"], True)

    def test_enables_no_sandbox_service_of_sparkle(self):
        self.assertFalse([key for key in self.information if key.endswith("Service")])

    def test_pins_sparkle_by_its_checksum(self):
        fetched = (SOURCE / "sparkle.cmake").read_text(encoding="utf-8")
        self.assertRegex(fetched, r"URL https://\S+\s+URL_HASH SHA256=[0-9a-f]{64}\)")


class Entitlements(unittest.TestCase):
    def test_are_empty_and_without_comments(self):
        # The kernel does not read entitlements with comments.
        data = (SOURCE / "quillery.entitlements").read_bytes()
        self.assertEqual(plistlib.loads(data), {})
        self.assertNotIn(b"<!--", data)


def icon_entries(data):
    """The entries of an icon file: bytes by type, in the order of the file."""
    kind, length = struct.unpack(">4sI", data[:8])
    assert kind == b"icns" and length == len(data), "not an icon file, or truncated"
    entries, offset = {}, 8
    while offset < len(data):
        kind, length = struct.unpack(">4sI", data[offset : offset + 8])
        assert 8 < length <= len(data) - offset, f"entry {kind} does not fit"
        entries[kind] = data[offset + 8 : offset + length]
        offset += length
    return entries


class Icon(unittest.TestCase):
    def test_each_image_has_the_size_in_its_name(self):
        images = sorted((MADE / "AppIcon.iconset").iterdir())
        sizes = {}
        for image in images:
            points, twice = re.fullmatch(r"icon_(\d+)x\1(@2x)?\.png", image.name).groups()
            pixels = int(points) * (2 if twice else 1)
            data = image.read_bytes()
            self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n", image.name)
            self.assertEqual(struct.unpack(">II", data[16:24]), (pixels, pixels), image.name)
            self.assertEqual(data[25], 6, f"{image.name} has no transparency")  # the PNG colour type
            sizes.setdefault(int(points), []).append(pixels)
        self.assertEqual(sizes, {points: [points, 2 * points] for points in (16, 32, 128, 256, 512)})

    def test_the_packed_icon_is_complete_in_all_sizes(self):
        entries = icon_entries((MADE / "AppIcon.icns").read_bytes())
        self.assertGreaterEqual(len(entries), 5)
        if sys.platform != "darwin":  # Linux's png2icns writes exactly these types; iconutil may choose others
            masks = {b"s8mk": 16, b"l8mk": 32, b"t8mk": 128}
            self.assertEqual(set(entries), {b"is32", b"il32", b"it32", b"ic08", b"ic09", b"ic10", *masks})
            for kind, size in masks.items():
                self.assertEqual(len(entries[kind]), size * size, kind)


if __name__ == "__main__":
    unittest.main()
