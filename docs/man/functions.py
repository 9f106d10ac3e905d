#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Writes the man pages of section 3: functions.py INCLUDE_DIR VERSION FOLDER

One for each exported function, with the structures and enumerations that it uses, and orbsdlsdk(3) with
the rules for all of them. Everything in them is said in the comments of the public headers.
"""
import os
import re
import sys

SERVICES = ("lce", "lle", "lli", "version")
HEADERS = ("status",) + SERVICES
TYPE = re.compile(r"(/\*\*(?:[^*]|\*(?!/))*\*/)\n(?:ORB_EXTENSION|typedef) (enum|struct) (\w+)[^{\n]*\{\n"
                  r"(.*?)\n\}", re.S)
# A comment before a member, or behind it.
MEMBER = re.compile(r"/\*\*(?!<)(.*?)\*/\s*([^;,]+)[;,]|(\w[^;,]*)[;,]\s*/\*\*<(.*?)\*/", re.S)
TOOLS = ("orb-sandbox", "orbctl", "orbd-sim", "orbdiag", "orblog")


def prototype(declaration):
    """A declaration in lines that fit on a screen."""
    if len(declaration) < 70:
        return [declaration]
    at = declaration.index("(", declaration.index(")(")) if ")(" in declaration else declaration.index("(")
    head, rest = declaration[:at + 1], declaration[at + 1:].split(", ")
    return [head + (rest[0] + ("," if rest[1:] else ""))] + [
        "    " + part + ("," if part is not rest[-1] else "") for part in rest[1:]]


def escaped(text):
    """Text as the formatter takes it."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    text = re.sub(r"@p (\w+)", r"\\fI\1\\fR", text)
    text = re.sub(r"\b((?:orb|create|destroy|lce|lle|lli)\w+)\(\)", r"\\fB\1\\fR()", text)
    text = re.sub(r"\b((?:STATUS|LCE|LLE|LLI|SDL)_\w+)", r"\\fB\1\\fR", text)
    return "\n".join("\\&" + line if line[:1] in (".", "'") else line for line in text.split("\n"))


def lines_of(comment):
    """The lines of a comment without its frame; blanks at the beginning of a line stay."""
    inner = re.sub(r"^/\*+|\*/$", "", comment.strip())
    return [re.sub(r"^\s*\* ?", "", line).rstrip() for line in inner.split("\n")]


def blocks(lines):
    """What stands between empty lines."""
    found = [[]]
    for line in lines:
        if line.strip():
            found[-1].append(line)
        elif found[-1]:
            found.append([])
    return [block for block in found if block]


def indent(line):
    return len(line) - len(line.lstrip())


def paragraph(block):
    """A block as it is to be read: a table as it is, points as a list, all else as text."""
    if any(re.search(r"\S {3,}\S", line) for line in block):
        return ".PP\n.EX\n" + escaped("\n".join(block)) + "\n.EE"
    out, texts, point = [".PP"], [], None

    def flush():
        if texts:
            out.append(escaped(" ".join(texts)))
            texts.clear()

    for line in block:
        if line.lstrip().startswith("- "):
            flush()
            out.append(".IP \\(bu 2")
            texts.append(line.strip()[2:])
            point = indent(line)
        else:
            # A line that begins where the points do, or before, belongs to none of them.
            if point is not None and indent(line) <= point:
                flush()
                out.append(".PP")
                point = None
            texts.append(line.strip())
    flush()
    return "\n".join(out)


def structured(first, rest):
    """The text of a parameter; lines further to the left than text would be are a list of its own."""
    if not rest or min(map(indent, rest)) > 6:
        return escaped(" ".join([first] + [line.strip() for line in rest]))
    out, base, texts, head = [escaped(first), ".RS"], min(map(indent, rest)), [], None

    def flush():
        if head:
            out.append((".TP\n" if texts else ".PP\n") + escaped(" ".join(head)))
        if texts:
            out.append(escaped(" ".join(texts)))

    for line in rest:
        if indent(line) == base:
            if texts or head is None:
                flush()
                head, texts = [], []
            head.append(line.strip())
        else:
            texts.append(line.strip())
    flush()
    return "\n".join(out + [".RE"])


class Comment:
    """What the comment before a declaration says, by parts."""

    def __init__(self, text):
        self.text, self.parameters, self.result, self.threads, self.since = [], [], "", [], ""
        joined = "\n".join(lines_of(text))
        since = re.search(r"\s*Since (\d+\.\d+)\.\s*$", joined)
        if since:
            self.since = since.group(1)
            joined = joined[:since.start()]
        for block in blocks(joined.split("\n")):
            if block[0].startswith("@"):
                self.commands(block)
            elif block[0].startswith("Threads:"):
                first = block[0][len("Threads:"):].strip()
                self.threads = [first[:1].upper() + first[1:]] + block[1:]
            else:
                self.text.append(block)

    def commands(self, block):
        starts = [at for at, line in enumerate(block) if line.startswith("@")] + [len(block)]
        for begin, end in zip(starts, starts[1:]):
            parameter = re.match(r"@param (\w+)\s+(.*)", block[begin])
            if parameter:
                self.parameters.append((parameter[1], structured(parameter[2], block[begin + 1:end])))
            else:
                words = " ".join(line.strip() for line in block[begin:end])
                self.result = words.split(" ", 1)[1]

    def summary(self):
        sentence = " ".join(line.strip() for line in self.text[0])
        return re.split(r"[.:;](?: |$)", sentence)[0]


def declarations(header):
    """Functions and callbacks of a header, in its order: (kind, name, declaration, comment)."""
    with open(header, encoding="ascii") as file:
        text = file.read()
    found = []
    for match in re.finditer(r"(/\*\*(?:[^*]|\*(?!/))*\*/)\n(ORB_API [^;]*;|typedef void \(\*[^;]*;)", text):
        declaration = " ".join(match[2].replace("ORB_API ", "").split())
        kind = "callback" if declaration.startswith("typedef") else "function"
        name = re.search(r"\(\*(\w+)\)" if kind == "callback" else r"(\w+)\(", declaration)[1]
        found.append((kind, name, declaration, Comment(match[1])))
    return found


class Type:
    """A structure or an enumeration of a header: its comment and its members, each with a comment."""

    def __init__(self, name, comment, body):
        self.name, self.comment, self.members, self.text = name, Comment(comment), [], comment + body
        for before, first, second, behind in MEMBER.findall(body):
            text = " ".join(" ".join(lines_of(before or behind)).split())
            self.members.append((first.strip() or second.strip(), text))

    def section(self):
        said = "".join(paragraph(block) + "\n" for block in self.comment.text)
        return f".SS {self.name}\n{said}" + "".join(
            f".TP\n.B \"{escaped(member)}\"\n{escaped(text)}\n" for member, text in self.members)


def types_of(include):
    """The structures and enumerations of all headers, by their names."""
    found = {}
    for header in HEADERS:
        with open(os.path.join(include, "orb", header + ".h"), encoding="ascii") as file:
            text = file.read()
        for comment, kind, name, body in TYPE.findall(text):
            found[name] = Type(name, comment, body)
            count = len(re.findall(r"^  \w.*;" if kind == "struct" else r"^  \w+ = ", body, re.M))
            if not count or count != len(found[name].members):
                sys.exit(f"{header}.h: {name} has {count} members, {len(found[name].members)} with a comment")
    return found


def used_types(text, types):
    """The types that a text names, each before those that it names itself."""
    used, words = [], re.findall(r"\w+", text)
    while words:
        word = words.pop(0)
        if word in types and word not in used:
            used.append(word)
            words = re.findall(r"\w+", types[word].text) + words
    return used


def head(title, version):
    return f'.TH {title.upper()} 3 "" "OrbSdlSdk {version}" "OrbSdlSdk"\n.\\" Written from the headers.\n'


def arguments(parameters):
    return "".join(f".TP\n.I {name}\n{text}\n" for name, text in parameters)


def function_page(function, callbacks, others, types, version):
    _, name, declaration, comment = function
    used = [callback for callback in callbacks if callback[1] in declaration]
    page = head(name, version)
    page += f".SH NAME\n{name} \\- {escaped(comment.summary())}\n.SH SYNOPSIS\n.nf\n.B #include <orb/sdl.h>\n"
    for line in [callback[2] for callback in used] + [declaration]:
        page += ".PP\n" + "".join(f".B \"{escaped(part)}\"\n" for part in prototype(line))
    page += ".fi\n.PP\nLink with \\fI\\-lOrbSdlSdk\\fR.\n.SH DESCRIPTION\n"
    page += "".join(paragraph(block) + "\n" for block in comment.text)
    if comment.parameters:
        page += ".SH ARGUMENTS\n" + arguments(comment.parameters)
    results = [part.strip() for part in comment.result.split(" | ")]
    page += ".SH RETURN VALUE\n" + "".join(f".PP\n{escaped(part)}\n" for part in results)
    page += ".SH THREADS\n" + paragraph(comment.threads) + "\n"
    for _, callback, _, said in used:
        page += f".SH CALLBACK {callback}\n" + "".join(paragraph(block) + "\n" for block in said.text)
        page += arguments(said.parameters) + (paragraph(said.threads) + "\n" if said.threads else "")
    shown = used_types(" ".join([callback[2] for callback in used] + [declaration]), types)
    if shown:
        page += ".SH TYPES\n" + "".join(types[other].section() for other in shown)
    page += f".SH HISTORY\nSince version {comment.since}.\n"
    page += ".SH SEE ALSO\n" + ",\n".join(f".BR {other} (3)" for other in others if other != name)
    return re.sub(r"^(\.BR \w+ \(3\)),$", r"\1,", page, flags=re.M) + ",\n.BR orbsdlsdk (3)\n"


def overview(header, functions, version):
    with open(header, encoding="ascii") as file:
        comment = re.search(r"^/\*\n.*?\*/", file.read(), re.S | re.M)[0]
    page = head("orbsdlsdk", version)
    page += ".SH NAME\norbsdlsdk \\- data\\-link services of the modem platform for applications\n"
    page += ".SH SYNOPSIS\n.nf\n.B #include <orb/sdl.h>\n.fi\n.PP\nLink with \\fI\\-lOrbSdlSdk\\fR.\n.SH DESCRIPTION\n"
    for block in blocks(lines_of(comment)):
        point = re.match(r"(\d+)\. ([^.]+)\.\s*(.*)", block[0])
        if point:
            page += f".SH {point[1]}. {escaped(point[2].upper())}\n"
            block = ([point[3]] if point[3] else []) + block[1:]
        page += paragraph(block) + "\n" if block else ""
    page += ".SH FUNCTIONS\n"
    for _, name, _, said in functions:
        page += f".TP\n.BR {name} (3)\n{escaped(said.summary())}\n"
    page += ".SH FILES\nThe documentation folder of the installation has a first program in README.md, the\n"
    page += "commands that build and run it in docs/installing.md, the guide and the examples. Debian\n"
    page += "packages have it at\n"
    page += ".IR /usr/share/doc/liborbsdlsdk\\-dev .\n"
    return page + ".SH SEE ALSO\n" + ",\n".join(f".BR {escaped(tool)} (1)" for tool in TOOLS) + "\n"


def main(include, version, folder):
    os.makedirs(folder, exist_ok=True)
    everything, types = [], types_of(include)
    for service in SERVICES:
        found = declarations(os.path.join(include, "orb", service + ".h"))
        functions = [entry for entry in found if entry[0] == "function"]
        callbacks = [entry for entry in found if entry[0] == "callback"]
        everything += functions
        for function in functions:
            page = function_page(function, callbacks, [entry[1] for entry in functions], types, version)
            with open(os.path.join(folder, function[1] + ".3"), "w", encoding="ascii") as file:
                file.write(page)
    with open(os.path.join(folder, "orbsdlsdk.3"), "w", encoding="ascii") as file:
        file.write(overview(os.path.join(include, "orb", "sdl.h"), everything, version))


if len(sys.argv) != 4:
    sys.exit(__doc__)
main(*sys.argv[1:])
