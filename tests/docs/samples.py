#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Holds each sample of the documents to samples.txt, which says by what it is run.

A sample is what stands in a fence, and the examples of a man page. One that samples.txt does not have is a
fault, so is an entry without a sample, and one whose script does not take it. commands.py looks at the
commands of all samples, and at those within sentences.
"""

import argparse
import collections
import pathlib
import re
import shlex
import sys

import commands

DOCUMENTS = ("*.md", "docs/*.md", "docs/man/*.1", "examples/**/*.md", "tools/**/*.md")
TABLE = "tests/docs/samples.txt"

Sample = collections.namedtuple("Sample", "document row language code")
Entry = collections.namedtuple("Entry", "row document words taken reason")


def samples_of(document, text):
    """What stands in fences, or between the marks of a man page for lines as they are."""
    inside = None
    opens, closes = r" *```(\w*)$", r" *```$"
    if document.endswith(".1"):
        opens, closes = r"\.(?:nf|EX)()$", r"\.(?:fi|EE)$"
        text = re.sub(r"\\\(aq", "'", text.replace("\\-", "-").replace("\\&", ""))
    for row, line in enumerate(text.splitlines(), 1):
        opened = re.match(opens, line)
        if inside is not None and re.match(closes, line):
            yield inside
            inside = None
        elif inside is not None:
            inside = inside._replace(code=inside.code + line + "\n")
        elif opened:
            language = "sh" if document.endswith(".1") else opened[1]
            inside = Sample(document, row, language, "")
    if inside is not None:
        sys.exit(f"{document}:{inside.row}: a sample without an end")


def entries_of(table):
    for row, line in enumerate(table.read_text(encoding="utf-8").splitlines(), 1):
        words = shlex.split(line, comments=True)
        if words and len(words) not in (3, 4):
            sys.exit(f"{table.name}:{row}: not an entry: {line}")
        if words:
            yield Entry(row, words[0], words[1], words[2], words[3] if len(words) == 4 else "")


def has(sample, document, words):
    """Whether this is the document's sample with the words; behind ^ they are its first."""
    if document != sample.document:
        return False
    return sample.code.startswith(words[1:]) if words.startswith("^") else words in sample.code


def faults_of_entry(root, entry):
    """Whether somebody takes the sample, as it is said."""
    if entry.taken in ("checked", "none"):
        return [] if entry.reason else ["no reason"]
    script = root / entry.taken
    if not script.is_file():
        return [f"there is no {entry.taken}"]
    text = script.read_text(encoding="utf-8")
    built = (script.parent / "CMakeLists.txt").read_text(encoding="utf-8")
    faults = []
    if script.stem not in built:
        faults.append(f"no test runs {entry.taken}")
    if pathlib.PurePath(entry.document).name not in text + built:
        faults.append(f"{entry.taken} does not name {entry.document}")
    if not entry.reason and entry.words not in text:
        faults.append(f"{entry.taken} does not take '{entry.words}'")
    return faults


def compare(root, samples, entries):
    faults = []
    for sample in samples:
        found = [e for e in entries if has(sample, e.document, e.words)]
        place = f"{sample.document}:{sample.row}"
        if not found:
            faults.append(f"{place}: {TABLE} does not say what runs it")
        elif len(found) > 1:
            faults.append(f"{place}: {TABLE} has it {len(found)} times")
    for entry in entries:
        place = f"{TABLE}:{entry.row}"
        if not any(has(sample, entry.document, entry.words) for sample in samples):
            faults.append(f"{place}: {entry.document} has no sample with '{entry.words}'")
        faults += [f"{place}: {fault}" for fault in faults_of_entry(root, entry)]
    return faults


def main(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=pathlib.Path, help="folder of the sources")
    parser.add_argument("build", type=pathlib.Path, nargs="?",
                        help="folder of a build, whose programs are asked for their help")
    parser.add_argument("--print", nargs=2, metavar=("DOCUMENT", "WORDS"),
                        help="only print the sample with these words")
    options = parser.parse_args(arguments)
    root = options.root
    texts = {str(path.relative_to(root)): path.read_text(encoding="utf-8")
             for pattern in DOCUMENTS for path in sorted(root.glob(pattern))}
    samples = [sample for name, text in texts.items() for sample in samples_of(name, text)]
    if options.print:
        document, words = options.print
        found = [sample for sample in samples if has(sample, document, words)]
        if len(found) != 1:
            sys.exit(f"{len(found)} samples of {document} have '{words}'")
        print(found[0].code, end="")
        return 0
    faults = compare(root, samples, list(entries_of(root / TABLE)))
    count = 0
    if options.build:
        shell = [(f"{s.document}:{s.row}", s.code) for s in samples if s.language == "sh"]
        count, found = commands.check(root, options.build, shell, texts)
        faults += found
    print(*faults, sep="\n")
    print(f"{len(samples)} samples, {count} commands, {len(faults)} differences")
    return 1 if faults or not samples else 0


if __name__ == "__main__":
    sys.exit(main())
