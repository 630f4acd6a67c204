#!/usr/bin/env python3
"""Runs clang-tidy on every source of a build, in parallel, and remembers which sources it has found clean.

usage: clang_tidy.py BUILD JOBS

BUILD is a build folder with compile_commands.json. Nearly all of clang-tidy's time goes into the standard library's
headers, so sources are joined into a few that include each header once. If there are complaints about joined sources,
each is checked by itself, and only those complaints count. Clang compiles every source of the programs by itself, too,
because a source that lacks an include may find it in another one that it is joined with.

Joined sources are checked again only if one of them, a header of ours that it includes, its compile command,
.clang-tidy or clang-tidy itself has changed since they were clean. The exit status is 1 if there are warnings.
"""
import concurrent.futures
import hashlib
import json
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

from joined_sources import TESTS, joined

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCES_IN_A_BATCH = 12  # the path analysis has false complaints about more
TESTS_IN_A_BATCH = 25
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
OPTIMISATION = re.compile(r"-O\d")
PROGRAM = re.compile(r"^int (main|LLVMFuzzerTestOneInput)\(.*\{$", re.MULTILINE)


class Sources:
    """The sources and headers of a build, with the contents that the result of clang-tidy depends on."""

    def __init__(self, build):
        self.folders = [ROOT, build]
        self.included = {}

    def closure(self, paths):
        """The files and all headers of ours that they include, directly or not."""
        found, waiting = set(), list(paths)
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


def plain_command(command):
    """A compile command without the names of the source and of the object, and without optimisation."""
    words = shlex.split(command["command"])
    return shlex.join(word for word in words if word not in ("-o", "-c", command["file"])
                      and not word.endswith(".o") and not OPTIMISATION.fullmatch(word))


def batches_of(commands):
    """Groups the sources that have the same compile command and are in the same folder or, as tests have a namespace each,
    tests. A program's main source, and the support of tests beside the tests, are groups of their own. The largest group
    comes first, so that no processor is left alone with it in the end."""
    groups = {}
    for command in commands:
        file = pathlib.Path(command["file"])
        text = file.read_text(encoding="utf-8")
        place = "tests" if TESTS.search(text) else str(file) if PROGRAM.search(text) else str(file.parent)
        groups.setdefault((place, plain_command(command)), []).append(command)
    batches = []
    for (place, _), members in groups.items():
        members.sort(key=lambda command: command["file"])
        most = TESTS_IN_A_BATCH if place == "tests" else SOURCES_IN_A_BATCH
        size = -(-len(members) // -(-len(members) // most))  # as equal as can be
        batches += [members[start:start + size] for start in range(0, len(members), size)]
    return sorted(batches, key=lambda batch: (-len(batch), batch[0]["file"]))


def key_of(sources, batch, common):
    digest = hashlib.sha256(common)
    for command in batch:
        digest.update(command["command"].encode())
    for file in sources.closure(pathlib.Path(command["file"]) for command in batch):
        digest.update(file.as_posix().encode() + b"\0" + file.read_bytes())
    return digest.hexdigest()


def run(build, file):
    """Runs clang-tidy on one file. Returns its output, or "" if the file is clean."""
    result = subprocess.run(["clang-tidy", "--quiet", "-p", build, file], capture_output=True, text=True, check=False)
    return "" if result.returncode == 0 else result.stdout + result.stderr


def is_clean_if_joined(build, batch, name):
    """Checks a batch as one source, in a folder with the configuration of the originals."""
    files = [pathlib.Path(command["file"]) for command in batch]
    folder = build / "joined" / name / files[0].relative_to(ROOT).parts[0]
    folder.mkdir(parents=True)
    configuration = ROOT / folder.name / ".clang-tidy"
    if configuration.exists():
        shutil.copy(configuration, folder)
    source = folder / "joined.cpp"
    source.write_text(joined(files), encoding="utf-8")
    # One source sees the names of the others; compiled_alone() looks for shadowed ones.
    words = [str(source) if word == batch[0]["file"] else word for word in shlex.split(batch[0]["command"])]
    command = {**batch[0], "file": str(source), "command": shlex.join([*words, "-Wno-shadow"])}
    (folder / "compile_commands.json").write_text(json.dumps([command]), encoding="utf-8")
    output = run(folder, source)
    if output:
        print(f"{len(files)} sources together have complaints, so each is checked:\n{output}", file=sys.stderr)
    return not output


def is_of_the_programs(command):
    return pathlib.Path(command["file"]).relative_to(ROOT).parts[0] not in ("bench", "fuzz", "tests", "tools")


def compiled_alone(command):
    """Compiles a source without writing an object. Returns the compiler's complaints."""
    words = shlex.split(command["command"])
    output = words.index("-o")
    words[output:output + 2] = ["-fsyntax-only"]
    result = subprocess.run(words, cwd=command["directory"], capture_output=True, text=True, check=False)
    return result.stderr if result.returncode != 0 else ""


def check(build, batch, name):
    """Returns the complaints about a batch, or "" if it is clean."""
    if len(batch) == 1 or not is_clean_if_joined(build, batch, name):
        return "".join(run(build, command["file"]) for command in batch)
    return "".join(compiled_alone(command) for command in batch if is_of_the_programs(command))


def main():
    build, jobs = pathlib.Path(sys.argv[1]).resolve(), int(sys.argv[2])
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    commands = {command["file"]: command for command in commands if pathlib.Path(command["file"]).suffix == ".cpp"
                and build not in pathlib.Path(command["file"]).parents}
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
    configurations = sorted([ROOT / ".clang-tidy", *ROOT.glob("*/.clang-tidy")])
    common = version + pathlib.Path(__file__).read_bytes() + b"".join(file.read_bytes() for file in configurations)
    sources = Sources(build)
    stamps = build / "clean_sources"
    clean = set(stamps.read_text(encoding="utf-8").split()) if stamps.exists() else set()
    batches = {key_of(sources, batch, common): batch for batch in batches_of(commands.values())}
    waiting = {key: batch for key, batch in batches.items() if key not in clean}
    shutil.rmtree(build / "joined", ignore_errors=True)
    failed = False
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool, stamps.open("a", encoding="utf-8") as record:
        for key, output in zip(waiting, pool.map(lambda key: check(build, waiting[key], key[:16]), waiting)):
            if output:
                failed = True
                print(output, flush=True)
            else:
                print(key, file=record, flush=True)
    count = sum(map(len, waiting.values()))
    print(f"{count} of {len(commands)} sources were checked; the others have not changed.")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
