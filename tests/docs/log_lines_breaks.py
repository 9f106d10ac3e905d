#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Shows that log_lines.py finds each kind of difference between list and sources."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).with_name("log_lines.py")
LIST = "docs/log-lines.md"
EVENT_LOOP = "utils/eventManager/src/EventManager.cpp"
LLE = "sdk/Sdl/src/Lle.cpp"
SESSION = "le/utils/orb_ipc/src/OrbIpcSession.cpp"


class Deviation(unittest.TestCase):
    """A copy of the list and of the sources, changed in one place."""

    def setUp(self):
        room = tempfile.TemporaryDirectory()
        self.addCleanup(room.cleanup)
        self.root = pathlib.Path(room.name)
        for name in ("le", "sdk", "utils"):
            shutil.copytree(ROOT / name, self.root / name)
        (self.root / "docs").mkdir()
        shutil.copy(ROOT / LIST, self.root / LIST)

    def change(self, file, old, new):
        path = self.root / file
        text = path.read_text(encoding="utf-8")
        self.assertIn(old, text)
        path.write_text(text.replace(old, new, 1), encoding="utf-8")

    def faults(self):
        done = subprocess.run([sys.executable, "-B", str(CHECK), str(self.root)], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        return done.returncode, done.stdout

    def expect(self, *parts):
        status, output = self.faults()
        self.assertEqual(1, status, output)
        for part in parts:
            self.assertIn(part, output)

    def test_none(self):
        status, output = self.faults()
        self.assertEqual(0, status, output)
        self.assertIn(" 0 differences", output)

    def test_line_is_not_listed(self):
        self.change(LIST, "| E | `epoll_wait error` | |\n", "")
        self.expect("not listed: E epoll_wait error", " 1 differences")

    def test_line_is_not_in_the_sources(self):
        self.change(LIST, "| E | `epoll_wait error` | |\n",
                    "| E | `epoll_wait error` | |\n| E | `epoll_wait stopped` | |\n")
        self.expect("not written by the library: E epoll_wait stopped", " 1 differences")

    def test_text_differs(self):
        self.change(EVENT_LOOP, '"epoll_wait error"', '"epoll_wait failed"')
        self.expect("not listed: E epoll_wait failed",
                    "not written by the library: E epoll_wait error")

    def test_level_differs(self):
        self.change(EVENT_LOOP, 'ERROR, "epoll_wait error"', 'WARN, "epoll_wait error"')
        self.expect("not listed: W epoll_wait error")

    def test_number_of_a_log_point_differs(self):
        self.change(LLE, '"orb_lle_enable", 20, "Enable"', '"orb_lle_enable", 21, "Enable"')
        self.expect("|Lle|Lle::orb_lle_enable:21 Enable", "|Lle|Lle::orb_lle_enable:20 Enable")

    def test_log_point_follows_the_source(self):
        self.change(LLE, '"orb_lle_enable", 20, "Enable"', '"orb_lle_enable", __LINE__, "Enable"')
        self.expect("not listed: D |Lle|Lle::orb_lle_enable: Enable")

    def test_function_differs(self):
        self.change(LIST, "| `OrbIpcSession::handleEvent` | D | `case default` |",
                    "| `OrbIpcSession::handleMsg` | D | `case default` |")
        self.expect("not listed: D |ORB|OrbIpcSession::handleEvent: case default")

    def test_tag_differs(self):
        self.change(LIST, "## SDK client: tag `OrbSdk`", "## SDK client: tag `OrbSDK`")
        self.expect("not listed: D |OrbSdk|SdkClientBase::sdkThread:43 sdkThread loop")

    def test_new_line_in_the_sources(self):
        self.change(SESSION, 'ORB_LOGD("case default");',
                    'ORB_LOGD("case default");\n      ORB_LOGD("one"\n               " more");')
        self.expect("not listed: D |ORB|OrbIpcSession::handleEvent: one more", " 1 differences")

    def test_unknown_way_to_log(self):
        self.change(SESSION, 'ORB_LOGD("case default");', 'ORB_LOG_NOTE("case default");')
        self.expect("ORB_LOG_NOTE is unknown here")


if __name__ == "__main__":
    ROOT = pathlib.Path(sys.argv.pop(1))
    unittest.main()
