#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Compares the functions that documents name with the version script of the library.

What the built library exports and what the headers declare, ElfFiles_test compares with it.
"""

import argparse
import pathlib
import re
import sys

FUNCTION = re.compile(
    r"\b(orb_l(?:ce|le|li)_\w+|(?:create|destroy)[A-Z][a-z]+Client|l(?:ce|le|li)[A-Z]\w+|orbSdlSdk\w+)\b"
)
LIST = "docs/log-lines.md"  # has the lines of each function
SILENT = {"orbSdlSdkVersion"}  # writes no line
DOCUMENTS = ("README.md", "CONTRIBUTING.md", "docs/*.md", "docs/man/*", "include/orb/*.h")


def exported(root):
    script = (root / "cmake" / "OrbSdlSdk.map").read_text(encoding="utf-8")
    return re.findall(r"(\w+);", script.partition("global:")[2].partition("local:")[0])


def faults_in(root):
    functions = set(exported(root))
    paths = sorted(path for pattern in DOCUMENTS for path in root.glob(pattern))
    texts = {str(path.relative_to(root)): path.read_text(encoding="utf-8") for path in paths}
    faults = []
    for name, text in texts.items():
        for row, line in enumerate(text.splitlines(), 1):
            faults += [f"{name}:{row}: {word} is no function of the library"
                       for word in FUNCTION.findall(line) if word not in functions]
    named = {document: set(FUNCTION.findall(text)) for document, text in texts.items()}
    headers = [names for document, names in named.items() if document.startswith("include/")]
    for function in sorted(functions):
        if not FUNCTION.fullmatch(function):
            faults.append(f"{function}: no name that this check would find in a document")
        if function not in named[LIST] | SILENT:
            faults.append(f"{function}: {LIST} has no line of it")
        if not any(function in names for names in headers):
            faults.append(f"{function}: no public header has it")
    return functions, texts, faults


def main(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=pathlib.Path, help="folder of the sources")
    functions, texts, faults = faults_in(parser.parse_args(arguments).root)
    print(*faults, sep="\n")
    print(f"{len(functions)} functions, {len(texts)} documents, {len(faults)} differences")
    return 1 if faults or not functions else 0


if __name__ == "__main__":
    sys.exit(main())
