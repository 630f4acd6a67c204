#!/usr/bin/env python3
"""Runs the commands of README.md that are shown with what they print, and compares that.

usage: readme_commands_test.py COMPANION

The commands of each block run in turn in a scratch home folder, which has the sample bookmark file both as Safari's and as
Bookmarks.plist. Names of backups and times differ from run to run; the home folder is called /home/ada in the document.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMPANION = pathlib.Path(sys.argv.pop()).resolve()
BLOCK = re.compile(r"^```\n(\$ .*?)^```$", re.MULTILINE | re.DOTALL)
VARYING = [(re.compile(r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"), "a name"),
           (re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d"), "a time")]


def blocks():
    """The blocks of the document, each a list of commands with what they print."""
    text = (ROOT / "README.md").read_text(encoding="utf-8")
    return [re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", block, re.MULTILINE) for block in BLOCK.findall(text)]


def without_varying(text):
    for pattern, name in VARYING:
        text = pattern.sub(name, text)
    return text


class ReadmeCommands(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.home = pathlib.Path(scratch.name).resolve()
        safari = self.home / "Library/Safari"
        safari.mkdir(parents=True)
        for folder in [self.home, safari]:
            shutil.copy(ROOT / "tests/data/demo/Bookmarks.binary.plist", folder / "Bookmarks.plist")
        self.environment = {"HOME": str(self.home), "PATH": f"{COMPANION.parent}:/usr/bin:/bin", "TZ": "UTC",
                            "LC_ALL": "C.UTF-8", "XDG_RUNTIME_DIR": str(self.home / "run"),
                            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.home}/run/bus"}
        for name in ["ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"]:
            if name in os.environ:
                self.environment[name] = os.environ[name]

    def printed(self, command):
        """What a command prints on standard output, with the names that the document has."""
        result = subprocess.run(["bash", "-c", command], cwd=self.home, env=self.environment, capture_output=True,
                                text=True, encoding="utf-8", check=False)
        return result.stdout.replace(str(self.home), "/home/ada")

    def test_print_what_the_document_shows(self):
        for commands in blocks():
            for command, shown in commands:
                with self.subTest(command=command):
                    self.assertEqual(without_varying(self.printed(command)), without_varying(shown))

    def test_are_in_the_document(self):
        commands = [command for block in blocks() for command, _ in block]
        for word in ["preview", "sort", "check", "backups", "undo"]:
            self.assertTrue(any(command.startswith(f"quilleryctl {word}") for command in commands), word)


if __name__ == "__main__":
    unittest.main()
