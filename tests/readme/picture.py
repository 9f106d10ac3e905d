# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""The picture of README.md shows what scripts/demo prints today: the script's own lines, and of the
example that it runs lines of the same form. Run by ctest:
picture.py REPOSITORY ORBD_SIM ALL_SERVICES
"""
import html
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree

RUN = '"$0" --quiet & "$1" --seconds 6; status=$?; kill $!; wait; exit $status'


def form(line):
    """A line without what differs from run to run: names in capitals, of technologies and such, and numbers."""
    return re.sub(r"\d+(\.\d+)?", "0", re.sub(r"\b[0-9]*[A-Z][A-Z0-9_]+\b", "NAME", line))


def main(repository, simulator, example):
    root = pathlib.Path(repository)
    if "docs/demo.svg" not in (root / "README.md").read_text():
        return "README.md does not show docs/demo.svg"
    texts = {}
    for text in xml.etree.ElementTree.parse(root / "docs/demo.svg").iter("{http://www.w3.org/2000/svg}text"):
        if "clip-path" in text.attrib:  # the title has none
            part = (float(text.get("x")), html.unescape(text.text or "").replace("\xa0", " "))
            texts.setdefault(float(text.get("y")), []).append(part)
    picture = ["".join(text for _, text in sorted(texts[y])).rstrip() for y in sorted(texts)]
    picture = [line for line in picture if line]

    printed = subprocess.run([root / "scripts/sandbox", "bash", "-c", RUN, simulator, example],
                             stdout=subprocess.PIPE, text=True, check=True, timeout=300).stdout
    forms = {form(line) for line in printed.splitlines()}
    demo = (root / "scripts/demo").read_text()
    if not picture[0].startswith("$ scripts/demo"):
        return f"the picture begins with: {picture[0]}"
    services = set()
    for line in picture[1:]:
        if line[:5] in ("lce  ", "lle  ", "lli  "):
            services.add(line[:3])
            if form(line) not in forms:
                return f"the example prints no such line: {line}"
        elif re.sub(r" for \d+ s:$", " for $seconds s:", line) not in demo:
            return f"scripts/demo prints no such line: {line}"
    return None if len(services) == 3 else f"only {services} are shown"


if __name__ == "__main__":
    fault = main(*sys.argv[1:])
    if fault:
        print(f"FAILED: {fault}; docs/demo.py draws the picture anew", file=sys.stderr)
    sys.exit(1 if fault else 0)
