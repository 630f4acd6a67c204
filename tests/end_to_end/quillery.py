"""The program under test, started as its user would start it."""
import pathlib
import plistlib
import signal
import time

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

    def _own_windows(self):
        return self.desktop.screen.viewable(lambda name: name == "Quillery")

    def open_menu_in_older_tray(self):
        """Clicks its icon there. Answers the frame of the menu that opens: x, y, width and height."""
        x, y, width, height = wait_for(self._own_windows, "an icon in the tray")[0]
        self.desktop.screen.click(x + width // 2, y + height // 2)
        return self.wait_for_menu(besides=[(x, y, width, height)])

    def wait_for_menu(self, besides=()):
        """The frame of its menu once that is open; `besides` are those of its windows that are there already."""
        return wait_for(lambda: [frame for frame in self._own_windows() if frame not in besides], "an open menu")[0]

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

    # --- What it costs ---

    def _figures(self):
        """What the system says of each of its threads, and of it as a whole, by name."""
        for status in pathlib.Path(f"/proc/{self.identifier}/task").glob("*/status"):
            yield dict(line.split(":", 1) for line in status.read_text().splitlines())

    def resident_memory(self):
        """In megabytes, all of it ("VmRSS") and what is not of files ("RssAnon")."""
        figures = next(self._figures())
        return {name: int(figures[name].split()[0]) / 1000 for name in ("VmRSS", "RssAnon")}

    def wakes(self):
        """How often its threads have stopped to wait for something so far."""
        return sum(int(figures["voluntary_ctxt_switches"]) for figures in self._figures())

    def wakes_in_an_idle_minute(self):
        """Waits until it has been left alone for some time: for a minute after a program has come to the session bus
        it looks now and then whether that has got in line for a name. Answers how often it wakes in the next minute."""
        previous, quiet_since = self.wakes(), time.monotonic()
        while time.monotonic() - quiet_since < 35:
            time.sleep(1)
            if (wakes := self.wakes()) != previous:
                previous, quiet_since = wakes, time.monotonic()
        time.sleep(60)
        return self.wakes() - previous

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
