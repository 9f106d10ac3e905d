# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Compares the includes of the library's sources with the table of rooms in docs/architecture.md.

A room is a folder of the first column. What stands in backticks in the column "may use" are rooms,
folders with several, single headers of rooms, and libraries of others. A room stands below those that
may use it; those of one row may use each other.
"""
import argparse
import pathlib
import re
import sys

# Other libraries whose use the table allows or forbids, by the start of their header names.
LIBRARIES = {"openssl/": "libcrypto", "google/protobuf/": "protobuf"}
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)


class Table:
    """The rooms from top to bottom, and for each what it may use."""

    def __init__(self, text):
        rows = []
        for line in text.splitlines():
            cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
            if cells[:1] == ["room"]:
                rows = [cells]
            elif rows and line.startswith("|"):
                rows.append(cells)
            elif rows:
                break
        if len(rows) < 3:
            raise ValueError("no table of rooms")
        column = rows[0].index("may use")
        self.rooms = []
        self.row = {}
        for number, cells in enumerate(rows[2:]):
            for room in re.findall(r"`([^`]+)`", cells[0]):
                self.rooms.append(room)
                self.row[room] = number
        self.allowed = {}
        self.findings = []
        for number, cells in enumerate(rows[2:]):
            words = re.findall(r"`([^`]+)`", cells[column])
            for room in re.findall(r"`([^`]+)`", cells[0]):
                self.allowed[room] = self._allowed(room, number, words)

    def _allowed(self, room, number, words):
        allowed = {other for other in self.rooms if self.row[other] == number}
        for word in words:
            meant = {other for other in self.rooms if other == word or other.startswith(word + "/")}
            if word in self.rooms:  # a folder that is a room itself stands for no others
                meant = {word}
            if not meant and word not in LIBRARIES.values() and not word.endswith(".h"):
                self.findings.append(f"the table: {room} may use {word}, which is no room")
            for other in sorted(meant):
                if self.row[other] < number:
                    self.findings.append(f"the table: {room} may use {other}, which stands above it")
            allowed |= meant or {word}
        return allowed

    def room_of(self, path):
        """The innermost room of a path, or None."""
        rooms = [room for room in self.rooms if path.startswith(room + "/")]
        return max(rooms, key=len, default=None)


def sources(tree, table):
    tops = sorted({room.split("/")[0] for room in table.rooms})
    for top in tops:
        for path in sorted((tree / top).rglob("*")):
            if path.suffix in (".h", ".cpp", ".c"):
                yield path.relative_to(tree).as_posix()


def target_of(include, headers):
    """Where an include leads: a header of the tree, a library's name, or None for the system's."""
    for beginning, library in LIBRARIES.items():
        if include.startswith(beginning):
            return library
    if include.endswith(".pb.h"):
        return "proto/" + include
    found = [header for header in headers if header.endswith("/" + include)]
    return found[0] if found else None


def circles(uses):
    """Rooms that use each other, by way of others perhaps."""
    found = set()
    for start in uses:
        reached, ahead = set(), [start]
        while ahead:
            for room in uses.get(ahead.pop(), ()):
                if room not in reached:
                    reached.add(room)
                    ahead.append(room)
        if start in reached:
            found.add(start)
    return found


def check(tree, document):
    """What is wrong with the tree, one line each, and how many includes lead from room to room."""
    table = Table(document)
    findings = list(table.findings)
    files = list(sources(tree, table))
    headers = [path for path in files if path.endswith(".h")]
    uses = {}
    count = 0
    for path in files:
        room = table.room_of(path)
        if room is None:
            findings.append(f"{path} is in no room")
            continue
        for include in INCLUDE.findall((tree / path).read_text(encoding="utf-8")):
            target = target_of(include, headers)
            if target is None:
                continue
            other = table.room_of(target) or target
            if other == room:
                continue
            count += 1
            if other in table.rooms:
                uses.setdefault(room, set()).add(other)
            if other not in table.allowed[room] and target not in table.allowed[room]:
                findings.append(f"{path} includes {include}: {room} may not use {other}")
    for room in sorted(circles(uses)):
        findings.append(f"{room} is part of a circle")
    for room in table.rooms:
        if not any(table.room_of(path) == room for path in files) and room != "proto":
            findings.append(f"the table: {room} has no sources")
    return findings, count


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tree", type=pathlib.Path, help="the folder of the sources")
    tree = parser.parse_args().tree
    findings, count = check(tree, (tree / "docs/architecture.md").read_text(encoding="utf-8"))
    for finding in findings:
        print(finding)
    print(f"{count} includes lead from room to room, {len(findings)} findings")
    return 1 if findings or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
