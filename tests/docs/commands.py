# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Compares commands that documents show with what the programs' own help tells.

A program is one of this project or an ordinary one, an option and a command of it are in its help, a preset
and a test are there. Arguments are not looked at.
"""

import functools
import os
import pathlib
import re
import shlex
import subprocess

TOOLS = {
    "orbctl": "tools/orbctl/orbctl",
    "orbd-sim": "tools/orbd-sim/orbd-sim",
    "orbdiag": "tools/orbdiag/orbdiag",
    "orblog": "tools/orblog/orblog",
}
CMAKE = ("cmake", "ctest", "cpack")
ORDINARY = set("""apt-get callgrind_annotate cat cc cd cp exec exit export find gdb grep head jq kill ln mkdir mv openssl pkg-config
    python3 sed sleep ssh tar wait""".split())
MADE = ("build/first", "./")  # programs of the reader's own
SEPARATORS = "();<>|&\n"
OPTION = re.compile(r"--[a-z][\w-]*|-[A-Za-z](?![A-Za-z]*[_-])")


def simple_commands(code):
    """The commands of a piece of shell, each a list of words without redirections."""
    code = re.sub(r"(^|\s)#\s.*$", r"\1", code.replace("\\\n", " "), flags=re.M)
    code = re.sub(r"\\[()]", "BRACKET", code)  # a word of find
    inner = re.findall(r"\$\(([^()]*)\)", code)
    lexer = shlex.shlex(re.sub(r"\$\([^()]*\)", "SUBSTITUTED", code), posix=True,
                        punctuation_chars=SEPARATORS)
    lexer.whitespace, lexer.whitespace_split, lexer.commenters = " \t\r", True, ""
    found, skip = [[]], False
    for token in lexer:
        if token and set(token) <= set(SEPARATORS):
            skip = "<" in token or ">" in token
            if not skip:
                found.append([])
        elif skip:
            skip = False
        else:
            found[-1].append(token)
    for words in found:
        while words and re.match(r"\w+=", words[0]):
            words = words[1:]
        if words:
            yield words
    for text in inner:
        yield from simple_commands(text)


class Commands:
    """What there is to compare with: the sources, and a build whose programs are asked."""

    def __init__(self, root, build):
        self.root, self.build = root, build
        self.presets = set(re.findall(r'"name": "([\w-]+)"',
                                      (root / "CMakePresets.json").read_text(encoding="utf-8")))
        self.count = 0

    @functools.cache
    def output(self, *command):
        ended = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, timeout=60,
                               stderr=subprocess.STDOUT, text=True, cwd=self.root, check=False)
        return ended.stdout

    @functools.cached_property
    def tests(self):
        listed = self.output("ctest", "--test-dir", str(self.build), "-N")
        return re.findall(r"^ *Test *#\d+: (\S+)", listed, flags=re.M)

    @functools.cached_property
    def variables(self):
        files = [self.root / "CMakeLists.txt", *self.root.glob("cmake/**/*.cmake"),
                 *self.root.glob("tools/CMakeLists.txt"), *self.root.glob("tests/**/CMakeLists.txt")]
        text = "".join(file.read_text(encoding="utf-8") for file in files)
        return set(re.findall(r"option\((ORB_\w+)", text)) | set(
            re.findall(r"set\((ORB_\w+) [^)]*?CACHE", text))

    def faults(self, words):
        """What is wrong with one command, and with those that it is given."""
        self.count += 1
        name, rest = words[0], words[1:]
        base = os.path.basename(name)
        if base in TOOLS:
            return self.of_program(base, str(self.build / TOOLS[base]), rest)
        if base == "orb-sandbox" or name == "scripts/sandbox":
            return self.of_wrapper(base, "scripts/sandbox", rest)
        if name.startswith("scripts/"):
            return self.of_script(name, rest)
        if name in CMAKE:
            return self.of_cmake(name, rest)
        if name == "bash" and rest[:1] == ["-c"]:
            return self.of_all(rest[1])
        if name == "exec" or name == "gdb" and rest[:1] == ["--args"]:
            return self.faults(rest[name == "gdb":])
        if name.startswith(("build/dev/", "build/aarch64-musl/")):
            return self.of_built(name, pathlib.Path(*pathlib.Path(name).parts[2:]), rest)
        if name in ORDINARY or name.startswith(MADE) or name.isupper():  # COMMAND: the reader's choice
            return []
        return [f"{name} is no program that is known here"]

    def of_all(self, code):
        return [fault for words in simple_commands(code) for fault in self.faults(words)]

    def of_options(self, name, text, words):
        found = [OPTION.match(word) for word in words]
        return [f"{name} has no {option[0]}" for option in found
                if option and not re.search(rf"(?<![\w-]){option[0]}(?![\w-])", text)]

    def of_program(self, name, program, words):
        faults = []
        if "--" in words:
            faults = self.faults(words[words.index("--") + 1:])
            words = words[:words.index("--")]
        path, helps = [], [self.output(program, "--help")]
        while True:
            listed = re.findall(r"^  ([a-z][a-z-]*) ", helps[-1].partition("Commands:\n")[2], flags=re.M)
            chosen = [word for word in words if word in listed]
            if not chosen:
                break
            path.append(chosen[0])
            helps.append(self.output(program, *path, "--help"))
        if listed and words[len(path):] and re.match("[a-z]", words[len(path)]):
            faults.append(f"{' '.join([name, *path])} has no command {words[len(path)]}")
        return faults + self.of_options(" ".join([name, *path]), "".join(helps), words)

    def of_wrapper(self, name, script, words):
        own = 0
        while own < len(words) and words[own].startswith("-"):
            own += 1
        faults = self.of_options(name, self.output(str(self.root / script), "--help"), words[:own])
        return faults + (self.faults(words[own:]) if words[own:] else [])

    def of_script(self, name, words):
        if not os.access(self.root / name, os.X_OK):
            return [f"there is no {name}"]
        text = self.output(str(self.root / name), "--help")
        if name == "scripts/target" and words[:1] == ["shell"]:
            return self.faults(words[1:]) if words[1:] else []
        faults = self.of_options(name, text, words)
        for word in words:
            if word.endswith("_test"):
                faults += self.of_tests(word)
            elif re.fullmatch("[a-z]+", word) and not re.search(rf"\b{word}\b", text):
                faults.append(f"{name} does not know {word}")
        return faults

    def of_cmake(self, name, words):
        text = self.output(name, "--help")
        if name == "cmake":
            text += self.output("cmake", "--build") + self.output("cmake", "--install")
        faults = self.of_options(name, text, [word[:2] if re.match("-[DSBGR]", word) else word
                                              for word in words])
        for word, value in zip(words, words[1:]):
            if word == "--preset" and value not in self.presets:
                faults.append(f"there is no preset {value}")
            if word == "-R" and name == "ctest":
                faults += self.of_tests(value)
        return faults

    def of_tests(self, pattern):
        return [] if any(re.search(pattern, test) for test in self.tests) else [f"there is no test {pattern}"]

    def of_built(self, name, program, words):
        if not (self.build / program).exists():
            return [f"the build has no {name}"]
        chosen = [word for word in words if word.startswith("--gtest_filter=")]
        if chosen and not re.search("^  ", self.output(str(self.build / program), "--gtest_list_tests",
                                                       *chosen), flags=re.M):
            return [f"{name} has no test for {chosen[0]}"]
        if program.parts[0] == "examples":
            text = "".join(file.read_text(encoding="utf-8") for file in self.root.glob("examples/*.c"))
            return self.of_options(name, text, words)
        return []


def within_sentences(text):
    """What stands between backquotes outside samples, each with its row."""
    fenced = re.sub(r"^ *```.*?^ *```$", lambda found: re.sub(r"[^\n]", "", found[0]), text,
                    flags=re.M | re.S)
    for found in re.finditer(r"`([^`]+)`", fenced):
        yield fenced.count("\n", 0, found.start()) + 1, " ".join(found[1].split())


def check(root, build, samples, texts):
    """The number of commands, and a sentence for each fault; samples are pairs of place and code."""
    known = Commands(root, build)
    faults = []

    def look(place, code):
        faults.extend(f"{place}: {fault}" for fault in known.of_all(code))

    for place, code in samples:
        look(place, code)
    begins = re.compile(rf"(?:ORB_\w+=\S+ )*(?:(?:{'|'.join(TOOLS)}|orb-sandbox|{'|'.join(CMAKE)}) |"
                        r"scripts/(?!target\.d)[a-z-]+(?: |$))")
    for name, text in texts.items():
        if name.endswith(".1"):
            continue  # tool_documents.sh compares the options of a man page with the help
        for row, code in within_sentences(text):
            if begins.match(code):
                look(f"{name}:{row}", re.sub(r"\.\.\.$", "", code))
        faults += [f"{name}: there is no option {variable}"
                   for variable in re.findall(r"-D(ORB_\w+)", text) if variable not in known.variables]
    return known.count, faults
