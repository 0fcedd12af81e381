#!/usr/bin/env python3
"""Draws what the benchmarks measured as SVG: arguments are the results (tarn_bench --results=FILE) and the picture."""
import csv
import math
import sys
from collections import defaultdict
from html import escape

WIDTH, LEFT, RIGHT, ROW = 900, 230, 700, 24
INK, FAINT, GRID = "#1c2733", "#5b6b7a", "#d5dce3"
GOOD, OVER, TARGET = "#2f7d5b", "#b5532c", "#1c2733"
LINES = ["#2b6cb0", "#b5532c", "#2f7d5b", "#7a4fa3", "#8a6d00"]


def readable(nanoseconds):
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def text(x, y, words, anchor="start", colour=INK, size=13):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" font-size="{size}" fill="{colour}">{escape(words)}</text>'


def line(x1, y1, x2, y2, colour, width=1.0, dash=""):
    dashes = f' stroke-dasharray="{dash}"' if dash else ""
    return (f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" '
            f'stroke-width="{width}"{dashes}/>')


def bars(rows, top):
    """Library and target as multiples of the floor, one line for each operation; the floor is 1."""
    most = max(max(row["ratio"], row["target"]) for row in rows)
    least = min(0.5, *(row["ratio"] for row in rows), *(row["target"] for row in rows))
    first = 2.0 ** math.floor(math.log2(least))
    span = math.log2(max(most * 1.1, 2) / first)

    def place(ratio):
        return LEFT + (RIGHT - LEFT) * math.log2(ratio / first) / span

    bottom = top + ROW * len(rows)
    parts = []
    tick = first
    while tick <= most * 1.1:
        parts.append(line(place(tick), top, place(tick), bottom, INK if tick == 1 else GRID))
        times = "floor" if tick == 1 else f"{tick:g} ×" if tick > 1 else f"1/{1 / tick:g} ×"
        parts.append(text(place(tick), top - 8, times, "middle", FAINT, 12))
        tick *= 2
    for number, row in enumerate(rows):
        y = top + ROW * number
        colour = GOOD if row["ratio"] <= row["target"] else OVER
        start, end = sorted((place(1), place(row["ratio"])))
        parts.append(text(LEFT - 14, y + 16, row["name"], "end"))
        parts.append(f'<rect x="{start:.1f}" y="{y + 6}" width="{max(end - start, 1):.1f}" height="12" fill="{colour}"/>')
        parts.append(line(place(row["target"]), y + 3, place(row["target"]), y + 21, TARGET, 2))
        parts.append(text(RIGHT + 12, y + 16, f'{row["ratio"]:.2f} × ({readable(row["library"])} : '
                                              f'{readable(row["floor"])})', colour=colour, size=12))
    return parts, bottom


def growth(rows, top):
    """Time for each object by the number of objects, both axes logarithmic."""
    families = defaultdict(list)
    for row in rows:
        family, _, size = row["name"].partition("/")
        if size.isdigit() and row["items"] > 1:
            families[family].append(row)
    families = {name: sorted(found, key=lambda row: row["items"]) for name, found in families.items() if len(found) > 1}
    if not families:
        return [], top
    shown = [row for found in families.values() for row in found]
    values = [row[side] / row["items"] for row in shown for side in ("library", "floor")]
    sizes = sorted({row["items"] for row in shown})
    low, high = math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)))
    bottom = top + 260

    def across(size):
        return LEFT + (RIGHT - LEFT) * math.log(size / sizes[0]) / math.log(sizes[-1] / sizes[0])

    def up(value):
        return bottom - (bottom - top) * (math.log10(value) - low) / (high - low)

    parts = [text(LEFT, top - 14, "Time for each object, by how many one operation handles: library, and dashed its floor",
                  colour=FAINT, size=12)]
    for power in range(low, high + 1):
        parts += [line(LEFT, up(10.0 ** power), RIGHT, up(10.0 ** power), GRID),
                  text(LEFT - 10, up(10.0 ** power) + 4, readable(10.0 ** power), "end", FAINT, 12)]
    for size in sizes:
        parts.append(text(across(size), bottom + 18, f"{size:,}", "middle", FAINT, 12))
    labels = []
    for (family, found), colour in zip(families.items(), LINES):
        for side, dash in (("library", ""), ("floor", "5 4")):
            points = " ".join(f'{across(row["items"]):.1f},{up(row[side] / row["items"]):.1f}' for row in found)
            dashes = f' stroke-dasharray="{dash}"' if dash else ""
            parts.append(f'<polyline points="{points}" fill="none" stroke="{colour}" stroke-width="2"{dashes}/>')
        labels.append((up(found[-1]["library"] / found[-1]["items"]), across(found[-1]["items"]), family, colour))
    last = -math.inf
    for y, x, family, colour in sorted(labels):
        last = max(y + 4, last + 15)  # none hides another
        parts.append(text(RIGHT + 12, last, family, colour=colour))
    return parts, bottom + 30


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        rows = [{**row, **{key: float(row[key]) for key in ("library", "floor", "target")}, "items": int(row["items"])}
                for row in csv.DictReader(file, delimiter="\t") if row["unit"] == "ns"]
    for row in rows:
        row["ratio"] = row["library"] / row["floor"]
    judged = [row for row in rows if row["target"] > 0]
    if not judged:
        sys.exit("no results to draw")
    head, middle = bars(judged, 60)
    tail, bottom = growth(rows, middle + 60)
    height = bottom + 20
    body = "\n".join(head + tail)
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write(
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height:.0f}" role="img" '
            'aria-labelledby="title description" font-family="system-ui, -apple-system, \'Segoe UI\', \'DejaVu Sans\', '
            'sans-serif">\n<title id="title">The library against the same roads by hand</title>\n'
            '<desc id="description">A bar for each operation shows its time as a multiple of the time by hand, and a '
            'mark the target. Below, the time for each object by the number of objects.</desc>\n'
            f'<rect width="{WIDTH}" height="{height:.0f}" fill="#ffffff"/>\n'
            + text(20, 26, "Times of the library, as multiples of the floor; the mark is the target", size=15)
            + f"\n{body}\n</svg>\n")


if __name__ == "__main__":
    main()
