#!/usr/bin/env python3
"""Lets the power fail while the companion sorts and restores on a real ext4 file system, and checks that nothing is
lost.

usage: powerloss.py [--states N|all] [--seed SEED] [--only SCENARIO] [--void-flushes] [--expect-losses] PROGRAM

PROGRAM is quilleryctl, or a program with the same commands. Each run is recorded, block by block and flush by flush.
Then the contents that the disk may have after a power loss are made from the record, repaired, mounted and judged: all
of them, or N, drawn with SEED. Prints a table, and every problem. Exit status 1 if there is a problem; with
--expect-losses, if there is none, which proves that losses are noticed. --only limits the runs to the scenarios with
SCENARIO in their name; --void-flushes makes the program's own flushes do nothing. Exit status 77 if it cannot run here.
"""
import argparse
import collections
import concurrent.futures
import contextlib
import itertools
import os
import pathlib
import random
import re
import shutil
import signal
import sys
import tempfile
import time

import crash_states
import system
from recorded_disk import RecordedDisk
from scenarios import ScratchHome, paces, problems, scenarios
from sparse_image import SparseImage

import surroundings  # of the fault tests
from sample import FORMATS, Sample

SIZE = 12 * 1024 * 1024
# ext4 by itself flushes some files that are replaced, which would hide a missing flush of the program.
MOUNTING = "noauto_da_alloc"
MODES = {
    "ordered": "data=ordered,delalloc",
    "ordered, no delayed allocation": "data=ordered,nodelalloc",
    "writeback": "data=writeback,delalloc",
    "writeback, no delayed allocation": "data=writeback,nodelalloc",
    "journal": "data=journal",
}
LEAST_OF_A_RUN = 5  # states; if fewer are wanted of each run, fewer runs are recorded
MEMORY = "/dev/shm"

# Rows of the table.
MODE_ROW = "ext4, data={}"
BY_E2FSCK = "journal replayed by e2fsck"
BY_KERNEL = "journal replayed by the kernel"
STATES = "states"
OLD = "the file is the old one"
NEW = "the file is the new one"
LOST = "lost:"


class Run:
    """One scenario in one mode, and the states of the disk that its record gives."""

    def __init__(self, mode, scenario, pace, format_name):
        self.mode = mode
        self.scenario = scenario
        self.pace = pace
        self.name = f"{scenario.name} ({format_name}, {mode}, {pace.name})"
        self.base = None
        self.log = None
        self.states = []
        self.lot = None  # draws which states the kernel repairs

    def record(self, folder, program, seed):
        """Performs the scenario in an empty folder, on a disk that is recorded, and computes the states."""
        content, image, mounted = folder / "content", folder / "image", folder / "mounted"
        content.mkdir()
        mounted.mkdir()
        self.scenario.prepare(content / "home")
        system.make_file_system(image, SIZE, content)
        self.base = SparseImage.from_file(image)
        with RecordedDisk(folder / "disk", self.base.copy()) as disk, system.LoopDevice(disk.path) as device:
            system.mount(device.path, mounted, "ext4", 0, f"{MOUNTING},{MODES[self.mode]}")
            try:
                self.scenario.perform(ScratchHome(mounted / "home"), program, self.pace)
                disk.log.report()
            finally:
                system.unmount(mounted)
        disk.log.finish()
        self.log = disk.log
        self.states = list(crash_states.states(self.log, seed))
        self.lot = random.Random(seed)
        shutil.rmtree(content)


class Judge:
    """Repairs and mounts images, one at a time, and looks at the home folder in them."""

    def __init__(self, folder):
        self.image = folder / "image"
        self.mounted = folder / "mounted"
        self.mounted.mkdir(parents=True)
        with open(self.image, "wb") as file:
            file.truncate(SIZE)
        self.device = system.LoopDevice(self.image)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.device.close()

    def problems(self, run, state, image, by_kernel):
        """Returns what is wrong after a power loss that leaves this image, and the rows that count it. The journal is
        replayed by the kernel or, as is everything that the kernel cannot read, by e2fsck."""
        with open(self.image, "r+b") as file:
            image.save(file)
        self.device.forget()
        if by_kernel:
            with contextlib.suppress(OSError):
                return self.look(run, state, BY_KERNEL)
        try:
            system.repair(self.image)
            self.device.forget()
            return self.look(run, state, BY_E2FSCK)
        except OSError as problem:
            return [f"the disk cannot be read: {problem}"], (BY_E2FSCK, LOST)

    def look(self, run, state, replayed):
        """Mounts the image and returns the same. Raises OSError if something cannot be read."""
        system.mount(self.device.path, self.mounted, "ext4", system.MS_RDONLY, "")
        try:
            home = ScratchHome(self.mounted / "home")
            found = list(problems(home, run.scenario, run.log.epochs[state.epoch].reported))
            return found, (replayed, LOST if found else OLD if home.content() == run.scenario.old else NEW)
        finally:
            system.unmount(self.mounted)


def judged(run, folder):
    """Judges the states of a run. Returns how often each row and column of the table applied, and the problems."""
    counts = collections.Counter()
    lost = []
    with Judge(folder) as judge:
        for state, image in crash_states.images(run.base, run.log, run.states):
            found, rows = judge.problems(run, state, image, by_kernel=run.lot.random() < 0.5)
            counts.update((row, run.scenario.name) for row in (state.kind, MODE_ROW.format(run.mode), STATES, *rows))
            lost += [f"{run.name}, {state}, {rows[0]}: {problem}" for problem in found]
    return counts, lost


def try_all(runs, scratch, program, seed, wanted):
    """Records runs and judges the wanted number of states, None for all. Returns how many runs and states there were,
    the counts of the table, and the problems.

    One run per processor at a time, in processes, not threads: a program that one thread starts inherits for a moment
    the files that the others have open, which keeps these from unmounting.
    """
    counts = collections.Counter()
    lost = []
    if wanted:
        runs = crash_states.sampled(runs, max(4, wanted // LEAST_OF_A_RUN), seed)
    folders = [scratch / f"run{number}" for number in range(len(runs))]
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as pool:
        try:
            runs = list(pool.map(recorded, runs, folders, itertools.repeat(program), itertools.repeat(seed)))
            total = sum(len(run.states) for run in runs)
            if wanted:
                draw_states(runs, seed, wanted)
            for more_counts, more_lost in pool.map(judged, runs, (folder / "judge" for folder in folders)):
                counts += more_counts
                lost += more_lost
        finally:
            pool.shutdown(cancel_futures=True)
    return f"{len(runs)} runs with {total} states", counts, lost


def print_table(counts, names):
    rows = [*crash_states.KINDS, *map(MODE_ROW.format, MODES), BY_E2FSCK, BY_KERNEL, STATES, OLD, NEW, LOST]
    width = max(map(len, rows)) + 2
    columns = [max(len(name), 6) + 2 for name in names]
    print(" " * width + "".join(f"{name:>{column}}" for name, column in zip(names, columns)) + "     all")
    for row in rows:
        cells = [counts[row, name] for name in names]
        print(f"{row:{width}}" + "".join(f"{cell:{column}}" for cell, column in zip(cells, columns))
              + f"{sum(cells):8}")


def all_runs(scratch, program, only, void):
    """All combinations of a mode, a pace and a scenario, with alternating formats of the file."""
    def sort(content):
        home = ScratchHome(tempfile.mkdtemp(dir=scratch) + "/home", content)
        result = home.run([program, "sort"])
        assert result.status == 0, result.text
        return home.content()

    samples = {name: Sample(name, sort) for name in FORMATS}
    for number, (mode, pace) in enumerate(itertools.product(MODES, paces(void))):
        for index, name in enumerate(FORMATS):
            for place, scenario in enumerate(scenarios(samples[name])):
                if only in scenario.name and (number + place + index) % 2 == 0:
                    yield Run(mode, scenario, pace, name)


def recorded(run, folder, program, seed):
    folder.mkdir()
    run.record(folder, program, f"{seed} {run.name}")
    return run


def draw_states(runs, seed, wanted):
    """Draws the wanted number of states, the same number of each run unless it has fewer."""
    for left, run in zip(range(len(runs), 0, -1), sorted(runs, key=lambda run: len(run.states))):
        run.states = crash_states.sampled(run.states, wanted // left, f"{seed} {run.name}")
        wanted -= len(run.states)


def why_not_here():
    """The reason why this cannot run here, if there is one."""
    if os.geteuid() != 0:
        return "only root may mount images"
    if not surroundings.may_mount():
        return "there is no permission to mount"
    for path in ("/dev/fuse", "/dev/loop-control"):
        if not os.path.exists(path):
            return f"there is no {path}"
    for program in ("mkfs.ext4", "e2fsck", "strace"):
        if shutil.which(program) is None:
            return f"{program} is not installed"
    with tempfile.TemporaryDirectory(prefix="quillery-powerloss-") as folder:
        try:
            try_disk(pathlib.Path(folder))
        except OSError as problem:
            return str(problem)
    return None


def try_disk(folder):
    """Makes, records and mounts a disk. Raises OSError if that is not possible here."""
    (folder / "content").mkdir()
    (folder / "mounted").mkdir()
    system.make_file_system(folder / "image", SIZE, folder / "content")
    image = SparseImage.from_file(folder / "image")
    with RecordedDisk(folder / "disk", image) as disk, system.LoopDevice(disk.path) as device:
        system.mount(device.path, folder / "mounted", "ext4", 0, MOUNTING)
        system.unmount(folder / "mounted")
    if not disk.log.epochs:
        raise OSError("the loop device does not pass flushes on")


@contextlib.contextmanager
def scratch_folder():
    place = MEMORY if os.path.isdir(MEMORY) else None
    with tempfile.TemporaryDirectory(prefix="quillery-powerloss-", dir=place) as folder:
        yield pathlib.Path(folder)


def kind_of_problem(text):
    """The problem without the run, the state and whatever differs between runs."""
    problem = text.split(": ", 2)[-1]
    return re.sub(r"[1-9][0-9]* bytes", "some bytes", re.sub(r" Bookmarks-[-0-9A-F]+\.plist", "", problem))


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--states", type=lambda text: None if text == "all" else int(text))
    parser.add_argument("--seed", default=str(int(time.time())))
    parser.add_argument("--only", default="")
    parser.add_argument("--void-flushes", action="store_true")
    parser.add_argument("--expect-losses", action="store_true")
    parser.add_argument("program")
    arguments = parser.parse_args()
    if os.geteuid() == 0:
        surroundings.enter_namespace([sys.executable, *sys.argv])
    reason = why_not_here()
    if reason:
        print(f"powerloss: skipped '{reason}'")
        return 77
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that everything is unmounted and removed
    start = time.monotonic()
    program = os.path.abspath(arguments.program)
    with scratch_folder() as scratch:
        runs = list(all_runs(scratch, program, arguments.only, arguments.void_flushes))
        whole, counts, lost = try_all(runs, scratch, program, arguments.seed, arguments.states)
    print_table(counts, list(dict.fromkeys(run.scenario.name for run in runs)))
    print(f"seed {arguments.seed}, of {whole}, {time.monotonic() - start:.0f} s")
    if not arguments.expect_losses:
        print(*lost, sep="\n", end="\n" if lost else "")
        return 1 if lost else 0
    for problem, count in collections.Counter(map(kind_of_problem, lost)).most_common():
        print(f"{count:6} x {problem}")
    return 0 if lost else 1


if __name__ == "__main__":
    sys.exit(main())
