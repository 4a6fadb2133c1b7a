"""Many clients, bad clients, both address families, and too few descriptors."""

import json
import os
import socket
import time

import pytest
from harness import wait_until

MEGABYTE = 1 << 20


def has_ipv6():
    try:
        with socket.socket(socket.AF_INET6) as probe:
            probe.bind(("::1", 0))
        return True
    except OSError:
        return False


@pytest.mark.parametrize("host", ["127.0.0.1", "::1"])
def test_both_address_families_are_served(programs, host):
    if host == "::1" and not has_ipv6():
        pytest.skip("this machine has no IPv6 loopback")
    assert programs.companion().client(host=host).data("sim_info")["sim"] == "xplane"


def stalled_by_a_reply(companion):
    """A client that asks for a reply of 16 MB, more than the network's buffers hold, and reads nothing."""
    raw = companion.raw(receive_buffer=4096)
    raw.send_text(json.dumps({"type": "x" * (16 * MEGABYTE), "req_id": 1}))
    return raw


def stalled_by_pushes(companion):
    """A client whose pushes have more than 2 MB each, and which reads none of them."""
    raw = companion.raw(receive_buffer=4096)
    # Zeros in front make a name as long as one likes.
    names = [{"name": f"sim/list[{number:01010}]"} for number in range(2000)]
    raw.send_text(json.dumps({"type": "dataref_subscribe_values", "params": {"datarefs": names}}))
    assert len(json.loads(raw.receive_text())["data"]) == 2000
    return raw


@pytest.mark.parametrize("stall", [stalled_by_a_reply, stalled_by_pushes])
def test_a_client_that_stops_reading_delays_nobody_and_is_cut_in_the_end(companion, fake, stall):
    fake.add("sim/a", 1)
    fake.add("sim/list", [1] * 2000)
    watcher = companion.client()
    watcher.subscribe("sim/a")
    before = companion.open_sockets()
    stalled = stall(companion)
    started, pushes = time.monotonic(), 0
    while companion.open_sockets() > before:
        assert watcher.push() == {"sim/a": 1}
        assert watcher.data("sim_info")["sim"] == "xplane"
        pushes += 1 + len(watcher.pushes)
        watcher.pushes.clear()
        assert time.monotonic() - started < 120, "the client that reads nothing is still connected"
    assert pushes >= 10
    while (text := stalled.receive_text()) is not None:
        assert json.loads(text)["type"] == "dataref_subscribe_values", "only what was on its way arrives"
    assert watcher.push() == {"sim/a": 1}


def test_a_client_that_reads_slowly_gets_everything(companion):
    raw = companion.raw(receive_buffer=4096)
    text = "x" * MEGABYTE
    raw.send_text(json.dumps({"type": text, "req_id": 1}))
    time.sleep(2)
    assert json.loads(raw.receive_text())["data"]["message"].endswith(text)


def test_a_client_that_reads_late_is_served_on(companion, fake):
    fake.add("sim/list", list(range(500)))
    names = [f"sim/list[{number}]" for number in range(500)]
    late = companion.client()
    late.subscribe(*names)
    time.sleep(3)
    assert late.push() == {name: number for number, name in enumerate(names)}
    assert late.data("sim_info")["sim"] == "xplane"


def test_300_clients_are_served_side_by_side(companion, fake):
    fake.add("sim/a", 1)
    clients = [companion.client() for _ in range(300)]
    for client in clients:
        client.post("dataref_subscribe_values", {"datarefs": [{"name": "sim/a"}]})
    for client in clients:
        assert client.reply()["data"] == {"sim/a": 1}
    for client in clients:
        assert client.push() == {"sim/a": 1}


def test_connections_that_come_and_go_leave_nothing_behind(companion, fake):
    fake.add("sim/a", 1)
    companion.client().subscribe("sim/a")  # so that the link to the simulator stands
    before = companion.open_sockets()
    for number in range(100):
        raw = companion.raw(paired=number % 2 == 0)
        if number % 3 == 0:
            raw.send_text("no pair")
        raw.close()
    wait_until(lambda: companion.open_sockets() == before, "the end of the last connection")


def processor_seconds(pid):
    with open(f"/proc/{pid}/stat") as file:
        fields = file.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def test_with_few_descriptors_a_crowd_at_the_door_keeps_nobody_out(programs):
    companion = programs.companion(descriptors=48)
    earlier = companion.client()
    crowd = [socket.create_connection(("127.0.0.1", companion.port)) for _ in range(100)]
    crowd[0].settimeout(60)
    assert crowd[0].recv(1) == b"", "the first of them had to go"
    assert companion.open_sockets() < 30
    assert earlier.data("sim_info")["sim"] == "xplane"
    assert companion.client().data("sim_info")["sim"] == "xplane"
    used = processor_seconds(companion.program.pid)
    time.sleep(2)
    assert processor_seconds(companion.program.pid) - used < 0.5, "it spins"
    for connection in crowd:
        connection.close()
    assert companion.client().data("sim_info")["sim"] == "xplane"
    assert earlier.data("sim_info")["sim"] == "xplane"


def test_a_port_scanner_is_dropped_after_a_while(programs):
    companion = programs.companion()
    before = companion.open_sockets()
    with socket.create_connection(("127.0.0.1", companion.port)) as silent:
        wait_until(lambda: companion.open_sockets() > before, "the connection")
        silent.settimeout(60)
        assert silent.recv(100) == b""
    assert companion.client().data("sim_info")["sim"] == "xplane"


@pytest.mark.parametrize("request_text, status", [
    (b"GET / HTTP/1.1\r\nHost: localhost\r\n\r\n", b"HTTP/1.1 200 "),
    (b"POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n\r\nhi", b"HTTP/1.1 405 "),
    (b"POST /api HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n\r\nhi", b"HTTP/1.1 404 "),
])
def test_a_browser_is_answered_and_hung_up_on(programs, request_text, status):
    companion = programs.companion()
    with socket.create_connection(("127.0.0.1", companion.port)) as browser:
        browser.settimeout(60)
        browser.sendall(request_text)
        assert browser.recv(4096).startswith(status)
    assert companion.client().data("sim_info")["sim"] == "xplane"


@pytest.mark.parametrize("garbage", [
    b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03",
    b"\0" * 5000,
    b"x" * 100_000,
    b"GET / HTTP/1.1\r\n" + b"a: b\r\n" * 20_000,
], ids=["TLS", "zeros", "one long line", "many headers"])
def test_garbage_at_the_door_harms_nobody(programs, garbage):
    companion = programs.companion()
    with socket.create_connection(("127.0.0.1", companion.port)) as stranger:
        stranger.settimeout(60)
        try:
            stranger.sendall(garbage + b"\r\n\r\n")
            stranger.recv(4096)
        except ConnectionError:
            pass
    assert companion.client().data("sim_info")["sim"] == "xplane"
