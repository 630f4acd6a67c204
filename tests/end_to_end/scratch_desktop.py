"""What the private desktops of all platforms share: a home folder with bookmarks in a scratch folder, a headless display,
and the programs that run there. All of it is removed at the end."""
import atexit
import contextlib
import os
import pathlib
import plistlib
import shutil
import subprocess
import tempfile

from Xlib import X, XK
from Xlib.ext import xtest

from bookmarks import serialized, titles, unsorted_tree
from waiting import wait_for

SAFARI = "com.apple.Safari"


class ScratchDesktop(contextlib.ExitStack):
    """A platform sets `environment` before it starts a program."""

    def __init__(self, installation):
        super().__init__()
        atexit.register(self.close)  # an interrupted test does not
        self.callback(atexit.unregister, self.close)
        self.installation = pathlib.Path(installation).resolve()
        self.scratch = pathlib.Path(tempfile.mkdtemp(prefix="quillery-"))
        self.callback(shutil.rmtree, self.scratch, ignore_errors=True)
        self.home = self.scratch / "home"
        self.bookmarks = self.home / "Library/Safari/Bookmarks.plist"
        self.backups = self.home / "Library/Application Support/Quillery/Backups"
        self.journal = self.scratch / "safari"
        self.bookmarks.parent.mkdir(parents=True)
        self.journal.touch()
        self.write_bookmarks(unsorted_tree())

    @staticmethod
    def write_program(path, text):
        path.write_text(text, encoding="utf-8")
        path.chmod(0o755)

    def start_display(self):
        number = self.start_server("-displayfd {}", "Xvfb", "-screen", "0", "1024x768x24", "-nolisten", "tcp")
        self.environment["DISPLAY"] = f":{number}"

    def start_server(self, option, *command):
        """Starts a program with an option that makes it write its address to a descriptor once it is ready. Returns
        that address."""
        reader, writer = os.pipe()
        self.start(*command, *option.format(writer).split(), pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as output:
            return output.readline().strip()

    def start(self, *command, **more):
        """Starts a program, which is stopped with the desktop if it still runs. Its output goes to a file in the
        scratch folder."""
        with open(self.scratch / f"{pathlib.Path(command[0]).name}.log", "ab") as log:
            process = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL,
                                       **{"stdout": log, "stderr": log, **more})
        self.callback(self._stop, process)
        return process

    @staticmethod
    def _stop(process):
        process.terminate()
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    # --- Bookmarks ---

    def write_bookmarks(self, tree, is_binary=True):
        self.bookmarks.write_bytes(serialized(tree, is_binary))

    def titles(self):
        return titles(plistlib.loads(self.bookmarks.read_bytes()))

    def backup_files(self):
        return sorted(self.backups.glob("*")) if self.backups.is_dir() else []

    # --- Safari ---

    def wait_for_safari(self):
        wait_for(lambda: self.safari_events()[-1:] == ["started"], "a running Safari")

    def safari_events(self):
        """What has happened to Safari so far, in order."""
        return self.journal.read_text(encoding="utf-8").splitlines()


class Keyboard:
    """The keys of a display. A screen sets `display`."""

    def type(self, *keys):
        """Presses and releases keys in turn, by their X names: "Return", "Escape", "Down", "a"."""
        for key in keys:
            code = self.display.keysym_to_keycode(XK.string_to_keysym(key))
            xtest.fake_input(self.display, X.KeyPress, code)
            xtest.fake_input(self.display, X.KeyRelease, code)
        self.display.sync()


class Program:
    """The program under test. A platform has its menu `item` and its `windows`."""

    def __init__(self, desktop, *command):
        self.desktop = desktop
        self.output = desktop.scratch / "quillery.out"
        self.errors = desktop.scratch / "quillery.err"
        with open(self.output, "ab") as output, open(self.errors, "ab") as errors:
            self.process = desktop.start(*command, stdout=output, stderr=errors)

    def status(self):
        """The title of the menu's status line, the third item."""
        return self.item.titles()[2]

    def press(self, window, title):
        self.desktop.screen.press(window.find("push button", title))

    def has_no_windows(self):
        return not self.windows()

    def lines(self):
        """Everything that the program has printed."""
        return self.output.read_text(encoding="utf-8")

    def wait(self):
        """Waits until the program exits. Returns its exit status."""
        wait_for(lambda: self.process.poll() is not None, "the program to exit")
        return self.process.returncode

    def quit(self):
        self.choose("Quit")
        return self.wait()
