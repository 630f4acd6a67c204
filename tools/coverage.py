#!/usr/bin/env python3
"""Reports how much of the core the tests ran, and why the rest did not run.

usage: coverage.py [--gnustep] REPORT [FOLDER]

REPORT is gcovr's JSON, with names relative to the root of the tree. FOLDER is that root; the default is the tree of this
script. With --gnustep, the report is about the macOS layer, of which 85 % must be covered; its reasons are in
tools/gnustep/uncovered.txt. Prints a table of the covered lines of each file, then each uncovered line with its reason. The exit status is 1 if

- a folder of the core has less than 95 % of its lines covered,
- an uncovered line has no reason in tools/uncovered.txt, or
- a reason there is for a line that is covered or no longer exists.

A line counts if the compiler generated code for it. A line of brackets and punctuation only, or a bare "else", does not
count. A file without code is in the table without a figure. The compiler generates no code for an unused inline function
in a header, so this script cannot see one.

tools/uncovered.txt has a paragraph for each reason: first the lines that it is for, as PATH: SOURCE TEXT, unindented;
then the reason, indented. Each entry stands for one line, so two equal lines need two entries. Paragraphs that begin with
"#" are comments.
"""
import collections
import json
import pathlib
import re
import sys

# What a report is about: its folders, how many percent of each must be covered, and the file of reasons.
Area = collections.namedtuple("Area", "name folders suffixes enough reasons")
CORE = Area("core", ["values", "engine", "schedule", "app", "companion"], {".h", ".cpp"}, 95, "tools/uncovered.txt")
MACOS = Area("macOS layer", ["platform/macos"], {".h", ".mm"}, 85, "tools/gnustep/uncovered.txt")

COMMENT = re.compile(r"//.*|/\*.*?\*/")
BARE = re.compile(r"[\s{}()\[\];,]*|else")

# A line of our sources: its text, without the space around it, and how often it was run.
Line = collections.namedtuple("Line", "number text count")


class Mistake(Exception):
    """What keeps the report from being read, as a sentence."""


def files_of(area, root):
    return sorted(path.relative_to(root).as_posix() for folder in area.folders for path in (root / folder).rglob("*")
                  if path.suffix in area.suffixes)


def counted_lines(area, root, report):
    """The lines that count of every file of the area."""
    counted = {name: [] for name in files_of(area, root)}
    for file in report["files"]:
        name = file["file"]
        if name not in counted:
            continue
        source = (root / name).read_text(encoding="utf-8").splitlines()
        for line in sorted(file["lines"], key=lambda line: line["line_number"]):
            number = line["line_number"]
            if not 1 <= number <= len(source):
                raise Mistake(f"{name} has changed since it was built: there is no line {number}")
            text = source[number - 1].strip()
            if not BARE.fullmatch(COMMENT.sub("", text)):
                counted[name].append(Line(number, text, line["count"]))
    return counted


def read_reasons(area, text):
    """The reasons of each (path, source text), one for each time that it stands there."""
    reasons = collections.defaultdict(list)
    for paragraph in re.split(r"\n\s*\n", text.strip("\n")):
        lines = paragraph.splitlines()
        if not lines or lines[0].startswith("#"):
            continue
        places = [line for line in lines if not line[0].isspace()]
        reason = " ".join(line.strip() for line in lines[len(places):])
        if lines[:len(places)] != places or not places or not reason:
            raise Mistake(f"{area.reasons}: expected lines of source and then their reason, indented:\n{paragraph}")
        for place in places:
            path, separator, source = place.partition(": ")
            if not separator:
                raise Mistake(f"{area.reasons}: this is not PATH: SOURCE TEXT: {place}")
            reasons[path, source.strip()].append(reason)
    return reasons


def row(name, lines):
    covered = sum(line.count > 0 for line in lines)
    share = f"{100 * covered / len(lines):.1f} %" if lines else "-"
    return f"{name:<48}{covered:>8}{len(lines):>8}{share:>10}"


def print_table(area, counted):
    print(f"{'file':<48}{'run':>8}{'lines':>8}{'share':>10}")
    for folder in area.folders:
        names = [name for name in counted if name.startswith(folder + "/")]
        if not names:
            continue
        for name in names:
            print(row(name, counted[name]))
        print(row(f"{folder}/", [line for name in names for line in counted[name]]) + "\n")


def complaints(area, counted, reasons):
    """Prints each uncovered line and yields the problems."""
    for folder in area.folders:
        lines = [line for name in counted if name.startswith(folder + "/") for line in counted[name]]
        covered = sum(line.count > 0 for line in lines)
        if not lines or 100 * covered < area.enough * len(lines):
            yield f"{folder}/: {covered} of {len(lines)} lines were run; {area.enough} % of them should be"
    unused = {place: list(known) for place, known in reasons.items()}
    print("Not run:")
    for name, lines in counted.items():
        for line in (line for line in lines if line.count == 0):
            known = unused.get((name, line.text))
            reason = known.pop(0) if known else "NO REASON"
            print(f"{name}:{line.number}: {line.text}\n    {reason}")
            if reason == "NO REASON":
                yield f"{name}:{line.number}: is uncovered, and {area.reasons} has no reason for it"
    for (name, text), left in unused.items():
        for _ in left:
            yield f"{area.reasons}: stale, because no such line is uncovered: {name}: {text}"


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--gnustep"]
    area = CORE if arguments == sys.argv[1:] else MACOS
    if len(arguments) not in {1, 2}:
        sys.exit("usage: coverage.py [--gnustep] REPORT [FOLDER]")
    root = pathlib.Path(arguments[1]) if len(arguments) == 2 else pathlib.Path(__file__).resolve().parent.parent
    try:
        counted = counted_lines(area, root, json.loads(pathlib.Path(arguments[0]).read_text(encoding="utf-8")))
        reasons = read_reasons(area, (root / area.reasons).read_text(encoding="utf-8"))
        print_table(area, counted)
        found = list(complaints(area, counted, reasons))
    except Mistake as mistake:
        sys.exit(f"coverage.py: {mistake}")
    print("\n" + "\n".join(found) if found else f"\nThe {area.name} is covered, and every line that is not has its reason.")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
