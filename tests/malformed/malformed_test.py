#!/usr/bin/env python3
"""Tries to sort every malformed property list in a scratch home folder. Each sort must fail with the message in the
table and leave the file as it is.

usage: malformed_test.py QUILLERYCTL [--record]

With --record it writes the table anew. Review the difference before you commit it.
"""
import json
import pathlib
import re
import sys
import tempfile

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "faults"), str(TESTS / "data/malformed")]
import make_malformed  # noqa: E402
from scratch_home import NO_SESSION, ScratchHome  # noqa: E402

DATA = TESTS / "data"
TABLE = DATA / "malformed/messages.tsv"
LONGEST = 200  # characters of a message, whatever is in the file
WHERE = re.compile(r"(at byte|on line) \d+\b|in the XML declaration")
WITHOUT_A_PLACE = ["The data couldn’t be read because it isn’t a valid property list: it is empty.",
                   "Unrecognised Safari bookmark format. No changes made."]


def files():
    """Returns all malformed files: the generated ones, and those that the platform's own reader refused."""
    expected = json.loads((DATA / "property_lists/expected.json").read_text(encoding="utf-8"))
    refused = [name for name, wanted in expected.items() if "refused" in wanted]
    return sorted([*(DATA / "malformed").glob("*.plist"), *(DATA / f"property_lists/{name}.plist" for name in refused)])


def name_of(path):
    return str(path.relative_to(DATA))


def refusal(program, path):
    """Sorts a file. Returns the message and a list of other problems."""
    with tempfile.TemporaryDirectory() as folder:
        content = path.read_bytes()
        home = ScratchHome(pathlib.Path(folder) / "home", content)
        result = home.run([program, "sort"])
        text, start = result.text.removeprefix(NO_SESSION), f"quilleryctl: {home.bookmarks}: "
        message, *rest = text.removeprefix(start).split("\n")
        problems = []
        if result.status != 1 or not text.startswith(start) or rest != [""]:
            problems.append(f"exit status {result.status} and output {result.text!r}")
        if home.content() != content:
            problems.append("the file was changed")
        if home.leftovers() or home.backups.exists():
            problems.append("the sort left files in the home folder")
        if len(message) > LONGEST or not message.isprintable():
            problems.append(f"the message repeats text of the file: {message!r}")
        if not WHERE.search(message) and message not in WITHOUT_A_PLACE:
            problems.append(f"the message does not name the place: {message}")
        return message, problems


def table():
    return dict(line.split("\t") for line in TABLE.read_text(encoding="utf-8").splitlines())


def stale_files():
    """Returns the names of files that differ from those that make_malformed.py generates now."""
    with tempfile.TemporaryDirectory() as folder:
        sys.argv[1:] = [folder]
        make_malformed.main()
        made = {path.name: path.read_bytes() for path in pathlib.Path(folder).iterdir()}
    kept = {path.name: path.read_bytes() for path in (DATA / "malformed").glob("*.plist")}
    return sorted(name for name in made.keys() | kept.keys() if made.get(name) != kept.get(name))


def main():
    program, record = sys.argv[1], "--record" in sys.argv
    messages = {}
    problems = [f"{name} differs from the file that make_malformed.py writes" for name in stale_files()]
    for path in files():
        message, found = refusal(program, path)
        messages[name_of(path)] = message
        problems += [f"{name_of(path)}: {problem}" for problem in found]
    if record:
        TABLE.write_text("".join(f"{name}\t{message}\n" for name, message in messages.items()), encoding="utf-8")
    wanted = table()
    problems += [f"{name}: expected {wanted.get(name)!r}, got {messages.get(name)!r}"
                 for name in sorted(wanted.keys() | messages.keys()) if wanted.get(name) != messages.get(name)]
    print(*problems, f"{len(messages)} malformed files tried, {len(problems)} problems", sep="\n")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
