#!/usr/bin/env python3
"""Tests the picture of the benchmark's curves, and that the one in docs/ shows the record beside the benchmark."""
import json
import pathlib
import sys
import unittest
import xml.etree.ElementTree as ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bench"))

import curves  # noqa: E402

COUNTS = [500, 10_000, 1_000_000]


def sample():
    """A record in which each curve is at a height of its own."""
    def row(count, format):
        weight = 1 if format == "binary" else 3
        values = {"job": 2 * weight * count, "plain": weight * count, "script": 40 * weight * count}
        return {"milliseconds": {name: value / 1e3 for name, value in values.items()},
                "memory": {name: value * 1e3 for name, value in values.items()}}
    return {format: {str(count): row(count, format) for count in COUNTS} for format in ("binary", "xml")}


def curve_points(picture):
    """The points of each curve by its name. Fails if the picture is no well-formed SVG."""
    root = ElementTree.fromstring(picture)
    assert root.tag == "{http://www.w3.org/2000/svg}svg", root.tag
    return {line.get("id"): [tuple(map(float, point.split(","))) for point in line.get("points").split()]
            for line in root.iter("{http://www.w3.org/2000/svg}polyline")}


class Curves(unittest.TestCase):
    def test_has_every_curve_with_every_point(self):
        found = curve_points(curves.draw(sample()))
        expected = {f"{measure}-{format}-{program}" for measure in ("milliseconds", "memory")
                    for format in ("binary", "xml") for program in ("job", "plain", "script")}
        self.assertEqual(set(found), expected)
        for name, points in found.items():
            self.assertEqual(len(points), len(COUNTS), name)

    def test_keeps_the_curves_inside_their_panels(self):
        for name, points in curve_points(curves.draw(sample())).items():
            left = curves.LEFTS[0 if name.startswith("milliseconds") else 1]
            for x, y in points:
                self.assertTrue(left <= x <= left + curves.PANEL_WIDTH, name)
                self.assertTrue(curves.TOP <= y <= curves.BOTTOM, name)
            self.assertEqual([x for x, _ in points], sorted(x for x, _ in points), name)

    def test_draws_the_larger_value_above(self):
        found = curve_points(curves.draw(sample()))
        for measure in ("milliseconds", "memory"):
            heights = [found[f"{measure}-{format}-{program}"][0][1]
                       for format, program in [("binary", "plain"), ("binary", "job"), ("xml", "plain"), ("xml", "job"),
                                               ("binary", "script"), ("xml", "script")]]
            self.assertEqual(heights, sorted(heights, reverse=True), measure)
            self.assertEqual(len(set(heights)), len(heights), measure)

    def test_serves_light_and_dark_backgrounds(self):
        self.assertIn("prefers-color-scheme: dark", curves.draw(sample()))

    def test_of_the_documents_shows_the_record(self):
        record = ROOT / "bench/curves.json"
        if not record.exists():
            self.skipTest("the curves are not recorded yet: ./dev bench --curves")
        self.assertEqual((ROOT / "docs/benchmark.svg").read_text(), curves.draw(json.loads(record.read_text())))


if __name__ == "__main__":
    unittest.main()
