#!/usr/bin/python3
"""Updates the installed program from a server of the test, on a private desktop.

usage: update_test.py INSTALLATION SCREENSHOTS PROGRAM NEWER_PROGRAM [UpdateTest.NAME ...]

INSTALLATION is the folder in which the program is installed. PROGRAM and NEWER_PROGRAM are builds that take updates from
this test; the second has version 99.0.0. What the test replaces besides that: the programs that know which packages are
installed, and the one that installs a package as root, which unpacks it here.
"""
import contextlib
import pathlib
import signal
import subprocess
import sys
import tempfile
import threading
import unittest

from bookmarks import SORTED_TITLES
from desktop import Desktop
from quillery import Quillery
from update_server import UpdateServer, packed, redirect_to, send, send_without_end, tree_of
from waiting import wait_for

INSTALLATION, SCREENSHOTS, PROGRAM, NEWER_PROGRAM = (pathlib.Path(path).resolve() for path in sys.argv[1:5])
NEWER = "99.0.0"
CHECK, REMINDER, AUTOMATIC = "Check for Updates…", "Update Available…", "Check for Updates Automatically"
FOUND = "A new version of Quillery is available"
FAILED = "The update failed"
UNREAD = "Looking for updates failed"
NOT_READ = "The list of updates couldn’t be read: "
NOT_INSTALLED = "The update was not installed: "

# Stand-ins for Debian's programs. The last unpacks a package in place of apt-get, and can be dismissed as by the user.
OWNER = """#!/bin/sh
echo "quillery: $2"
"""
REPOSITORIES = """#!/bin/sh
cat "$HOME/repositories" 2>/dev/null
"""
INSTALLER = """#!/bin/sh
echo "$@" >> "$HOME/installed"
[ ! -e "$HOME/dismissed" ] || exit 126
for package; do :; done
exec dpkg-deb --extract "$package" "{root}"
"""


@contextlib.contextmanager
def step(name):
    """Names a part of a test in its failures."""
    try:
        yield
    except AssertionError as problem:
        raise AssertionError(f"{name}: {problem}") from problem


class UpdateTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.scratch = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="quillery-updates-")))
        cls.server = cls.enterClassContext(UpdateServer())
        tree_of(INSTALLATION, NEWER_PROGRAM, cls.scratch / "newer/usr")
        cls.newer = packed(cls.scratch / "newer", NEWER)
        (cls.scratch / "older").mkdir()
        cls.older = packed(cls.scratch / "older", "0.0.9")

    def launch(self):
        """Starts the older program, installed in a folder of its own, on a desktop."""
        root = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="quillery-root-")))
        tree_of(INSTALLATION, PROGRAM, root / "usr")
        self.desktop = self.enterContext(Desktop(root / "usr", environment=self.server.environment()))
        for name, text in [("dpkg-query", OWNER), ("apt-cache", REPOSITORIES), ("pkexec", INSTALLER.format(root=root))]:
            self.desktop.write_program(self.desktop.scratch / "bin" / name, text)
        self.server.requests.clear()
        self.quillery = Quillery(self.desktop)
        wait_for(lambda: CHECK in self.quillery.item.titles(), "the menu")

    # --- What the user does and sees ---

    def update_item(self):
        """The tool tip and the titles of the menu's items that are about updates."""
        titles = self.quillery.item.titles()
        return self.quillery.item.tool_tip(), [title for title in titles if title in (CHECK, REMINDER)]

    def can_check(self):
        return self.quillery.item.properties(CHECK).get("enabled", True)

    def is_automatic(self):
        return self.quillery.item.properties(AUTOMATIC).get("toggle-state") == 1

    def shown(self, heading, picture=None):
        """Waits for a window with this heading. Returns its other texts as one."""
        self.window = self.quillery.alert(heading)
        if picture:
            self.desktop.picture(SCREENSHOTS / f"{picture}.png", self.window)
        return " ".join(self.window.texts()[1:]).replace("\u200b", "")

    def press(self, title):
        self.quillery.press(self.window, title)

    def type(self, key):
        self.desktop.screen.type(key)

    def check(self):
        wait_for(self.can_check, "an enabled item")
        self.quillery.choose(CHECK)

    def expect_ended(self):
        wait_for(self.quillery.has_no_windows, "no window")
        self.assertEqual(self.update_item(), ("Quillery", [CHECK]))

    def version(self):
        """The version of the running program."""
        return subprocess.run([f"/proc/{self.quillery.identifier}/exe", "--version"], capture_output=True, text=True,
                              check=True).stdout.strip()

    def downloads(self):
        return list(self.desktop.home.glob(".cache/com.fenwarde.quillery/*"))

    def expect_nothing_left(self):
        """Expects no downloaded file, nothing that was installed, and the program that there was."""
        self.assertEqual(self.downloads(), [])
        self.assertFalse((self.desktop.home / "installed").exists())
        self.assertEqual((self.desktop.installation / "bin/quillery").read_bytes(), PROGRAM.read_bytes())

    def expect_relaunch(self):
        wait_for(lambda: self.version() == f"quillery {NEWER}", "the newer program")
        self.assertEqual(self.desktop.processes(), [self.quillery.identifier])
        [line] = (self.desktop.home / "installed").read_text().splitlines()
        self.assertTrue(line.startswith("/usr/bin/apt-get install --yes --no-remove /"), line)
        self.assertEqual(self.downloads(), [])

    # --- Tests ---

    def test_installs_a_newer_version_once_the_sort_is_done(self):
        self.server.offered(NEWER, self.newer, notes="Sorts faster.\nKeeps <b>markup</b> & such.")
        self.launch()
        self.assertFalse(self.is_automatic())
        self.assertEqual(self.server.requests, [])  # before consent

        # A scheduled check only reminds.
        self.quillery.choose(AUTOMATIC)
        wait_for(lambda: self.update_item() == ("Quillery — update available", [REMINDER]), "a reminder")
        self.assertTrue(self.is_automatic())
        self.assertEqual(self.server.requests, ["/feed"])
        self.assertTrue(self.quillery.has_no_windows())
        self.quillery.choose(AUTOMATIC)
        wait_for(lambda: not self.is_automatic(), "no check mark")
        self.quillery.choose(REMINDER)
        self.assertEqual(self.shown(FOUND, "update-found"), f"Quillery {NEWER} is available; you have 0.1.0.")
        self.assertEqual(self.window.buttons(), ["Skip This Version", "Remind Me Later", "Install Update"])
        self.assertEqual(self.window.find("text").content(), "Sorts faster.\nKeeps <b>markup</b> & such.")
        self.assertEqual(self.update_item(), ("Quillery", [CHECK]))
        self.type("Escape")
        self.expect_ended()

        # A check by the user does not.
        self.check()
        self.shown(FOUND)
        self.assertEqual(self.update_item(), ("Quillery", [CHECK]))

        # The relaunch waits for the sort, which waits for Safari.
        safari = self.desktop.start_safari("--refuses")
        self.quillery.choose("Sort Now…")
        self.quillery.alert("Safari is open")
        self.type("Return")
        wait_for(lambda: "asked to quit" in self.desktop.safari_events(), "a request to Safari to quit")
        self.shown(FOUND)
        self.press("Install Update")
        self.shown("Quillery restarts as soon as it has finished sorting…", "update-postponed")
        self.assertEqual(self.window.buttons(), [])
        self.assertFalse(self.can_check())
        self.assertEqual(self.version(), "quillery 0.1.0")
        self.assertNotEqual(self.desktop.titles(), SORTED_TITLES)
        safari.send_signal(signal.SIGUSR1)
        self.expect_relaunch()
        self.assertEqual(self.desktop.titles(), SORTED_TITLES)

        # The newer program is up to date.
        self.check()
        self.assertEqual(self.shown("You’re up to date", "update-none"), f"Quillery {NEWER} is the newest version.")
        self.type("Return")
        self.expect_ended()

    def refused(self, heading, text, asks=True, picture=None):
        """Expects that a check, or the installation after it, fails with this text, and leaves nothing behind."""
        self.check()
        if asks:
            self.shown(FOUND)
            self.type("Return")
        self.assertEqual(self.shown(heading, picture), text)
        self.expect_nothing_left()
        self.type("Return")
        self.expect_ended()

    def test_refuses_what_an_attacker_sends(self):
        server = self.server
        host = "The server “127.0.0.1”"
        other = bytes([self.newer[0] ^ 1]) + self.newer[1:]
        server.offered(NEWER, self.newer)
        self.launch()

        with step("the feed is replaced"):
            server.offer.feed = b"<html>Sign in first</html>"
            self.refused(UNREAD, NOT_READ + "it is not an appcast.", asks=False, picture="update-unread")
        with step("the feed has no end"):
            server.replies["/feed"] = send_without_end
            self.refused(UNREAD, NOT_READ + "it is too large.", asks=False)
        with step("the package is replaced"):
            server.offered(NEWER, self.newer)
            server.offer.package = other
            self.refused(FAILED, NOT_INSTALLED + "its signature is not that of the maker.", picture="update-refused")
        with step("another key"):
            server.offered(NEWER, self.newer, signature=server.signature(self.newer, server.new_key("other key")))
            self.refused(FAILED, NOT_INSTALLED + "its signature is not that of the maker.")
        with step("an older version"):
            server.offered("0.0.9", self.newer)
            self.check()
            self.assertEqual(self.shown("You’re up to date"), "Quillery 0.1.0 is the newest version.")
            self.type("Return")
            self.expect_ended()
        with step("an older version that is called newer"):
            server.offered(NEWER, self.older)
            self.refused(FAILED, NOT_INSTALLED + "it has version “0.0.9”, which is not newer.")
        with step("half a package"):
            server.offered(NEWER, self.newer)
            server.replies["/package"] = lambda to: send(to, self.newer[:len(self.newer) // 2], len(self.newer))
            self.refused(FAILED, host + " closed the connection before everything had arrived.")
        with step("too short"):
            server.offered(NEWER, self.newer, length=len(self.newer) + 1)
            self.refused(FAILED, NOT_INSTALLED + "it is shorter than announced.")
        with step("too long"):
            server.offered(NEWER, self.newer, length=len(self.newer) - 1)
            self.refused(FAILED, NOT_INSTALLED + "it is longer than announced.")
        with step("no end"):
            server.offered(NEWER, self.newer)
            server.replies["/package"] = send_without_end
            self.refused(FAILED, NOT_INSTALLED + "it is longer than announced.")
        for address in [f"http://localhost:{server.server.server_port}/package", "ftp://127.0.0.1/package",
                        "file:///etc/hostname"]:
            with step(f"a redirection to {address}"):
                server.offered(NEWER, self.newer)
                server.replies["/package"] = redirect_to(address)
                self.refused(FAILED, f"The server redirects to “{address}”, which isn’t allowed.")
        self.assertEqual(self.version(), "quillery 0.1.0")

    def test_leaves_each_step_to_the_user(self):
        server = self.server
        server.offered(NEWER, self.newer)
        self.launch()

        with step("a check can be cancelled"):
            goes_on = threading.Event()
            self.addCleanup(goes_on.set)
            server.replies["/feed"] = lambda to: goes_on.wait(20)
            self.check()
            self.shown("Looking for updates…", "update-checking")
            self.assertFalse(self.can_check())
            self.type("Escape")
            self.expect_ended()
            wait_for(self.can_check, "an enabled item")
        with step("a download can be cancelled"):
            server.offered(NEWER, self.newer)
            server.replies["/package"] = lambda to: (send(to, self.newer[:len(self.newer) // 3], len(self.newer)),
                                                     to.wfile.flush(), goes_on.wait(20))
            self.check()
            self.shown(FOUND)
            self.type("Return")
            self.shown(f"Downloading Quillery {NEWER}…")
            wait_for(lambda: self.window.find("progress bar").value() >= 330, "a third of the download")
            self.desktop.picture(SCREENSHOTS / "update-downloading.png", self.window)
            self.press("Cancel")
            self.expect_ended()
            self.expect_nothing_left()
        with step("an installation can be declined"):
            server.offered(NEWER, self.newer)
            (self.desktop.home / "dismissed").touch()
            self.check()
            self.shown(FOUND)
            self.type("Return")
            wait_for((self.desktop.home / "installed").exists, "a question for the permission")
            self.expect_ended()
            (self.desktop.home / "dismissed").unlink()
            (self.desktop.home / "installed").unlink()
            self.expect_nothing_left()
        with step("a version can be skipped"):
            self.check()
            self.shown(FOUND)
            self.press("Skip This Version")
            self.expect_ended()
            self.assertEqual(self.quillery.defaults()["SUSkippedVersion"], NEWER)
        with step("a distribution's own package is left to it"):
            (self.desktop.home / "repositories").write_text("quillery | 0.1.0-1 | somewhere\n")
            self.check()
            text = self.shown("Your system keeps Quillery up to date", "update-repository")
            self.assertIn("new versions arrive with the system’s other updates", text)
            self.type("Return")
            self.expect_ended()
            (self.desktop.home / "repositories").unlink()
        with step("a relaunch waits for nothing if no sort runs"):
            self.check()
            self.shown(FOUND)
            self.type("Return")
            self.expect_relaunch()


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[5:]], verbosity=2)
