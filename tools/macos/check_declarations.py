#!/usr/bin/env python3
"""Checks our declarations of the Mac's frameworks against published listings of these frameworks.

usage: check_declarations.py ZIG OURS LISTINGS

OURS is the folder with our declarations (include/), the accepted complaints (not_listed.txt), and our own listings of
frameworks that LISTINGS, the folder of the published ones, does not cover. Prints what was compared, what cannot be
compared, and each complaint; exit status 1 if there is any.
"""
import pathlib
import sys

from comparison import Comparison, count
from declarations import DeclarationError, read_declarations
from listing import ListingError, listing_paths, read_listings


class Reasons:
    """The accepted complaints: a file of lines, each group with its reason indented below it."""

    def __init__(self, path):
        self.reasons, group, self.used = {}, [], set()
        for line in path.read_text(encoding="utf-8").splitlines():
            if line.startswith("  "):
                for complaint in group:
                    self.reasons[complaint] = f"{self.reasons.get(complaint, '')} {line.strip()}".strip()
            elif line.strip() and not line.startswith("#"):
                group = [*group, line] if group and group[-1] not in self.reasons else [line]

    def accepts(self, complaint):
        """Returns true if there is a reason for the complaint, and marks the reason as used."""
        key = complaint.split(";")[0]
        if key in self.reasons:
            self.used.add(key)
        return key in self.reasons

    def unused(self):
        """The lines that match no complaint."""
        return [key for key in self.reasons if key not in self.used]


def report(result, reasons, own):
    """Prints what was compared and what the listings do not show; returns the complaints without a reason."""
    print("Compared with the listings:", ", ".join(count(number, noun) for noun, number in result.counts.items()) + ".")
    complaints = [complaint for complaint in result.complaints if not reasons.accepts(complaint)]
    print("\nNot shown by the listings, so not compared:")
    for name, why in result.not_shown:
        print(f"  {name}: {why}")
    for reason in sorted({reasons.reasons[line] for line in reasons.used}):
        print("\n".join(f"  {line}" for line in sorted(reasons.used) if reasons.reasons[line] == reason))
        print(f"    {reason}")
    print("  The size of numbers; whether a string is an object, a C string or a selector; the system version that\n"
          "  introduced a declaration; whether a value may be nil.")
    if own:
        print(f"  Everything of {', '.join(own)}, because the listing is our own.")
    return complaints + [f"not_listed.txt: matches no complaint: {line}" for line in reasons.unused()]


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__.strip())
    zig, ours, listings = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3]
    try:
        paths = listing_paths(ours, listings)
        result = Comparison(read_declarations(zig, ours / "include"), read_listings(paths)).run()
        own = [path.name.split(".")[0] for path in paths if path.parent == ours]
        complaints = report(result, Reasons(ours / "not_listed.txt"), own)
    except (DeclarationError, ListingError, OSError) as error:
        complaints = [str(error)]
    print("\n" + "\n".join(complaints) if complaints else "\nNo complaints.")
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
