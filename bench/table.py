#!/usr/bin/env python3
"""Makes the tables of what benchmark programs have written as JSON.

A benchmark is named "work|side"; the side "tessel" is compared with each other side of its work.
Fails if a side has failed or a work has nothing to compare with.
"""
import json
import statistics
import sys

OURS = "tessel"


def sides_of(paths):
    """Medians by kind, work and side: of the time for an item, or of the bytes."""
    runs = {"time": {}, "memory": {}}
    failures = []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            benchmarks = json.load(file)["benchmarks"]
        # Runs stand in the order of the turns that the sides took, families in that of the program.
        for run in sorted(benchmarks, key=lambda run: run["family_index"]):
            if run["run_type"] != "iteration":
                continue
            work, side = run["run_name"].split("/iterations:")[0].split("/manual_time")[0].split("|")
            if run.get("error_occurred"):
                failures.append(f"{work}, {side}: {run['error_message']}")
                continue
            kind, value = ("memory", run["bytes"]) if "bytes" in run else ("time", 1 / run["items_per_second"])
            runs[kind].setdefault(work, {}).setdefault(side, []).append(value)
    for works in runs.values():
        for work, sides in works.items():
            if OURS not in sides or len(sides) < 2:
                failures.append(f"{work}: only {', '.join(sides)}")
            for side, values in sides.items():
                sides[side] = statistics.median(values)
    return runs, sorted(set(failures))


def with_unit(value, units):
    """Three digits in the largest unit that is not above the value."""
    size, name = next((unit for unit in units if value >= unit[0]), units[-1])
    scaled = value / size
    return f"{scaled:.0f} {name}" if scaled >= 100 else f"{scaled:.3g} {name}"


def seconds(value):
    return with_unit(value, [(1, "s"), (1e-3, "ms"), (1e-6, "µs"), (1e-9, "ns")])


def size(value):
    return with_unit(value, [(1 << 20, "MiB"), (1 << 10, "KiB"), (1, "bytes")])


def print_table(works, text_of):
    print("| Work | Ours | Theirs | Ratio |")
    print("| --- | --- | --- | --- |")
    for work, sides in works.items():
        ours = sides[OURS]
        cells = [work, text_of(ours)]
        for side, theirs in sides.items():
            if side != OURS:
                print(f"| {cells[0]} | {cells[1]} | {side} {text_of(theirs)} | {theirs / ours:.2f} |")
                cells = ["", ""]
    print()


def main(paths):
    runs, failures = sides_of(paths)
    if failures:
        sys.exit("\n".join(failures))
    for kind, text_of in (("time", seconds), ("memory", size)):
        if runs[kind]:
            print_table(runs[kind], text_of)


main(sys.argv[1:])
