#!/usr/bin/env python3
"""Sorts random property lists with the companion and compares them with Python's plistlib, which writes them and reads
them before and after: every value must be the same, only the order of entries may differ.

usage: differential_test.py [--files N] [--seed SEED] [--file NUMBER] QUILLERYCTL

--file tries only one of the files again.
"""
import argparse
import collections
import concurrent.futures
import os
import pathlib
import plistlib
import random
import sys
import tempfile
import time

import oracle
from random_lists import RandomList

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "faults"))
from scratch_home import ScratchHome  # noqa: E402

CHUNK = 50  # files that a process tries at a time
MEMORY = "/dev/shm" if os.path.isdir("/dev/shm") else None
MESSAGES = {"no bookmark tree": "Unrecognised Safari bookmark format. No changes made.",
            "a value that only keyed archives have": "isn’t a valid property list"}


def random_file(seed, number):
    """Returns the bytes of a file, the format, and what makes it unreadable, if anything does."""
    lot = random.Random(f"{seed}/{number}")
    binary = lot.random() < 0.5
    drawn = RandomList(lot, binary)
    root = drawn.root()
    content = plistlib.dumps(root, fmt=plistlib.FMT_BINARY if binary else plistlib.FMT_XML, sort_keys=False)
    return content, "binary" if binary else "XML", drawn.oddity


class Trial:
    """Sorts one file in a scratch home. `outcome` says how that ended, `problems` what is wrong about it."""

    def __init__(self, program, home, content, oddity):
        self.problems = []
        home.put(content)
        result = home.run([program, "sort"])
        new = home.content()
        backups = [path.read_bytes() for path in home.backup_files()]
        for path in home.backup_files():
            path.unlink()
        self.expect(not home.leftovers(), f"the sort left {home.leftovers()}")
        if oddity:
            self.outcome = "refused"
            self.expect(result.status == 1 and MESSAGES[oddity] in result.text, f"{result.status}: {result.text!r}")
            self.expect(new == content and not backups, "the refused file was changed or backed up")
            return
        self.expect(result.status == 0, f"status {result.status}: {result.text!r}")
        self.outcome = "in order before" if new == content else "sorted"
        self.expect(backups == ([] if new == content else [content]), "the backups are not as expected")
        self.compare(content, new)
        # A binary file that refers to a folder from several places may be written anew.
        self.expect(content.startswith(b"bplist") or len(new) == len(content),
                    f"the file had {len(content)} bytes and has {len(new)}")
        if new != content:
            again = home.run([program, "sort"])
            self.expect(again.status == 0 and home.content() == new and not home.backup_files(),
                        "a second sort changed the file again")

    def expect(self, condition, problem):
        if not condition:
            self.problems.append(problem)

    def compare(self, old, new):
        try:
            before, after = plistlib.loads(old), plistlib.loads(new)
        except Exception as failure:  # pylint: disable=broad-except
            self.problems.append(f"plistlib cannot read it: {failure!r}")
            return
        self.problems += oracle.problems(before, after)


def try_files(program, seed, numbers):
    """Returns how many files of each format had each outcome, and the problems."""
    counts, problems = collections.Counter(), []
    with tempfile.TemporaryDirectory(prefix="quillery-differential-", dir=MEMORY) as folder:
        home = ScratchHome(pathlib.Path(folder) / "home", b"")
        for number in numbers:
            content, format_name, oddity = random_file(seed, number)
            trial = Trial(program, home, content, oddity)
            counts[format_name, trial.outcome] += 1
            problems += [f"file {number} ({format_name}, {len(content)} bytes): {text}" for text in trial.problems]
    return counts, problems


def try_all(program, seed, count):
    counts, problems = collections.Counter(), []
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as pool:
        chunks = [range(first, min(first + CHUNK, count)) for first in range(0, count, CHUNK)]
        for more_counts, more_problems in pool.map(try_files, [program] * len(chunks), [seed] * len(chunks), chunks):
            counts += more_counts
            problems += more_problems
    return counts, problems


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--files", type=int, default=200)
    parser.add_argument("--seed", default=str(int(time.time())))
    parser.add_argument("--file", type=int)
    parser.add_argument("program")
    arguments = parser.parse_args()
    start = time.monotonic()
    program = os.path.abspath(arguments.program)
    if arguments.file is not None:
        counts, problems = try_files(program, arguments.seed, [arguments.file])
    else:
        counts, problems = try_all(program, arguments.seed, arguments.files)
    for (format_name, outcome), count in sorted(counts.items()):
        print(f"{count:6} {format_name}, {outcome}")
    print(*problems, f"{sum(counts.values())} files tried with seed {arguments.seed}, {len(problems)} problems, "
          f"{time.monotonic() - start:.0f} s", sep="\n")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
