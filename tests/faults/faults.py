#!/usr/bin/env python3
"""Tries every fault that a sort on real files can meet, and checks that no bookmarks are lost.

usage: faults.py [--only KIND] [--expect-losses] SHORT_TRANSFERS COMMAND...

COMMAND sorts the bookmarks of the home folder in HOME, and SHORT_TRANSFERS is the library for short reads and writes.
Prints a table of the points that were tried, and every problem. Exit status 1 if there is a problem; with
--expect-losses, if no bookmarks are lost, which proves that losses are noticed. --only limits the run to kinds of fault
with KIND in their name. Exit status 77 if strace does not work here.
"""
import argparse
import collections
import concurrent.futures
import os
import pathlib
import subprocess
import sys
import tempfile
import time

import points
import surroundings
import tracer
import verdict
from sample import FORMATS, Sample
from scratch_home import ScratchHome


class Trial:
    """One program, one sample, and the faults tried on them."""

    def __init__(self, scratch, command, format_name):
        self.scratch = scratch
        self.command = command
        self.sample = Sample(format_name, self.sorted_undisturbed)
        self.tried = collections.Counter()
        self.endings = collections.Counter()  # how the disturbed sorts ended
        self.verdicts = []

    def new_home(self, content, disk=None):
        folder = tempfile.mkdtemp(dir=self.scratch)
        if disk:
            surroundings.mount("-t", "tmpfs", "-o", disk, "none", folder)
        return ScratchHome(pathlib.Path(folder) / "home", content)

    def sorted_undisturbed(self, content):
        home = self.new_home(content)
        result = home.run(self.command)
        assert result.status == 0, result.text
        return home.content()

    def all_points(self, library):
        calls = tracer.all_calls(self.new_home(self.sample.old), self.command)
        yield from points.at_each_call(calls, self.sample)
        yield from points.from_the_start(self.sample)
        yield from points.with_limited_files(self.sample)
        yield from points.with_short_transfers(library)
        yield from surroundings.in_forbidden_folders()
        if surroundings.may_mount():
            yield from surroundings.on_full_disks(self.sample)
            yield from surroundings.in_read_only_folders()

    def try_point(self, point):
        home = self.new_home(self.sample.old, point.disk)
        point.before(home)
        result = point.run(home, self.command)
        point.relieve(home)
        judged = verdict.after_fault(home, self.sample, result, point.put, point.unseen, point.gone,
                                     point.late)
        before = points.restore(home, self.sample)
        verdict.after_next_run(home, self.sample, before, home.run(self.command), judged, point.late)
        if point.disk:
            surroundings.unmount(home.root.parent)
        return point, judged, "killed" if result.status < 0 else "failed" if result.status else "succeeded"

    def note(self, point, judged, ending):
        self.tried[point.kind] += 1
        self.endings[ending] += 1
        self.verdicts.append((point, judged))

    def count(self, what):
        return sum(1 for _, judged in self.verdicts if what(judged))


def try_all(trials, library, kind):
    """Tries every point of every trial whose kind has `kind` in its name, one per processor at a time."""
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        running = [(trial, pool.submit(trial.try_point, point)) for trial in trials
                   for point in trial.all_points(library) if kind in point.kind]
        try:
            for trial, future in running:
                trial.note(*future.result())
        finally:
            pool.shutdown(cancel_futures=True)


def print_table(trials):
    kinds = list(dict.fromkeys(kind for trial in trials for kind in trial.tried))
    rows = [(kind, [trial.tried[kind] for trial in trials]) for kind in kinds]
    rows.append(("points tried", [sum(trial.tried.values()) for trial in trials]))
    for ending in ("succeeded", "failed", "killed"):
        rows.append((f"  the sort {'was ' if ending == 'killed' else ''}{ending}",
                     [trial.endings[ending] for trial in trials]))
    rows.append(("saved between the last check and the rename, and overwritten",
                 [trial.count(lambda judged: judged.overwrote == "replaced") for trial in trials]))
    rows.append(("written to the open file after the last look, and overwritten",
                 [trial.count(lambda judged: judged.overwrote == "written") for trial in trials]))
    rows.append(("other flaws", [trial.count(lambda judged: judged.flaws) for trial in trials]))
    rows.append(("lost", [trial.count(lambda judged: judged.lost) for trial in trials]))
    width = max(len(name) for name, _ in rows) + 1
    print(f"{'':{width}}" + "".join(f"{trial.sample.format:>8}" for trial in trials))
    for name, counts in rows:
        print(f"{name + ':' if name == 'lost' else name:{width}}" + "".join(f"{count:8}" for count in counts))


def print_problems(trials):
    for trial in trials:
        for point, judged in trial.verdicts:
            for problem in [*judged.lost, *judged.flaws]:
                print(f"{trial.sample.format}, {point.kind}, {point.name}: {problem}")


def require_strace():
    """Exits with the reason if strace does not work here."""
    try:
        tried = subprocess.run(["strace", "-o", "/dev/null", "true"], capture_output=True, text=True, check=False)
        problem = tried.stderr.strip() if tried.returncode != 0 else ""
    except FileNotFoundError:
        problem = "strace is not installed"
    if problem:
        print(f"faults: skipped 'strace does not work here: {problem}'")
        sys.exit(77)


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--only", default="")
    parser.add_argument("--expect-losses", action="store_true")
    parser.add_argument("library")
    parser.add_argument("command", nargs=argparse.REMAINDER)
    arguments = parser.parse_args()
    require_strace()
    surroundings.enter_namespace([sys.executable, *sys.argv])
    start = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="quillery-faults-") as scratch:
        command = [os.path.abspath(arguments.command[0]), *arguments.command[1:]]
        trials = [Trial(scratch, command, name) for name in FORMATS]
        try_all(trials, os.path.abspath(arguments.library), arguments.only)
    print_table(trials)
    if not surroundings.may_mount():
        print("full disks and read-only file systems: skipped 'no permission to mount'")
    print(f"{time.monotonic() - start:.0f} s")
    lost = any(judged.lost for trial in trials for _, judged in trial.verdicts)
    if arguments.expect_losses:
        return 0 if lost else 1
    print_problems(trials)
    return 0 if all(judged for trial in trials for _, judged in trial.verdicts) else 1


if __name__ == "__main__":
    sys.exit(main())
