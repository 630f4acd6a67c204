#!/usr/bin/env python3
"""Sorts with too little memory: each allocation of a sort fails in turn, alone and with all later ones.

usage: memory.py FAILING_MEMORY COMMAND...

COMMAND sorts the bookmarks of the home folder in HOME, and FAILING_MEMORY is the library that makes allocations fail. A
sort must end in time and without a signal. Status 1 or 75 means that the bookmark file is unchanged; any other, that it
is sorted. Every backup is whole. Exit status 1 if that does not hold.
"""
import collections
import concurrent.futures
import os
import pathlib
import subprocess
import sys
import tempfile

import verdict
from sample import FORMATS, Sample
from scratch_home import ScratchHome

SECONDS = 20
SORTED = (0, 74)  # 74: the report could not be printed
UNCHANGED = (1, 75)  # 75: the session bus could not be asked


def count(home, command, library):
    result = home.run(command, preload=library, QUILLERY_COUNT_ALLOCATIONS=str(home.root.parent / "count"))
    assert result.status == 0, result.text
    return int((home.root.parent / "count").read_text())


def try_point(scratch, command, library, sample, number, stays):
    home = ScratchHome(pathlib.Path(tempfile.mkdtemp(dir=scratch)) / "home", sample.old)
    short = {"QUILLERY_MEMORY_STAYS_SHORT": "1"} if stays else {}
    name = f"{sample.format}, allocation {number}{' and all later ones' if stays else ''}"
    try:
        result = home.run(command, timeout=SECONDS, preload=library, QUILLERY_FAILING_ALLOCATION=str(number), **short)
    except subprocess.TimeoutExpired:
        return "hung", [f"{name}: it does not end"]
    judged = verdict.Verdict()
    wanted = sample.new if result.status in SORTED else sample.old
    if home.content() != wanted:
        judged.lost.append(f"the bookmark file is {verdict.description(home.content(), sample)}")
    verdict.check_backups(home, sample, judged, wanted=home.content() == sample.new)
    if result.status not in (*SORTED, *UNCHANGED):
        judged.flaws.append(f"{verdict.ending(result)}: {result.text!r}")
    if result.status in UNCHANGED and not result.text:
        judged.flaws.append("it fails without a message")
    judged.flaws += [f"{left} is left" for left in home.leftovers()]
    return verdict.ending(result), [f"{name}: {problem}" for problem in judged.lost + judged.flaws]


def main():
    library, *command = [os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2]), *sys.argv[3:]]
    endings = collections.Counter()
    problems = []
    with tempfile.TemporaryDirectory(prefix="quillery-memory-") as scratch, \
            concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        def new_home(content):
            return ScratchHome(pathlib.Path(tempfile.mkdtemp(dir=scratch)) / "home", content)

        def sorted_undisturbed(content):
            home = new_home(content)
            result = home.run(command)
            assert result.status == 0, result.text
            return home.content()

        running = []
        for name in FORMATS:
            sample = Sample(name, sorted_undisturbed)
            total = count(new_home(sample.old), command, library)
            print(f"{name}: {total} allocations")
            running += [pool.submit(try_point, scratch, command, library, sample, number, stays)
                        for number in range(1, total + 1) for stays in (False, True)]
        for future in running:
            ending, found = future.result()
            endings[ending] += 1
            problems += found
    print(", ".join(f"{number} times {ending}" for ending, number in sorted(endings.items())))
    print("\n".join(problems[:50]))
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
