#!/usr/bin/env python3
"""Draws a table of scripts/endurance.sh as SVG: a strip for each column, over the number of calls.

    scripts/endurance_plot.py build/endurance/plain.txt >plot.svg
"""
import re
import sys
from html import escape

WIDTH, LEFT, STRIP, GAP = 760, 170, 48, 22


def read_table(path):
    """The columns by name, in order; names may hold one blank."""
    with open(path, encoding="utf-8") as file:
        head, *rows = file.read().splitlines()
    names = re.split(r"\s{2,}", head.strip())
    columns = list(zip(*([int(word) for word in row.split()] for row in rows)))
    if not columns or len(columns) != len(names):
        raise SystemExit(f"{path} is no table of an endurance run")
    return dict(zip(names, columns))


def strip(top, name, calls, values):
    """One column, from zero to a little above its highest value."""
    highest = max(values) * 1.1 or 1
    points = " ".join(
        f"{LEFT + (WIDTH - LEFT - 20) * call / max(calls[-1], 1):.1f},{top + STRIP * (1 - value / highest):.1f}"
        for call, value in zip(calls, values))
    span = str(values[0]) if min(values) == max(values) else f"{min(values)} to {max(values)}"
    base = top + STRIP
    return (f'<text x="10" y="{top + 18}">{escape(name)}</text>'
            f'<text x="10" y="{top + 36}" fill="#666">{span}</text>'
            f'<path d="M{LEFT} {top}V{base}H{WIDTH - 20}" fill="none" stroke="#bbb"/>'
            f'<polyline points="{points}" fill="none" stroke="#1560a8" stroke-width="2"/>')


def draw(table):
    calls = table.pop("calls")
    strips = [strip(20 + at * (STRIP + GAP), name, calls, values) for at, (name, values) in enumerate(table.items())]
    height = 20 + len(strips) * (STRIP + GAP) + 24
    axis = f'<text x="{LEFT}" y="{height - 12}">0</text>' \
           f'<text x="{WIDTH - 20}" y="{height - 12}" text-anchor="end">{calls[-1]} calls</text>'
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" font-family="sans-serif"'
            f' font-size="13"><rect width="100%" height="100%" fill="white"/>\n' + "\n".join(strips) + f"\n{axis}</svg>")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        raise SystemExit("usage: endurance_plot.py TABLE")
    print(draw(read_table(sys.argv[1])))
