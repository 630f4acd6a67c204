#!/usr/bin/python3
"""Measures the costs of the menu-bar program on a private desktop.

usage: desktop_costs.py INSTALLATION [--starts N]

Prints the time from the start of the process until a panel can read its whole menu (for the very first start, which
also sets up the start at login, and for warm starts), its resident memory, and how often it wakes the processor while
idle.
"""
import argparse
import pathlib
import statistics
import sys
import time

from gi.repository import GLib

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests/end_to_end"))

from desktop import Desktop  # noqa: E402
from quillery import Quillery  # noqa: E402
from status_item import item_names, StatusItem  # noqa: E402
from waiting import wait_for  # noqa: E402

ITEMS = 11  # in the menu


def milliseconds_to_menu(desktop):
    """Starts the program and waits until its menu can be read. Returns the program and the time that this took."""
    def has_menu():
        try:
            return any(len(StatusItem(desktop.bus, name).menu()) == ITEMS for name in item_names(desktop.bus))
        except GLib.Error:  # the item is not complete yet
            return False

    start = time.monotonic()
    quillery = Quillery(desktop)
    wait_for(has_menu, "a complete menu", pause=0.0005)
    return quillery, (time.monotonic() - start) * 1000


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("installation")
    parser.add_argument("--starts", type=int, default=15)
    arguments = parser.parse_args()
    with Desktop(arguments.installation, has_accessibility=False) as desktop:
        quillery, first = milliseconds_to_menu(desktop)
        wait_for(lambda: len(desktop.processes()) == 1, "the instance that the login agent started to exit")
        times = []
        for _ in range(arguments.starts):
            quillery.quit()
            wait_for(lambda: not item_names(desktop.bus), "an empty panel")
            quillery, taken = milliseconds_to_menu(desktop)
            times.append(taken)
        print(f"start to menu, ms: first {first:.0f}; warm {min(times):.0f} to {max(times):.0f}, "
              f"median {statistics.median(times):.0f}, of {len(times)}")
        print(f"wakes in an idle minute: {quillery.wakes_in_an_idle_minute()}")
        memory = quillery.resident_memory()
        print("resident memory, MB: {VmRSS:.1f}, of which private {RssAnon:.1f}".format(**memory))


if __name__ == "__main__":
    main()
