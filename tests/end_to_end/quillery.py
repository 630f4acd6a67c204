"""The program under test, started as its user would start it."""
import pathlib
import plistlib
import signal

from gi.repository import GLib

from status_item import StatusItem
from waiting import wait_for

IDENTIFIER = "com.fenwarde.quillery"
OBJECT = "/com/fenwarde/quillery"
APPLICATION = "org.freedesktop.Application"


class Quillery:
    def __init__(self, desktop, *arguments, program=None):
        """`program` is a command that runs it below itself, instead of the installed program."""
        self.desktop = desktop
        self.output = desktop.scratch / "quillery.out"
        self.errors = desktop.scratch / "quillery.err"
        with open(self.output, "ab") as output, open(self.errors, "ab") as errors:
            self.process = desktop.start(*(program or [str(desktop.installation / "bin/quillery")]), *arguments,
                                         stdout=output, stderr=errors)

        self.identifier = wait_for(self._child, "the program itself") if program else self.process.pid

    def _child(self):
        children = pathlib.Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children").read_text().split()
        return int(children[0]) if children else None

    # --- The menu ---

    @property
    def item(self):
        return StatusItem.of(self.desktop.bus, self.identifier)

    def choose(self, title):
        self.item.choose(title)

    def status(self):
        """The title of the menu's status line, the third item."""
        return self.item.titles()[2]

    # --- Windows and alerts ---

    def windows(self):
        return self.desktop.screen.windows(self.identifier)

    def window(self, title):
        return self.desktop.screen.window(self.identifier, lambda window: window.title == title,
                                          f"a window “{title}” in front")

    def alert(self, text):
        """The alert, or any other window, that says this."""
        return self.desktop.screen.window(self.identifier, lambda window: text in window.texts(),
                                          f"an alert “{text}”")

    def press(self, window, title):
        self.desktop.screen.press(window.find("push button", title))

    def has_no_windows(self):
        return not self.windows()

    # --- What it leaves ---

    def lines(self):
        """What it has printed."""
        return self.output.read_text(encoding="utf-8")

    def defaults(self):
        """Its stored settings."""
        path = self.desktop.home / f".config/{IDENTIFIER}.plist"
        return plistlib.loads(path.read_bytes()) if path.exists() else {}

    # --- Its end and its bus name ---

    def tell(self, method, signature, *arguments):
        self.desktop.bus.tell(IDENTIFIER, OBJECT, APPLICATION, method, GLib.Variant(signature, arguments))

    def wait(self):
        """Waits for its end and answers its exit status."""
        wait_for(lambda: self.process.poll() is not None, "an end of the program")
        return self.process.returncode

    def quit(self):
        self.choose("Quit")
        return self.wait()

    def send_signal(self, number=signal.SIGTERM):
        self.process.send_signal(number)
