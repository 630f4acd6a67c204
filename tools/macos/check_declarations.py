#!/usr/bin/env python3
"""Proves our declarations of the Mac's frameworks against listings of what these frameworks have.

usage: check_declarations.py ZIG OURS LISTINGS

OURS is the folder with our declarations in include/, the complaints that are answered in not_listed.txt, and listings
of frameworks for which LISTINGS, the folder of the published ones, has none. Prints what was compared, what cannot be,
and each complaint; exit status 1 if there is one.
"""
import pathlib
import sys

from comparison import Comparison, count
from declarations import DeclarationError, read_declarations
from listing import ListingError, listing_paths, read_listings


class Reasons:
    """The complaints that are known and answered: a file of lines, each group with its reason indented below it."""

    def __init__(self, path):
        self.reasons, group, self.used = {}, [], set()
        for line in path.read_text(encoding="utf-8").splitlines():
            if line.startswith("  "):
                for complaint in group:
                    self.reasons[complaint] = f"{self.reasons.get(complaint, '')} {line.strip()}".strip()
            elif line.strip() and not line.startswith("#"):
                group = [*group, line] if group and group[-1] not in self.reasons else [line]

    def answers(self, complaint):
        """Whether there is a reason for a complaint, which counts as used then."""
        key = complaint.split(";")[0]
        if key in self.reasons:
            self.used.add(key)
        return key in self.reasons

    def unused(self):
        """The lines that nothing complained of."""
        return [key for key in self.reasons if key not in self.used]


def report(result, reasons, own):
    """Says what was compared and what is open; answers the complaints that are left."""
    print("Compared with the listings:", ", ".join(count(number, noun) for noun, number in result.counts.items()) + ".")
    complaints = [complaint for complaint in result.complaints if not reasons.answers(complaint)]
    print("\nWhat the listings leave open:")
    for name, why in result.open:
        print(f"  {name}: {why}")
    for reason in sorted({reasons.reasons[line] for line in reasons.used}):
        print("\n".join(f"  {line}" for line in sorted(reasons.used) if reasons.reasons[line] == reason))
        print(f"    {reason}")
    print("  Of all numbers, how many bytes they have; of strings, whether they are objects, C's or selectors; since\n"
          "  when there is what is declared, and whether it may be nil.")
    if own:
        print(f"  Of {', '.join(own)}, everything: the listing is our own.")
    return complaints + [f"not_listed.txt: nobody complains: {line}" for line in reasons.unused()]


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
