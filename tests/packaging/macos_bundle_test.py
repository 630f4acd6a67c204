"""What a Mac finds in the application bundle, as far as it can be read here: its information, entitlements and icon.

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
    """A value of the maker's, as the program has it."""
    return re.search(f'{name} = "(.*)"', (BUILD / "platform/product.h").read_text()).group(1)


class Information(unittest.TestCase):
    def setUp(self):
        self.information = plistlib.loads((MADE / "Info.plist").read_bytes())

    def test_names_the_program_as_the_program_does(self):
        self.assertEqual(self.information["CFBundleIdentifier"], product("bundleIdentifier"))
        for key in ("CFBundleName", "CFBundleDisplayName", "CFBundleExecutable"):
            self.assertEqual(self.information[key], product("name"), key)
        for key in ("CFBundleVersion", "CFBundleShortVersionString"):
            self.assertEqual(self.information[key], product("version"), key)
        self.assertEqual(self.information["NSHumanReadableCopyright"], product("copyright"))

    def test_leaves_no_value_to_be_filled_in(self):
        self.assertNotRegex((MADE / "Info.plist").read_text(), "@|\\$")
        for key, value in self.information.items():
            self.assertNotEqual(value, "", key)

    def test_is_of_an_application_without_a_dock_icon(self):
        self.assertEqual(self.information["CFBundlePackageType"], "APPL")
        self.assertIs(self.information["LSUIElement"], True)

    def test_asks_for_macos_12(self):
        self.assertEqual(self.information["LSMinimumSystemVersion"], "12.0")

    def test_tells_sparkle_where_to_look_whom_to_trust_and_how_often(self):
        self.assertEqual(self.information["SUFeedURL"], product("feedAddress"))
        self.assertRegex(self.information["SUFeedURL"], "^https://")
        self.assertEqual(self.information["SUPublicEDKey"], product("feedPublicKey"))
        self.assertEqual(len(base64.b64decode(self.information["SUPublicEDKey"], validate=True)), 32)
        self.assertIs(self.information["SUEnableAutomaticChecks"], True)
        self.assertEqual(self.information["SUScheduledCheckInterval"], 24 * 60 * 60)

    def test_enables_none_of_sparkles_services_for_sandboxes(self):
        self.assertFalse([key for key in self.information if key.endswith("Service")])

    def test_fetches_sparkle_by_its_checksum(self):
        fetched = (SOURCE / "sparkle.cmake").read_text(encoding="utf-8")
        self.assertRegex(fetched, r"URL https://\S+\s+URL_HASH SHA256=[0-9a-f]{64}\)")


class Entitlements(unittest.TestCase):
    def test_there_are_none_and_no_comment_that_the_kernel_would_not_read(self):
        data = (SOURCE / "quillery.entitlements").read_bytes()
        self.assertEqual(plistlib.loads(data), {})
        self.assertNotIn(b"<!--", data)


def icon_entries(data):
    """The types of an icon file and the bytes of each, in order."""
    kind, length = struct.unpack(">4sI", data[:8])
    assert kind == b"icns" and length == len(data), "no icon file, or one cut short"
    entries, offset = {}, 8
    while offset < len(data):
        kind, length = struct.unpack(">4sI", data[offset : offset + 8])
        assert 8 < length <= len(data) - offset, f"entry {kind} does not fit"
        entries[kind] = data[offset + 8 : offset + length]
        offset += length
    return entries


class Icon(unittest.TestCase):
    def test_each_image_has_the_size_that_its_name_says(self):
        images = sorted((MADE / "AppIcon.iconset").iterdir())
        sizes = {}
        for image in images:
            points, twice = re.fullmatch(r"icon_(\d+)x\1(@2x)?\.png", image.name).groups()
            pixels = int(points) * (2 if twice else 1)
            data = image.read_bytes()
            self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n", image.name)
            self.assertEqual(struct.unpack(">II", data[16:24]), (pixels, pixels), image.name)
            self.assertEqual(data[25], 6, f"{image.name} has no transparency")  # the colour type
            sizes.setdefault(int(points), []).append(pixels)
        self.assertEqual(sizes, {points: [points, 2 * points] for points in (16, 32, 128, 256, 512)})

    def test_the_packed_icon_is_whole_and_holds_the_sizes(self):
        entries = icon_entries((MADE / "AppIcon.icns").read_bytes())
        self.assertGreaterEqual(len(entries), 5)
        if sys.platform != "darwin":  # where the packer writes the types that have a fixed meaning
            masks = {b"s8mk": 16, b"l8mk": 32, b"t8mk": 128}
            self.assertEqual(set(entries), {b"is32", b"il32", b"it32", b"ic08", b"ic09", b"ic10", *masks})
            for kind, size in masks.items():
                self.assertEqual(len(entries[kind]), size * size, kind)


if __name__ == "__main__":
    unittest.main()
