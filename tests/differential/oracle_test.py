#!/usr/bin/env python3
"""Tests that the oracle of the differential test accepts what a sort may do, and nothing else."""
import datetime
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import oracle  # noqa: E402
from random_lists import LEAF, LIST, PROXY, READING_LIST  # noqa: E402


def leaf(title, **more):
    return {"WebBookmarkType": LEAF, "URIDictionary": {"title": title}, **more}


def folder(title, *entries, **more):
    return {"WebBookmarkType": LIST, "Title": title, "Children": list(entries), **more}


def root(*entries, **more):
    return {"Children": list(entries), **more}


class Oracle(unittest.TestCase):
    def check(self, before, after, *expected):
        """Expects problems that contain these texts, one each."""
        found = list(oracle.problems(before, after))
        self.assertEqual(len(found), len(expected), found)
        for text, problem in zip(expected, found):
            self.assertIn(text, problem)

    def test_accepts_a_sorted_folder(self):
        self.check(root(folder("bar", leaf("10"), leaf("9"), folder("z"))),
                   root(folder("bar", folder("z"), leaf("9"), leaf("10"))))

    def test_accepts_sorted_folders_within_a_sorted_folder(self):
        self.check(root(folder("bar", leaf("c"), folder("f", leaf("b"), leaf("a")))),
                   root(folder("bar", folder("f", leaf("a"), leaf("b")), leaf("c"))))

    def test_accepts_a_shared_folder_that_is_sorted_in_both_places(self):
        before, after = folder("f", leaf("b"), leaf("a")), folder("f", leaf("a"), leaf("b"))
        self.check(root(folder("x", before, before)), root(folder("x", after, after)))

    def test_rejects_wrong_orders(self):
        unsorted = root(folder("bar", leaf("10"), leaf("9"), folder("z")))
        self.check(unsorted, unsorted, "'10' comes before '9'", "the folder 'z' comes after")

    def test_rejects_a_moved_entry_of_the_root(self):
        self.check(root(folder("b"), folder("a")), root(folder("a"), folder("b")), "not the same")

    def test_rejects_a_moved_entry_of_the_reading_list(self):
        self.check(root(folder(READING_LIST, leaf("b"), leaf("a"))), root(folder(READING_LIST, leaf("a"), leaf("b"))),
                   "not the same")

    def test_rejects_a_moved_entry_that_is_not_sortable(self):
        fixed = {"WebBookmarkType": PROXY, "Title": "History"}
        self.check(root(folder("bar", fixed, leaf("a"))), root(folder("bar", leaf("a"), fixed)), "not the same")
        reserved = leaf("com.apple.x")
        self.check(root(folder("bar", reserved, leaf("a"))), root(folder("bar", leaf("a"), reserved)), "not the same")

    def test_rejects_a_sorted_folder_with_an_entry_that_is_no_dictionary(self):
        self.check(root(folder("bar", leaf("b"), leaf("a"), "text")), root(folder("bar", leaf("a"), leaf("b"), "text")),
                   "not the same")

    def test_rejects_lost_and_doubled_entries(self):
        three = root(folder("bar", leaf("a"), leaf("a"), leaf("b")))
        self.check(three, root(folder("bar", leaf("a"), leaf("b"))), "not the same", "changed their order")
        self.check(three, root(folder("bar", leaf("a"), leaf("b"), leaf("b"))), "not the same", "changed their order")

    def test_rejects_an_entry_that_moved_to_another_folder(self):
        self.check(root(folder("x", leaf("a")), folder("y")), root(folder("x"), folder("y", leaf("a"))), "not the same")

    def test_rejects_equal_titles_that_changed_places(self):
        one, other = leaf("a", url=1), leaf("a", url=2)
        self.check(root(folder("bar", one, other)), root(folder("bar", other, one)), "equal titles")

    def test_rejects_every_change_of_a_value(self):
        values = [1, True, 1.0, "1", b"1", 0.0, -0.0, "", [], {}, [1], {"1": 1}, {"1": "1"}, float("inf"),
                  float("nan"), 2**64 - 1, -1, 0, False, "a", "ä", "a\u0308", datetime.datetime(2001, 1, 1),
                  datetime.datetime(2001, 1, 1, 0, 0, 1), {"a": 1, "b": 2}, {"b": 2, "a": 1}, [1, 2], [2, 1]]
        for place, one in enumerate(values):
            self.check(root(Value=one), root(Value=one))
            for other in values[:place]:
                with self.subTest(one=one, other=other):
                    self.check(root(Value=one), root(Value=other), "not the same")

    def test_rejects_a_sorted_array_elsewhere(self):
        self.check(root(More=folder("x", leaf("b"), leaf("a"))), root(More=folder("x", leaf("a"), leaf("b"))),
                   "not the same")

    def test_knows_the_natural_order_of_simple_titles(self):
        titles = ["a", "a 1", "a 02", "a 10", "a b", "aa", "B"]
        self.assertEqual(sorted(reversed(titles), key=oracle.natural), titles)


if __name__ == "__main__":
    unittest.main()
