# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""The program as it is installed, beside a daemon: the same four questions as in link_aware_test.cpp."""
import os

import pytest

PROGRAM = [os.environ["LINK_AWARE"]]


# Is the daemon there, and if not, why?

def test_finds_the_daemon(orbsim):
    with orbsim.start(PROGRAM) as program:
        program.wait_for("daemon there")
        assert program.stop().status == 0


def test_says_that_no_daemon_is_there(orbsim):
    with orbsim.start(PROGRAM, {"begin": "listening", "timeline": [{"at": 0, "vanish": 60}]}) as program:
        program.wait_for("daemon absent")


def test_says_that_the_daemon_is_silent(orbsim):
    silent = {"begin": "listening", "timeline": [{"at": 0, "fault": {"words": "no-answer"}}]}
    with orbsim.start(PROGRAM, silent) as program:
        program.wait_for("daemon silent")


# What does it send?

def test_asks_for_reports_and_takes_them(orbsim):
    with orbsim.start(PROGRAM) as program:
        program.wait_for_session(lambda session: session["lce"]["reporting"])
        program.order(send={"service": "lce", "fields": {"rate": 12345}})
        program.wait_for("at 12345 kbit/s")


# What does the program do when something happens to the link or the daemon?

def test_holds_while_a_handoff_comes_at_3_2_seconds(orbsim):
    run = orbsim.run(PROGRAM, {
        "begin": ["lce", "lli"],
        "interval": 0.1,
        "model": {"handoffs": False, "rate": 50},
        "timeline": [{"at": 3.2, "handoff": {"to": "5g", "notice": 0.4, "duration": 0.3}}],
        "end": 8})
    assert run.as_expected, run
    rest = run.output.partition(", hold")[2]
    assert "high quality at 50000 kbit/s, send" in run.output
    assert ", send" in rest, run.output  # it held, and went on


def test_finds_a_daemon_that_was_gone(orbsim):
    run = orbsim.run(PROGRAM, {
        "begin": "connected",
        "interval": 0.1,
        "timeline": [{"at": 0.5, "vanish": 1}],
        "expect": [{"reconnects": {"after": 1.5, "within": 10}},
                   {"sends": {"service": "lce", "request": "start", "after": 1.5, "within": 10}},
                   {"sends": {"service": "lli", "request": "register", "after": 1.5, "within": 10}},
                   {"at-most": {"requests": 20}}],
        "end": 12})
    assert run.as_expected, run
    assert "daemon absent" in run.output


def test_lowers_its_quality_when_the_rate_falls_from_50_to_2(orbsim):
    with orbsim.start(PROGRAM, {
            "begin": ["lce"], "interval": 0.05, "model": {"handoffs": False, "rate": 50},
            "timeline": [{"at": 0.5, "rate": {"from": 50, "to": 2, "over": 1}}]}) as program:
        program.wait_for("high quality at 50000 kbit/s")
        program.wait_for("low quality at 2000 kbit/s")


# What when answers come late, or are refused?

def test_waits_for_a_late_answer(orbsim):
    with orbsim.start(PROGRAM, {
            "begin": "listening", "timeline": [{"at": 0, "delay": 3}],
            "expect": [{"at-most": {"requests": 1, "service": "lce", "within": 2.9}}]}) as program:
        program.wait_for("daemon silent")
        program.wait_for("daemon there")
        run = program.stop()
        assert run.as_expected, run


@pytest.mark.parametrize("reason", ["NOT_SUPPORTED", "TYPE_MISMATCH"])
def test_asks_with_other_criteria_when_its_own_are_refused(orbsim, reason):
    with orbsim.start(PROGRAM, {
            "begin": "listening",
            "timeline": [{"at": 0, "refuse": {"service": "lce", "request": "set-criteria",
                                              "with": reason}}],
            "expect": [{"sends": {"service": "lce", "request": "set-criteria",
                                  "fields": {"value1": 0}}},
                       {"sends": {"service": "lce", "request": "start"}}]}) as program:
        program.wait_for("criteria refused")
        run = program.stop()
        assert run.as_expected, run
