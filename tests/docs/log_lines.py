#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Compares the log lines that docs/log-lines.md lists with the log calls in the sources."""

import argparse
import collections
import functools
import pathlib
import re
import sys

FOLDERS = ("le", "sdk", "utils")
SERVICES = ("Lce", "Lle", "Lli")
ANY = "*"  # of a source line: the callers say what it is

# A line in the source and in the list. `number` is the fixed number of a log point.
Line = collections.namedtuple("Line", "tag unit function level number text")
Found = collections.namedtuple("Found", "line place")

# Functions that write a line: the positions of their arguments. A name instead of a number is the
# value itself. None: the line has no such part, or it has the place of the call.
Call = collections.namedtuple("Call", "level tag file function number text")
CALLS = {
    "PLATFORM_LOG": Call(0, None, None, None, None, 1),
    "hardStop": Call("ERROR", None, None, None, None, 0),
    "SDK_LOG": Call("DEBUG", 0, None, None, None, 1),
    "SDK_LOG_AT": Call("DEBUG", 0, None, None, 1, 2),
    "SDK_LOG_AS": Call("DEBUG", 0, 1, 2, None, 3),
    "SdkLog::print": Call("DEBUG", 1, 2, 3, 4, 5),
    "ORB_LOG_AT": Call(0, "ORB", None, None, 1, 2),
    "ORB_LOG_AS": Call(0, "ORB", 1, 2, None, 3),
    "ORB_LOGV": Call("VERBOSE", "ORB", None, None, None, 0),
    "ORB_LOGD": Call("DEBUG", "ORB", None, None, None, 0),
    "ORB_LOGI": Call("INFO", "ORB", None, None, None, 0),
    "ORB_LOGE": Call("ERROR", "ORB", None, None, None, 0),
    "addLogRecord": Call(0, 1, 2, 3, 4, 5),
    "printToAdb": Call(0, 1, 2, 3, 4, 5),
}
# Passes a line from another function to the platform's log.
PLATFORM_CALL = "__android_log_print"
LETTERS = {"VERBOSE": "V", "DEBUG": "D", "INFO": "I", "WARN": "W", "ERROR": "E", "FATAL": "F"}

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)|(?P<directive>^[ \t]*\#(?:[^\n\\]|\\.)*)"""
    r"""|(?P<string>(?:"(?:[^"\\\n]|\\.)*"))|(?P<char>'(?:[^'\\\n]|\\.)*')"""
    r"""|(?P<word>[A-Za-z_~]\w*(?:::~?\w+)*)|(?P<number>\d[\w']*)|(?P<mark>[^\s\w])|(?P<end>\n)""",
    re.S | re.M | re.X,
)
Token = collections.namedtuple("Token", "kind text row")


@functools.lru_cache(maxsize=None)
def tokens_of(source):
    """The tokens of C++ without comments and directives; strings that stand together are one."""
    tokens, row = [], 1
    for match in TOKEN.finditer(source):
        kind, text = match.lastgroup, match.group()
        start, row = row, row + text.count("\n")
        if kind in ("comment", "directive", "end"):
            continue
        if kind == "string":
            text = text[1:-1].replace('\\"', '"').replace("\\\\", "\\")
            if tokens and tokens[-1].kind == "string":
                tokens[-1] = tokens[-1]._replace(text=tokens[-1].text + text)
                continue
        tokens.append(Token(kind, text, start))
    return tokens


def arguments(tokens, start):
    """The arguments in the brackets that open at `start`, each a list of tokens."""
    depth, found = 0, [[]]
    for token in tokens[start:]:
        opens = token.kind == "mark" and token.text in "([{"
        closes = token.kind == "mark" and token.text in ")]}"
        depth += opens - closes
        if depth == 0:
            break
        if depth == 1 and token.kind == "mark" and token.text == ",":
            found.append([])
        elif depth > 1 or not opens:
            found[-1].append(token)
    return found


class Source:
    """One file: its log calls, and what the names in them stand for."""

    def __init__(self, path, name):
        self.name = name
        self.tokens = tokens_of(path.read_text(encoding="utf-8"))
        self.constants = self.own_constants()
        self.functions = self.enclosing_functions()

    def own_constants(self):
        """constexpr char kName[] = "text"; and buffers that snprintf writes."""
        found = {}
        for i, token in enumerate(self.tokens):
            texts = [t.text for t in self.tokens[i + 1 : i + 4]]
            if texts == ["[", "]", "="] and self.tokens[i + 4].kind == "string":
                found[token.text] = self.tokens[i + 4].text
            assigned = texts[:1] == ["="] and self.tokens[i + 2].kind == "number"
            if assigned and re.match("k[A-Z]", token.text):
                found[token.text] = self.tokens[i + 2].text
            if token.text.endswith("snprintf") and texts[:1] == ["("]:
                called = arguments(self.tokens, i + 1)
                if len(called) > 2 and called[2][0].kind == "string":
                    found[called[0][0].text] = called[2][0].text
        return found

    def enclosing_functions(self):
        """For each token the name of the function in whose body it stands."""
        names, scopes, start, name, depth = [], 0, 0, None, 0
        for i, token in enumerate(self.tokens):
            if token.kind == "mark" and depth == 0 and token.text == "{":
                head = self.tokens[start:i]
                words = {t.text for t in head}
                if words & {"namespace", "class", "struct", "enum", "union", "extern"} and not (
                    "(" in words and ")" in words and "class" not in words
                ):
                    scopes, start = scopes + 1, i + 1
                else:
                    calls = [h.text for h, after in zip(head, head[1:])
                             if h.kind == "word" and after.text == "("]
                    name = calls[0].split("::")[-1] if calls else name
                    depth = 1
            elif token.kind == "mark" and depth > 0 and token.text in "{}":
                depth += 1 if token.text == "{" else -1
                start = i + 1
            elif token.kind == "mark" and depth == 0 and token.text in ";}":
                scopes -= token.text == "}"
                start = i + 1
            names.append(name if depth else None)
        return names

    def value(self, argument):
        """What one name, string or number stands for; ANY if it is not known here."""
        if len(argument) != 1:
            return ANY
        token = argument[0]
        if token.kind in ("string", "number"):
            return token.text
        return self.constants.get(token.text, ANY)

    def unit(self, file):
        return ANY if file == ANY else pathlib.PurePath(file).stem

    def function(self, argument, i):
        if [t.text for t in argument] == ["__func__"]:
            return self.functions[i] or ANY
        return self.value(argument)

    def lines(self):
        for i, token in enumerate(self.tokens[:-1]):
            after = self.tokens[i + 1].text
            if token.kind != "word" or after != "(":
                found = []
            elif token.text in CALLS:
                found = self.call(CALLS[token.text], i)
            elif token.text == "requestPoints":
                found = self.request_points(i)
            elif token.text == "point":
                found = self.log_point(arguments(self.tokens, i + 1), i)
            else:
                found = self.other(token, i)
            for line in found:
                yield Found(line, f"{self.name}:{token.row}")

    def call(self, call, i):
        """A call of one of CALLS. One that passes a text on writes no line of its own."""
        given = arguments(self.tokens, i + 1)

        def part(which, otherwise):
            if isinstance(which, str):
                return which
            if which is None:
                return otherwise
            return self.value(given[which]) if len(given) > which else ANY

        text = part(call.text, ANY)
        if text in (ANY, "%s"):
            return []
        level = call.level if isinstance(call.level, str) else given[call.level][0].text
        letter = LETTERS[level.replace("ANDROID_LOG_", "")]
        tag = part(call.tag, None)
        if tag is None:
            return [Line(None, None, None, letter, None, text)]
        file = self.name
        if call.file is not None and given[call.file][0].text != "__FILE__":
            file = self.value(given[call.file])
        function = self.functions[i]
        if call.function is not None:
            function = self.function(given[call.function], i)
        number = None if call.number is None else part(call.number, None)
        number = None if number == ANY else number
        return [Line(tag, self.unit(file), function, letter, number, text)]

    def service(self):
        """Tag and unit of the log points in this file."""
        stem = pathlib.PurePath(self.name).stem.replace("Api", "")
        return (stem, stem) if stem in SERVICES else (ANY, ANY)

    def log_point(self, given, i):
        """`something = point(function, number, text)` in the table of a service."""
        if len(given) != 3:
            return []
        text = self.value(given[2])
        if text == ANY:
            return []
        number = given[1][0].text
        number = number if number.isdigit() else None
        tag, unit = self.service()
        return [Line(tag, unit, self.function(given[0], i), "D", number, text)]

    def request_points(self, i):
        given = arguments(self.tokens, i + 1)[1:]  # without the source
        if len(given) != 3 or len(given[0]) > 1:  # its own definition
            return []
        names = ("kNoInstanceForRequest", "kNoClientForRequest")
        return [
            line
            for number, name in zip(given[1:], names)
            for line in self.log_point([given[0], number, [Token("word", name, 0)]], i)
        ]

    def other(self, token, i):
        """A line that a signal handler makes; and no other way to write one."""
        text = token.text
        if self.tokens[i - 1].text == "LogLine" and not text.startswith("LogLine"):
            given = arguments(self.tokens, i + 1)
            made = self.value(given[4]) if len(given) == 5 else ANY
            if made == ANY:
                return []
            level = self.level_of_print(i)
            return [Line(self.value(given[0]), self.unit(self.value(given[1])),
                         self.value(given[2]), level, None, made)]
        if text == PLATFORM_CALL:
            given = arguments(self.tokens, i + 1)
            if len(given) < 3 or self.value(given[2]) not in (ANY, "%s"):
                sys.exit(f"{self.name}:{token.row}: {text} with a text: use PLATFORM_LOG")
        elif re.search(r"(?:^|_)LOG[A-Z]?(?:_[A-Z]+)*$", text):
            sys.exit(f"{self.name}:{token.row}: {text} is unknown here: add it to CALLS")
        return []

    def level_of_print(self, i):
        """The level at which the next call gives the line away."""
        for j in range(i, len(self.tokens)):
            if self.tokens[j].text == PLATFORM_CALL:
                return LETTERS[self.tokens[j + 2].text.replace("ANDROID_LOG_", "")]
        return ANY


def written_lines(root):
    sources = [Source(path, str(path.relative_to(root)))
               for folder in FOLDERS for path in sorted((root / folder).rglob("*.*"))
               if path.suffix in (".h", ".cpp")]
    shared = {}
    for source in sources:
        if source.name.endswith(".h"):
            shared.update(source.constants)
    for source in sources:
        source.constants = {**shared, **source.constants}
    return [found for source in sources for found in source.lines()]


def cell_code(cell):
    """What stands in the backticks at the beginning of a cell, as many as it takes; or None."""
    match = re.match(r"(`+) ?(.+?) ?\1(?!`)" if cell.startswith("``") else r"(`)(.+?)`", cell)
    return match.group(2) if match else None


def listed_lines(document):
    tags, header = (None,), None
    for row, text in enumerate(document.read_text(encoding="utf-8").splitlines(), 1):
        if text.startswith("#"):
            tags = tuple(re.findall(r"`(\w+)`", text.partition("tag")[2])) or (None,)
            header = None
        if not text.startswith("|"):
            header = None
            continue
        cells = [c.strip().replace("\\|", "|") for c in re.split(r"(?<!\\)\|", text)[1:-1]]
        if header is None:
            header = cells
        elif "text" in header and not set(cells[0]) <= set("-"):
            part = dict(zip(header, cells))
            place = cell_code(part.get("function", "")) or ANY
            unit, _, function = place.rpartition("::")
            for tag in tags:
                yield Found(
                    Line(tag, None if tag is None else unit or tag,
                         None if tag is None else function, part.get("level", "D"),
                         part.get("number") or None, cell_code(part["text"])),
                    f"{document.name}:{row}")


def alike(listed, written):
    """Whether the two are one line. What the source leaves to the callers may be anything."""
    return all(w in (ANY, l) for l, w in zip(listed, written))


def describe(line):
    if line.tag is None:
        return f"{line.level} {line.text}"
    place = f"|{line.tag}|{line.unit}::{line.function}:{line.number or ''}"
    return f"{line.level} {place} {line.text}"


def compare(written, listed):
    """What is in one of the two only, as sentences."""
    by_text = collections.defaultdict(lambda: ([], []))
    for found in written:
        by_text[found.line.text][0].append(found)
    for found in listed:
        by_text[found.line.text][1].append(found)
    faults = []
    for sources, rows in by_text.values():
        faults += [f"{source.place}: not listed: {describe(source.line)}" for source in sources
                   if not any(alike(row.line, source.line) for row in rows)]
        faults += [f"{row.place}: not written by the library: {describe(row.line)}" for row in rows
                   if not any(alike(row.line, source.line) for source in sources)]
    return faults


def main(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=pathlib.Path, help="folder of the sources")
    parser.add_argument("--print", action="store_true", help="only print the lines of the sources")
    options = parser.parse_args(arguments)
    written = written_lines(options.root)
    if options.print:
        for found in written:
            print(found.place, describe(found.line), sep="\t")
        return 0
    listed = list(listed_lines(options.root / "docs" / "log-lines.md"))
    faults = compare(written, listed)
    print(*faults, sep="\n")
    print(f"{len(written)} lines in the sources, {len(listed)} listed, {len(faults)} differences")
    return 1 if faults or not written else 0


if __name__ == "__main__":
    sys.exit(main())
