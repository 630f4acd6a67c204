#!/usr/bin/env python3
"""Checks that each claim of docs/security.md names at least one test, and that every named test exists.

usage: security_claims_test.py [DOCUMENT]
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENT = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT / "docs/security.md"
NOT_CLAIMS = ["Assets and trust", "Known limits"]


def tests_in(path):
    """The tests that a file declares, named as in the document."""
    text = path.read_text(encoding="utf-8")
    if path.suffix == ".cpp":
        return {f"{suite}.{name}" for suite, name in re.findall(r"\bTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)", text)}
    if path.suffix == ".py":
        found = re.split(r"(?m)^class (\w+)", text)
        return {f"{suite}.{name}" for suite, body in zip(found[1::2], found[2::2])
                for name in re.findall(r"(?m)^    def (test_\w+)", body)}
    names = set(re.findall(r"add_test\(\s*NAME ([\w.${}]+)", text))
    formats = [folder.name for folder in (ROOT / "fuzz/corpus").iterdir()]
    return {name.replace("${format}", format_name) for name in names for format_name in formats}


def all_tests():
    files = [*(ROOT / "tests").rglob("*.cpp"), *(ROOT / "tests").rglob("*_test.py"), ROOT / "tests/CMakeLists.txt",
             ROOT / "fuzz/CMakeLists.txt"]
    return set().union(*map(tests_in, files))


def claims():
    """The text of each list item under each heading with claims."""
    for section in re.split(r"(?m)^## ", DOCUMENT.read_text(encoding="utf-8"))[1:]:
        heading, _, body = section.partition("\n")
        if heading not in NOT_CLAIMS:
            yield from (" ".join(item.split()) for item in re.split(r"(?m)^- ", body)[1:])


def main():
    known = all_tests()
    problems = []
    count = 0
    for claim in claims():
        count += 1
        named = re.findall(r"`([\w.]+)`", claim.partition("Tests: ")[2])
        if not named:
            problems.append(f"no test is named for: {claim[:80]}")
        problems += [f"there is no test {name}, named for: {claim[:80]}" for name in named if name not in known]
    print(*problems, f"{count} claims, {len(problems)} problems", sep="\n")
    return 1 if problems or not count else 0


if __name__ == "__main__":
    sys.exit(main())
