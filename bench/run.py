#!/usr/bin/env python3
"""Runs the benchmark and prints a table for each format.

usage: run.py BUILD_FOLDER [--large] [--rounds N] [--curves]

Makes bookmark files of 500, 10,000 and 100,000 bookmarks (with --large also 1,000,000) in both formats. Each round
measures in turn, on the same file: plain input and output of the same bytes, the whole job, each of its steps, what the
memory of the machine allows for so many bytes, and in the first rounds the plain Python script. All of that runs without
flushing to disk, then the job and plain input and output with it. The table has the median and in brackets the
quartiles; a ratio is that of each round, so compare ratios rather than times. Memory is the peak of one run.

--curves measures more sizes, up to 1,000,000, writes the figures to bench/curves.json and draws docs/benchmark.svg.
"""
import argparse
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile

import curves

HERE = pathlib.Path(__file__).resolve().parent
COUNTS = [500, 10_000, 100_000]
LARGE = 1_000_000
CURVES = [500, 2_000, 10_000, 30_000, 100_000, 300_000, LARGE]
FLOORS = {  # of each step: how often the memory does what with the bytes of the file
    "read": {"copy": 1}, "parse": {"scan": 1}, "back up": {"copy": 1},
    "compare and write": {"copy": 4, "compare": 2},
}


def figures(bench, *arguments):
    """The milliseconds of each round, by the name of the measurement."""
    lines = subprocess.run([bench, *map(str, arguments)], check=True, capture_output=True, text=True).stdout.splitlines()
    return {name: [float(value) for value in values.split()] for name, values in (line.split("\t") for line in lines)}


# A process counts the memory of the one that started it, until it runs its own program. So a small one starts it.
MEASURE = """
import os, sys
process = os.posix_spawnp(sys.argv[1], sys.argv[1:], os.environ, file_actions=[(os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)])
_, status, usage = os.wait4(process, 0)
print(usage.ru_maxrss)
sys.exit(os.waitstatus_to_exitcode(status))
"""


def peak_memory(command, home=None):
    """The peak resident memory of a command in bytes, as counted by the system."""
    environment = dict(os.environ, DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
    if home is not None:
        environment["HOME"] = str(home)
    printed = subprocess.run([sys.executable, "-I", "-S", "-c", MEASURE, *command], env=environment, check=True,
                             stdout=subprocess.PIPE, text=True).stdout
    return int(printed) * 1024


def memory_of_the_companion(companion, path, scratch):
    home = scratch / "memory home"
    (home / "Library/Safari").mkdir(parents=True)
    shutil.copy(path, home / "Library/Safari/Bookmarks.plist")
    memory = peak_memory([companion, "sort"], home)
    shutil.rmtree(home)
    return memory


def memory_of_the_script(path, scratch):
    target, backup = scratch / "script.out", scratch / "script.backup"
    memory = peak_memory([sys.executable, HERE / "python_sort.py", path, target, backup])
    target.unlink()
    backup.unlink()
    return memory


def spread(values, digits):
    """The median, and the quartiles if there are enough values."""
    text = f"{statistics.median(values):.{digits}f}"
    if len(values) < 3:
        return text
    low, _, high = statistics.quantiles(values, method="inclusive")
    return f"{text} ({low:.{digits}f}-{high:.{digits}f})"


def ratios(above, below):
    """The ratio of each round that measured both."""
    return [one / other for one, other in zip(above, below)]


def floors(times, step):
    """The milliseconds of each round that a step cannot go below, or nothing for a step without a floor."""
    parts = [[weight * time for time in times["floor: " + name]] for name, weight in FLOORS.get(step, {}).items()]
    return [sum(part) for part in zip(*parts)]


def measure(arguments, scratch, format, count):
    """All figures of one file: times without and with flushing, memory, and the size of the file."""
    bench = arguments.build / "bench" / "quillery_bench"
    path = scratch / f"{count}.{format}.plist"
    subprocess.run([sys.executable, HERE / "make_bookmarks.py", str(count), path, "--format", format], check=True)
    rounds = max(3, min(arguments.rounds, 3_000_000 // count))
    scripts = max(1, min(rounds, 500_000 // count))
    found = {
        "size": path.stat().st_size,
        "times": figures(bench, path, rounds, "noflush", HERE / "python_sort.py", scripts),
        "flushed": figures(bench, path, max(3, rounds // 3), "flush"),
        "memory": {
            "job": memory_of_the_companion(arguments.build / "quilleryctl", path, scratch),
            "plain": peak_memory([bench, path, "plain"]),
            "script": memory_of_the_script(path, scratch),
        },
    }
    path.unlink()
    return found


def row_of(found, count):
    times, flushed = found["times"], found["flushed"]
    row = {"bookmarks": f"{count:,}", "file, MB": f"{found['size'] / 1e6:.1f}"}
    row["whole job, ms"] = spread(times["whole job"], 1)
    row["plain input and output, ms"] = spread(times["plain input and output"], 1)
    for name in times:
        if name.startswith("step: "):
            step = name[6:]
            floor = floors(times, step)
            row[f"  {step}, ms"] = spread(times[name], 1)
            row[f"  {step} : its floor"] = spread(ratios(times[name], floor), 1) if floor else "-"
    row["Python script, ms"] = spread(times["script"], 0)
    row["job, µs a bookmark"] = spread([time * 1000 / count for time in times["whole job"]], 2)
    row["job : plain I/O"] = spread(ratios(times["whole job"], times["plain input and output"]), 2)
    row["job : plain I/O, both flushed"] = spread(ratios(flushed["whole job"], flushed["plain input and output"]), 2)
    row["script : job"] = spread(ratios(times["script"], times["whole job"]), 1)
    row["memory : file"] = f"{found['memory']['job'] / found['size']:.2f}"
    row["memory of plain I/O : file"] = f"{found['memory']['plain'] / found['size']:.2f}"
    return row


def print_table(format, rows):
    print(f"\n{format}")
    names = list(rows[0])
    width = max(len(name) for name in names)
    for name in names:
        print(f"  {name:<{width}}" + "".join(f"{row[name]:>24}" for row in rows))


def curve_of(found):
    times = found["times"]
    return {
        "milliseconds": {"job": statistics.median(times["whole job"]),
                         "plain": statistics.median(times["plain input and output"]),
                         "script": statistics.median(times["script"])},
        "memory": found["memory"],
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--large", action="store_true")
    parser.add_argument("--rounds", type=int, default=15)
    parser.add_argument("--curves", action="store_true")
    arguments = parser.parse_args()
    counts = CURVES if arguments.curves else COUNTS + ([LARGE] if arguments.large else [])
    record = {}
    with tempfile.TemporaryDirectory(prefix="quillery-bench-") as folder:
        for format in curves.FORMATS:
            found = {count: measure(arguments, pathlib.Path(folder), format, count) for count in counts}
            print_table(format, [row_of(found[count], count) for count in counts])
            record[format] = {str(count): curve_of(found[count]) for count in counts}
    if arguments.curves:
        (HERE / "curves.json").write_text(json.dumps(record, indent=2) + "\n")
        (HERE.parent / "docs/benchmark.svg").write_text(curves.draw(record))


if __name__ == "__main__":
    main()
