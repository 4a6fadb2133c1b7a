"""Starts the programs under test in temporary folders and ends them by their own process id.

A program that leaves a sanitizer report or an unexpected exit status fails the test that started it.
"""

import contextlib
import itertools
import json
import os
import re
import signal
import socket
import subprocess
import threading
import time
from pathlib import Path

from client import Client
from raw_websocket import RawWebSocket

# Seconds that nothing here ever takes, not even a sanitizer build on a busy machine.
PATIENCE = 60.0

SANITIZER_REPORT = re.compile(
    r"ERROR: AddressSanitizer|ERROR: LeakSanitizer|runtime error:|WARNING: ThreadSanitizer"
)
STATUS_LINE = re.compile(r"^Listening on port (\d+), ")
SIMULATOR_LINE = re.compile(r"port (\d+)\D+(\d+)")


def wait_until(condition, what="the condition", patience=PATIENCE):
    """Waits until `condition()` is truthy, and returns what it gave. `what` may be a function that tells it then."""
    deadline = time.monotonic() + patience
    while True:
        result = condition()
        if result:
            return result
        assert time.monotonic() < deadline, f"{what() if callable(what) else what}: not within {patience} s"
        time.sleep(0.01)


@contextlib.contextmanager
def reserved_port():
    """A loopback port on which nobody listens; it stays free for a program that is told to listen there."""
    with socket.socket() as holder:
        holder.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        holder.bind(("127.0.0.1", 0))
        yield holder.getsockname()[1]


def executable(name):
    return str(Path(os.environ["TARNLY_BIN"]) / name)


def is_instrumented():
    program = Path(executable("tarnlyd")).read_bytes()
    return b"__asan_init" in program or b"__tsan_init" in program


class Program:
    """One running program; what it prints is at hand line by line."""

    def __init__(self, name, command, folder, environment, stdin=subprocess.DEVNULL):
        self.name = name
        self.expected_status = 0
        self._errors = open(folder / f"stderr-{time.monotonic_ns()}", "w+", errors="replace")
        self._lines = []
        self._changed = threading.Condition()
        self._finished = False
        self.process = subprocess.Popen(
            command, stdin=stdin, stdout=subprocess.PIPE, stderr=self._errors,
            env=environment, text=True, errors="replace",
        )
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self.process.stdout:
            with self._changed:
                self._lines.append(line.rstrip("\n"))
                self._changed.notify_all()
        with self._changed:
            self._finished = True
            self._changed.notify_all()

    @property
    def pid(self):
        return self.process.pid

    def write(self, text):
        """For a program that was started with a pipe as its standard input."""
        self.process.stdin.write(text)
        self.process.stdin.flush()

    def output(self):
        with self._changed:
            return list(self._lines)

    def errors(self):
        self._errors.flush()
        return Path(self._errors.name).read_text(errors="replace")

    def wait_for_line(self, pattern):
        """The match of the first printed line that `pattern` is found in."""
        pattern = re.compile(pattern)

        def match():
            return next((m for m in map(pattern.search, self._lines) if m), None)

        with self._changed:
            self._changed.wait_for(lambda: match() or self._finished, PATIENCE)
            found = match()
            printed = list(self._lines)
        assert found, f"{self.name} printed {printed} and not {pattern.pattern!r}; stderr: {self.errors()}"
        return found

    def wait_for_nth_line(self, number):
        """What it printed as that line, from 0."""
        with self._changed:
            self._changed.wait_for(lambda: len(self._lines) > number or self._finished, PATIENCE)
            assert len(self._lines) > number, f"{self.name} printed {self._lines[-3:]}; stderr: {self.errors()}"
            return self._lines[number]

    def wait(self, patience=PATIENCE):
        """The exit status."""
        try:
            status = self.process.wait(patience)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"{self.name} has not ended within {patience} s") from None
        self._reader.join(PATIENCE)
        return status

    def end(self, number=signal.SIGTERM, patience=PATIENCE):
        """Asks it to end, and returns the exit status."""
        if self.process.poll() is None:
            self.process.send_signal(number)
        return self.wait(patience)

    def problems(self):
        """Ends it if need be; what was wrong with its end and with what it left on standard error."""
        found = []
        try:
            status = self.end()
            if status != self.expected_status:
                found.append(f"{self.name} ended with {status}, not {self.expected_status}: {self.errors()}")
        except AssertionError as error:
            found.append(str(error))
            self.process.kill()
            self.process.wait()
        if SANITIZER_REPORT.search(self.errors()):
            found.append(f"{self.name} left a sanitizer report:\n{self.errors()}")
        for pipe in (self.process.stdin, self.process.stdout):
            if pipe:
                pipe.close()
        self._errors.close()
        return found


class Companion:
    """A running tarnlyd."""

    def __init__(self, program, programs):
        self.program = program
        self._programs = programs
        self.port = int(program.wait_for_line(STATUS_LINE).group(1))

    @property
    def status_line(self):
        return self.program.output()[0]

    def client(self, password=None, paired=True, host="127.0.0.1"):
        """A client with its connection open, paired unless told otherwise."""
        client = self._programs.close_at_end(Client(self.port, host=host))
        if paired:
            client.pair(password)
        return client

    def raw(self, paired=True, **options):
        """A client that sends its frames by hand."""
        raw = self._programs.close_at_end(RawWebSocket(self.port, **options))
        if paired:
            raw.send_text(json.dumps({"type": "pair"}))
            assert json.loads(raw.receive_text())["data"]["accepted"] is True
        return raw

    def open_sockets(self):
        """Those that stay: the fewest of five looks, as the companion may just be looking for a simulator."""

        def count():
            time.sleep(0.02)
            return sum(1 for link in _links(f"/proc/{self.program.pid}/fd") if link.startswith("socket:"))

        return min(count() for _ in range(5))


def memory(companion):
    """What it has resident, in bytes."""
    with open(f"/proc/{companion.program.pid}/status") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS:")) * 1024


def _links(folder):
    for entry in os.listdir(folder):
        with contextlib.suppress(FileNotFoundError):
            yield os.readlink(f"{folder}/{entry}")


class Programs:
    """Starts programs and remembers them, so that none outlives the test."""

    def __init__(self, folder):
        self.folder = folder
        self._running = []
        self._closeable = []
        self._count = itertools.count(1)

    def close_at_end(self, thing):
        self._closeable.append(thing)
        return thing

    def new_folder(self):
        folder = self.folder / f"{next(self._count)}"
        folder.mkdir()
        return folder

    def environment(self, **more):
        """No person's folders, and no DNS-SD daemon but one that a test names."""
        nowhere = f"unix:path={self.folder}/no-bus"
        return dict(os.environ, HOME=str(self.folder), XDG_DATA_HOME=str(self.folder / "data"),
                    DBUS_SYSTEM_BUS_ADDRESS=nowhere) | more

    def start(self, name, *arguments, descriptors=None, stdin=subprocess.DEVNULL, prefix=(), **environment):
        """`prefix` is a command that becomes the one after it."""
        command = [*prefix, executable(name), *map(str, arguments)]
        if descriptors is not None:
            command = ["sh", "-c", f'ulimit -n {descriptors}; exec "$0" "$@"', *command]
        return self.start_command(name, command, stdin, **environment)

    def start_command(self, name, command, stdin=subprocess.DEVNULL, **environment):
        """One that is not ours, and is looked over like the others."""
        program = Program(name, command, self.folder, self.environment(**environment), stdin)
        self._running.append(program)
        return program

    def companion(self, *arguments, sim_port=None, settings=None, advertise=False, **options):
        """A tarnlyd that listens. `settings` is its settings file's text, or an object to write there."""
        folder = self.new_folder()
        if settings is not None:
            text = settings if isinstance(settings, (str, bytes)) else json.dumps(settings)
            data = text.encode() if isinstance(text, str) else text
            (folder / "settings.json").write_bytes(data)
        if sim_port is None:
            sim_port = self._nobody_there()
        chosen = ["--sim-port", sim_port, "--data-dir", folder]
        if "--port" not in arguments:
            chosen += ["--port", 0]
        if not advertise:
            chosen.append("--no-advertise")
        return Companion(self.start("tarnlyd", *chosen, *arguments, **options), self)

    def _nobody_there(self):
        stack = contextlib.ExitStack()
        self.close_at_end(stack)
        return stack.enter_context(reserved_port())

    def simulator(self, *arguments, port=0, **options):
        """A tarnly-sim that listens, and its port."""
        program = self.start("tarnly-sim", "--port", port, "--udp-port", 0, *arguments, **options)
        return program, int(program.wait_for_line(SIMULATOR_LINE).group(1))

    def run(self, name, *arguments, **environment):
        """Runs a program to its own end: its exit status and the texts that it printed."""
        program = self.start(name, *arguments, **environment)
        status = program.wait()
        program.expected_status = status
        return Ended(status, "".join(f"{line}\n" for line in program.output()), program.errors())

    def end_all(self):
        found = []
        for thing in reversed(self._closeable):
            thing.close()
        for program in reversed(self._running):
            found += program.problems()
        assert not found, "\n".join(found)


class Ended:
    def __init__(self, status, output, errors):
        self.status = status
        self.output = output
        self.errors = errors

    def __repr__(self):
        return f"Ended({self.status}, {self.output!r}, {self.errors!r})"

    @property
    def error_lines(self):
        return self.errors.splitlines()
