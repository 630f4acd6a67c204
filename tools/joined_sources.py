#!/usr/bin/env python3
"""Joins sources into one, so that a compiler reads each header only once.

usage: joined_sources.py OUTPUT SOURCE...

Writes OUTPUT with the text of the sources, all headers first. Messages and debug information name the sources. Each source
of tests is in a namespace of its own, because many of them have helpers of the same name.
"""
import itertools
import pathlib
import re
import sys

TESTS = re.compile(r"^TEST(_F|_P)?\(", re.MULTILINE)


def leading(lines):
    """The lines before the first that is neither an include, a comment nor empty."""
    return list(itertools.takewhile(lambda line: not line or line.startswith(("//", "#include ")), lines))


def joined(files, keep_places=False):
    """The text of several sources as one, with every header included once, before the first source.

    keep_places: with line directives, so that a compiler names the places in the sources.
    """
    includes, bodies = {}, []
    for number, file in enumerate(files):
        text = file.read_text(encoding="utf-8")
        lines = text.splitlines()
        start = len(leading(lines))
        includes.update(dict.fromkeys(line for line in lines[:start] if line.startswith("#")))
        body = "\n".join(lines[start:])
        if keep_places:
            body = f'#line {start + 1} "{file}"\n{body}'
        bodies.append(f"namespace source{number} {{\n{body}\n}}" if TESTS.search(text) else body)
    return "\n".join([*includes, *bodies]) + "\n"


def main():
    output, *sources = map(pathlib.Path, sys.argv[1:])
    output.parent.mkdir(parents=True, exist_ok=True)
    output.write_text(joined(sources, keep_places=True), encoding="utf-8")


if __name__ == "__main__":
    main()
