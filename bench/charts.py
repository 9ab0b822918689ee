#!/usr/bin/env python3
"""Draws the two charts of docs/performance.md from the lines of `kestrelink-bench --json`.

charts.py FOLDER < results: writes ratios.svg and growth.svg into the folder.
"""
import json
import math
import sys

WIDTH, HEIGHT, LEFT, TOP, RIGHT, BOTTOM = 640, 320, 60, 30, 170, 50
SIZES = {"sample": 2998, "100": 25358, "2000": 462558, "20000": 4678558}
LABELS = {2998: "3 kB", 25358: "25 kB", 462558: "463 kB", 4678558: "4.7 MB"}
COLOURS = ["#1f5fa8", "#b5482a", "#3b7d3b", "#7a4fa0"]


class Chart:
    """Lines over the size of the message, which has a logarithmic axis."""

    def __init__(self, title, unit, top, logarithmic=False, bottom=0.0):
        scale = math.log10 if logarithmic else float
        self.scale, self.low, self.high = scale, scale(bottom) if bottom else 0.0, scale(top)
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
            f'viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="12">',
            f'<text x="{LEFT}" y="18" font-weight="bold">{title}</text>',
            f'<text x="12" y="{HEIGHT / 2}" transform="rotate(-90 12 {HEIGHT / 2})">{unit}</text>',
        ]
        for size, label in LABELS.items():
            self.text(self.x(size), HEIGHT - BOTTOM + 18, label, "middle")

    def x(self, size):
        first, last = (math.log10(end) for end in (min(LABELS), max(LABELS)))
        return LEFT + (math.log10(size) - first) / (last - first) * (WIDTH - LEFT - RIGHT)

    def y(self, value):
        share = (self.scale(value) - self.low) / (self.high - self.low)
        return HEIGHT - BOTTOM - share * (HEIGHT - TOP - BOTTOM)

    def text(self, x, y, text, anchor="start", colour="#333"):
        self.parts.append(
            f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}" fill="{colour}">{text}</text>')

    def grid(self, values):
        for value in values:
            y = self.y(value)
            self.parts.append(f'<path d="M{LEFT} {y:.1f} H{WIDTH - RIGHT}" stroke="#ddd"/>')
            self.text(LEFT - 6, y + 4, f"{value:g}", "end")

    def line(self, colour, points, dashed=False):
        path = " L".join(f"{self.x(size):.1f} {self.y(value):.1f}" for size, value in points)
        dash = ' stroke-dasharray="6 4"' if dashed else ""
        self.parts.append(f'<path d="M{path}" fill="none" stroke="{colour}" stroke-width="2"{dash}/>')

    def save(self, file):
        with open(file, "w", encoding="utf-8") as out:
            out.write("\n".join([*self.parts, "</svg>", ""]))


def points(results, work, value):
    return [(SIZES[row["size"]], value(row)) for row in results if row["work"] == work]


def main():
    results = [json.loads(line) for line in sys.stdin]
    folder = sys.argv[1]
    works = [("read-no-schema", "without schema"), ("memory", "peak memory"),
             ("cold-read", "cold, with schema"), ("read", "with schema")]
    ratios = Chart("Ratio to libxml2 alone, by size of the message", "ratio", 2.0)
    ratios.grid([0.5, 1.0, 1.5, 2.0])
    for colour, (work, label) in zip(COLOURS, works):
        line = points(results, work, lambda row: row["ratio"])
        ratios.line(colour, line)
        ratios.text(WIDTH - RIGHT + 8, ratios.y(line[-1][1]) + 4, label, colour=colour)
    ratios.save(f"{folder}/ratios.svg")

    growth = Chart("Time of a read, by size of the message; dashed: libxml2 alone", "milliseconds", 1000, True, 0.01)
    growth.grid([0.01, 0.1, 1, 10, 100, 1000])
    for colour, work, label in ((COLOURS[3], "read", "with schema"),
                                (COLOURS[0], "read-no-schema", "without schema")):
        for side in ("library", "raw"):
            line = points(results, work, lambda row: row[side + "_us"] / 1000)
            growth.line(colour, line, side == "raw")
        growth.text(LEFT + 8, growth.y(line[0][1]) - 36, label, colour=colour)
    growth.save(f"{folder}/growth.svg")


if __name__ == "__main__":
    main()
