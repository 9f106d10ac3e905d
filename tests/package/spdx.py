#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Checks the SPDX document of an installed FOLDER against what files need: spdx.py FOLDER NEEDED...

A file NEEDED is called COMPONENT.needed and has the name of a library in each line.
"""
import json
import pathlib
import re
import sys

PACKAGE_OF = {
    "protobuf-lite": "protobuf", "crypto": "OpenSSL", "ncursesw": "ncurses", "tinfo": "ncurses",
    "formw": "ncurses", "stdc++": "libstdc++",
}
# The C library, libraries that compilers add, and the project's own libraries.
NOT_OTHERS = re.compile("^(asan|ubsan|tsan|c|m|dl|pthread|gcc_s|ld-.*|ld-linux.*|log|cutils|diag|OrbSdlSdk)$")

folder = pathlib.Path(sys.argv[1])
document = json.loads((folder / "OrbSdlSdk.spdx.json").read_text())
assert document["spdxVersion"] == "SPDX-2.3" and document["dataLicense"] == "CC0-1.0"
for key in ("SPDXID", "name", "documentNamespace", "creationInfo"):
    assert document[key], key
names = {}
for package in document["packages"]:
    assert re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", package["SPDXID"]), package
    assert package["SPDXID"] not in names, package
    assert package["downloadLocation"] and package["licenseDeclared"], package
    names[package["SPDXID"]] = package["name"]
names["SPDXRef-DOCUMENT"] = "document"
linked = set()
for relation in document["relationships"]:
    ends = names[relation["spdxElementId"]], names[relation["relatedSpdxElement"]]
    linked.add((ends[0].replace("OrbSdlSdk ", ""), relation["relationshipType"], ends[1]))

third_party = (folder / "THIRD-PARTY").read_text()
for name in names.values():
    assert name == "document" or name.startswith("OrbSdlSdk ") or name in third_party, name
for needed in map(pathlib.Path, sys.argv[2:]):
    component = needed.name.removesuffix(".needed")
    for library in needed.read_text().split():
        if not NOT_OTHERS.match(library):
            wanted = (component, "DYNAMIC_LINK", PACKAGE_OF.get(library, library))
            assert wanted in linked, f"{wanted} is not in the document: {sorted(linked)}"
