# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""The pytest fixture itself, with the example programs of this build as applications."""
import json
import os
import signal
import time

import pytest
from orbsim_pytest import Simulator

MONITOR = os.environ["LCE_MONITOR"]


def shell(script):
    return ["bash", "-c", script]


def test_run_gives_the_status_and_what_was_printed(orbsim):
    run = orbsim.run(shell("echo out; echo err >&2; exit 7"), {})
    assert (run.status, run.output, run.errors) == (7, "out\n", "err")
    assert run.failures == []
    assert not run.as_expected


def test_run_as_expected(orbsim):
    run = orbsim.run([MONITOR, "--seconds", "1"],
                     {"interval": 0.1, "expect": [{"sends": {"service": "lce", "request": "start"}}]})
    assert run.as_expected, run


def test_run_names_what_was_not_as_expected(orbsim):
    run = orbsim.run([MONITOR, "--seconds", "1"],
                     {"interval": 0.1, "expect": [{"sends": {"service": "lle"}}]})
    assert run.status == 3
    assert len(run.failures) == 1 and run.failures[0].startswith("/expect/0: "), run
    assert not run.as_expected
    assert run.failures[0] in repr(run)


def test_run_plays_a_file_and_a_ready_scenario(orbsim, tmp_path):
    file = tmp_path / "mine.json"
    file.write_text('{"expect": [{"sends": {"service": "lle"}}]}')
    assert orbsim.run(["true"], file).failures
    assert orbsim.run(["true"], "steady").as_expected


def test_run_ends_with_the_scenario(orbsim):
    # A second after the monitor has asked for reports, as it fails without one.
    run = orbsim.run([MONITOR], {"interval": 0.1, "begin": ["lce"], "end": 1})
    assert run.as_expected, run


def test_run_that_lasts_too_long_is_ended(orbsim):
    with pytest.raises(Exception, match="timed out"):
        orbsim.run(shell("trap '' TERM; while :; do sleep 1; done"), {},
                   timeout=1)


def test_end_of_a_scenario_is_counted_wherever_it_stands(orbsim, tmp_path):
    scenario = {"interval": 0.1, "begin": "listening", "end": 2}
    (tmp_path / "mine.json").write_text(json.dumps(scenario))
    ready = {**os.environ, "ORB_SCENARIOS": str(tmp_path)}
    # The limit is half a second after the end, so the program would take longer without an end.
    for form, env in ((scenario, None), (tmp_path / "mine.json", None), ("mine", ready)):
        begun = time.monotonic()
        with pytest.raises(Exception, match="timed out"):
            orbsim.run(shell("trap '' TERM; while :; do sleep 0.1; done"), form, timeout=0.5, env=env)
        assert time.monotonic() - begun >= 2.5, form


def test_status_of_a_program_that_a_signal_ended_is_128_and_its_number(orbsim):
    run = orbsim.run(shell("kill -KILL $$"), {})
    assert run.status == 128 + signal.SIGKILL


def test_run_ends_though_a_process_left_behind_holds_the_output(orbsim, tmp_path):
    gate = tmp_path / "gate"
    os.mkfifo(gate)
    try:
        run = orbsim.run(shell(f"echo said; setsid cat {gate} & exit 0"), {})
        assert (run.status, run.output) == (0, "said\n")
    finally:
        os.close(os.open(gate, os.O_RDWR))  # lets it go


def test_close_ends_all_programs_and_tells_the_first_error(tmp_path):
    stopped = []

    class Program:
        def __init__(self, name, error=None):
            self.name, self.error = name, error

        def stop(self):
            stopped.append(self.name)
            if self.error:
                raise self.error

    simulator = Simulator(tmp_path)
    simulator._started += [Program("one"), Program("two", TimeoutError("of two")),
                           Program("three", OSError("of three")), Program("four")]
    with pytest.raises(TimeoutError, match="of two"):
        simulator.close()
    assert stopped == ["one", "two", "three", "four"]


def test_environment_and_folder_are_the_given_ones(orbsim, tmp_path):
    run = orbsim.run(shell("echo $MINE; pwd"), {}, env={**os.environ, "MINE": "yes"}, cwd=tmp_path)
    assert run.output == f"yes\n{tmp_path}\n"


def test_started_program_is_waited_for_line_by_line(orbsim):
    with orbsim.start(shell("echo one; echo two; echo one; read -r line; sleep 600")) as program:
        program.wait_for("two")
        assert program.wait_for("^(o)ne").group(1) == "o"
        with pytest.raises(AssertionError, match="not printed: 'one'"):
            program.wait_for("one", timeout=0.1)
        assert program.output == "one\ntwo\none\n"


def test_without_a_scenario_the_daemon_is_silent_unless_it_is_told(orbsim):
    with orbsim.start([MONITOR]) as program:
        session = program.wait_for_session(lambda each: each["lce"]["reporting"])
        assert session["lce"]["reports"] == 0
        program.order(send={"service": "lce", "fields": {"rate": 4711}})
        program.wait_for("4711")
        with pytest.raises(AssertionError, match="nonsense"):
            program.order(nonsense=1)
        with pytest.raises(AssertionError, match="no such session"):
            program.wait_for_session(lambda each: each["lle"]["enabled"], timeout=0.1)
        assert program.stop(signal.SIGINT).status == 0
        assert program.stop().status == 0


def test_programs_have_a_daemon_each(orbsim):
    with orbsim.start([MONITOR]) as one, orbsim.start([MONITOR]) as other:
        one.wait_for_session(lambda each: each["lce"]["reporting"])
        other.wait_for_session(lambda each: each["lce"]["reporting"])
        assert len(one.sessions()) == len(other.sessions()) == 1


def test_sandbox_has_folders_of_its_own(orbsim):
    orbsim.sandbox = True
    run = orbsim.run(shell('test -d /data/vendor/orb_logs/main && test -S /dev/socket/orb && '
                           'test "$ORB_SOCKET" = /dev/socket/orb && ' + MONITOR + " --seconds 1"),
                     {"interval": 0.1})
    assert run.as_expected, run
