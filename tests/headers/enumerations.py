#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Writes a program of all enumerations of the public headers: enumerations.py INCLUDE_DIR FILE

As C99 and as C++11 it compiles without a warning, and ends with 0 when types and names are right. It
has a switch over all values of each enumeration, and asks for size and sign of the types and for the
name of each value.
"""
import os
import re
import sys

ENUMERATION = re.compile(r"^ORB_EXTENSION enum (\w+) ORB_ENUM_INT32 \{(.*?)\}", re.S | re.M)


def enumerations(folder):
    """The enumerations of the headers: (type, what its function is called, enumerators)."""
    found = []
    for header in sorted(os.listdir(os.path.join(folder, "orb"))):
        with open(os.path.join(folder, "orb", header), encoding="ascii") as file:
            text = re.sub(r"/\*.*?\*/", "", file.read(), flags=re.S)
        found_here = ENUMERATION.findall(text)
        if len(re.findall(r"^\s*(?:typedef |ORB_EXTENSION )?enum\b", text, re.M)) != len(found_here):
            sys.exit(f"{header}: an enumeration is 'ORB_EXTENSION enum NAME ORB_ENUM_INT32 {{...}}'")
        for name, body in found_here:
            values = re.findall(r"(\w+) = -?\d+", body)
            if len(values) != len([part for part in body.split(",") if part.strip()]):
                sys.exit(f"{header}: every enumerator of {name} has its number")
            found.append((name, function(name), values))
    return found


def function(name):
    """orbStatusV2Name for status_v2_e, orbLliRatName for LliRat."""
    words = name[:-2].split("_") if name.endswith("_e") else [name]
    return "orb" + "".join(word[0].upper() + word[1:] for word in words) + "Name"


def prefix(values):
    """What all of them begin with, up to an underscore."""
    return os.path.commonprefix(values).rpartition("_")[0] + "_"


TEST = """/* Generated from the public headers. */
#include <orb/names.h>
#include <stdio.h>
#include <string.h>

static int failed;
static void expect(const char* value, const char* name, const char* given) {
  if (strcmp(name, given) == 0) return;
  printf("%s is called %s, not %s\\n", value, given, name);
  failed = 1;
}
"""


def write_test(found):
    print(TEST)
    for name, call, values in found:
        first = prefix(values)
        print(f"static int switchOf_{name}({name} value) {{\n  switch (value) {{")
        for value in values:
            print(f"    case {value}:\n      return (int){value};")
        print("  }\n  return 1000;\n}\n")
        print(f"static void check_{name}(void) {{")
        print(f"  if (sizeof({name}) != 4 || !(({name})-1 < ({name})0)) {{")
        print(f"    printf(\"{name} is no signed integer of 32 bits\\n\");\n    failed = 1;\n  }}")
        for value in values:
            print(f"  if (switchOf_{name}({value}) != (int){value}) failed = 1;")
            print(f"  expect(\"{value}\", \"{value[len(first):]}\", {call}({value}));")
        print(f"  expect(\"another {name}\", \"unknown\", {call}(({name})1000));")
        print(f"  expect(\"another {name}\", \"unknown\", {call}(({name})-1000));\n}}\n")
    print("int main(void) {")
    for name, _, _ in found:
        print(f"  check_{name}();")
    print(f"  printf(\"{len(found)} enumerations\\n\");\n  return failed;\n}}")


if len(sys.argv) != 3:
    sys.exit(__doc__)
program = enumerations(sys.argv[1])
with open(sys.argv[2], "w", encoding="ascii") as sys.stdout:
    write_test(program)
