#!/usr/bin/python3
"""A stand-in for Safari, for the rig: runs as the process that a file of the rig names, and quits on SIGTERM.

usage: stand_in_safari.py RIG JOURNAL BOOKMARKS [--refuses] [--adds TITLE]

Does and writes what tests/end_to_end/stand_in_safari.py does.
"""
import argparse
import os
import pathlib
import plistlib
import signal
import socket
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "end_to_end"))
from bookmarks import bookmarks_bar, leaf, serialized  # noqa: E402

IDENTIFIER = "com.apple.Safari"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("rig", type=pathlib.Path)
    parser.add_argument("journal", type=pathlib.Path)
    parser.add_argument("bookmarks", type=pathlib.Path)
    parser.add_argument("--refuses", action="store_true")
    parser.add_argument("--adds")
    options = parser.parse_args()
    running = options.rig / "running" / IDENTIFIER

    def note(event):
        with open(options.journal, "a", encoding="utf-8") as journal:
            print(event, file=journal)

    def leave():
        if options.adds:
            tree = plistlib.loads(options.bookmarks.read_bytes())
            bookmarks_bar(tree)["Children"].append(leaf(options.adds))
            options.bookmarks.write_bytes(serialized(tree))
        note("quit")
        running.unlink()
        with socket.socket(socket.AF_UNIX) as control:
            control.connect(str(options.rig / "control"))
            control.send(f"terminated {IDENTIFIER}".encode())
            control.recv(16)
        sys.exit()

    signals = {signal.SIGTERM, signal.SIGUSR1}
    signal.pthread_sigmask(signal.SIG_BLOCK, signals)
    running.parent.mkdir(exist_ok=True)
    running.write_text(str(os.getpid()), encoding="utf-8")
    note("started")
    while True:
        if signal.sigwait(signals) == signal.SIGUSR1:
            leave()
        note("asked to quit")
        if not options.refuses:
            leave()


if __name__ == "__main__":
    main()
