#!/usr/bin/python3
"""A stand-in for Safari: owns Safari's name on the session bus, and quits on request.

usage: stand_in_safari.py JOURNAL BOOKMARKS [--refuses] [--adds TITLE]

Appends a line to JOURNAL for each event: "started", "asked to quit", "SIGTERM", "quit". SIGUSR1 stands for its user
quitting it. With --refuses it stays open when it is asked to quit, like a Safari with a save prompt. With --adds it
writes a bookmark of that title to the bookmarks bar in BOOKMARKS as it quits.
"""
import argparse
import pathlib
import plistlib
import signal

from gi.repository import Gio, GLib

from bookmarks import bookmarks_bar, leaf, serialized


class StandInSafari(Gio.Application):
    def __init__(self, options):
        super().__init__(application_id="com.apple.Safari")
        self.options = options

    def note(self, event):
        with open(self.options.journal, "a", encoding="utf-8") as journal:
            print(event, file=journal)

    def do_startup(self):
        Gio.Application.do_startup(self)
        quit_action = Gio.SimpleAction.new("quit", None)
        quit_action.connect("activate", lambda action, parameter: self.asked_to_quit())
        self.add_action(quit_action)
        GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGUSR1, self.leave)
        GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGTERM, self.signalled)
        self.hold()
        self.note("started")

    def do_activate(self):
        pass

    def asked_to_quit(self):
        self.note("asked to quit")
        if not self.options.refuses:
            self.leave()

    def signalled(self):
        self.note("SIGTERM")
        return self.leave()

    def leave(self):
        if self.options.adds:
            path = pathlib.Path(self.options.bookmarks)
            tree = plistlib.loads(path.read_bytes())
            bookmarks_bar(tree)["Children"].append(leaf(self.options.adds))
            path.write_bytes(serialized(tree))
        self.note("quit")
        self.quit()
        return GLib.SOURCE_CONTINUE


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("journal")
    parser.add_argument("bookmarks")
    parser.add_argument("--refuses", action="store_true")
    parser.add_argument("--adds")
    StandInSafari(parser.parse_args()).run([])


if __name__ == "__main__":
    main()
