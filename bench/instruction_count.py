#!/usr/bin/env python3
"""Counts the instructions of one sort of 10,000 bookmarks, and fails if the count grows by more than 10 %.

usage: instruction_count.py COMPANION RECORD [--record]

Seconds depend on the machine and its load; instructions under callgrind do not. RECORD has the count for each format.
--record updates it; commit that with the change that is the reason.
"""
import argparse
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
COUNT = 10_000
TOLERANCE = 1.10


def instructions(companion, scratch, format):
    home = scratch / format
    (home / "Library/Safari").mkdir(parents=True)
    file = home / "Library/Safari/Bookmarks.plist"
    subprocess.run([sys.executable, HERE / "make_bookmarks.py", str(COUNT), file, "--format", format], check=True)
    environment = dict(os.environ, HOME=str(home), LC_ALL="en_US.UTF-8",
                       DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
    command = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={scratch / 'callgrind.out'}", companion, "sort"]
    result = subprocess.run(command, env=environment, capture_output=True, text=True)
    if result.returncode != 0 or not result.stdout.startswith("Bookmarks sorted: "):
        sys.exit(f"instruction_count.py: the sort failed\n{result.stdout}{result.stderr}")
    collected = re.search(r"Collected : (\d+)", result.stderr)
    return int(collected.group(1))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("companion", type=pathlib.Path)
    parser.add_argument("record", type=pathlib.Path)
    parser.add_argument("--record", dest="write", action="store_true")
    arguments = parser.parse_args()
    if shutil.which("valgrind") is None:
        sys.exit("instruction_count.py: valgrind is not installed")
    with tempfile.TemporaryDirectory(prefix="quillery-instructions-") as folder:
        counted = {format: instructions(arguments.companion, pathlib.Path(folder), format)
                   for format in ("binary", "xml")}
    if arguments.write:
        arguments.record.write_text(json.dumps(counted, indent=2) + "\n")
    recorded = json.loads(arguments.record.read_text())
    slower = False
    for format, count in counted.items():
        ratio = count / recorded[format]
        slower |= ratio > TOLERANCE
        print(f"{format}: {count:,} instructions, {ratio:.3f} of the recorded {recorded[format]:,}")
    if slower:
        sys.exit(f"instruction_count.py: more than {TOLERANCE:.0%} of the recorded instructions")


if __name__ == "__main__":
    main()
