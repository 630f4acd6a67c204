#!/usr/bin/python3
"""Makes one mistake after another in the macOS layer, and counts those that ./dev gnustep notices.

usage: mutate.py [NUMBER ...]

Changes the sources of its own tree and restores them, so run it in a clone, after `./dev gnustep` has built everything
there. Without numbers, tries all mistakes of mistakes.txt, which takes 10 to 20 seconds each. The exit status is 1 if
less than 90 % are noticed.

mistakes.txt has a paragraph for each: the kind of mistake and the path, then the former lines after "-", then the new
ones after "+".
"""
import collections
import pathlib
import re
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
BUILD = ROOT / "build/gnustep"
ENOUGH = 90  # percent

Mistake = collections.namedtuple("Mistake", "kind path former new")


def mistakes():
    text = (HERE / "mistakes.txt").read_text(encoding="utf-8")
    for paragraph in re.split(r"\n\s*\n", text.strip()):
        head, *lines = paragraph.splitlines()
        if head.startswith("#"):
            continue
        kind, path = head.rsplit(": ", 1)
        former, new = ("\n".join(line[1:] for line in lines if line[0] == sign) for sign in "-+")
        yield Mistake(kind, ROOT / "platform/macos" / path, former, new)


def changed(mistake, source):
    """The source with the mistake in it. Each line of a mistake is a part of a line."""
    if source.count(mistake.former) != 1:
        raise SystemExit(f"{mistake.path} has {source.count(mistake.former)} times:\n{mistake.former}")
    return source.replace(mistake.former, mistake.new)


def verdict():
    """How the mistake in the sources shows: "compiler", the first failure of the run, or nothing."""
    build = ["cmake", "--build", BUILD, "--parallel", "2", "--", "--quiet"]
    if subprocess.run(build, capture_output=True, check=False).returncode != 0:
        return "compiler"
    for counts in BUILD.rglob("*.gcda"):  # those of other sources, which programs would complain about
        counts.unlink()
    run = subprocess.run([ROOT / "tests/gnustep/gnustep.py", BUILD, "--fast"], capture_output=True, text=True,
                         errors="replace", check=False)
    if run.returncode == 0:
        return None
    failure = re.search(r"FAILED  \] ([\w./]+)|^(?:FAIL|ERROR): (\w+)|^SUMMARY: (\S+ \S+)", run.stdout, re.MULTILINE)
    return failure[failure.lastindex] if failure else "a crash or hang"


def main():
    every = list(mistakes())
    found = verdict()
    if found:
        raise SystemExit(f"without a mistake, this already fails: {found}")
    chosen = [int(number) for number in sys.argv[1:]] or range(1, len(every) + 1)
    noticed = collections.Counter()
    tried = collections.Counter()
    for number in chosen:
        mistake = every[number - 1]
        source = mistake.path.read_text(encoding="utf-8")
        start = time.monotonic()
        try:
            mistake.path.write_text(changed(mistake, source), encoding="utf-8")
            found = verdict()
        finally:
            mistake.path.write_text(source, encoding="utf-8")
        if found == "compiler":
            raise SystemExit(f"mistake {number} does not compile")
        tried[mistake.kind] += 1
        noticed[mistake.kind] += found is not None
        print(f"{number:>3}  {mistake.path.name:<32}{mistake.kind:<26}{found or 'NOT NOTICED'} "
              f"({time.monotonic() - start:.0f} s)", flush=True)
    print(f"\n{'kind':<26}{'noticed':>8}{'tried':>8}")
    for kind in tried:
        print(f"{kind:<26}{noticed[kind]:>8}{tried[kind]:>8}")
    share = 100 * noticed.total() / tried.total()
    print(f"{'all':<26}{noticed.total():>8}{tried.total():>8}  {share:.0f} %")
    sys.exit(share < ENOUGH)


if __name__ == "__main__":
    main()
