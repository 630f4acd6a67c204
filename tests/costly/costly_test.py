#!/usr/bin/env python3
"""Runs every command on files of at most a megabyte that are made to take much time or memory. None may take more than
a second of processor time, 256 MB of memory, or 64 MB of output; none may crash.

usage: costly_test.py QUILLERYCTL [--only WORD] [--verbose] [--seconds BOUND]
"""
import argparse
import os
import pathlib
import resource
import subprocess
import sys
import tempfile

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path.append(str(TESTS / "faults"))
import costly_files  # noqa: E402
from scratch_home import ScratchHome  # noqa: E402

SECONDS = 1.0
HARD_LIMIT = 4  # seconds after which a command is killed
MEGABYTES = 256
OUTPUT = 64_000_000
STATUSES = {0, 1, 3}  # success, failure or not in order, and a failed check


class Cost:
    def __init__(self, status, seconds, megabytes, output):
        self.status = status
        self.seconds = seconds
        self.megabytes = megabytes
        self.output = output

    def __str__(self):
        return f"{self.seconds:.2f} s, {self.megabytes:.0f} MB, {self.output:,} bytes of output, status {self.status}"

    def problems(self, seconds):
        return [text for wrong, text in (
            (self.seconds > seconds, "too slow"), (self.megabytes > MEGABYTES, "too much memory"),
            (self.output > OUTPUT, "too much output"), (self.status not in STATUSES, "crashed")) if wrong]


def limit_processor_time():
    resource.setrlimit(resource.RLIMIT_CPU, (HARD_LIMIT, HARD_LIMIT))
    resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def cost_of(command, home, output):
    """Runs a command and returns its cost."""
    with open(output, "wb") as out, open(str(output) + ".errors", "wb") as errors:
        process = subprocess.Popen(command, env=home.environment(LC_ALL="en_US.UTF-8"), stdout=out, stderr=errors,
                                   cwd="/", preexec_fn=limit_processor_time)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    return Cost(process.returncode, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, os.path.getsize(output))


def commands(home, content):
    """Yields each command; `sort` and `restore` last, because they change the file."""
    yield "check"
    yield "preview"
    yield "preview --all"
    yield "preview --json"
    yield "preview --all --json"
    yield "sort"
    home.backups.mkdir(parents=True, exist_ok=True)
    backup = home.backups / "Bookmarks-00000000-0000-0000-0000-000000000000.plist"
    backup.write_bytes(content)
    yield "backups"
    home.put(b"{ Children = (); }")
    yield f"restore {backup.name}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("companion", type=pathlib.Path)
    parser.add_argument("--only", default="")
    parser.add_argument("--seconds", type=float, default=SECONDS)
    parser.add_argument("--verbose", action="store_true")
    arguments = parser.parse_args()
    problems = []
    worst = {}
    count = 0
    for case in costly_files.CASES:
        if arguments.only not in case.__name__:
            continue
        content = case()
        if len(content) > costly_files.LARGEST:
            problems.append(f"{case.__name__} has {len(content):,} bytes")
        with tempfile.TemporaryDirectory() as folder:
            home = ScratchHome(pathlib.Path(folder) / "home", content)
            for command in commands(home, content):
                cost = cost_of([arguments.companion.resolve(), *command.split()], home, pathlib.Path(folder) / "output")
                name = f"{case.__name__} ({len(content):,} bytes), {command}: {cost}"
                count += 1
                if arguments.verbose:
                    error = (pathlib.Path(folder) / "output.errors").read_text(errors="replace")[:150].strip()
                    print(name, error, flush=True)
                problems += [f"{name}: {problem}" for problem in cost.problems(arguments.seconds)]
                worst = max(worst, {"cost": cost.seconds, "name": name}, key=lambda entry: entry.get("cost", 0))
    print(*problems, f"{count} commands tried, {len(problems)} problems; the slowest: {worst.get('name')}", sep="\n")
    return 1 if problems or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
