#!/usr/bin/env python3
"""Checks who includes whom: that the portable core sees no operating system and the native layers decide nothing.

usage: check_includes.py [FOLDER]

FOLDER is the root of the tree unless given. Prints every include that breaks a rule; exit status 1 if there is one.
The first rule whose pattern matches a file's path is the one that holds for it.
"""
import fnmatch
import pathlib
import re
import sys

VALUES = ["engine/plist_*.h", "engine/bytes.h", "engine/base64.h"]
CORE = ["engine/*", "schedule/*", "app/*", "access/*", "companion/*"]
INTERFACES = ["platform/*.h"]  # not the folders below it; see matches()
ANY = ["*"]

# (files, our own headers that they may include, whether other libraries' and the system's are allowed)
RULES = [
    (["app/*main.cpp"], CORE + INTERFACES, False),
    (VALUES + ["engine/plist_*.cpp", "engine/base64.cpp"], VALUES, False),
    (INTERFACES, INTERFACES + ["engine/plist_value.h", "engine/bytes.h"], False),
    (CORE, CORE + INTERFACES, False),
    (["platform/posix/**"], INTERFACES + VALUES + ["platform/posix/**"], True),
    (["platform/linux/**"], INTERFACES + VALUES + ["platform/linux/**", "platform/posix/**", "app/product.h"], True),
    (["platform/macos/**"], INTERFACES + VALUES + ["platform/macos/**", "platform/posix/**", "app/product.h"], True),
    (["tests/**", "bench/**", "fuzz/**", "tools/**"], ANY, True),
]

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
STANDARD = re.compile(r"[a-z][a-z0-9_]*")


def matches(path, patterns):
    """Whether a path fits a pattern; "*" stops at a slash, "**" does not."""
    for pattern in patterns:
        if pattern == "*" or pattern.endswith("/**"):
            if path.startswith(pattern.rstrip("*")):
                return True
        elif path.count("/") == pattern.count("/") and fnmatch.fnmatchcase(path, pattern):
            return True
    return False


def complaints(root, path):
    name = path.relative_to(root).as_posix()
    rule = next((rule for rule in RULES if matches(name, rule[0])), None)
    if rule is None:
        yield f"{name}: no rule says what this file may include"
        return
    _, allowed, libraries = rule
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        found = INCLUDE.match(line)
        if not found:
            continue
        kind, header = found.groups()
        if kind == '"' and not matches(header, allowed):
            yield f'{name}:{number}: may not include "{header}"'
        if kind == "<" and not libraries and not STANDARD.fullmatch(header):
            yield f"{name}:{number}: may include the standard library only, not <{header}>"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
    folders = ["access", "app", "bench", "companion", "engine", "fuzz", "platform", "schedule", "tests", "tools"]
    files = sorted(path for folder in folders for path in (root / folder).rglob("*")
                   if path.suffix in {".h", ".cpp", ".mm", ".in"} and "data" not in path.parts)
    if not files:
        sys.exit("check_includes.py: there are no sources here")
    found = [complaint for path in files for complaint in complaints(root, path)]
    print("\n".join(found) if found else f"{len(files)} files keep to the rules.")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
