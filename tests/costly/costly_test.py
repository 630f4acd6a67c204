#!/usr/bin/env python3
"""Runs every command on files of at most a megabyte that are made to take much time or memory. None may take more than
a second of processor time, 256 MB of memory, or 64 MB of output; none may crash.

usage: costly_test.py QUILLERYCTL [--only WORD] [--verbose]
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

BACKUP = "Bookmarks-00000000-0000-0000-0000-000000000000.plist"
COMMANDS = ("check", "preview", "preview --all", "preview --all --json", "sort", "backups", f"restore {BACKUP}")
LOCALE = "vi_VN.UTF-8"  # whose collation also puts combining marks into order
ATTEMPTS = 3
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

    def problems(self):
        return [text for wrong, text in (
            (self.seconds > SECONDS, "too slow"), (self.megabytes > MEGABYTES, "too much memory"),
            (self.output > OUTPUT, "too much output"), (self.status not in STATUSES, "crashed")) if wrong]


def limit_costs():
    resource.setrlimit(resource.RLIMIT_CPU, (HARD_LIMIT, HARD_LIMIT))
    resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def cost_of(program, command, content, folder):
    """Runs a command in a home folder of its own. Returns its cost and what it wrote to standard error."""
    home = ScratchHome(folder / "home", content)
    if BACKUP in command or command == "backups":
        home.backups.mkdir(parents=True)
        (home.backups / BACKUP).write_bytes(content)
    if BACKUP in command:
        home.put(b"{ Children = (); }")
    output, errors = folder / "output", folder / "errors"
    with open(output, "wb") as out, open(errors, "wb") as err:
        process = subprocess.Popen([program, *command.split()], env=home.environment(LC_ALL=LOCALE), stdout=out,
                                   stderr=err, cwd="/", preexec_fn=limit_costs)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    cost = Cost(process.returncode, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, output.stat().st_size)
    return cost, errors.read_text(errors="replace")


def least_cost(program, command, content):
    """Runs a command again if it was slow, as other programs on the machine slow it down, but never make it faster."""
    costs = []
    while len(costs) < ATTEMPTS and all(cost.seconds > SECONDS for cost, _ in costs):
        with tempfile.TemporaryDirectory() as folder:
            costs.append(cost_of(program, command, content, pathlib.Path(folder)))
    return min(costs, key=lambda entry: entry[0].seconds)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("companion", type=pathlib.Path)
    parser.add_argument("--only", default="", help="a part of the names of the files to try")
    parser.add_argument("--verbose", action="store_true", help="print each cost")
    arguments = parser.parse_args()
    program = arguments.companion.resolve()
    problems = []
    slowest = (0, "")
    count = 0
    for case in [case for case in costly_files.CASES if arguments.only in case.__name__]:
        content = case()
        if len(content) > costly_files.LARGEST:
            problems.append(f"{case.__name__} has {len(content):,} bytes")
        for command in COMMANDS:
            cost, error = least_cost(program, command, content)
            name = f"{case.__name__} ({len(content):,} bytes), {command}: {cost}"
            count += 1
            slowest = max(slowest, (cost.seconds, name))
            problems += [f"{name}: {problem}" for problem in cost.problems()]
            if arguments.verbose:
                print(name, error[:150].strip(), flush=True)
    print(*problems, f"{count} commands tried, {len(problems)} problems; the slowest: {slowest[1]}", sep="\n")
    return 1 if problems or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
