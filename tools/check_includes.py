#!/usr/bin/env python3
"""Checks that every file includes only what its room may include, and that no files include each other in a circle.

usage: check_includes.py [FOLDER]

FOLDER is the root of the tree; the default is the tree of this script. Prints each include that breaks a rule. The exit
status is 1 if there is one.
"""
import pathlib
import re
import sys

# A room is a folder. Each may include itself, the rooms named here, and other libraries only if it says so.
# The drawing in docs/architecture.md shows the same.
LIBRARIES = "libraries"
ROOMS = {
    "values": set(),
    "platform": {"values"},
    "engine": {"platform", "values"},
    "schedule": {"platform", "values"},
    "app": {"engine", "schedule", "platform", "values"},
    "companion": {"engine", "schedule", "platform", "values"},
    "platform/posix": {"platform", "values", LIBRARIES},
    "platform/linux/plist": {"platform", "platform/posix", "values", LIBRARIES},
    "platform/linux": {"platform/linux/plist", "platform/posix", "platform", "values", LIBRARIES},
    "platform/linux/session": {"platform/linux", "platform/posix", "platform", "values", LIBRARIES},
    "platform/linux/updates": {"platform/linux/session", "platform/linux", "platform/posix", "platform", "values",
                               LIBRARIES},
    "platform/qt": {"platform/linux/updates", "platform/linux/session", "platform/linux", "platform/posix", "platform",
                    "values", LIBRARIES},
    "platform/macos": {"platform/posix", "platform", "values", LIBRARIES},
    "platform/macos/desktop": {"platform/macos", "platform/posix", "platform", "values", LIBRARIES},
}
# Tests and tools may include every room.
FREE = ["tests", "bench", "fuzz", "tools"]
# Beyond that: one room's rule for the headers of other libraries, as a pattern that must not match.
FORBIDDEN_LIBRARIES = {room: re.compile("Q[A-Z]") for room in ROOMS if room.startswith("platform/linux")}

INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*([<"])([^>"]+)[>"]')
# The standard library, and the compiler's own header of vector instructions.
STANDARD = re.compile(r"[a-z][a-z0-9_]*|emmintrin\.h")


def room_of(path):
    return path.rpartition("/")[0]


def includes_of(text):
    """Each include as its line number, "<" or '"', and the header."""
    for number, line in enumerate(text.splitlines(), 1):
        if found := INCLUDE.match(line):
            yield number, *found.groups()


def complaints(name, text):
    room = room_of(name)
    if name.split("/")[0] in FREE:
        return
    if room not in ROOMS:
        yield f"{name}: the folder is not one of the rooms"
        return
    for number, kind, header in includes_of(text):
        if kind == '"':
            if room_of(header) not in ROOMS[room] | {room}:
                yield f'{name}:{number}: may not include "{header}"'
        elif LIBRARIES not in ROOMS[room]:
            if not STANDARD.fullmatch(header):
                yield f"{name}:{number}: may include only the standard library, not <{header}>"
        elif (pattern := FORBIDDEN_LIBRARIES.get(room)) and pattern.match(header):
            yield f"{name}:{number}: may not include <{header}>"


def circles(texts):
    """Circles of modules: a header and the source of the same name are one module."""
    def module(name):
        return re.sub(r"\.(h|cpp|mm|h\.in)$", "", name)

    edges = {}
    for name, text in texts.items():
        own = edges.setdefault(module(name), set())
        own |= {module(header) for _, kind, header in includes_of(text) if kind == '"'} - {module(name)}
    state = {}

    def visit(node, path):
        state[node] = "open"
        for following in sorted(edges.get(node, ())):
            if state.get(following) == "open":
                yield " -> ".join(path[path.index(following):] + [following])
            elif following not in state:
                yield from visit(following, path + [following])
        state[node] = "done"

    for node in sorted(edges):
        if node not in state:
            yield from visit(node, [node])


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
    folders = sorted({room.split("/")[0] for room in ROOMS}) + FREE
    files = sorted(path for folder in folders for path in (root / folder).rglob("*")
                   if path.suffix in {".h", ".cpp", ".mm", ".in"} and "data" not in path.parts)
    if not files:
        sys.exit(f"check_includes.py: there are no sources in {root}")
    texts = {path.relative_to(root).as_posix(): path.read_text(encoding="utf-8") for path in files}
    found = [complaint for name, text in texts.items() for complaint in complaints(name, text)]
    found += [f"circle of includes: {circle}" for circle in circles(texts)]
    print("\n".join(found) if found else f"{len(files)} files keep to the rules.")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
