#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Runs scripts/demo and draws what it prints, as a terminal shows it: the picture of README.md.

Usage: docs/demo.py [FILE]    [Default: docs/demo.svg]
Needs the Debian package python3-rich: scripts/setup --build python3-rich && docs/demo.py
"""
import io
import pathlib
import subprocess
import sys

COLUMNS = 80
COMMAND = ["scripts/demo", "--seconds", "4"]
TITLE = "OrbSdlSdk"

# No fonts from elsewhere: the reader's own.
FORMAT = """\
<svg class="rich-terminal" viewBox="0 0 {width} {height}" xmlns="http://www.w3.org/2000/svg">
<style>
.{unique_id}-matrix {{ font-family: monospace; font-size: {char_height}px; line-height: {line_height}px; }}
.{unique_id}-title {{ font-family: sans-serif; font-size: 18px; font-weight: bold; }}
{styles}
</style>
<defs>
<clipPath id="{unique_id}-clip-terminal">
<rect x="0" y="0" width="{terminal_width}" height="{terminal_height}"/>
</clipPath>
{lines}
</defs>
{chrome}
<g transform="translate({terminal_x}, {terminal_y})" clip-path="url(#{unique_id}-clip-terminal)">
{backgrounds}
<g class="{unique_id}-matrix">
{matrix}
</g>
</g>
</svg>
"""


def main(arguments):
    if len(arguments) > 1 or arguments[:1] in (["-h"], ["--help"]):
        print(__doc__.strip())
        return 0 if arguments[:1] in (["-h"], ["--help"]) else 2
    try:
        from rich.console import Console
        from rich.text import Text
    except ImportError:
        print("demo.py: python3-rich is not installed: scripts/setup --build python3-rich", file=sys.stderr)
        return 1
    root = pathlib.Path(__file__).resolve().parent.parent
    printed = subprocess.run(COMMAND, cwd=root, stdout=subprocess.PIPE, text=True, check=True).stdout
    console = Console(record=True, width=COLUMNS, file=io.StringIO(), color_system="truecolor", highlight=False)
    console.print(Text.assemble(("$ ", "bold green"), (" ".join(COMMAND), "bold")))
    for line in printed.splitlines():
        console.print(Text(line))
    picture = pathlib.Path(arguments[0]) if arguments else root / "docs" / "demo.svg"
    drawn = console.export_svg(title=TITLE, code_format=FORMAT)
    picture.write_text("".join(line.rstrip() + "\n" for line in drawn.splitlines()))
    print(f"{picture}: {len(printed.splitlines())} lines")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
