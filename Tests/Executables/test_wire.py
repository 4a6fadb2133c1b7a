"""What a client sees of its connection while requests wait, when messages are long, and at the end."""

import json
import socket
import struct

import pytest
from fake_simulator import DATAREFS
from harness import wait_until
from websocket_frames import CLOSE, PING, PONG, TEXT

MEGABYTE = 1 << 20


def subscribe(request_id, *names):
    entries = [{"name": name} for name in names]
    return json.dumps({"type": "dataref_subscribe_values", "req_id": request_id, "params": {"datarefs": entries}})


def write(request_id, name, value):
    return json.dumps({"type": "dataref_set_values", "req_id": request_id,
                       "params": {"datarefs": [{"name": name, "value": value}]}})


def reply(raw, request_id):
    """The data of the next reply, which is to that request; pushes are passed over."""
    while True:
        text = raw.receive_text()
        assert text is not None, "the companion has ended the connection"
        message = json.loads(text)
        if "req_id" in message:
            assert message["req_id"] == request_id
            return message["data"]


def is_reply(frame):
    return frame.opcode == TEXT and "req_id" in json.loads(frame.payload)


def test_a_ping_behind_waiting_requests_is_answered_at_once(companion, fake):
    fake.add("sim/x", 1)
    with fake.holding(DATAREFS):
        raw = companion.raw()
        for number in range(4):
            raw.send_text(subscribe(number, "sim/x"))
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
        raw.send_frame(PING, b"there?")
        first = raw.receive_frame()
        assert (first.opcode, first.payload) == (PONG, b"there?")
        assert raw.is_quiet(0), "no request has been answered yet"
    for number in range(4):
        assert reply(raw, number) == {"sim/x": 1}


def by_close_frame(raw):
    raw.send_frame(CLOSE, struct.pack("!H", 1000) + b"bye")


def by_half_close(raw):
    raw.socket.shutdown(socket.SHUT_WR)


@pytest.mark.parametrize("end", [by_close_frame, by_half_close])
def test_what_a_client_asks_before_its_end_is_done_and_answered_in_order(companion, fake, end):
    fake.add("sim/x", 1)
    with fake.holding(DATAREFS):
        raw = companion.raw()
        raw.send_text(subscribe(1, "sim/x"))
        raw.send_text(write(2, "sim/x", 7))
        for number in range(3, 23):
            raw.send_text(json.dumps({"type": "sim_info", "req_id": number}))
        end(raw)
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
    found = raw.frames_to_the_end()
    assert [json.loads(f.payload)["req_id"] for f in found if is_reply(f)] == list(range(1, 23))
    assert [f.opcode for f in found if f.opcode != TEXT] == [CLOSE] and found[-1].opcode == CLOSE
    assert found[-1].payload[:2] == struct.pack("!H", 1000)
    fake.wait_for(lambda: fake.written() == [("sim/x", 7)], "the write")


def test_nothing_behind_a_close_frame_is_done(companion, fake):
    fake.add("sim/x", 1)
    raw, other = companion.raw(), companion.client()
    raw.send_text(write(1, "sim/x", 1))
    by_close_frame(raw)
    raw.send_text(write(2, "sim/x", 2))
    raw.send_frame(PING, b"too late")
    found = raw.frames_to_the_end()
    assert [json.loads(f.payload)["req_id"] for f in found if is_reply(f)] == [1]
    assert [f.opcode for f in found] == [TEXT, CLOSE]
    other.set({"name": "sim/x", "value": 3})
    fake.wait_for(lambda: ("sim/x", 3) in fake.written(), "the other client's write")
    assert fake.written() == [("sim/x", 1), ("sim/x", 3)]


def test_pushes_of_10_megabytes_reach_a_client_that_reads(companion, fake):
    fake.add("sim/list", [1] * 10_000)
    raw = companion.raw()
    # Zeros in front make a name as long as one likes.
    for part in range(10):
        names = [f"sim/list[{number:01014}]" for number in range(1000 * part, 1000 * (part + 1))]
        raw.send_text(subscribe(part, *names))
        assert len(reply(raw, part)) == len(names)
    pushes = 0
    while pushes < 3:
        text = raw.receive_text()
        assert text is not None, "the companion has ended the connection"
        pushes += len(text) > 10_000_000
    raw.send_text(json.dumps({"type": "sim_info", "req_id": 99}))
    assert reply(raw, 99)["sim"] == "xplane"


def test_a_client_whose_connection_broke_is_gone_at_once(programs, fake):
    fake.add("sim/x", 1)
    status_file = programs.new_folder() / "status.json"

    def wait_for_clients(count):
        def are_counted():
            return status_file.exists() and json.loads(status_file.read_text())["clients"]["connected"] == count

        wait_until(are_counted, f"{count} clients")

    with fake.holding(DATAREFS):
        companion = programs.companion("--status-file", status_file, sim_port=fake.port)
        broken, waiting = companion.raw(), companion.raw()
        wait_for_clients(2)
        for raw in (broken, waiting):
            raw.send_text(subscribe(1, "sim/x"))
            raw.send_text(subscribe(2, "sim/x"))
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
        broken.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        broken.close()
        wait_for_clients(1)
        assert waiting.is_quiet(0), "the requests wait still"
    assert json.loads(waiting.receive_text())["req_id"] == 1
