"""A private desktop for one run of the program, with a session bus and a panel."""
import os
import pathlib
import signal
import subprocess
import sys
import unittest

import shells
from scratch_desktop import SAFARI, ScratchDesktop
from screen import Screen, WaylandScreen
from session_bus import Bus
from status_item import has_host
from waiting import wait_for

HERE = pathlib.Path(__file__).resolve().parent
PYTHON = sys.executable

# Replaces the program that opens addresses and folders, and records its argument.
OPENER = """#!/bin/sh
printf '%s\\n' "$1" >> "$HOME/opened"
"""

SAFARI_ENTRY = """[Desktop Entry]
Type=Application
Name=Safari
Exec={command}
"""


class Desktop(ScratchDesktop):
    """`installation` is the folder in which the program is installed. `panel` is "notifiers" for a panel with status
    notifiers, "older tray" for one with X's older system tray only, or None. With `has_accessibility`, programs expose
    their windows and controls as they do to a screen reader."""

    def __init__(self, installation, panel="notifiers", has_accessibility=True, environment=()):
        super().__init__(installation)
        self.shell = shells.chosen()
        self.safari_options = []
        self._furnish()
        self.environment = {
            "PATH": f"{self.installation}/bin:{self.scratch}/bin:/usr/bin:/bin",
            "HOME": str(self.home),
            "LANG": "C.UTF-8",
            "XDG_RUNTIME_DIR": str(self.scratch / "run"),
            "XDG_DATA_DIRS": f"{self.installation}/share:/usr/share",
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.scratch}/no-system-bus",
            **({"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"} if has_accessibility else {}),
            "LSAN_OPTIONS": f"suppressions='{HERE}/known_leaks.txt':print_suppressions=0",
            **dict(environment),
            **self.shell.environment,
        }
        try:
            self.start_display()
            self._start_bus()
            self._start_panel(panel)
        except BaseException:
            self.close()
            raise

    def _furnish(self):
        for folder in (self.scratch / "bin", self.home / ".local/share/applications"):
            folder.mkdir(parents=True)
        (self.scratch / "run").mkdir(mode=0o700)
        self.write_program(self.scratch / "bin/xdg-open", OPENER)
        for name, text in self.shell.settings.items():
            path = self.home / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")

    def _start_bus(self):
        address = self.start_server("--print-address={}", "dbus-daemon", "--session", "--nofork", "--nopidfile",
                                    f"--address=unix:path={self.scratch}/run/bus")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        self.bus = Bus(address)
        self.screen = (WaylandScreen if self.shell.socket else Screen)(self.environment["DISPLAY"], self.bus)
        self.callback(self.screen.display.close)
        self.screen.paint(0x4F, 0x6D, 0x8A)

    def _start_panel(self, panel):
        self.start(*self.shell.window_manager)
        if panel == "notifiers":
            self.start(*(self.shell.panel or (PYTHON, str(HERE / "status_notifier_host.py"))))
        elif panel == "older tray":
            if self.shell.panel or self.shell.socket:
                raise unittest.SkipTest(f"{self.shell.title} has no tray of the older kind only")
            self.start("trayer", "--edge", "top", "--align", "right", "--width", "20", "--height", "24")
        if self.shell.socket:
            wait_for((self.scratch / "run" / self.shell.socket).exists, "a compositor")
        else:
            wait_for(self.screen.has_window_manager, "a window manager")
        if panel == "notifiers":
            wait_for(lambda: has_host(self.bus), "a host for status notifiers", patience=60)  # panels load much
        elif panel == "older tray":
            wait_for(self.screen.has_older_tray, "an older system tray")

    # --- Safari ---

    def safari_command(self):
        return [PYTHON, str(HERE / "stand_in_safari.py"), str(self.journal), str(self.bookmarks), *self.safari_options]

    def install_safari(self, *options):
        """Installs the stand-in for Safari, with these options, as a desktop entry. Returns the path of the entry."""
        self.safari_options = list(options)
        entry = self.home / ".local/share/applications" / f"{SAFARI}.desktop"
        command = " ".join(f'"{word}"' for word in self.safari_command())
        entry.write_text(SAFARI_ENTRY.format(command=command), encoding="utf-8")
        return entry

    def start_safari(self, *options):
        """Starts Safari as its user does, and waits until it runs."""
        self.install_safari(*options)
        process = self.start(*self.safari_command())
        self.wait_for_safari()
        return process

    def is_safari_running(self):
        return self.bus.has_owner(SAFARI)

    # --- Traces of the program ---

    def opened(self):
        """The addresses and folders that programs have asked the desktop to open."""
        record = self.home / "opened"
        return record.read_text(encoding="utf-8").splitlines() if record.exists() else []

    def processes(self):
        """The IDs of the processes that run an installed program with this home folder."""
        found = []
        for process in filter(str.isdigit, os.listdir("/proc")):
            try:
                program = pathlib.Path(os.readlink(f"/proc/{process}/exe"))
                environment = pathlib.Path(f"/proc/{process}/environ").read_bytes().split(b"\0")
            except OSError:  # it has ended
                continue
            if self.installation in program.parents and f"HOME={self.home}".encode() in environment:
                found.append(int(process))
        return found

    @staticmethod
    def end(process):
        """Ends a process that somebody else has started, and waits until it is gone."""
        os.kill(process, signal.SIGTERM)
        wait_for(lambda: not os.path.exists(f"/proc/{process}/exe"), "the end of a process")

    def screenshot(self, path, frame=None):
        """Takes a screenshot; `frame` (x, y, width, height) limits it to a part of the screen."""
        path.parent.mkdir(parents=True, exist_ok=True)
        part = ["--geometry", "{2}x{3}+{0}+{1}".format(*frame)] if frame else []
        subprocess.run(["maim", "--hidecursor", *part, str(path)], env=self.environment, check=True)

    def picture(self, path, window):
        """Takes a screenshot of a window with a margin, or of the whole screen with a real panel or on Wayland."""
        if self.shell.panel or self.shell.socket:
            self.screenshot(path)
            return
        x, y, width, height = window.frame()
        left, top = max(x - 24, 0), max(y - 44, 0)
        self.screenshot(path, (left, top, x + width + 24 - left, y + height + 24 - top))
