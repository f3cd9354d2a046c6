#!/usr/bin/env python3
"""Makes a table of the benchmarks' results beside their goals, and the data of the plot: table.py FOLDER"""

import json
import pathlib
import re
import subprocess
import sys

KINDS = ["controllers", "logical-drives", "drives", "drives-and-smart", "smart-table"]
SHAPES = ["report", "one-parent", "chain", "one-name", "no-parent"]
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6}


class Results:
    """Medians where there were repetitions, else the only measure; times in nanoseconds."""

    def __init__(self, folder):
        self.entries = {}
        for name in ("memory", "readers", "conversion", "call", "big_host"):
            for entry in json.loads((folder / f"{name}.json").read_text())["benchmarks"]:
                if entry.get("error_occurred"):
                    raise SystemExit(f"{entry['name']}: {entry['error_message']}")
                if entry["run_type"] == "iteration" or entry["aggregate_name"] == "median":
                    self.entries[self._plain_name(entry["run_name"])] = entry

    @staticmethod
    def _plain_name(name):
        return re.sub(r"/(manual_time|real_time|iterations:\d+)", "", name)

    def time(self, name):
        entry = self.entries[name]
        return entry["real_time"] * NANOSECONDS[entry["time_unit"]]

    def counter(self, name, counter):
        return self.entries[name][counter]

    def sizes(self, name):
        found = (each.rpartition("/") for each in self.entries)
        return sorted(int(size) for prefix, _, size in found if prefix == name)

    def per_line(self, kind, size, what="reader"):
        name = f"{what}/{kind}/{size}"
        return 1e9 / self.counter(name, "items_per_second")

    def ratios(self, above, below):
        """By size, where both were measured."""
        return {size: self.time(f"{above}/{size}") / self.time(f"{below}/{size}")
                for size in self.sizes(above) if size in self.sizes(below)}

    def growth(self, name, sizes=None):
        """What ten times the size cost, each step from the first, which begins at a hundred."""
        times = {size: self.time(name.format(size)) for size in sizes or self.sizes(name.removesuffix("/{}"))}
        return [times[10 * size] / times[size] for size in times if size >= 100 and 10 * size in times]


class Table:
    def __init__(self):
        self.rows = [("Measure", "Goal", "Measured", "")]

    def add(self, measure, goal, measured, is_met=None):
        self.rows.append((measure, goal, measured, "" if is_met is None else "met" if is_met else "not met"))

    def print(self):
        widths = [max(len(row[column]) for row in self.rows) for column in range(4)]
        self.rows.insert(1, tuple("-" * width for width in widths))
        for row in self.rows:
            print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")


def thousands(size):
    return f"{size:,}"


def spread(ratios, digits=1):
    """From the smallest size to the largest."""
    first, last = min(ratios), max(ratios)
    return (f"{ratios[first]:.{digits}f} ({thousands(first)}) to {ratios[last]:.{digits}f} ({thousands(last)}), "
            f"worst {max(ratios.values()):.{digits}f}")


def add_readers(table, results):
    for kind in KINDS:
        ratios = results.ratios(f"reader/{kind}", f"items/{kind}")
        table.add(f"reading {kind}, times a loop that only makes the same items", "at most 1.5", spread(ratios),
                  max(ratios.values()) <= 1.5)
        table.add("  times a bare loop over the lines", "", spread(
            results.ratios(f"reader/{kind}", f"lines/{kind}")))
        sizes = results.sizes(f"reader/{kind}")
        rates = [results.counter(f"reader/{kind}/{size}", "bytes_per_second") / 1e6 for size in sizes]
        table.add("  MB a second", "", f"{min(rates):.0f} to {max(rates):.0f}")


def add_memory(table, results):
    def kilobytes(name):
        return results.counter(f"{name}/100000", "bytes") / 1024

    reader = kilobytes("memory/reader")
    table.add("memory of a drive of 16 key lines until the conversion, KB", "at most 1.2", f"{reader:.2f}",
              reader <= 1.2)
    table.add("  of its items alone; text of the report", "",
              f"{kilobytes('memory/items'):.2f}; {kilobytes('memory/report'):.2f}")
    ours = kilobytes("memory/conversion")
    allowed = kilobytes("memory/libxml2") + kilobytes("memory/document")
    table.add("memory of the conversion of a drive, KB", f"at most {allowed:.2f}", f"{ours:.2f}", ours <= allowed)


def add_conversion(table, results):
    for shape in SHAPES:
        ratios = results.ratios(f"libxml2/{shape}", f"conversion/{shape}")
        is_goal = shape == "report"  # The others no tool prints.
        table.add(f"conversion, {shape}, times faster than libxml2", "at least 2" if is_goal else "",
                  ", ".join(f"{ratio:.1f} ({thousands(size)})" for size, ratio in ratios.items()),
                  min(ratios.values()) >= 2 if is_goal else None)


def add_growth(table, results):
    calls = [10, 100, 1000, 10000, 100000]
    for name, growth in [
        *((f"reading {kind}", results.growth(f"reader/{kind}/{{}}")) for kind in KINDS),
        ("conversion", results.growth("conversion/report/{}")),
        ("whole call", results.growth("call/1x{}", calls)),
    ]:
        table.add(f"ten times the drives: {name}, times, from 100 on", "at most 11",
                  ", ".join(f"{step:.1f}" for step in growth), max(growth) <= 11)


def add_call(table, results):
    for server in ("1x24", "8x24", "64x24"):
        ratio = results.counter(f"call/{server}", "ratio")
        table.add(f"call with {server} drives, times its bare commands", "at most 1.05", f"{ratio:.2f}", ratio <= 1.05)
    for server in ("1x24", "1x100", "1x1000"):
        ratio = results.counter(f"health/{server}", "ratio")
        is_goal = server == "1x100"
        table.add(f"mngsrvraid health of {server} drives, times the bare commands", "at most 1.3" if is_goal else "",
                  f"{ratio:.2f}", ratio <= 1.3 if is_goal else None)
    own = results.counter("call/1x100", "own_ms")
    table.add("own time at 100 drives, ms", "at most 5", f"{own:.1f}", own <= 5)
    load = results.time("load") / 1e6
    table.add("loading and unloading the conversion library, ms", "at most 0.3", f"{load:.2f}", load <= 0.3)


def add_jobs(table, results):
    times = [f"{results.time(f'jobs/{jobs}') / 1e9:.1f} ({jobs})" for jobs in (1, 2, 4, 8, 16)]
    table.add("SMART data of 64 drives, 0.1 s a run, s by --jobs", "", ", ".join(times))


def add_trace(table, results):
    size = 1000
    off = results.time("trace/off")
    table.add("a trace line that nobody wants, ns", "", f"{off:.1f}")
    for kind in KINDS:
        share = results.counter(f"traced/{kind}/{size}", "traces_per_line") * off / results.per_line(kind, size)
        table.add(f"trace switched off, share of reading {kind}", "at most 1 %", f"{100 * share:.1f} %", share <= 0.01)
        ratio = results.time(f"traced/{kind}/{size}") / results.time(f"reader/{kind}/{size}")
        table.add("  all levels into a file, times", "", f"{ratio:.1f}")


def add_big_host(table, results):
    for name, words in [("tool-run", "running the tool"), ("tool-run-large-pages", "  with large pages"),
                        ("fork", "  fork and wait alone"), ("spawn", "  by a child that shares the memory")]:
        times = ", ".join(f"{results.time(f'{name}/{size}') / 1e6:.1f} ({thousands(size)})"
                          for size in results.sizes(name))
        table.add(f"{words}, ms by MB that the host has", "", times)


def write_plot(folder, results):
    def rows(path, columns):
        (folder / path).write_text("".join(" ".join(map(str, row)) + "\n" for row in columns))

    for what in ("lines", "items", "reader"):
        rows(f"{what}.dat", [(size, results.per_line("drives", size, what))
                             for size in results.sizes(f"{what}/drives")])
    for what in ("conversion", "libxml2"):
        rows(f"{what}.dat", [(size, 1e9 / results.counter(f"{what}/report/{size}", "items_per_second"))
                             for size in results.sizes(f"{what}/report")])
    rows("call.dat", [(size, results.time(f"call/1x{size}") / 1e6, results.counter(f"call/1x{size}", "bare_ms"))
                      for size in (10, 100, 1000, 10000, 100000)])
    subprocess.run(["gnuplot", pathlib.Path(__file__).with_name("growth.gp").resolve()], cwd=folder, check=True)


def main():
    folder = pathlib.Path(sys.argv[1])
    results = Results(folder)
    table = Table()
    for add in (add_readers, add_memory, add_conversion, add_growth, add_call, add_jobs, add_trace, add_big_host):
        add(table, results)
    table.print()
    write_plot(folder, results)
    print(f"\nThe plot of growth: {folder / 'growth.svg'}")


main()
