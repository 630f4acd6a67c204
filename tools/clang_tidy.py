#!/usr/bin/env python3
"""Runs clang-tidy on every source of a build, in parallel, and remembers which sources it has found clean.

usage: clang_tidy.py BUILD JOBS

BUILD is a build folder with compile_commands.json. A source is checked again only if it, a header of ours that it
includes, its compile command, .clang-tidy or clang-tidy itself has changed since it was clean. The exit status is 1 if
there are warnings.
"""
import concurrent.futures
import hashlib
import json
import pathlib
import re
import subprocess
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
ROOT = pathlib.Path(__file__).resolve().parent.parent


class Sources:
    """The sources and headers of a build, with the contents that the result of clang-tidy depends on."""

    def __init__(self, build):
        self.folders = [ROOT, build]
        self.included = {}

    def closure(self, path):
        """The file and all headers of ours that it includes, directly or not."""
        found, waiting = set(), [path]
        while waiting:
            file = waiting.pop()
            if file not in found:
                found.add(file)
                waiting += self._headers(file)
        return sorted(found)

    def _headers(self, file):
        if file not in self.included:
            names = INCLUDE.findall(file.read_text(encoding="utf-8"))
            candidates = [folder / name for name in names for folder in [*self.folders, file.parent]]
            self.included[file] = [candidate for candidate in candidates if candidate.is_file()]
        return self.included[file]


def key_of(sources, command, common):
    digest = hashlib.sha256(common)
    digest.update(command["command"].encode())
    for file in sources.closure(pathlib.Path(command["file"])):
        digest.update(file.as_posix().encode() + b"\0" + file.read_bytes())
    return digest.hexdigest()


def check(build, file):
    """Runs clang-tidy on one file. Returns its output, or "" if the file is clean."""
    result = subprocess.run(["clang-tidy", "--quiet", "-p", build, file], capture_output=True, text=True, check=False)
    return "" if result.returncode == 0 else result.stdout + result.stderr


def main():
    build, jobs = pathlib.Path(sys.argv[1]).resolve(), int(sys.argv[2])
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    commands = {command["file"]: command for command in commands if pathlib.Path(command["file"]).suffix == ".cpp"
                and build not in pathlib.Path(command["file"]).parents}
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
    configurations = sorted([ROOT / ".clang-tidy", *ROOT.glob("*/.clang-tidy")])
    common = version + b"".join(file.read_bytes() for file in configurations)
    sources = Sources(build)
    stamps = build / "clean_sources"
    clean = set(stamps.read_text(encoding="utf-8").split()) if stamps.exists() else set()
    keys = {file: key_of(sources, command, common) for file, command in commands.items()}
    waiting = sorted(file for file, key in keys.items() if key not in clean)
    failed = False
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool, stamps.open("a", encoding="utf-8") as record:
        for file, output in zip(waiting, pool.map(lambda file: check(build, file), waiting)):
            if output:
                failed = True
                print(output, flush=True)
            else:
                print(keys[file], file=record, flush=True)
    print(f"{len(waiting)} of {len(keys)} sources were checked; the others have not changed.")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
