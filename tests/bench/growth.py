#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Draws the curves of scripts/bench-growth with gnuplot, writes the tables of the document and says
which curves bend upward.

A curve bends upward if it grows from its reference size to its largest size by more than 1.5 times the
growth of its floor. The cost of the payload is the cost of each further byte.
"""
import argparse
import csv
import os
import re
import subprocess
import sys

LIMIT = 1.5
COLOURS = ("#0072B2", "#D55E00", "#009E73")  # also for people who cannot see all colours

# A picture: its curves with their names, the labels of the axes, the number of the data's units in one
# of the picture's units, and the size from which on curves are judged; None: they are not judged.
PICTURES = {
    "payload": ({"payload": "request and answer"}, "bytes of text in the answer", "µs", 1e3, 10000),
    "services": ({"services": "request and answer"}, "services of the process", "µs", 1e3, 1),
    "threads": ({"request_threads": "request and answer",
                 "posting_threads": "post to the event loop",
                 "posting_threads_all_cores": "the same on all cores"},
                "threads that request or post", "µs", 1e3, 1),
    "criteria": ({"criteria": "criteria and their answer"}, "criteria that wait", "µs", 1e3, 1000),
    "timers": ({"timer_add": "add", "timer_fire": "fire", "timer_remove": "remove"},
               "timers", "ns", 1, 1000),
    "records": ({"record_queue": "queue", "record_dump": "dump"}, "records that wait", "ns", 1, 1000),
    "orblog": ({"orblog": "orblog decrypt"}, "megabytes of lines", "ms/MB", 1e6, 10),
}
# Tables without a picture: heading, units.
FOOTPRINT = (("resident", "resident memory, KiB"), ("resident_own", "of it the process's own, KiB"))


def read(path):
    """The data: for each curve its sizes, each with the costs of library and floor."""
    curves = {}
    with open(path, newline="", encoding="ascii") as file:
        for row in csv.DictReader(file):
            costs = (float(row["library"]), float(row["floor"]) if row["floor"] else None)
            curves.setdefault(row["curve"], {})[int(row["size"])] = costs
    return curves


def number(value):
    """Three significant digits."""
    return "%.0f" % value if value >= 100 else "%.1f" % value if value >= 10 else "%.2f" % value


def grouped(size):
    return "{:,}".format(size)


def growth(name, curve, reference, column):
    """The cost at the largest size, divided by the cost at the reference."""
    sizes = sorted(size for size in curve if size >= reference)
    if name != "payload":
        return curve[sizes[-1]][column] / curve[sizes[0]][column]

    def of_a_byte(at):
        return (curve[sizes[at]][column] - curve[sizes[at - 1]][column]) / (sizes[at] - sizes[at - 1])
    return of_a_byte(len(sizes) - 1) / of_a_byte(1)


def judge(curves):
    """A line for each curve, and whether no curve bends upward."""
    lines, good = ["| curve | from | to | grows by | floor | |", "|---|---|---|---|---|---|"], True
    for names, _, _, _, reference in PICTURES.values():
        for name in names:
            curve = curves[name]
            library, floor = (growth(name, curve, reference, column) for column in (0, 1))
            bends = library > LIMIT * max(1, floor)
            good = good and not bends
            lines.append("| `%s` | %s | %s | %.2f | %.2f | %s |" % (
                name, grouped(reference), grouped(max(curve)), library, floor,
                "bends upward" if bends else "does not bend"))
    return lines, good


def table(names, curves, label, unit, scale):
    heads = [label]
    for name in names.values():
        heads += ["%s, %s" % (name, unit), "floor", "ratio"]
    lines = ["| %s |" % " | ".join(heads), "|" + "---|" * len(heads)]
    for size in sorted({size for name in names for size in curves[name]}):
        cells = [grouped(size)]
        for name in names:
            library, floor = curves[name].get(size, (None, None))
            cells += ["", "", ""] if library is None else [
                number(library / scale), number(floor / scale), "%.2f" % (library / floor)]
        lines.append("| %s |" % " | ".join(cells))
    return lines


def footprint(curves):
    lines = ["| | before the first call | one service | two | three |", "|---|---|---|---|---|"]
    for name, heading in FOOTPRINT:
        cells = [grouped(int(curves[name][services][0])) for services in range(4)]
        lines.append("| %s | %s |" % (heading, " | ".join(cells)))
    return lines


def script(names, curves, label, unit, scale, path):
    """The input of gnuplot. The sizes have equal distances, as on a logarithmic axis."""
    sizes = sorted({size for name in names for size in curves[name]})
    out = ["set encoding utf8",
           "set terminal svg size 720,400 font 'sans-serif,14' background 'white'",
           "set output '%s'" % path.replace("'", "''"), "set border 3", "set tics nomirror out",
           "set grid ytics linecolor rgb '#DDDDDD' linewidth 1 dashtype 1",
           "set key outside below", "set xlabel '%s'" % label, "set ylabel '%s'" % unit,
           "set xrange [-0.3:%.1f]" % (len(sizes) - 0.7),
           "set xtics (%s)" % ", ".join("'%s' %d" % (grouped(s), i) for i, s in enumerate(sizes))]
    costs = [cost for name in names for pair in curves[name].values() for cost in pair]
    out.append("set logscale y" if max(costs) > 20 * min(costs) else "set yrange [0:*]")
    plots = []
    for colour, (name, title) in zip(COLOURS, names.items()):
        out.append("$%s << EOD" % name)
        out += ["%d %.6g %.6g" % (sizes.index(size), library / scale, floor / scale)
                for size, (library, floor) in sorted(curves[name].items())]
        out.append("EOD")
        for column, dash, kind in ((2, "1", title), (3, "'-'", title + ", floor")):
            plots.append("$%s using 1:%d with linespoints linewidth 2 dashtype %s linecolor rgb '%s' "
                         "pointtype 7 pointsize 0.5 title '%s'" % (name, column, dash, colour, kind))
    return "\n".join(out) + "\nplot " + ", ".join(plots) + "\n"


def replace(document, name, lines):
    """Puts lines between <!-- growth NAME --> and <!-- end -->."""
    found, count = re.subn(r"(<!-- growth %s -->\n).*?(<!-- end -->)" % name,
                           lambda match: match.group(1) + "\n".join(lines) + "\n" + match.group(2),
                           document, flags=re.DOTALL)
    if count != 1:
        sys.exit("growth.py: the document has no place for the table: %s" % name)
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--brief", action="store_true", help="judge nothing: costs mean nothing")
    parser.add_argument("data")
    parser.add_argument("folder", help="of the pictures")
    parser.add_argument("document")
    arguments = parser.parse_args()
    curves = read(arguments.data)
    with open(arguments.document, encoding="utf-8") as file:
        document = file.read()
    for picture, (names, label, unit, scale, _) in PICTURES.items():
        path = os.path.join(arguments.folder, picture + ".svg")
        subprocess.run(["gnuplot", "-d", "-"], check=True, encoding="utf-8",
                       input=script(names, curves, label, unit, scale, path))
        document = replace(document, picture, table(names, curves, label, unit, scale))
    memory = {size: costs[0] for size, costs in curves["orblog_memory"].items()}
    document = replace(document, "orblog_memory", [
        "| megabytes of lines | most memory, MB |", "|---|---|"] + [
            "| %s | %.1f |" % (grouped(size), kib / 1024) for size, kib in sorted(memory.items())])
    document = replace(document, "footprint", footprint(curves))
    document = replace(document, "stripped", [
        "The stripped library has %s bytes." % grouped(int(curves["stripped"][0][0]))])
    good = True
    if not arguments.brief:
        verdict, good = judge(curves)
        document = replace(document, "verdict", verdict)
        print("\n".join(verdict))
    with open(arguments.document, "w", encoding="utf-8") as file:
        file.write(document)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
