#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Measures how the cost of orblog grows with the log, as CSV for scripts/bench-growth: nanoseconds of
processor time for each megabyte of lines, and the same for a bare loop that opens all records; and
orblog's most memory in KiB."""
import argparse
import os
import shutil
import subprocess
import sys

SIZES = (1, 10, 100, 1000)  # megabytes of lines
LEAST = 20  # megabytes of a measurement


def run(command):
    """Processor time in seconds and the most memory in KiB of a program; its output is dropped."""
    with open(os.devnull, "wb") as nobody:
        process = subprocess.Popen(command, stdout=nobody)
        _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit("growth_orblog.py: %s failed" % command[0])
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss


def cost(command, size, repeats):
    runs = [run(command) for _ in range(repeats)]
    return sum(seconds for seconds, _ in runs) * 1e9 / (repeats * size), max(kib for _, kib in runs)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--brief", action="store_true", help="the smallest size alone")
    parser.add_argument("--rounds", type=int, default=3, help="the least of so many counts")
    parser.add_argument("orblog")
    parser.add_argument("generate")
    parser.add_argument("folder", help="where logs are, one at a time")
    arguments = parser.parse_args()
    rounds = 1 if arguments.brief else arguments.rounds
    for size in SIZES[:1] if arguments.brief else SIZES:
        subprocess.run([arguments.generate, arguments.folder, str(size)], check=True)
        reader = [arguments.orblog, "decrypt", "-k", os.path.join(arguments.folder, "private.pem"),
                  os.path.join(arguments.folder, "orb_log_p0_00")]
        bare = [arguments.generate, arguments.folder, "open"]
        repeats = 1 if arguments.brief else max(1, LEAST // size)
        library, memory, floor = float("inf"), 0, float("inf")
        for _ in range(rounds):
            now, most = cost(reader, size, repeats)
            library, memory = min(library, now), max(memory, most)
            floor = min(floor, cost(bare, size, repeats)[0])
        print("orblog,%d,%.1f,%.1f" % (size, library, floor))
        print("orblog_memory,%d,%d," % (size, memory), flush=True)
        shutil.rmtree(arguments.folder)


if __name__ == "__main__":
    main()
