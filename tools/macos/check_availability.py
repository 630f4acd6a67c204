#!/usr/bin/env python3
"""Checks that a Mac's build uses nothing that is newer than the oldest macOS that it is for.

usage: check_availability.py COMPILER LIBCXX ZIG BUILD

COMPILER is a recent clang, LIBCXX the folder of its C++ library's headers, ZIG the compiler whose headers of the Mac's C
library are used, and BUILD the folder of a configured build for Macs. Compiles every source of that build with libc++ and
our declarations of frameworks, both of which say since when a Mac has what they declare. Then compares the symbols of libc++
that the program's objects need with libcxx_symbols.txt, because not everything in libc++ is marked. Exit status 1 if
anything is too new, or if a probe that uses something too new passes.
"""
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys
import tempfile

TOOLS = pathlib.Path(__file__).resolve().parent
ROOT = TOOLS.parent.parent
SYMBOLS = TOOLS / "libcxx_symbols.txt"
TARGET = "arm64-apple-macos12.0"
# Everything that our sources include of the C++ library, read once: that takes longer than the sources themselves.
COMMON_HEADERS = ("algorithm", "array", "charconv", "chrono", "cstdlib", "cstring", "deque", "filesystem", "fstream",
                  "functional", "future", "iostream", "map", "memory", "numeric", "optional", "random", "set", "span",
                  "string", "string_view", "thread", "unordered_map", "unordered_set", "utility", "variant", "vector")
# The compiler's name for the language of a source, and its options.
LANGUAGES = {".cpp": ["c++"], ".mm": ["objective-c++", "-fobjc-arc"]}
# Each uses something that macOS 12 lacks, so it must not compile, and for this reason.
PROBES = {
    "to_chars.cpp": ("#include <charconv>\nchar text[99];\nauto end = std::to_chars(text, text + 99, 0.5);\n",
                     "'to_chars' is unavailable: introduced in macOS 13.4"),
    "pmr.cpp": ("#include <memory_resource>\n", "std::pmr needs macOS 14"),
    "unguarded.mm": ("#import <ServiceManagement/ServiceManagement.h>\n"
                     "long status(NSURL* url) { return [SMAppService statusForLegacyURL:url]; }\n",
                     "'SMAppService' is only available on macOS 13.0 or newer"),
}


def run(command):
    """Runs a command. Returns its exit status and what it printed."""
    ended = subprocess.run([*map(str, command)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    return ended.returncode, ended.stdout


class Compiler:
    """The compiler with everything that a Mac's build needs, and a scratch folder."""

    def __init__(self, compiler, libcxx, zig, build, folder):
        headers = pathlib.Path(zig).resolve().parent / "lib" / "libc" / "include"
        own = run([compiler, "-print-resource-dir"])[1].strip()
        system = [TOOLS / "libcxx", libcxx, f"{own}/include", headers / "aarch64-macos.12-none",
                  headers / "any-macos.12-any", headers / "any-macos-any", TOOLS / "include"]
        self.command = [compiler, "-target", TARGET, "-std=c++20", "-O1", "-nostdinc++", "-nostdlibinc",
                        "-Werror=unguarded-availability", "-Werror=deprecated-declarations", f"-I{ROOT}", f"-I{build}",
                        *(f"-isystem{path}" for path in system)]
        self.folder = folder
        self.precompiled = {}

    def precompile(self, suffix):
        """Reads the common headers once for all sources with this suffix."""
        header = self.folder / f"common{suffix}.h"
        header.write_text("".join(f"#include <{name}>\n" for name in COMMON_HEADERS), encoding="utf-8")
        language, *options = LANGUAGES[suffix]
        output = header.with_suffix(".pch")
        status, printed = run([*self.command, *options, "-x", f"{language}-header", header, "-o", output])
        if status != 0:
            sys.exit(printed)
        self.precompiled[suffix] = ["-include-pch", output]

    def compile(self, source, output=None):
        """Compiles a source into an object, or only checks it. Returns the compiler's complaints if it fails."""
        suffix = source.suffix.replace(".cxx", ".cpp")  # CMake's suffix of joined sources
        _, *options = LANGUAGES[suffix]
        writing = ["-c", "-o", output] if output else ["-fsyntax-only"]
        status, printed = run([*self.command, *options, *self.precompiled.get(suffix, []), *writing, source])
        return printed if status != 0 else ""


def sources_of(build):
    """Each source of the programs in a configured build, joined or not. The tests do not run on users' systems."""
    entries = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    files = sorted({pathlib.Path(entry["file"]) for entry in entries})
    others = (build / "tests", ROOT / "tests")
    return [file for file in files if file.is_relative_to(ROOT) and not any(map(file.is_relative_to, others))]


def failed_probes(compiler):
    """Compiles each probe and prints why it fails. Returns the probes that do not fail for the expected reason."""
    passed = []
    for name, (text, reason) in PROBES.items():
        probe = compiler.folder / name
        probe.write_text(text, encoding="utf-8")
        found = [line for line in compiler.compile(probe).splitlines() if reason in line]
        print(f"Must fail:   {found[0].removeprefix(f'{compiler.folder}/')}" if found else f"Passes:   {name}")
        passed += [] if found else [f"The probe {name} must fail with: {reason}"]
    return passed


def needed_symbols(objects):
    """The symbols of the C++ library that objects need and none of them defines."""
    listed = run(["llvm-nm-14", "--no-sort", "--format=just-symbols", "--undefined-only", *objects])[1].split()
    own = run(["llvm-nm-14", "--no-sort", "--format=just-symbols", "--defined-only", *objects])[1].split()
    return {name for name in set(listed) - set(own) if name.startswith(("__Z", "___cxa_", "___gxx_"))}


def accepted_symbols():
    return {line.split()[0] for line in SYMBOLS.read_text(encoding="utf-8").splitlines() if line.startswith("_")}


def readable(symbol):
    """A symbol as the accepted ones are listed, with its name in C++."""
    return f"{symbol}  {run(['llvm-cxxfilt-14', symbol[1:]])[1].strip()}"


def compare_symbols(needed, accepted):
    """The differences between the needed symbols and the accepted ones."""
    return ([f"{SYMBOLS.name} lacks: {readable(symbol)}" for symbol in sorted(needed - accepted)] +
            [f"{SYMBOLS.name}: nothing needs {symbol}" for symbol in sorted(accepted - needed)])


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__.strip())
    build = pathlib.Path(sys.argv[4]).resolve()
    with (tempfile.TemporaryDirectory() as scratch,
          concurrent.futures.ThreadPoolExecutor(int(os.environ.get("QUILLERY_JOBS", "2"))) as pool):
        compiler = Compiler(*sys.argv[1:4], build, pathlib.Path(scratch))
        complaints = failed_probes(compiler)
        list(pool.map(compiler.precompile, LANGUAGES))
        sources = sources_of(build)
        objects = [compiler.folder / f"{number}.o" for number in range(len(sources))]
        complaints += [printed for printed in pool.map(compiler.compile, sources, objects) if printed]
        needed = needed_symbols([path for path in objects if path.exists()])
    print(f"Compiled {len(sources)} sources for {TARGET}; they need {len(needed)} symbols of libc++.")
    if not complaints:
        complaints = compare_symbols(needed, accepted_symbols())
    print("\n".join(complaints))
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
