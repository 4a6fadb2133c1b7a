"""A client that goes without a word, as a tablet does that leaves the Wi-Fi."""

import json
import time

import pytest
import websocket_frames as frames
from harness import wait_until
from two_hosts import NotPermitted, TwoHosts


@pytest.fixture
def hosts():
    try:
        with TwoHosts() as hosts:
            yield hosts
    except NotPermitted as reason:
        pytest.skip(f"no network namespaces here: {reason}")


def test_a_client_that_vanished_is_noticed_within_a_minute(programs, hosts):
    simulator = programs.start("tarnly-sim", "--port", 8086, "--udp-port", 0, prefix=hosts.near.prefix)
    simulator.wait_for_line("8086")
    status_file = programs.new_folder() / "status.json"
    companion = programs.companion("--status-file", status_file, sim_port=8086, prefix=hosts.near.prefix)
    client = programs.start("tarnly-client", "--host", hosts.ADDRESSES[0], "--port", companion.port, "watch",
                            "sim/flightmodel/position/latitude", prefix=hosts.far.prefix)

    def counts():
        clients = json.loads(status_file.read_text())["clients"]
        return clients["paired"], clients["connected"]

    def wait_for_clients(count):
        wait_until(lambda: counts() == (count, count), f"{count} clients", 120)

    client.wait_for_line("latitude")
    wait_for_clients(1)
    hosts.lose_far()
    lost = time.monotonic()
    wait_for_clients(0)
    assert time.monotonic() - lost < 60
    client.expected_status = client.end()  # it may have noticed for itself


def test_a_client_that_says_nothing_is_asked_and_then_gone(programs):
    companion = programs.companion()
    silent, quiet = companion.raw(), companion.raw()
    paired = time.monotonic()
    asked = silent.receive_frame()
    assert asked.opcode == frames.PING
    assert 29 < time.monotonic() - paired < 45
    assert quiet.receive_frame().opcode == frames.PING
    quiet.send_frame(frames.PONG)
    silent.socket.settimeout(120)
    assert silent.receive_frame() is None
    assert 89 < time.monotonic() - paired < 110
    quiet.send_text('{"type":"sim_info","req_id":1}')
    assert json.loads(quiet.receive_text())["req_id"] == 1
