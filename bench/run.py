#!/usr/bin/env python3
"""Runs the benchmark and prints a table for each format.

usage: run.py BUILD_FOLDER [--large] [--rounds N]

Makes bookmark files of 500, 10,000 and 100,000 bookmarks (with --large also 1,000,000) in both formats. Measures in
turn on the same file: the whole job and its steps, plain input and output of the same bytes, both without and with
flushing to disk, the plain Python script, and the memory of one run of the companion. Times are medians. The figures of
a ratio are measured in direct succession, so quote ratios rather than times.
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
COUNTS = [500, 10_000, 100_000]
LARGE = 1_000_000


def figures(bench, path, rounds, flush):
    lines = subprocess.run([bench, path, str(rounds), flush], check=True, capture_output=True, text=True).stdout
    return {name: float(value) for name, value in (line.split("\t") for line in lines.splitlines())}


def script_time(path, scratch):
    target, backup = scratch / "script.out", scratch / "script.backup"
    backup.unlink(missing_ok=True)
    start = time.monotonic()
    subprocess.run([sys.executable, HERE / "python_sort.py", path, target, backup], check=True)
    return (time.monotonic() - start) * 1000


def peak_memory(companion, path, scratch):
    """The peak resident memory of one run of the companion in bytes, as counted by the system."""
    home = scratch / "memory home"
    shutil.rmtree(home, ignore_errors=True)
    (home / "Library/Safari").mkdir(parents=True)
    shutil.copy(path, home / "Library/Safari/Bookmarks.plist")
    environment = dict(os.environ, HOME=str(home), DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
    with open(os.devnull, "w") as null:
        child = subprocess.Popen([companion, "sort"], env=environment, stdout=null)
        _, status, usage = os.wait4(child.pid, 0)
    if status != 0:
        sys.exit(f"run.py: the companion exited with wait status {status}")
    shutil.rmtree(home)
    return usage.ru_maxrss * 1024


def table(format, rows):
    names = list(rows[0])
    print(f"\n{format}")
    width = max(len(name) for name in names)
    for name in names:
        print(f"  {name:<{width}}" + "".join(f"{row[name]:>14}" for row in rows))


def measure(arguments, scratch, format, count):
    bench = arguments.build / "bench" / "quillery_bench"
    companion = arguments.build / "quilleryctl"
    path = scratch / f"{count}.{format}.plist"
    subprocess.run([sys.executable, HERE / "make_bookmarks.py", str(count), path, "--format", format], check=True)
    size = path.stat().st_size
    rounds = max(3, min(arguments.rounds, 3_000_000 // count))
    plain = figures(bench, path, rounds, "noflush")
    flushed = figures(bench, path, max(3, rounds // 3), "flush")
    script = script_time(path, scratch)
    memory = peak_memory(companion, path, scratch)
    path.unlink()
    row = {"bookmarks": f"{count:,}", "file, MB": f"{size / 1e6:.1f}"}
    row["whole job, ms"] = f"{plain['whole job']:.1f}"
    row["plain input and output, ms"] = f"{plain['plain input and output']:.1f}"
    for name in plain:
        if name.startswith("step: "):
            row["  " + name[6:] + ", ms"] = f"{plain[name]:.1f}"
    row["Python script, ms"] = f"{script:.0f}"
    row["job, µs a bookmark"] = f"{plain['whole job'] * 1000 / count:.2f}"
    row["job : plain I/O"] = f"{plain['whole job'] / plain['plain input and output']:.2f}"
    row["job : plain I/O, both flushed"] = f"{flushed['whole job'] / flushed['plain input and output']:.2f}"
    row["script : job"] = f"{script / plain['whole job']:.1f}"
    row["memory : file"] = f"{memory / size:.2f}"
    return row


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--large", action="store_true")
    parser.add_argument("--rounds", type=int, default=15)
    arguments = parser.parse_args()
    counts = COUNTS + ([LARGE] if arguments.large else [])
    with tempfile.TemporaryDirectory(prefix="quillery-bench-") as folder:
        for format in ("binary", "xml"):
            table(format, [measure(arguments, pathlib.Path(folder), format, count) for count in counts])


if __name__ == "__main__":
    main()
