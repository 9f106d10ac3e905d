# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Tests of complete programs that use libOrbSdlSdk, with a daemon stand-in.

In conftest.py:

    pytest_plugins = ["orbsim_pytest"]

A test plays a scenario for a program and checks the result:

    def test_reconnects(orbsim):
        run = orbsim.run(["./player"], {
            "begin": "connected",
            "timeline": [{"at": 1, "vanish": 2}],
            "expect": [{"reconnects": {"after": 3, "within": 10}}],
            "end": 14})
        assert run.as_expected, run.failures
        assert "reconnected" in run.output

or orders events while the program runs, with the same steps:

    def test_says_that_the_daemon_is_gone(orbsim):
        with orbsim.start(["./player"]) as player:
            player.wait_for("connected")
            player.order(vanish=2)
            player.wait_for("no daemon")

No test needs root, a /dev/socket or namespaces: the program's connections to the daemon are redirected to
a separate socket. With `orbsim.sandbox = True`, daemon and program run in a sandbox with its own /data and
/tmp instead. ORBD_SIM and ORB_SANDBOX name the two programs if they are not installed with this file.
ORBSIM_TIMEOUT is the time limit of waits in seconds.
"""
import json
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import time

import pytest

# Time limit of waits in seconds. A wait ends at once when its condition is true.
TIMEOUT = int(os.environ.get("ORBSIM_TIMEOUT", "20"))
# Seconds to read from a pipe after its program has ended.
_LEFT_OPEN = 2
_SPEAKER = "orbd-sim run: "
_SILENT = {"interval": 0, "begin": "listening", "model": {"handoffs": False}}


def _program(name, variable):
    beside = pathlib.Path(__file__).resolve().parents[3] / "bin" / name
    found = os.environ.get(variable) or (str(beside) if beside.exists() else shutil.which(name))
    if not found:
        raise FileNotFoundError(f"{name} not found: install the tools, or set {variable}")
    return found


def _scenario_file(scenario, env, cwd):
    """The file that orbd-sim reads for a file name or for the name of a ready scenario."""
    name = str(scenario)
    file = pathlib.Path(cwd or ".") / name
    if "/" in name or file.is_file():
        return file
    folder = (os.environ if env is None else env).get("ORB_SCENARIOS")
    if folder:
        return pathlib.Path(cwd or ".") / folder / f"{name}.json"
    program = pathlib.Path(_program("orbd-sim", "ORBD_SIM")).resolve()
    folders = [program.parents[1] / "share/orbd-sim/scenarios"]
    folders += [each / "tools/orbd-sim/scenarios" for each in program.parents]
    files = [each / f"{name}.json" for each in folders]
    return next((each for each in files if each.is_file()), file)


def _end_of(scenario, env=None, cwd=None):
    """The end of a scenario in seconds: a dictionary, a file, or the name of a ready scenario."""
    try:
        if not isinstance(scenario, dict):
            scenario = json.loads(_scenario_file(scenario, env, cwd).read_text())
        return float(scenario.get("end", 0))
    except (OSError, ValueError, TypeError, AttributeError):
        return 0  # the daemon reports what is wrong


class Run:
    """The result of a program: `status` is its exit status, or 128 plus the number of the signal that
    ended it; `output` is its standard output, `errors` its standard error; `failures` are the expectations
    of the scenario that it did not meet."""

    def __init__(self, status, output, errors):
        lines = errors.splitlines()
        self.failures = [line[len(_SPEAKER):] for line in lines if line.startswith(_SPEAKER)]
        self.status = status
        self.output = output
        self.errors = "\n".join(line for line in lines if not line.startswith(_SPEAKER))

    @property
    def as_expected(self):
        return self.status == 0 and not self.failures

    def __repr__(self):
        return f"Run(status={self.status}, failures={self.failures}, output={self.output!r}, " \
               f"errors={self.errors!r})"


class _Lines:
    """The lines from a pipe, read by a separate thread."""

    def __init__(self, pipe):
        self._changed = threading.Condition()
        self._lines = []
        self._ended = False
        self._next = 0
        self._thread = threading.Thread(target=self._read, args=(pipe,), daemon=True)
        self._thread.start()

    def _read(self, pipe):
        with pipe:
            for line in pipe:
                with self._changed:
                    self._lines.append(line)
                    self._changed.notify_all()
        with self._changed:
            self._ended = True
            self._changed.notify_all()

    def wait_for(self, pattern, timeout):
        """The first match after the line of the last call; None after the timeout."""
        wanted = re.compile(pattern)
        deadline = time.monotonic() + timeout
        with self._changed:
            while True:
                while self._next < len(self._lines):
                    self._next += 1
                    match = wanted.search(self._lines[self._next - 1])
                    if match:
                        return match
                left = deadline - time.monotonic()
                if self._ended or left <= 0:
                    return None
                self._changed.wait(left)

    def text(self):
        with self._changed:
            return "".join(self._lines)

    def all(self):
        """All text up to the end of the pipe. Processes that the program left running can keep the pipe
        open; then the text so far."""
        self._thread.join(_LEFT_OPEN)
        return self.text()


class Application:
    """A program that runs with a daemon. stop() or the end of the `with` ends it."""

    def __init__(self, command, control, **options):
        self._control = control
        self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                         stderr=subprocess.PIPE, text=True, errors="replace",
                                         **options)
        self._output = _Lines(self._process.stdout)
        self._errors = _Lines(self._process.stderr)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    @property
    def output(self):
        """The standard output so far."""
        return self._output.text()

    def wait_for(self, pattern, timeout=TIMEOUT):
        """Waits for a line that matches the regular expression, after the line of the last call."""
        match = self._output.wait_for(pattern, timeout)
        assert match, f"not printed: {pattern!r}; there was:\n{self.output}{self._errors.text()}"
        return match

    def order(self, **step):
        """Orders an event now: a step of a scenario's timeline without its time. Returns the daemon's
        answer."""
        with self._connected() as connection:
            connection.sendall(json.dumps(step).encode() + b"\n")
            with connection.makefile() as lines:
                answer = json.loads(lines.readline())
        assert answer.get("ok"), f"{step}: {answer.get('error')}"
        return answer

    def _connected(self):
        # The daemon starts before the program. This call can come before both.
        deadline = time.monotonic() + TIMEOUT
        while True:
            connection = socket.socket(socket.AF_UNIX)
            connection.settimeout(TIMEOUT)
            try:
                connection.connect(self._control)
                return connection
            except (FileNotFoundError, ConnectionRefusedError):
                connection.close()
                if self._process.poll() is not None or time.monotonic() > deadline:
                    raise
                time.sleep(0.02)

    def sessions(self):
        """The daemon's open sessions and the services that they use."""
        return self.order(status=True)["sessions"]

    def wait_for_session(self, condition, timeout=TIMEOUT):
        """Waits until a session of the daemon meets the condition, for example
        `lambda session: session["lce"]["reporting"]`, and returns that session."""
        deadline = time.monotonic() + timeout
        while True:
            sessions = self.sessions()
            for session in sessions:
                if condition(session):
                    return session
            assert time.monotonic() < deadline, f"no such session: {sessions}\n{self.output}"
            time.sleep(0.02)

    def wait(self, timeout=TIMEOUT):
        """Waits until the program has ended."""
        try:
            self._process.wait(timeout)
        except subprocess.TimeoutExpired:
            self.kill()
            raise
        return Run(self._process.returncode, self._output.all(), self._errors.all())

    def stop(self, number=signal.SIGTERM, timeout=TIMEOUT):
        """Sends a signal, SIGTERM by default, and returns the result. A second call returns the same."""
        if self._process.poll() is None:
            self._process.send_signal(number)
        return self.wait(timeout)

    def kill(self):
        # A second signal to `orbd-sim run` kills the program.
        for number in (signal.SIGTERM, signal.SIGTERM, signal.SIGKILL):
            self._process.send_signal(number)
            try:
                self._process.wait(2)
                return
            except subprocess.TimeoutExpired:
                pass
        self._process.wait()


class Simulator:
    """Starts programs, each with its own daemon."""

    def __init__(self, folder):
        self._folder = pathlib.Path(folder)
        self._sockets = tempfile.TemporaryDirectory(prefix="orbsim-")  # the path of a socket must be short
        self._started = []
        self.sandbox = False

    def start(self, command, scenario=None, env=None, cwd=None):
        """Starts a program with a daemon that plays a scenario: a dictionary, a file, or the name of a
        ready scenario. Without a scenario, the daemon sends only answers."""
        number = len(self._started)
        place = self._folder / f"orbsim{number}"
        place.mkdir()
        if scenario is None or isinstance(scenario, dict):
            file = place / "scenario.json"
            file.write_text(json.dumps(_SILENT if scenario is None else scenario))
            scenario = file
        control = os.path.join(self._sockets.name, str(number))
        run = [_program("orb-sandbox", "ORB_SANDBOX")]
        if not self.sandbox:
            run.append("--redirect")
        run += [_program("orbd-sim", "ORBD_SIM"), "run", "--no-sandbox", "--control", control,
                "--log", str(place / "daemon.log"), str(scenario), "--"]
        environment = dict(os.environ if env is None else env)
        folders = [environment.get("ORB_SANDBOX_BIND"), str(place), os.path.dirname(control)]
        environment["ORB_SANDBOX_BIND"] = ":".join(filter(None, folders))
        application = Application(run + [str(word) for word in command], control, env=environment,
                                  cwd=cwd)
        self._started.append(application)
        return application

    def run(self, command, scenario, timeout=TIMEOUT, **options):
        """Plays a scenario for a program until the program ends or until the scenario's "end".
        `timeout` is the time after that end."""
        application = self.start(command, scenario, **options)
        return application.wait(
            _end_of(scenario, options.get("env"), options.get("cwd")) + timeout)

    def close(self):
        """Ends all programs, even if ending one of them fails; raises the first error."""
        first = None
        for application in self._started:
            try:
                application.stop()
            except Exception as error:  # after any error, the other programs must be ended, too
                first = first or error
        self._sockets.cleanup()
        if first:
            raise first


@pytest.fixture
def orbsim(tmp_path):
    """A Simulator; its programs end with the test."""
    simulator = Simulator(tmp_path)
    yield simulator
    simulator.close()
