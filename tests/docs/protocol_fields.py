#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Compares the messages that docs/protocol.md describes with those of proto/.

Each message, each field with its number and type, and each value of an enumeration is in both; each
message says who sends it, and each number what its unit or range is.
"""

import argparse
import collections
import pathlib
import re
import sys

SERVICES = ("lce", "lle", "lli")
PAGE = "docs/protocol.md"
SENDERS = ("client: ", "daemon: ", "nobody: ")
NUMBERS = ("uint32", "uint64", "string")  # types whose values a reader could not guess

Field = collections.namedtuple("Field", "name number type")
# What a file or the page has: messages and enumerations by name, in their order.
Messages = collections.namedtuple("Messages", "messages enumerations")


def messages_of(path):
    """The messages of a .proto file, with the members of a oneof among the fields of its message."""
    found = Messages({}, {})
    inside = []  # what is open: message, oneof or enum
    fields = None
    for row, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        text = line.partition("//")[0].strip()
        opened = re.fullmatch(r"(message|enum|oneof) (\w+) \{", text)
        field = re.fullmatch(r"((?:repeated )?\w+) (\w+) = (\d+);", text)
        value = re.fullmatch(r"(\w+) = (\d+);", text)
        if opened and opened[1] == "oneof":
            inside.append("oneof")
        elif opened:
            inside.append(opened[1])
            kind = found.enumerations if opened[1] == "enum" else found.messages
            fields = kind[opened[2]] = []
        elif text == "}" and inside:
            inside.pop()
        elif field and inside[-1:] in (["message"], ["oneof"]):
            fields.append(Field(field[2], int(field[3]), field[1]))
        elif value and inside == ["enum"]:
            fields.append((int(value[2]), value[1]))
        elif text and not re.match(r"(syntax|package|option) ", text):
            sys.exit(f"{path.name}:{row}: not known here: {text}")
    return found


def cells_of(line):
    return [cell.strip() for cell in line.split("|")[1:-1]]


class Page:
    """What the page says, for each service; what holds for all is said once."""

    def __init__(self, path):
        self.faults = []
        self.described = {service: Messages({}, {}) for service in SERVICES}
        text = path.read_text(encoding="utf-8").partition("\n## Messages\n")[2]
        self.services, self.messages = (), []
        for line in re.split(r"^## ", text, maxsplit=1, flags=re.M)[0].splitlines():
            heading = re.fullmatch(r"### (?:(All services)|Messages of (\w+))", line)
            if heading:
                self.services = SERVICES if heading[1] else (heading[2].lower(),)
            elif line.startswith("|"):
                self.row(cells_of(line))

    def row(self, cells):
        first = cells[0]
        if first in ("message, field", "enumeration") or not set(first) - set("-"):
            return
        names = re.findall(r"`(\w+)`", first)
        if len(cells) == 2:
            values = [(int(n), name) for n, name in re.findall(r"(\d+) `(\w+)`", cells[1])]
            for service in self.services:
                self.described[service].enumerations[names[0]] = values
        elif first.startswith("**"):
            self.messages = names
            if not cells[3].startswith(SENDERS):
                self.faults.append(f"{first}: does not say who sends it")
            for service in self.services:
                for name in names:
                    self.described[service].messages[name] = []
        else:
            self.field(names[0], cells)

    def field(self, name, cells):
        kind = re.fullmatch(r"`(\w+)`(, repeated)?", cells[2])
        if not kind or not cells[1].isdigit():
            self.faults.append(f"`{name}`: no number or no type")
            return
        if not cells[3]:
            self.faults.append(f"`{name}`: no meaning")
        if kind[1] in NUMBERS and not cells[4]:
            self.faults.append(f"`{name}`: neither unit nor range")
        field = Field(name, int(cells[1]), ("repeated " if kind[2] else "") + kind[1])
        for service in self.services:
            for message in self.messages:
                self.described[service].messages[message].append(field)


def differences(service, what, told, real):
    for name in list(real) + [name for name in told if name not in real]:
        if name not in told:
            yield f"{service}: {PAGE} does not have the {what} {name}"
        elif name not in real:
            yield f"{service}: there is no {what} {name}"
        else:
            mine, theirs = told[name], real[name]
            for entry in theirs:
                if entry not in mine:
                    yield f"{service}: {PAGE} does not have in {name}: {' '.join(map(str, entry))}"
            for entry in mine:
                if entry not in theirs:
                    yield f"{service}: not in {name}: {' '.join(map(str, entry))}"


def main(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=pathlib.Path, help="folder of the sources")
    root = parser.parse_args(arguments).root
    page = Page(root / PAGE)
    faults = list(page.faults)
    count = 0
    for service in SERVICES:
        real = messages_of(root / "proto" / f"{service}.proto")
        told = page.described[service]
        count += sum(map(len, real.messages.values()))
        faults += differences(service, "message", told.messages, real.messages)
        faults += differences(service, "enumeration", told.enumerations, real.enumerations)
    print(*faults, sep="\n")
    print(f"{count} fields, {len(faults)} differences")
    return 1 if faults or not count else 0


if __name__ == "__main__":
    sys.exit(main())
