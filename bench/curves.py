#!/usr/bin/env python3
"""Draws the recorded curves of the benchmark: time and memory a bookmark, by the number of bookmarks.

usage: curves.py RECORD PICTURE

RECORD is what `run.py --curves` wrote: for each format and number of bookmarks the milliseconds and the bytes of
memory of the sort, of plain input and output, and of the script. PICTURE is an SVG file for light and dark backgrounds.
"""
import json
import math
import pathlib
import sys

FORMATS = {"binary": "", "xml": "7 4"}  # with the dashes of its lines
PROGRAMS = {"job": "Quillery", "plain": "plain input and output", "script": "Python script"}
PANELS = {"milliseconds": ("time a bookmark, µs", 1e3), "memory": ("memory a bookmark, KB", 1e-3)}

WIDTH, HEIGHT = 760, 330
TOP, BOTTOM = 64, 286
LEFTS = [50, 436]
PANEL_WIDTH = 304
STYLE = """
    text { font: 12px sans-serif; fill: #24292f; }
    .grid { stroke: #d0d7de; }
    .curve { fill: none; stroke-width: 2; stroke-linejoin: round; }
    .job { stroke: #0969da; } .plain { stroke: #1a7f37; } .script { stroke: #bc4c00; } .format { stroke: #57606a; }
    @media (prefers-color-scheme: dark) {
      text { fill: #e6edf3; }
      .grid { stroke: #3d444d; }
      .job { stroke: #58a6ff; } .plain { stroke: #3fb950; } .script { stroke: #f0883e; } .format { stroke: #9198a1; }
    }
"""


class Scale:
    """A logarithmic scale from values to coordinates."""

    def __init__(self, values, start, end):
        self.low, self.high = math.log10(min(values)), math.log10(max(values))
        self.start, self.end = start, end

    def __call__(self, value):
        share = (math.log10(value) - self.low) / (self.high - self.low)
        return round(self.start + share * (self.end - self.start), 1)

    def decades(self):
        return [10.0 ** power for power in range(math.ceil(self.low), math.floor(self.high) + 1)]


def points(record, format, program, measure, factor):
    """Pairs of a number of bookmarks and the value a bookmark, in ascending order."""
    rows = sorted((int(count), row) for count, row in record[format].items())
    return [(count, row[measure][program] * factor / count) for count, row in rows]


def panel(record, measure, left):
    title, factor = PANELS[measure]
    curves = {(format, program): points(record, format, program, measure, factor)
              for format in FORMATS for program in PROGRAMS}
    everything = [point for curve in curves.values() for point in curve]
    values = [value for _, value in everything]
    x = Scale([count for count, _ in everything], left, left + PANEL_WIDTH)
    # Whole decades, so that each panel has lines to read the values from.
    y = Scale([10.0 ** math.floor(math.log10(min(values))), 10.0 ** math.ceil(math.log10(max(values)))], BOTTOM, TOP)
    lines = [f'<text x="{left}" y="{TOP - 10}">{title}</text>']
    for value in y.decades():
        lines.append(f'<path class="grid" d="M{left} {y(value)}H{left + PANEL_WIDTH}"/>')
        lines.append(f'<text x="{left - 6}" y="{y(value) + 4}" text-anchor="end">{value:,g}</text>')
    for value in x.decades():
        lines.append(f'<path class="grid" d="M{x(value)} {BOTTOM}V{BOTTOM + 4}"/>')
        lines.append(f'<text x="{x(value)}" y="{BOTTOM + 18}" text-anchor="middle">{value:,.0f}</text>')
    for (format, program), curve in curves.items():
        path = " ".join(f"{x(count)},{y(value)}" for count, value in curve)
        lines.append(f'<polyline id="{measure}-{format}-{program}" class="curve {program}" '
                     f'stroke-dasharray="{FORMATS[format] or "none"}" points="{path}"/>')
    return lines


def legend():
    lines = []
    place = LEFTS[0]
    entries = [(program, "none", name) for program, name in PROGRAMS.items()]
    entries += [("format", dashes or "none", format.replace("xml", "XML")) for format, dashes in FORMATS.items()]
    for style, dashes, name in entries:
        lines.append(f'<path class="curve {style}" stroke-dasharray="{dashes}" d="M{place} 20h26"/>')
        lines.append(f'<text x="{place + 32}" y="24">{name}</text>')
        place += 62 + 7 * len(name)
    return lines


def draw(record):
    lines = legend()
    for measure, left in zip(PANELS, LEFTS):
        lines += panel(record, measure, left)
    middle = WIDTH // 2
    lines.append(f'<text x="{middle}" y="{HEIGHT - 8}" text-anchor="middle">bookmarks in the file</text>')
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" width="{WIDTH}" '
            f'height="{HEIGHT}" role="img">\n  <title>Time and memory a bookmark</title>\n'
            f'  <style>{STYLE}  </style>\n  ' + "\n  ".join(lines) + "\n</svg>\n")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    record = json.loads(pathlib.Path(sys.argv[1]).read_text())
    pathlib.Path(sys.argv[2]).write_text(draw(record))


if __name__ == "__main__":
    main()
