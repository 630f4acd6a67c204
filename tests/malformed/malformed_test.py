#!/usr/bin/env python3
"""Sorts every malformed property list in a scratch home folder: each is refused in the words that the table has for it,
and left as it is.

usage: malformed_test.py QUILLERYCTL [--record]

With --record the table is written anew, to be read by somebody before it is kept.
"""
import json
import pathlib
import re
import sys
import tempfile

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "faults"), str(TESTS / "data/malformed")]
import make_malformed  # noqa: E402
from scratch_home import ScratchHome  # noqa: E402

DATA = TESTS / "data"
TABLE = DATA / "malformed/messages.tsv"
TITLE = "Bookmarks could not be sorted: "
HINT = "If access is denied, "
LONGEST = 200  # characters, whatever the file holds
WHERE = re.compile(r"(at byte|on line|header,) \d+\b|in the XML declaration")
WITHOUT_A_PLACE = ["The data couldn’t be read because it isn’t a valid property list: it is empty.",
                   "Unrecognised Safari bookmark format. No changes made."]


def files():
    """All malformed files: those that are made for this, and those that the platform was seen to refuse."""
    expected = json.loads((DATA / "property_lists/expected.json").read_text(encoding="utf-8"))
    refused = [name for name, wanted in expected.items() if "refused" in wanted]
    return sorted([*(DATA / "malformed").glob("*.plist"), *(DATA / f"property_lists/{name}.plist" for name in refused)])


def name_of(path):
    return str(path.relative_to(DATA))


def refusal(program, path):
    """What a sort of the file says, and what else is wrong about it."""
    with tempfile.TemporaryDirectory() as folder:
        content = path.read_bytes()
        home = ScratchHome(pathlib.Path(folder) / "home", content)
        result = home.run([program, "sort"])
        message, *rest = result.text.removeprefix(TITLE).split("\n")
        problems = []
        if result.status != 1 or not result.text.startswith(TITLE) or not any(line.startswith(HINT) for line in rest):
            problems.append(f"it ended with {result.status} and {result.text!r}")
        if home.content() != content:
            problems.append("the file was changed")
        if home.leftovers() or home.backups.exists():
            problems.append("something was left in the home folder")
        if len(message) > LONGEST or not message.isprintable():
            problems.append(f"it repeats what is in the file: {message!r}")
        if not WHERE.search(message) and message not in WITHOUT_A_PLACE:
            problems.append(f"it does not say where: {message}")
        return message, problems


def table():
    return dict(line.split("\t") for line in TABLE.read_text(encoding="utf-8").splitlines())


def stale_files():
    """Files that are not as they would be made now."""
    with tempfile.TemporaryDirectory() as folder:
        sys.argv[1:] = [folder]
        make_malformed.main()
        made = {path.name: path.read_bytes() for path in pathlib.Path(folder).iterdir()}
    kept = {path.name: path.read_bytes() for path in (DATA / "malformed").glob("*.plist")}
    return sorted(name for name in made.keys() | kept.keys() if made.get(name) != kept.get(name))


def main():
    program, record = sys.argv[1], "--record" in sys.argv
    said = {}
    problems = [f"{name} is not what make_malformed.py writes" for name in stale_files()]
    for path in files():
        message, found = refusal(program, path)
        said[name_of(path)] = message
        problems += [f"{name_of(path)}: {problem}" for problem in found]
    if record:
        TABLE.write_text("".join(f"{name}\t{message}\n" for name, message in said.items()), encoding="utf-8")
    wanted = table()
    problems += [f"{name}: expected {wanted.get(name)!r}, said {said.get(name)!r}"
                 for name in sorted(wanted.keys() | said.keys()) if wanted.get(name) != said.get(name)]
    print(*problems, f"{len(said)} malformed files tried, {len(problems)} problems", sep="\n")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
