"""A private desktop for the macOS layer: a display, a home folder and the rig's stand-ins for a session. It has the
methods of tests/end_to_end/desktop.py and quillery.py, so that the same scenarios run on it."""
import contextlib
import json
import os
import pathlib
import signal
import socket
import sys
import urllib.parse

from Xlib import display

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "end_to_end"))
from scratch_desktop import SAFARI, Keyboard, Program, ScratchDesktop  # noqa: E402
from waiting import wait_for  # noqa: E402

# Knows jobs by name only and starts none.
LAUNCHCTL = """#!/bin/sh
printf '%s\\n' "$*" >> "$QUILLERY_RIG/launchctl.log"
case $1 in
  bootstrap) test ! -e "$QUILLERY_RIG/refuses" && touch "$QUILLERY_RIG/loaded" ;;
  bootout) rm "$QUILLERY_RIG/loaded" ;;
  print) test -e "$QUILLERY_RIG/loaded" ;;
esac
"""


class Desktop(ScratchDesktop):
    def __init__(self, installation, environment=()):
        super().__init__(installation)
        self.rig = self.scratch / "rig"
        (self.rig / "installed").mkdir(parents=True)
        self.write_program(self.rig / "launchctl", LAUNCHCTL)
        self.environment = {
            "PATH": "/usr/bin:/bin",
            "HOME": str(self.home),
            "LANG": "C.UTF-8",
            "QUILLERY_RIG": str(self.rig),
            **{name: value for name, value in os.environ.items() if name.startswith(("ASAN_", "UBSAN_", "GCOV_"))},
            **dict(environment),
        }
        try:
            self.callback(self.stop_safari)
            self.start_display()
            self.screen = Screen(self)
            self.callback(self.screen.display.close)
        except BaseException:
            self.close()
            raise

    def ask(self, command):
        """Sends a line to the program's remote control. Returns the reply."""
        with socket.socket(socket.AF_UNIX) as control:
            control.settimeout(20)
            control.connect(str(self.rig / "control"))
            control.send(command.encode())
            return json.loads(b"".join(iter(lambda: control.recv(65536), b"")))

    def wake(self):
        """Makes the program handle its events: an event in the queue does not always wake GNUstep's loop."""
        for _ in range(5):
            self.ask("menu")

    # --- Safari ---

    def install_safari(self, *options):
        words = [sys.executable, HERE / "stand_in_safari.py", self.rig, self.journal, self.bookmarks, *options]
        program = self.rig / "Safari.app"
        self.write_program(program, "#!/bin/sh\nexec " + " ".join(f'"{word}"' for word in words) + "\n")
        (self.rig / "installed" / SAFARI).write_text(str(program), encoding="utf-8")
        return program

    def start_safari(self, *options):
        process = self.start(str(self.install_safari(*options)))
        self.wait_for_safari()
        return process

    def is_safari_running(self):
        return (self.rig / "running" / SAFARI).exists()

    def stop_safari(self):
        """Stops the Safari that the program has started."""
        process = self.rig / "running" / SAFARI
        if process.exists():
            with contextlib.suppress(ProcessLookupError):
                os.kill(int(process.read_text(encoding="utf-8")), signal.SIGKILL)

    # --- Traces of the program ---

    def events(self):
        """What the program has asked the session for."""
        record = self.rig / "events"
        return record.read_text(encoding="utf-8").splitlines() if record.exists() else []

    def opened(self):
        """The addresses and folders that the program has opened; it opens the folder of a file that it reveals."""
        return [self._opened_by(*event.split(" ", 1)) for event in self.events()
                if event.startswith(("open ", "reveal "))]

    @staticmethod
    def _opened_by(verb, address):
        if verb == "reveal":
            return str(pathlib.Path(address).parent)
        is_file = address.startswith("file://")
        return urllib.parse.unquote(address.removeprefix("file://")).rstrip("/") if is_file else address

    def screenshot(self, path, frame=None):
        """No-op: pixels prove nothing here."""


class Element:
    """A control in a window."""

    def __init__(self, window, index):
        self.window, self.index = window, index

    @property
    def now(self):
        controls = self.window.now["controls"]
        return controls[self.index]

    def is_checked(self):
        return self.now["on"]

    def is_enabled(self):
        return self.now["enabled"]

    def has_focus(self):
        return self.now["hasFocus"]

    def frame(self):
        return [int(number) for number in self.now["frame"]]


class Window:
    def __init__(self, quillery, description):
        self.quillery, self.path, self.title = quillery, description["identity"], description["title"]

    @property
    def now(self):
        return next(each for each in self.quillery.described() if each["identity"].split()[0] == self.path.split()[0])

    def texts(self):
        """The texts of the labels from the top of the window to its bottom."""
        labels = [control for control in self.now["controls"] if control["role"] == "label" and control["title"]]
        return [label["title"] for label in sorted(labels, key=lambda label: label["frame"][1])]

    def buttons(self):
        return [control["title"] for control in self.now["controls"] if control["role"] == "push button"]

    def find(self, role, title=None):
        def look():
            for index, control in enumerate(self.now["controls"]):
                if control["role"] == role and title in (None, control["title"], control["label"]):
                    return Element(self, index)
            return None
        return wait_for(look, f"a {role} {title or ''}")


class Screen(Keyboard):
    """The pointer and the keys of the display."""

    def __init__(self, desktop):
        self.desktop = desktop
        self.display = display.Display(desktop.environment["DISPLAY"])

    def type(self, *keys):
        super().type(*keys)
        self.desktop.wake()

    def has_focus(self, frame):
        """Returns true if the display sends keys to the window with this frame."""
        focus = self.display.get_input_focus().focus
        if isinstance(focus, int):
            return False
        size, corner = focus.get_geometry(), self.display.screen().root.translate_coords(focus, 0, 0)
        shown = corner.x, corner.y, size.width, size.height
        return all(abs(one - other) < 1 for one, other in zip(shown, frame))  # alerts are not at whole pixels

    def press(self, element):
        """Clicks a control, by the program's queue of events: without a window manager, the display's first click in a
        window only activates the program."""
        self.desktop.ask(f"press {element.window.path.split()[0]} {element.index}")
        self.desktop.wake()

    def reach(self, element):
        """Moves the focus to a control by the Tab key."""
        def focus():
            return [control["hasFocus"] for control in element.window.now["controls"]]
        while not element.has_focus():
            before = focus()
            self.type("Tab")
            wait_for(lambda: focus() != before, "another control with the focus")

    def choose_last(self, element):
        """Chooses the last item of a combo box."""
        self.reach(element)
        self.type("space", *["Down"] * 10, "space")


class StatusItem:
    def __init__(self, desktop):
        self.desktop = desktop

    def titles(self):
        return [item and item["title"] for item in self.desktop.ask("menu")]

    def properties(self, title):
        return next(item for item in self.desktop.ask("menu") if item and item["title"] == title)


class Quillery(Program):
    def __init__(self, desktop, *arguments):
        (desktop.rig / "control").unlink(missing_ok=True)
        super().__init__(desktop, str(desktop.installation / "quillery"), *arguments)

    # --- The menu ---

    @property
    def item(self):
        wait_for(lambda: self._has_ended() or self._is_listening(), "the program to listen", patience=30)
        return StatusItem(self.desktop)

    def _has_ended(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the program has ended: {self.errors.read_text(errors='replace')}")
        return False

    def _is_listening(self):
        try:
            return len(self.desktop.ask("menu")) > 0
        except OSError:
            return False

    def choose(self, title):
        wait_for(lambda: title in self.item.titles(), f"the menu item “{title}”")
        self.desktop.ask(f"choose {title}")

    # --- Windows and alerts ---

    def described(self):
        return self.desktop.ask("windows")

    def windows(self):
        return [Window(self, each) for each in self.described()]

    def _key_window(self, matches, what):
        def look():
            for each in self.described():
                if each["isKey"] and matches(Window(self, each)):
                    return Window(self, each)
            return None
        window = wait_for(look, what)
        wait_for(lambda: self.desktop.screen.has_focus(window.now["frame"]), "the display's focus")
        return window

    def window(self, title):
        return self._key_window(lambda window: window.title == title, f"a key window “{title}”")

    def alert(self, text):
        return self._key_window(lambda window: text in window.texts(), f"an alert “{text}”")
