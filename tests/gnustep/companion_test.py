#!/usr/bin/python3
"""The companion over GNUstep, end to end: previews, sorts and restores files of both formats, and leaks nothing.

usage: companion_test.py BUILD
"""
import json
import os
import pathlib
import plistlib
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "end_to_end"))
from bookmarks import SORTED_TITLES, serialized, titles, unsorted_tree  # noqa: E402

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
SAFARI = "com.apple.Safari"


class CompanionTest(unittest.TestCase):
    def setUp(self):
        self.home = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="quillery-")))
        self.file = self.home / "Library/Safari/Bookmarks.plist"
        self.file.parent.mkdir(parents=True)
        (self.home / "running").mkdir()

    def run_companion(self, *arguments, status=0, limit=None):
        environment = {**os.environ, "HOME": str(self.home), "QUILLERY_RIG": str(self.home), "TZ": "UTC",
                       "ASAN_OPTIONS": "detect_leaks=1"}
        result = subprocess.run([BUILD / "quilleryctl", *arguments], env=environment, capture_output=True, text=True,
                                timeout=60)
        self.assertEqual(result.returncode, status, result.stdout + result.stderr)
        return result

    def for_both_formats(self):
        for is_binary in (True, False):
            with self.subTest(is_binary=is_binary):
                content = serialized(unsorted_tree(), is_binary)
                self.file.write_bytes(content)
                yield content

    def test_preview_writes_nothing(self):
        for content in self.for_both_formats():
            preview = json.loads(self.run_companion("preview", "--json").stdout)
            self.assertIn("Chapter 10", json.dumps(preview))
            self.assertIn("A sort would move 8 entries in 3 folders.", self.run_companion("preview").stdout)
            self.assertEqual(self.file.read_bytes(), content)

    def test_sort_keeps_the_format_and_every_value(self):
        for content in self.for_both_formats():
            self.run_companion("check", status=1)
            self.run_companion("sort")
            written = self.file.read_bytes()
            self.assertEqual(written[:5], content[:5])
            self.assertEqual(titles(plistlib.loads(written)), SORTED_TITLES)
            self.assertEqual(self.values(written), self.values(content))
            self.assertIn("already in order", self.run_companion("check").stdout)
            self.run_companion("sort")
            self.assertEqual(self.file.read_bytes(), written)

    @staticmethod
    def values(content):
        """Every value of a tree without the order of its arrays."""
        def sorted_below(value):
            if isinstance(value, dict):
                return repr(sorted((key, sorted_below(each)) for key, each in value.items()))
            return repr(sorted(map(sorted_below, value))) if isinstance(value, list) else repr(value)
        return sorted_below(plistlib.loads(content))

    def test_restore_gives_back_the_exact_bytes(self):
        for content in self.for_both_formats():
            self.run_companion("sort")
            names = self.run_companion("backups", "--quiet").stdout.split()
            newest = names[0]
            self.assertEqual((self.home / "Library/Application Support/Quillery/Backups" / newest).read_bytes(), content)
            self.run_companion("restore", newest)
            self.assertEqual(self.file.read_bytes(), content)
            self.assertEqual(len(self.run_companion("backups", "--quiet").stdout.split()), len(names) + 1)

    def test_reads_nothing_while_safari_runs(self):
        self.file.write_bytes(serialized(unsorted_tree()))
        (self.home / "running" / SAFARI).write_text(str(os.getpid()))
        self.assertIn("Safari is running", self.run_companion("sort", status=75).stderr)
        self.assertEqual(self.file.read_bytes(), serialized(unsorted_tree()))

    def test_explains_why_it_cannot_sort(self):
        self.assertIn(str(self.file), self.run_companion("sort", status=1).stderr)
        for malformed in (b"", b"bplist00", b"<?xml version='1.0'?><plist><dict>", plistlib.dumps({"Title": "x"})):
            self.file.write_bytes(malformed)
            (line,) = self.run_companion("sort", status=1).stderr.splitlines()
            self.assertTrue(line.startswith(f"quilleryctl: {self.file}: "), line)
            self.assertEqual(self.file.read_bytes(), malformed)

    def test_prints_the_next_sort_of_its_settings(self):
        self.assertIn("No sort is scheduled", self.run_companion("next").stdout)
        settings = self.home / "GNUstep/Defaults/quilleryctl.plist"
        settings.parent.mkdir(parents=True)
        settings.write_bytes(plistlib.dumps(
            {"dailyEnabled": True, "dailyHour": 7, "dailyMinute": 30, "scheduleDays": [1, 2, 3, 4, 5, 6, 7]}))
        self.assertIn("07:30", self.run_companion("next").stdout)


if __name__ == "__main__":
    unittest.main(verbosity=2)
