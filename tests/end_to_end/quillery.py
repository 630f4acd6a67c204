"""The program under test, started as its user starts it."""
import pathlib
import plistlib
import signal

from gi.repository import GLib

from scratch_desktop import Program
from status_item import StatusItem
from waiting import least_increase_in, wait_for

IDENTIFIER = "com.fenwarde.quillery"
OBJECT = "/com/fenwarde/quillery"
APPLICATION = "org.freedesktop.Application"


class Quillery(Program):
    def __init__(self, desktop, *arguments, program=None):
        """`program` is a command that runs the program as its child, instead of the installed program."""
        super().__init__(desktop, *(program or [str(desktop.installation / "bin/quillery")]), *arguments)
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
        """Clicks the program's icon in the older tray. Returns the frame of its menu: x, y, width and height."""
        x, y, width, height = wait_for(self._own_windows, "an icon in the tray")[0]
        self.desktop.screen.click(x + width // 2, y + height // 2)
        return self.wait_for_menu(besides=[(x, y, width, height)])

    def wait_for_menu(self, besides=()):
        """Waits until the menu is open and gets the keys. Returns its frame; `besides` are the frames of windows that
        were open before."""
        frame = wait_for(lambda: [frame for frame in self._own_windows() if frame not in besides], "an open menu")[0]
        wait_for(self.desktop.screen.is_keyboard_grabbed, "a menu that gets the keys")
        return frame

    # --- Windows and alerts ---

    def windows(self):
        return self.desktop.screen.windows(self.identifier)

    def _placed_window(self, matches, what):
        window = self.desktop.screen.window(self.identifier, matches, what)
        wait_for(lambda: self.desktop.screen.is_placed(window), f"the place of {what}")
        return window

    def window(self, title):
        return self._placed_window(lambda window: window.title == title, f"an active window “{title}”")

    def alert(self, text):
        """Waits for the alert, or any other window, with this text."""
        return self._placed_window(lambda window: text in window.texts(), f"an alert “{text}”")

    # --- Traces ---

    def defaults(self):
        """The stored settings."""
        path = self.desktop.home / f".config/{IDENTIFIER}.plist"
        return plistlib.loads(path.read_bytes()) if path.exists() else {}

    # --- Costs ---

    def _figures(self):
        """The fields of /proc's status file for each thread of the program."""
        for status in pathlib.Path(f"/proc/{self.identifier}/task").glob("*/status"):
            yield dict(line.split(":", 1) for line in status.read_text().splitlines())

    def resident_memory(self):
        """Resident memory in megabytes: all of it ("VmRSS") and the part that is not backed by files ("RssAnon")."""
        figures = next(self._figures())
        return {name: int(figures[name].split()[0]) / 1000 for name in ("VmRSS", "RssAnon")}

    def wakes(self):
        """How often the threads of the program have blocked so far."""
        return sum(int(figures["voluntary_ctxt_switches"]) for figures in self._figures())

    def wakes_in_an_idle_minute(self):
        """Returns how often the program wakes in an idle minute. It is not idle at first: for a minute after a program
        connects to the session bus, it polls whether that program queues for a name."""
        return least_increase_in(self.wakes, seconds=60, enough=1, patience=240)

    # --- Exit and bus name ---

    def send(self, method, signature, *arguments):
        self.desktop.bus.send(IDENTIFIER, OBJECT, APPLICATION, method, GLib.Variant(signature, arguments))

    def send_signal(self, number=signal.SIGTERM):
        self.process.send_signal(number)
