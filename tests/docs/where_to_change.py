#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Looks for what "Where do I change what" in CONTRIBUTING.md names: places in the sources, and tests.

A place is a file, a folder, a tool or a name in the sources; a test is one of ctest, with or without _test, or
a place with tests. Three points stand for anything, TOOL for any tool.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys

PAGE = "CONTRIBUTING.md"
SUBJECTS = ("a request", "a field of a message", "a value of an enumeration", "a log line", "an option of a tool")
SOURCES = (".c", ".cmake", ".cpp", ".h", ".json", ".map", ".proto", ".py", ".txt")
FOLDERS = ("cmake", "docs", "examples", "include", "le", "platform", "proto", "scripts", "sdk", "tests", "tools",
           "utils")


class Sources:
    def __init__(self, root):
        self.root = root
        self.names, self.texts = set(), []
        for folder in FOLDERS:
            for place, _, files in os.walk(root / folder):
                self.names.update(files)
                if "corpus" not in place and "tests/docs" not in place:  # which name what there is not
                    self.texts += [pathlib.Path(place, name) for name in files if name.endswith(SOURCES)]

    def file(self, word):
        pattern = re.escape(word).replace(r"\.\.\.", ".*").replace("TOOL", ".*")
        if "/" in word or (self.root / word).exists():
            return any(self.root.glob(word.replace("...", "*").replace("TOOL", "*")))
        return any(re.fullmatch(pattern, name) for name in self.names)

    def name(self, word):
        """Whether a file has it as a word: a macro, a function, a member."""
        last = re.split("::", word.rstrip("()"))[-1]
        if not re.fullmatch(r"\w+", last):
            return False
        wanted = re.compile(rf"\b{last}\b")
        return any(wanted.search(file.read_text(encoding="utf-8", errors="replace")) for file in self.texts)

    def place(self, word):
        return self.file(word) or any(self.root.glob(f"tools/{word}")) or self.name(word)


def rows_of(text):
    section = text.partition("\n## Where do I change what\n")[2].partition("\n## ")[0]
    subject = None
    for line in section.splitlines():
        cells = [cell.strip() for cell in line.split("|")[1:-1]]
        if len(cells) != 3 or not set("".join(cells)) - set("-") or cells[1] == "where":
            continue
        subject = cells[0].strip("*") or subject
        yield subject, cells[1], cells[2]


def words_of(cell):
    return [word.strip(".,") if not word.endswith("...") else word for word in re.findall(r"`([^`]+)`", cell)]


def is_test(word, tests):
    pattern = re.escape(word).replace(r"\.\.\.", ".*")
    return any(re.fullmatch(rf"{pattern}(_test)?", test) for test in tests)


def compare(root, tests):
    sources = Sources(root)
    rows = list(rows_of((root / PAGE).read_text(encoding="utf-8")))
    faults, count = [], 0
    for subject, places, shown in rows:
        for word in words_of(places):
            count += 1
            if not sources.place(word):
                faults.append(f"{subject}: there is no {word}")
        for word in words_of(shown):
            count += 1
            if not is_test(word, tests) and not sources.place(word):
                faults.append(f"{subject}: there is no test {word}")
    for subject in SUBJECTS:
        own = [(places, shown) for name, places, shown in rows if name == subject]
        if not any(words_of(places) for places, _ in own):
            faults.append(f"{PAGE} does not say where {subject} is changed")
        if not any(is_test(word, tests) for _, shown in own for word in words_of(shown)):
            faults.append(f"{PAGE} names no test for {subject}")
    return count, faults


def main(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=pathlib.Path, help="folder of the sources")
    parser.add_argument("build", help="folder of a build, which has the tests; or a file with their names")
    options = parser.parse_args(arguments)
    if os.path.isfile(options.build):
        tests = pathlib.Path(options.build).read_text(encoding="utf-8").split()
    else:
        listed = subprocess.run(["ctest", "--test-dir", options.build, "-N"], check=True, timeout=60,
                                stdout=subprocess.PIPE, text=True).stdout
        tests = re.findall(r"^ *Test *#\d+: (\S+)", listed, flags=re.M)
    count, faults = compare(options.root, tests)
    print(*faults, sep="\n")
    print(f"{count} places and tests, {len(faults)} differences")
    return 1 if faults or not count else 0


if __name__ == "__main__":
    sys.exit(main())
