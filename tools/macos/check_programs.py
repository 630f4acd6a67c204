#!/usr/bin/env python3
"""Checks programs built for macOS: that a Mac can load them, and that every selector that they send is listed.

usage: check_programs.py OURS LISTINGS [PROGRAM FRAMEWORK,FRAMEWORK...]...

OURS and LISTINGS are as for check_declarations.py. Each PROGRAM must be built for all processors and load exactly the
given frameworks. Prints a summary of each program, and each complaint; exit status 1 if there is any.
"""
import os
import pathlib
import sys

from comparison import accessors, count
from interface import joined
from listing import ListingError, listing_paths, read_listings
from mach_o import CODE_SIGNATURE, EXECUTABLE, MACOS, MAIN, POSITION_INDEPENDENT, MachOError, read_programs
from make_stubs import install_name_of

PROCESSORS = ["arm64", "x86_64"]
MINIMUM_SYSTEM = "12.0"
SYSTEM_LIBRARIES = {"/usr/lib/libobjc.A.dylib", "/usr/lib/libSystem.B.dylib"}
RUN_PATH = "@executable_path/../Frameworks"


class Selectors:
    """All selectors in the listings."""

    def __init__(self, listing):
        self.listing = listing
        entries = [*listing.classes.values(), *listing.protocols.values()]
        self.known = {key for entry in entries for key in keys_of(entry)}
        self.of_classes = {key for entry in listing.classes.values() for key in keys_of(entry)}

    def has(self, selector):
        """Returns true if any class or protocol has the selector."""
        return bool(getters(selector) & self.known)

    def calls(self, selector, protocols):
        """Returns true if the system may call the selector on an object whose class adopts these protocols."""
        adopted = [self.listing.protocols[name] for name in protocols if name in self.listing.protocols]
        known = {key for entry in adopted for key in keys_of(entry)}
        return bool(getters(selector) & (known | self.of_classes))


def keys_of(entry):
    """The joined selector and the argument count of each method and accessor of a listed class or protocol."""
    methods = [*entry.methods, *(method for item in entry.properties for method in accessors(item))]
    return {(joined(method.name), len(method.arguments)) for method in methods}


def getters(selector):
    """The keys under which a listing may have a selector; the getter of a Boolean property also has the property's
    name."""
    keys = {(joined(selector), selector.count(":"))}
    if selector.startswith("is") and selector[2:3].isupper() and ":" not in selector:
        keys.add((selector[2].lower() + selector[3:], 0))
    return keys


class Inspection:
    """The result of checking one program file: complaints, and lines of a summary."""

    def __init__(self, path, frameworks, selectors):
        self.path, self.name, self.selectors = path, os.path.basename(path), selectors
        self.libraries = [install_name_of(framework) for framework in frameworks]
        self.run_paths = [RUN_PATH] if any(name.startswith("@rpath/") for name in self.libraries) else []
        self.complaints, self.seen = [], []

    def run(self):
        try:
            programs = read_programs(self.path)
            self.compare("its processors are", PROCESSORS, sorted(program.processor for program in programs))
            for program in programs:
                self.inspect(program)
                self.inspect_selectors(program)
        except (MachOError, OSError) as error:
            self.complaints.append(f"{self.name}: {error}")
        return self

    def compare(self, what, expected, found):
        if expected != found:
            self.complaints.append(f"{self.name}: {what} {listed(found)}, not {listed(expected)}")

    def inspect(self, program):
        where = f"for {program.processor}"
        self.compare(f"{where}, its file type is", EXECUTABLE, program.kind)
        self.compare(f"{where}, its platform is", MACOS, program.platform)
        self.compare(f"{where}, the minimum system is", MINIMUM_SYSTEM, program.minimum_system)
        self.compare(f"{where}, it loads", sorted({*self.libraries, *SYSTEM_LIBRARIES}), sorted(program.libraries))
        self.compare(f"{where}, its framework search path is", self.run_paths, program.run_paths)
        if not program.flags & POSITION_INDEPENDENT:
            self.complaints.append(f"{self.name}: {where}, it is not position-independent")
        if MAIN not in program.commands:
            self.complaints.append(f"{self.name}: {where}, it has no entry point")
        if program.processor == "arm64" and CODE_SIGNATURE not in program.commands:
            self.complaints.append(f"{self.name}: {where}, it is not signed, so no Mac starts it")
        libraries = ", ".join(os.path.basename(name) for name in program.libraries)
        self.seen.append(f"{self.name}, {program.processor}: {len(program.data):,} bytes, "
                         f"macOS {program.minimum_system}, loads {libraries}")

    def inspect_selectors(self, program):
        """Skips the selectors of our own classes that our own code sends; those that it does not send must be listed,
        because only the system can call them."""
        classes, sent = program.classes(), program.sent_selectors()
        own = {selector for entry in classes for selector in entry.selectors}
        where = f"{self.name}: for {program.processor},"
        for selector in sorted(sent - own):
            if not self.selectors.has(selector):
                self.complaints.append(f"{where} it sends {selector}, which no listed class or protocol has")
        called = 0
        for entry in classes:
            for selector in entry.selectors:
                if selector in sent or selector.startswith("."):  # the compiler's own selectors begin with a dot
                    continue
                called += 1
                if not self.selectors.calls(selector, entry.protocols):
                    self.complaints.append(f"{where} {entry.name} has {selector}, which the program never sends and "
                                           "no adopted protocol has in its listing")
        self.seen.append(f"{self.name}, {program.processor}: sends {len(sent - own)} selectors of the system, defines "
                         f"{count(len(classes), 'class')} with {count(called, 'method')} that the system calls")


def listed(values):
    """A value, or a list of values, as text."""
    return (", ".join(map(str, values)) or "nothing") if isinstance(values, list) else str(values)


def main():
    if len(sys.argv) < 5 or len(sys.argv) % 2 != 1:
        sys.exit(__doc__.strip())
    ours, listings, *rest = sys.argv[1:]
    complaints = []
    try:
        selectors = Selectors(read_listings(listing_paths(pathlib.Path(ours), listings)))
        for path, frameworks in zip(rest[::2], rest[1::2]):
            inspection = Inspection(path, frameworks.split(","), selectors).run()
            print("\n".join(inspection.seen))
            complaints += inspection.complaints
    except (ListingError, OSError) as error:
        complaints = [str(error)]
    print("\n" + "\n".join(complaints) if complaints else "\nNo complaints.")
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
