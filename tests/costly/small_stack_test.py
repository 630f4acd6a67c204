#!/usr/bin/env python3
"""Runs commands on deeply nested files while the stack is small. A file with too many levels for the stack must end in
an error that says so, any other as usual, and none in a crash.

usage: small_stack_test.py QUILLERYCTL
"""
import pathlib
import resource
import subprocess
import sys
import tempfile

from binary_file import BinaryFile

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "faults"))
from scratch_home import ScratchHome  # noqa: E402

STACKS = (64, 128, 192, 320)  # in KiB
COMMANDS = ("check", "preview --all", "preview --all --json", "sort")
FOLDER = "<dict><key>WebBookmarkType</key><string>WebBookmarkTypeList</string><key>Children</key><array>"
LEAF = "<dict><key>WebBookmarkType</key><string>WebBookmarkTypeLeaf</string><key>Title</key><string>%s</string></dict>"
OLD_FOLDER = "{WebBookmarkType=WebBookmarkTypeList;Children=("
OLD_LEAF = "{WebBookmarkType=WebBookmarkTypeLeaf;Title=%s;}"


def levels_on(stack):
    """Returns the number of levels that the program allows on a stack of this size."""
    return (stack - 48) * 1024 // 640


def binary_folders(levels):
    file = BinaryFile()
    folder = file.folder("x", [file.leaf("b"), file.leaf("a")])
    for _ in range((levels - 1) // 2 - 2):
        folder = file.folder("n", [file.leaf("z"), folder])
    return file.content(file.folder("", [folder]))


def binary_arrays(levels):
    file = BinaryFile()
    array = file.array([])
    for _ in range(levels - 6):
        array = file.array([array])
    leaves = [file.leaf("b", (file.string("k"), array)), file.leaf("a")]
    return file.content(file.folder("", [file.folder("q", leaves)]))


def xml_folders(levels, around=0):
    folders = (levels - 1) // 2
    return ("<plist>" * (around + 1) + FOLDER * folders + LEAF % "b" + LEAF % "a" + "</array></dict>" * folders +
            "</plist>" * (around + 1)).encode()


def nested_property_lists(levels):
    return xml_folders(levels, levels - 2)


def old_style_folders(levels):
    folders = (levels - 1) // 2
    return (OLD_FOLDER * folders + OLD_LEAF % "b" + "," + OLD_LEAF % "a" + ");}" * folders).encode()


FILES = (binary_folders, binary_arrays, xml_folders, nested_property_lists, old_style_folders)


def run(program, content, command, stack):
    with tempfile.TemporaryDirectory() as folder:
        home = ScratchHome(pathlib.Path(folder) / "home", content)
        limits = (stack * 1024, stack * 1024)
        return subprocess.run([program, *command.split()], env=home.environment(), capture_output=True, cwd="/",
                              check=False, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_STACK, limits))


def problems_of(program, make, stack, levels):
    for command in COMMANDS:
        result = run(program, make(levels), command, stack)
        name = f"{make.__name__}, {levels} levels, {stack} KiB, {command}: status {result.returncode}"
        if result.returncode not in (0, 1, 3):
            yield f"{name}: crashed"
        if (b"too many for this small stack" in result.stderr) != (levels > levels_on(stack)):
            yield f"{name}: {result.stderr.decode()}"


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    problems = []
    for stack in STACKS:
        # An odd number: folders have two levels, and their bookmarks one.
        most = (levels_on(stack) - 1) // 2 * 2 + 1
        for levels in (most, most + 2, 511):
            for make in FILES:
                problems += problems_of(program, make, stack, levels)
    print(*problems, f"{len(STACKS) * 3 * len(FILES) * len(COMMANDS)} commands tried, {len(problems)} problems", sep="\n")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
