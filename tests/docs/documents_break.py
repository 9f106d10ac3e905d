#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Shows that each check of the documents finds each kind of difference."""

import contextlib
import io
import os
import pathlib
import re
import shutil
import sys
import tempfile
import unittest

import commands
import documented_functions
import log_lines
import protocol_fields
import samples
import where_to_change

LIST = "docs/log-lines.md"
MAP = "cmake/OrbSdlSdk.map"
PROTOCOL = "docs/protocol.md"
EVENT_LOOP = "utils/eventManager/src/EventManager.cpp"
LLE = "sdk/Sdl/src/Lle.cpp"
SESSION = "le/utils/orb_ipc/src/OrbIpcSession.cpp"


class Deviation(unittest.TestCase):
    """A copy of what a check reads, changed in one place."""

    CHECK = None
    READ = ()
    MORE = ()  # arguments behind the folder

    def setUp(self):
        room = tempfile.TemporaryDirectory()
        self.addCleanup(room.cleanup)
        self.root = pathlib.Path(room.name)
        for name in self.READ:
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            if (ROOT / name).is_dir():
                shutil.copytree(ROOT / name, self.root / name, copy_function=os.symlink)
            else:
                os.symlink(ROOT / name, self.root / name)

    def change(self, file, old, new):
        path = self.root / file
        text = path.read_text(encoding="utf-8")
        self.assertIn(old, text)
        path.unlink()
        path.write_text(text.replace(old, new, 1), encoding="utf-8")

    def faults(self):
        with contextlib.redirect_stdout(io.StringIO()) as output:
            try:
                status = self.CHECK.main([str(self.root), *self.MORE])
            except SystemExit as end:  # with a sentence
                return 1, end.code
        return status, output.getvalue()

    def expect(self, *parts):
        status, output = self.faults()
        self.assertEqual(1, status, output)
        for part in parts:
            self.assertIn(part, output)

    def expect_none(self):
        status, output = self.faults()
        self.assertEqual(0, status, output)
        self.assertIn(" 0 differences", output)


class LogLines(Deviation):
    CHECK = log_lines
    READ = ("le", "sdk", "utils", LIST)

    def test_none(self):
        self.expect_none()

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


class DocumentedFunctions(Deviation):
    CHECK = documented_functions
    READ = ("include", "docs", "README.md", MAP)

    def test_none(self):
        self.expect_none()

    def test_document_names_what_is_not_exported(self):
        self.change("README.md", "createLceClient", "createLcaClient")
        self.expect("README.md", "createLcaClient is no function of the library", " 1 differences")

    def test_new_function_has_neither_header_nor_lines(self):
        self.change(MAP, "orb_lli_enable;", "orb_lli_enable;\n    orb_lli_pause;")
        self.expect("orb_lli_pause: docs/log-lines.md has no line of it",
                    "orb_lli_pause: no public header has it", " 2 differences")

    def test_function_is_exported_no_more(self):
        self.change(MAP, "    lliRegLinkInterruptInd;\n", "")
        self.expect("include/orb/lli.h", "lliRegLinkInterruptInd is no function of the library")

    def test_new_kind_of_name(self):
        self.change(MAP, "orb_lli_enable;", "orb_lli_enable;\n    sdlVersion;")
        self.expect("sdlVersion: no name that this check would find in a document")


class ProtocolFields(Deviation):
    CHECK = protocol_fields
    READ = ("docs", "proto")

    def test_none(self):
        self.expect_none()

    def test_new_field(self):
        self.change("proto/lli.proto", "  LliRatType target_rat = 4;",
                    "  uint32 cell = 7;\n  LliRatType target_rat = 4;")
        self.expect("lli: docs/protocol.md does not have in LliIndResp: cell 7 uint32",
                    " 1 differences")

    def test_field_is_not_there(self):
        self.change(PROTOCOL, "| `rate` | 1 |", "| `rates` | 1 |")
        self.expect("lce: not in GetLastEstimationReportResp: rates 1 uint32",
                    "lce: not in EstimationReportsResp: rates 1 uint32", " 4 differences")

    def test_number_differs(self):
        self.change(PROTOCOL, "| `reporting_criteria` | 1 |", "| `reporting_criteria` | 2 |")
        self.expect("lle: not in SetReportingCriteria: reporting_criteria 2 uint32")

    def test_type_differs(self):
        self.change("proto/lce.proto", "repeated uint32 first_list", "repeated uint64 first_list")
        self.expect("lce: not in SetReportingCriteria: first_list 5 repeated uint32")

    def test_what_all_services_have_differs_in_one(self):
        self.change("proto/lle.proto", "ServiceData data = 3;", "ServiceData data = 4;")
        self.expect("lle: docs/protocol.md does not have in ServiceMsg: data 4 ServiceData",
                    " 2 differences")

    def test_message_is_not_described(self):
        self.change("proto/lle.proto", "message StatusInd {",
                    "message Pause {\n}\nmessage StatusInd {")
        self.expect("lle: docs/protocol.md does not have the message Pause", " 1 differences")

    def test_message_is_not_there(self):
        self.change("proto/lle.proto", "message RegEstimationReports {\n}\n", "")
        self.expect("lle: there is no message RegEstimationReports", " 1 differences")

    def test_enumerator_differs(self):
        self.change(PROTOCOL, "4 `LLI_3GPP_TDSCDMA`", "4 `LLI_3GPP_TDCDMA`")
        self.expect("lli: not in LliRatType: 4 LLI_3GPP_TDCDMA", " 2 differences")

    def test_nothing_is_said_of_a_field(self):
        self.change(PROTOCOL, "capacity of the link | kbit/s |", " | |")
        self.expect("`rate`: no meaning", "`rate`: neither unit nor range", " 2 differences")

    def test_sender_is_not_named(self):
        self.change(PROTOCOL, "| client: each request |", "| each request |")
        self.expect("**`ServiceMsg`**: does not say who sends it", " 1 differences")

    def test_unknown_way_to_write_a_message(self):
        self.change("proto/lce.proto", "  uint32 rate = 1; ", "  optional uint32 rate = 1; ")
        self.expect("not known here: optional uint32 rate = 1;")


class Samples(Deviation):
    CHECK = samples
    READ = ("README.md", "CONTRIBUTING.md", "docs", "tests/docs", "tests/golden", "tests/package",
            "tests/readme")

    def test_none(self):
        self.expect_none()

    def test_new_sample(self):
        self.change("README.md", "## Limitations", "```sh\norbctl forecast\n```\n\n## Limitations")
        self.expect("README.md:", "samples.txt does not say what runs it", " 1 differences")

    def test_new_example_in_a_man_page(self):
        self.change("docs/man/orbctl.1", ".SH EXAMPLES", ".SH EXAMPLES\n.nf\norbctl forecast\n.fi")
        self.expect("docs/man/orbctl.1:", "samples.txt does not say what runs it", " 1 differences")

    def test_sample_is_gone(self):
        self.change("docs/logging.md", "import sys", "import os, sys")
        self.change("docs/threads.md", "exported functions", "functions")
        self.expect("docs/threads.md has no sample with 'exported functions'",
                    "docs/threads.md:7: tests/docs/samples.txt does not say what runs it",
                    "docs/logging.md has no sample with 'import sys'")

    def test_two_entries_for_a_sample(self):
        self.change("tests/docs/samples.txt", "docs/threads.md 'enable LCE'",
                    "docs/threads.md 'disable LCE' none 'a drawing'\ndocs/threads.md 'enable LCE'")
        self.expect("samples.txt has it 2 times", " 1 differences")

    def test_script_takes_another(self):
        self.change("tests/package/uninstall.sh", '"--component runtime"', '"--component tools"')
        self.expect("tests/package/uninstall.sh does not take '--component runtime'", " 1 differences")

    def test_script_is_run_by_no_test(self):
        self.change("tests/readme/CMakeLists.txt", "/first_program.sh", "/second_program.sh")
        self.change("tests/readme/CMakeLists.txt", "NAME first_program ", "NAME second_program ")
        self.change("tests/readme/CMakeLists.txt", "properties(first_program", "properties(second_program")
        self.expect("no test runs tests/readme/first_program.sh", " 3 differences")

    def test_exception_has_no_reason(self):
        self.change("tests/docs/samples.txt", "none 'a record'", "none")
        self.expect("no reason", " 1 differences")

    def test_sample_has_no_end(self):
        self.change("docs/man/orbdiag.1", '.fi\n.SH SEE ALSO', '.SH SEE ALSO')
        self.expect("a sample without an end")


class WhereToChange(Deviation):
    CHECK = where_to_change
    READ = ("CHANGELOG.md", "CMakeLists.txt", "CONTRIBUTING.md", *where_to_change.FOLDERS)

    def setUp(self):
        super().setUp()
        names = [path.stem for path in (ROOT / "tests").glob("**/*_test.cpp")]
        named = where_to_change.rows_of((ROOT / "CONTRIBUTING.md").read_text(encoding="utf-8"))
        names += [word for _, _, shown in named for word in where_to_change.words_of(shown)
                  if re.fullmatch("[a-z_-]+(_c99)?", word)]
        (self.root / "names").write_text("\n".join(names), encoding="utf-8")
        self.MORE = (str(self.root / "names"),)

    def test_none(self):
        self.expect_none()

    def test_file_is_not_there(self):
        self.change("CONTRIBUTING.md", "`ModelCalls.cpp`", "`ModelCall.cpp`")
        self.expect("a request: there is no ModelCall.cpp", " 1 differences")

    def test_file_has_moved(self):
        self.change("CONTRIBUTING.md", "`tools/orbctl/src/LibraryClient.cpp`", "`tools/LibraryClient.cpp`")
        self.expect("a request: there is no tools/LibraryClient.cpp", " 1 differences")

    def test_name_is_not_there(self):
        self.change("CONTRIBUTING.md", "`ORB_LOG_AT`", "`ORB_LOG_BESIDE`")
        self.expect("a log line: there is no ORB_LOG_BESIDE", " 1 differences")

    def test_test_is_not_there(self):
        self.change("CONTRIBUTING.md", "`OrbdSimLce_test`", "`OrbdSimLcf_test`")
        self.expect("a request: there is no test OrbdSimLcf_test", " 1 differences")

    def test_subject_is_gone(self):
        self.change("CONTRIBUTING.md", "| **a log line** |", "| |")
        self.expect("CONTRIBUTING.md does not say where a log line is changed",
                    "CONTRIBUTING.md names no test for a log line", " 2 differences")


class DocumentedCommands(unittest.TestCase):
    """Commands as documents show them, beside tools that have less than the real ones."""

    HELP = "Options:\n  -h, --help   x\n  -q, --quiet  x\n"

    def setUp(self):
        room = tempfile.TemporaryDirectory()
        self.addCleanup(room.cleanup)
        root = pathlib.Path(room.name)
        for tool in commands.TOOLS.values():
            self.program(root / tool, self.HELP + "Commands:\n  read    x\n",
                         self.HELP + "  -k, --key FILE  x\n")
        self.program(root / "scripts/sandbox", self.HELP)
        self.program(root / "scripts/test", self.HELP + "  dev  x\n")
        self.program(root / "tests/Some_test", "Some.\n  First\n")
        os.symlink(ROOT / "CMakePresets.json", root / "CMakePresets.json")
        self.known = commands.Commands(root, root)
        self.known.tests = ["Some_test", "samples"]

    @staticmethod
    def program(path, text, of_read=""):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"#!/bin/sh\n[ \"$1\" = read ] && echo '{of_read}' || echo '{text}'\n",
                        encoding="utf-8")
        path.chmod(0o755)

    def test_right(self):
        for code in ("orblog read -k FILE --quiet logs/ | grep x", "orblog --help", "X=1 orblog read",
                     "scripts/sandbox -q bash -c 'orblog read & exec ./mine --any'", "scripts/test dev",
                     "orb-sandbox orblog read -- ./mine --any", "(cd build && ctest --preset dev -R Some)",
                     "build/dev/tests/Some_test --gtest_filter='*'", "cmake -S . -B build \\\n  -G Ninja",
                     "cc x.c $(pkg-config --libs x) -o x  # it's this one"):
            self.assertEqual([], self.known.of_all(code), code)

    def test_wrong(self):
        for code, fault in (
                ("orblog read --kez FILE", "orblog read has no --kez"),
                ("orblog -k FILE", "orblog has no -k"),
                ("orblog reads logs/", "orblog has no command reads"),
                ("true | orblog read --keys", "true is no program that is known here"),
                ("orblog read; orblog read --keys", "orblog read has no --keys"),
                ("scripts/sandbox --loud orblog read", "sandbox has no --loud"),
                ("scripts/sandbox bash -c 'orblog reed'", "orblog has no command reed"),
                ("orblog read -- orblog --loud", "orblog has no --loud"),
                ("x=$(orblog --loud)", "orblog has no --loud"),
                ("scripts/tests", "there is no scripts/tests"),
                ("scripts/test devel", "scripts/test does not know devel"),
                ("scripts/test Other_test", "there is no test Other_test"),
                ("cmake --presets dev", "cmake has no --presets"),
                ("cmake --preset devel", "there is no preset devel"),
                ("ctest --preset dev -R '^Other'", "there is no test ^Other"),
                ("build/dev/tests/Other_test", "the build has no build/dev/tests/Other_test")):
            self.assertIn(fault, self.known.of_all(code), code)


if __name__ == "__main__":
    ROOT = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
