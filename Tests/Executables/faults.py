"""A simulator's bad days as a table, and what tests that live through them share: a stand-in that can be ordered about,
a companion that nobody restarts, and a client that comes back by itself."""

import contextlib
import json
import signal
import threading
import time
import urllib.parse
import urllib.request
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from typing import Callable

from client import Client, Closed, is_push
from harness import PATIENCE, Companion, reserved_port, wait_until

LATITUDE = "sim/flightmodel/position/latitude"
ADD_ON = "addon/twin/systems_0/state_00"
AWKWARD = "addon/caf\ufffd/temperature"


class StandIn:
    """A stand-in simulator on a port of its own, which may come and go."""

    def __init__(self, programs, *options):
        self._programs = programs
        self._options = ("--start", "cruise", *options)
        self._stack = contextlib.ExitStack()
        programs.close_at_end(self)
        self.port = self._stack.enter_context(reserved_port())
        self._program = None

    def start(self, *options, **more):
        self._program, _ = self._programs.simulator(*self._options, *options, port=self.port, **more)

    def crash(self):
        self._program.expected_status = -signal.SIGKILL
        self._program.end(signal.SIGKILL)

    def write(self, lines):
        """Gives orders on standard input, where they are taken also while nobody listens on the port."""
        self._program.write(lines)

    def wait_for_line(self, pattern):
        return self._program.wait_for_line(pattern)

    def order(self, *lines):
        for line in lines:
            self._fetch("/control", {"order": line})

    def run_command(self, name):
        found = self._fetch(f"/api/v2/commands?filter[name]={urllib.parse.quote(name)}")
        self._fetch(f"/api/v2/command/{found['data'][0]['id']}/activate", {"duration": 0})

    def value(self, name):
        found = self._fetch(f"/api/v2/datarefs?filter[name]={urllib.parse.quote(name)}")
        return self._fetch(f"/api/v2/datarefs/{found['data'][0]['id']}/value")["data"]

    def _fetch(self, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        with urllib.request.urlopen(f"http://127.0.0.1:{self.port}{path}", data, timeout=PATIENCE) as response:
            return json.load(response)

    def close(self):
        self._stack.close()


@dataclass
class Fault:
    """`begin` and `end` switch it on and off while the stand-in runs; `options` has it from the start."""

    name: str
    begin: Callable
    end: Callable = lambda stand_in: None
    options: tuple = ()
    # Seconds from its begin to its end.
    lasts: float = 2.5
    # Whether nobody can know while it lasts where the aircraft is.
    is_dark: bool = True

    def __repr__(self):
        return self.name


def orders(*lines):
    return lambda stand_in: stand_in.order(*lines)


def quirk(name, *options, afterwards=(), time_ms="", **more):
    """A quirk that is switched on and off, with orders that make it felt at once."""
    underscored = name.replace("-", "_")
    return Fault(name, orders(f"{underscored} on {time_ms}".strip(), *afterwards), orders(f"{underscored} off"),
                 options or (f"--{name}",), **more)


FAULTS = [
    Fault("main-menu", orders("main_menu on"), orders("load"), ("--main-menu",)),
    Fault("main-menu-idle", orders("main_menu on", "idle_close on 1000"), orders("idle_close off", "load"),
          ("--main-menu", "--idle-close", "1000"), lasts=4),
    Fault("aircraft", orders("aircraft 2000"), options=("--late-datarefs", "2"), is_dark=False),
    Fault("paused", lambda stand_in: stand_in.run_command("sim/operation/pause_on"),
          lambda stand_in: stand_in.run_command("sim/operation/pause_off"), lasts=9, is_dark=False),
    Fault("drop", orders("drop"), lasts=0.1, is_dark=False),
    Fault("restart", orders("restart"), lasts=0.1, is_dark=False),
    Fault("restart-swapped", orders("restart swapped"), lasts=0.1, is_dark=False),
    Fault("restart-away", orders("restart fresh away 3000"), lasts=3),
    Fault("crash", lambda stand_in: stand_in.crash(), lambda stand_in: stand_in.start()),
    quirk("traffic-disabled", afterwards=["drop"]),
    quirk("traffic-disabled-plain", afterwards=["drop"]),
    quirk("too-old", afterwards=["drop"]),
    quirk("silent", lasts=9),
    Fault("silent-long", orders("silent on"), orders("silent off"), ("--silent",), lasts=17),
    quirk("mid-message"),
    quirk("handshake-late", "--handshake-late", "20000", time_ms="20000", afterwards=["drop"], lasts=9),
    quirk("handshake-refused", afterwards=["drop"]),
    quirk("awkward-catalogue", afterwards=["restart"], is_dark=False),
    quirk("null-entries", afterwards=["restart"], is_dark=False),
    quirk("values-stop"),
    quirk("pings-unanswered", lasts=9, is_dark=False),
    quirk("slow", "--slow", "700", time_ms="700", is_dark=False),
]


class Learner:
    """A training application: connects in any weather, subscribes until that succeeds, and then only listens."""

    def __init__(self, port, *names):
        self._port = port
        self._names = names
        self._is_closed = False
        self._client = None
        self._pushes = []
        self.errors = []
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def _run(self):
        self._client = wait_until(self._connected, "the companion")
        with contextlib.suppress(Closed, AssertionError):
            self._client.pair()
            while not self._is_closed:
                reply = self._client.request("dataref_subscribe_values", self._entries())
                if reply["type"] != "error":
                    break
                self.errors.append(reply["data"]["message"])
                time.sleep(0.1)
            while not self._is_closed:
                message = self._client.receive(600)
                assert is_push(message), message
                self._pushes.append((time.monotonic(), message["data"]))

    def _connected(self):
        if self._is_closed:
            return "closed"
        try:
            return Client(self._port)
        except OSError:
            return None

    def _entries(self):
        return {"datarefs": [{"name": name} for name in self._names]}

    def values_since(self, moment):
        """The different first values pushed since then, of pushes that had them all."""
        whole = (values for when, values in list(self._pushes) if when > moment and set(values) == set(self._names))
        return {values[self._names[0]] for values in whole}

    def wait_for_movement(self, moment, what):
        wait_until(lambda: len(self.values_since(moment)) >= 3,
                   lambda: f"{what}: {len(self._pushes)} pushes, last {self._pushes[-1:]}, errors {self.errors[-3:]}")

    def close(self):
        self._is_closed = True
        if self._client not in (None, "closed"):
            self._client.close()


class Rig:
    """A stand-in, a companion that is never restarted, and what they need of each other, to be started in any order."""

    def __init__(self, programs, *options):
        self._programs = programs
        self.stand_in = StandIn(programs, *options)
        self._stack = contextlib.ExitStack()
        programs.close_at_end(self._stack)
        self._port = self._stack.enter_context(reserved_port())
        self.folder = programs.new_folder()
        self.companion = None
        self.learner = None

    def start_companion(self, *options):
        program = self._programs.start("tarnlyd", "--sim-port", self.stand_in.port, "--port", self._port,
                                       "--data-dir", self.folder, "--no-advertise", *options)
        self.companion = Companion(program, self._programs)

    def start_learner(self, *names):
        self.learner = self._programs.close_at_end(Learner(self._port, *(names or (LATITUDE, ADD_ON))))


def side_by_side(scenario, cases):
    """Runs `scenario` with each of the cases at once, and fails with all that went wrong."""
    with ThreadPoolExecutor(len(cases)) as pool:
        running = [(case, pool.submit(scenario, *case)) for case in cases]
    failed = [(case, future.exception()) for case, future in running if future.exception()]
    assert not failed, "\n\n".join(f"{case}: {type(error).__name__}: {error}" for case, error in failed)
