#!/usr/bin/env python3
"""Checks that docs/mac-tests.md lists every suite of tests that a Mac builds and runs, and a reason for each other one.

usage: mac_tests_test.py [--write]

With --write, writes the list of suites anew instead; the reasons are written by hand.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENT = ROOT / "docs/mac-tests.md"
CMAKE = (ROOT / "tests/CMakeLists.txt").read_text(encoding="utf-8")
SUITE = re.compile(r"(?m)^TEST(?:_F|_P)?\(\s*(\w+),")


def patterns_left_out():
    """What the sources of quillery_tests are filtered by on a Mac."""
    for_all, for_mac = re.findall(r'list\(FILTER test_sources EXCLUDE REGEX "([^"]+)"\)', CMAKE)[:2]
    return re.compile(f"{for_all}|{for_mac}")


def tests():
    """Each file with tests, whether a Mac runs it, and what the document calls its tests."""
    left_out = patterns_left_out()
    for path in sorted((ROOT / "tests").rglob("*.cpp")):
        name = path.relative_to(ROOT).as_posix()
        suites = set(SUITE.findall(path.read_text(encoding="utf-8")))
        if suites:
            yield name, not left_out.search(f"/{name}"), suites
    on_both = CMAKE.split("if(APPLE)\n  return()")[0]
    for path in sorted((ROOT / "tests").rglob("*.py")):
        name = path.relative_to(ROOT).as_posix()
        if name.endswith("_test.py") or f"/{path.name}" in CMAKE:
            yield name, name.removeprefix("tests/") in on_both, {path.name}


def table():
    """The rows of the suites that run, one for each folder."""
    folders = {}
    for name, runs, suites in tests():
        if runs:
            folders.setdefault(name.rpartition("/")[0], set()).update(suites)
    rows = [f"| `{folder}/` | {', '.join(sorted(suites))} |" for folder, suites in sorted(folders.items())]
    return "\n".join(["| Tests in | Suites |", "|---|---|", *rows]) + "\n"


def problems(document):
    if table() not in document:
        yield "the list of suites is not up to date; tests/docs/mac_tests_test.py --write writes it anew"
    reasons = re.findall(r"(?m)^\| `(tests/[^`]+)` \| [^|]{20,} \|$", document.partition("## What is left out")[2])
    used = set()
    for name, runs, _ in tests():
        matching = [place for place in reasons if name == place or (place.endswith("/") and name.startswith(place))]
        used.update(matching)
        if not runs and len(matching) != 1:
            yield f"{name} is left out for {len(matching)} reasons instead of one"
        if runs and matching:
            yield f"{name} runs on a Mac, but has a reason why it does not"
    yield from (f"there is no test in {place}" for place in reasons if place not in used)


def main():
    document = DOCUMENT.read_text(encoding="utf-8")
    if sys.argv[1:] == ["--write"]:
        pattern = r"\| Tests in \| Suites \|\n(\|.*\n)*"
        DOCUMENT.write_text(re.sub(pattern, lambda _: table(), document, count=1), encoding="utf-8")
        return 0
    found = list(problems(document))
    print(*found, f"{len(found)} problems", sep="\n")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
