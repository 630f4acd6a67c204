"""Bookmark files to sort: the user's file, and the one that Safari may save over it during the sort."""
import pathlib
import plistlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "end_to_end"))
from bookmarks import folder, leaf, unsorted_tree  # noqa: E402

FORMATS = {"binary": plistlib.FMT_BINARY, "XML": plistlib.FMT_XML}


def bookmark_file(format_name, extra_title):
    """An unsorted file of several pages, so that a write can end in the middle of it."""
    tree = unsorted_tree()
    many = folder("Many", *(leaf(f"Bookmark {number}") for number in range(60, 0, -1)))
    tree["Children"].append(folder("More", many, leaf(extra_title)))
    return plistlib.dumps(tree, fmt=FORMATS[format_name], sort_keys=False)


class Sample:
    """A user's file in one format, the one that Safari saves over it, and both of them sorted."""

    def __init__(self, format_name, sort):
        """`sort` takes the bytes of a file and returns the bytes after an undisturbed sort."""
        self.format = format_name
        self.old = bookmark_file(format_name, "a bookmark")
        self.saved = bookmark_file(format_name, "a bookmark that Safari has just saved")
        self.sorted_of = {content: sort(content) for content in (self.old, self.saved)}
        for content, in_order in list(self.sorted_of.items()):
            assert in_order != content and len(in_order) == len(content), "the sample is not sorted"
            self.sorted_of[in_order] = in_order

    @property
    def new(self):
        return self.sorted_of[self.old]
