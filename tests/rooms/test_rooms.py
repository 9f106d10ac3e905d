# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""What rooms.py finds in trees that were made up, each with one thing wrong."""
import pathlib
import tempfile
import unittest

import rooms

TABLE = """
| room | job | may use | may not use |
|---|---|---|---|
| `top` | a | `middle`, `low`, `protobuf` | |
| `middle`, `beside` | b | `low`, `low/of/One.h` | |
| `low/in` | c | `libcrypto` | |
| `low/of` | d | nothing | |
| `last` | e | `low/of/One.h` | |

| room | may use |
"""
TREE = {
    "top/Top.cpp": '#include <vector>\n#include "Middle.h"\n#include "In.h"\n'
                   '#include <google/protobuf/x.h>',
    "middle/Middle.h": '#include "Beside.h"\n#  include "In.h"',
    "beside/Beside.h": '#include "One.h"',
    "low/in/In.h": "#include <openssl/evp.h>",
    "low/of/One.h": "",
    "low/of/Two.h": '#include "One.h"',
    "last/Last.cpp": '#include "One.h"',
}


class Rooms(unittest.TestCase):
    def findings(self, changes=(), table=TABLE):
        files = {**TREE, **dict(changes)}
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                path = pathlib.Path(folder, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return rooms.check(pathlib.Path(folder), table)[0]

    def test_a_tree_as_the_table_has_it_is_right(self):
        self.assertEqual(self.findings(), [])

    def test_an_upward_arrow_is_found_and_the_circle_that_it_makes(self):
        self.assertEqual(
            self.findings({"low/in/In.h": '#include "Middle.h"'}.items()),
            ["low/in/In.h includes Middle.h: low/in may not use middle",
             "low/in is part of a circle",
             "middle is part of a circle"])

    def test_an_include_that_the_table_does_not_name_is_found(self):
        self.assertEqual(self.findings({"last/Last.cpp": '#include "Two.h"'}.items()),
                         ["last/Last.cpp includes Two.h: last may not use low/of"])

    def test_a_library_that_the_table_does_not_name_is_found(self):
        self.assertEqual(self.findings({"low/of/One.h": "#include <openssl/rsa.h>"}.items()),
                         ["low/of/One.h includes openssl/rsa.h: low/of may not use libcrypto"])

    def test_rooms_of_one_row_may_use_each_other_but_not_in_a_circle(self):
        self.assertEqual(self.findings({"beside/Beside.h": '#include "Middle.h"'}.items()),
                         ["beside is part of a circle", "middle is part of a circle"])

    def test_a_source_in_no_room_is_found(self):
        self.assertEqual(self.findings({"low/New.cpp": ""}.items()), ["low/New.cpp is in no room"])

    def test_a_table_with_an_upward_arrow_is_found(self):
        table = TABLE.replace("| `libcrypto` |", "| `libcrypto`, `top` |")
        self.assertEqual(self.findings(table=table),
                         ["the table: low/in may use top, which stands above it"])

    def test_a_table_that_names_what_there_is_not_is_found(self):
        table = TABLE.replace("| nothing |", "| `attic` |")
        self.assertEqual(self.findings(table=table),
                         ["the table: low/of may use attic, which is no room"])
        table = TABLE.replace("`beside` |", "`beside`, `cellar` |")
        self.assertEqual(self.findings(table=table), ["the table: cellar has no sources"])

    def test_a_document_without_the_table_is_refused(self):
        with self.assertRaises(ValueError):
            self.findings(table="| folder | may use |\n|---|---|\n| `top` | |\n")


if __name__ == "__main__":
    unittest.main()
