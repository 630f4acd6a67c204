#!/usr/bin/python3
"""Runs the program on a headless desktop, with a sample home folder and a stand-in for Safari.

usage: desktop_demo.py INSTALLATION BOOKMARK_TREE SCREENSHOT

Chooses "Sort Now…" from the menu while Safari is open, and prints each step. BOOKMARK_TREE is the program that prints
bookmark files. Saves the final screen to SCREENSHOT. Exit status 1 if a step does not happen in time.
"""
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/end_to_end"))

from desktop import Desktop  # noqa: E402
from quillery import Quillery  # noqa: E402
from waiting import wait_for  # noqa: E402


def tree(bookmark_tree, desktop):
    printed = subprocess.run([bookmark_tree, str(desktop.bookmarks)], check=True, capture_output=True, text=True)
    return printed.stdout.splitlines()


def show_trees(before, after):
    width = max(len(line) for line in before) + 4
    print(f"\n  {'before':<{width}}after")
    for left, right in zip(before, after):
        print(f"  {left:<{width}}{right}")
    print()


def main():
    installation, bookmark_tree, screenshot = sys.argv[1:]
    with Desktop(installation, panel="older tray") as desktop:
        desktop.bookmarks.write_bytes((ROOT / "tests/data/demo/Bookmarks.binary.plist").read_bytes())
        before = tree(bookmark_tree, desktop)
        desktop.start_safari()
        print("A headless display, a tray and a sample home folder are ready. Safari (a stand-in) is open.")
        quillery = Quillery(desktop)
        quillery.open_menu_in_older_tray()
        print("Quillery runs. From its menu: Sort Now…")
        desktop.screen.type("Down", "Down", "Down", "Return")
        alert = quillery.alert("Safari is open")
        print(f"It asks: {' | '.join(alert.buttons())}. Return presses the first button.")
        desktop.screen.type("Return")
        wait_for(lambda: desktop.safari_events() == ["started", "asked to quit", "quit", "started"],
                 "Safari to quit and reopen")
        print("Safari was asked to quit, quit, and is open again. In between, the file was sorted:")
        wait_for(quillery.lines, "a printed line")
        show_trees(before, tree(bookmark_tree, desktop))
        print(quillery.lines().replace(str(desktop.home), "~"))
        quillery.open_menu_in_older_tray()
        desktop.screenshot(pathlib.Path(screenshot))
        print(f"Screenshot of the end: {screenshot}")


if __name__ == "__main__":
    try:
        main()
    except AssertionError as failure:
        sys.exit(f"desktop_demo.py: {failure}")
