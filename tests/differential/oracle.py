"""What a sort may change, computed from what Python's plistlib reads before and after it.

Two trees are equal but for the order if their fingerprints are equal: in the fingerprint of a folder that a sort may
reorder, its sortable entries count as a set in which an entry may occur several times.
"""
import datetime
import hashlib
import re
import struct

from random_lists import LEAF, LIST, READING_LIST

SIMPLE = re.compile(r"[A-Za-z0-9]+( [A-Za-z0-9]+)*")


def title(node):
    value = node.get("Title")
    if isinstance(value, str):
        return value
    value = node.get("URIDictionary")
    value = value.get("title") if isinstance(value, dict) else None
    return value if isinstance(value, str) else ""


def is_sortable(node):
    return node.get("WebBookmarkType") in (LIST, LEAF) and not title(node).startswith("com.apple.")


def is_folder(node):
    return node.get("WebBookmarkType") == LIST


def entries_of(node):
    """The entries of a node that a sort enters; None for any other value."""
    entries = node.get("Children") if isinstance(node, dict) else None
    if not isinstance(entries, list) or not all(isinstance(entry, dict) for entry in entries):
        return None
    return None if title(node) == READING_LIST else entries


def digest(kind, *parts):
    found = hashlib.blake2b(kind.encode(), digest_size=16)
    for part in parts:
        found.update(len(part).to_bytes(8, "big") + part)
    return found.digest()


class Fingerprints:
    """Computes fingerprints of the values of one property list. Those of shared values are computed once."""

    def __init__(self):
        self._known = {}

    def of(self, value, is_entered=False, is_root=False):
        """`is_entered` says whether a sort reaches the value as a node of the tree."""
        if not isinstance(value, (dict, list)):
            return self._scalar(value)
        key = (id(value), is_entered, is_root)
        if key not in self._known:
            self._known[key] = self._container(value, is_entered, is_root)
        return self._known[key]

    def _scalar(self, value):
        if isinstance(value, float):
            return digest("real", b"nan" if value != value else struct.pack(">d", value))
        if isinstance(value, bytes):
            return digest("data", value)
        if isinstance(value, datetime.datetime):
            return digest("date", value.isoformat().encode())
        return digest(type(value).__name__, str(value).encode("utf-8", "surrogatepass"))

    def _container(self, value, is_entered, is_root):
        if isinstance(value, list):
            return digest("array", *(self.of(element) for element in value))
        entries = entries_of(value) if is_entered else None
        parts = []
        for key, inner in value.items():
            parts.append(key.encode("utf-8", "surrogatepass"))
            parts.append(self._entries(entries, is_root) if key == "Children" and entries is not None
                         else self.of(inner))
        return digest("dictionary", *parts)

    def _entries(self, entries, is_root):
        """The root keeps the order of its entries, and each folder the places of those that are not sortable."""
        found = [self.of(entry, is_entered=True) for entry in entries]
        if is_root:
            return digest("entries", *found)
        places = [b"" if is_sortable(entry) else mark for entry, mark in zip(entries, found)]
        return digest("folder", *places, *sorted(mark for entry, mark in zip(entries, found) if is_sortable(entry)))


def natural(text):
    """A key for the order of simple titles: letters without case, numbers by value, spaces first."""
    return [(0, 0) if part == " " else (1, int(part)) if part.isdigit() else (2, ord(part))
            for part in re.findall(r"[0-9]+|.", text.casefold())]


def problems_of_order(root):
    """What is out of order in a sorted tree, each folder looked at once."""
    waiting, seen = [(root, True)], set()
    while waiting:
        node, is_root = waiting.pop()
        entries = entries_of(node)
        if entries is None or id(node) in seen:
            continue
        seen.add(id(node))
        waiting += [(entry, False) for entry in entries]
        if not is_root:
            sortable = [entry for entry in entries if is_sortable(entry)]
            for one, next_one in zip(sortable, sortable[1:]):
                yield from problems_of_pair(one, next_one)


def problems_of_pair(one, next_one):
    if is_folder(one) != is_folder(next_one):
        if is_folder(next_one):
            yield f"the folder {title(next_one)!r} comes after the bookmark {title(one)!r}"
        return
    titles = title(one), title(next_one)
    if all(SIMPLE.fullmatch(text) for text in titles) and natural(titles[0]) > natural(titles[1]):
        yield f"{titles[0]!r} comes before {titles[1]!r}"


def equal_titles(root):
    """For each folder that a sort may reorder the fingerprints of its sortable entries by kind and title, in their
    order. A sort keeps these, because it is stable. Folders are in no particular order."""
    prints, waiting, seen, found = Fingerprints(), [(root, True)], set(), []
    while waiting:
        node, is_root = waiting.pop()
        entries = entries_of(node)
        if entries is None or (id(node), is_root) in seen:
            continue
        seen.add((id(node), is_root))
        waiting += [(entry, False) for entry in entries]
        if not is_root:
            groups = {}
            for entry in filter(is_sortable, entries):
                groups.setdefault((is_folder(entry), title(entry)), []).append(prints.of(entry, is_entered=True))
            found.append(sorted((*group, *marks) for group, marks in groups.items()))
    return sorted(found)


def problems(before, after):
    """What a sort did that it may not do."""
    if Fingerprints().of(before, True, True) != Fingerprints().of(after, True, True):
        yield "a value is not the same as before"
    if equal_titles(before) != equal_titles(after):
        yield "entries of equal titles changed their order"
    yield from problems_of_order(after)

