"""Commands and writes across restarts of the simulator, behind which an id may stand for another one."""

import contextlib
import socket
import threading

import pytest
from faults import Rig, StandIn
from harness import wait_until

GEAR_HANDLE = "sim/cockpit2/controls/gear_handle_down"
FLAPS = "sim/cockpit2/controls/flap_handle_request_ratio"
GEAR_UP = "sim/flight_controls/landing_gear_up"
GEAR_DOWN = "sim/flight_controls/landing_gear_down"
GEAR_TOGGLE = "sim/flight_controls/landing_gear_toggle"


@pytest.fixture
def rig(programs):
    rig = Rig(programs)
    rig.stand_in.start()
    rig.stand_in.run_command("sim/operation/pause_on")  # else the pilot has a say in it
    rig.start_companion()
    return rig


def run(client, command):
    """Whether the companion says that it ran."""
    reply = client.request("run_command", {"name": command})
    assert reply["type"] == "error" or reply["data"] == {"ok": True}, reply
    return reply["type"] != "error"


@pytest.mark.parametrize("restart", ["restart swapped", "restart"])
def test_behind_a_restart_the_right_command_runs(rig, restart):
    client = rig.companion.client()
    for command, handle in [(GEAR_UP, 0), (GEAR_DOWN, 1)] * 4:
        assert run(client, command), "a link that is lost is replaced before the command goes out"
        assert rig.stand_in.value(GEAR_HANDLE) == handle, command
        rig.stand_in.order(restart)


@pytest.mark.parametrize("restart", ["restart swapped away 300", "restart away 300"])
def test_while_it_is_away_the_right_command_runs_later_or_none(rig, restart):
    client = rig.companion.client()
    for command, handle in [(GEAR_UP, 0), (GEAR_DOWN, 1)] * 4:
        before = rig.stand_in.value(GEAR_HANDLE)
        rig.stand_in.order(restart)
        has_run = run(client, command)
        wait_until(lambda: is_there(rig.stand_in), "the simulator")
        assert rig.stand_in.value(GEAR_HANDLE) == (handle if has_run else before), command


def is_there(stand_in):
    try:
        return stand_in.value(GEAR_HANDLE) is not None
    except OSError:
        return False


def test_a_command_that_ran_ran_once_whatever_became_of_its_link(rig):
    client = rig.companion.client()
    ran = 0
    for turn in range(12):
        before = rig.stand_in.value(GEAR_HANDLE)
        hanging_up = threading.Thread(target=rig.stand_in.order, args=["drop" if turn % 2 else "restart"])
        hanging_up.start()
        is_ok = run(client, GEAR_TOGGLE)
        hanging_up.join()
        after = rig.stand_in.value(GEAR_HANDLE)
        # A command whose link ends before its answer came may have run, and is not told to have.
        assert after != before or not is_ok
        ran += is_ok
    assert ran > 0


def test_a_write_behind_a_restart_reaches_its_dataref(rig):
    client = rig.companion.client()
    for value in (0.25, 0.5, 0.75, 1):
        assert client.set({"name": FLAPS, "value": value}) == {"ok": True}
        wait_until(lambda: rig.stand_in.value(FLAPS) == value, "the flaps")
        rig.stand_in.order("restart")


class Relay:
    """A port that hands each connection on to another, and tells of each before that."""

    def __init__(self, port, on_request):
        self._there = ("127.0.0.1", port)
        self._on_request = on_request
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        with contextlib.suppress(OSError):
            while True:
                client, _ = self._listener.accept()
                threading.Thread(target=self._serve, args=[client], daemon=True).start()

    def _serve(self, client):
        with contextlib.suppress(OSError), client:
            first = client.recv(65536)
            self._on_request(first.decode(errors="replace").split("\r\n")[0])
            with socket.create_connection(self._there) as server:
                server.sendall(first)
                back = threading.Thread(target=carry, args=[server, client], daemon=True)
                back.start()
                carry(client, server)
                back.join()

    def close(self):
        with contextlib.suppress(OSError):
            self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()


def carry(giver, taker):
    with contextlib.suppress(OSError):
        while data := giver.recv(65536):
            taker.sendall(data)
    for each in (giver, taker):
        with contextlib.suppress(OSError):
            each.shutdown(socket.SHUT_RDWR)


def test_a_restart_between_its_catalogues_is_found_out(programs):
    stand_in = StandIn(programs)
    stand_in.start()
    restarts = []

    def restart_once(line):
        if line.startswith("GET /api/v2/commands ") and not restarts:
            restarts.append(line)
            stand_in.order("restart")

    relay = programs.close_at_end(Relay(stand_in.port, restart_once))
    client = programs.companion(sim_port=relay.port).client()
    read = {"datarefs": [{"name": GEAR_HANDLE}]}
    wait_until(lambda: client.request("dataref_subscribe_values", read)["type"] != "error", "a value")
    assert restarts
