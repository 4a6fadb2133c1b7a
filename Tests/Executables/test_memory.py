"""The memory of the companion: what long messages take goes back to the system."""

import contextlib
import json
import socket
import time

import pytest
import websocket_frames as frames
from harness import memory, wait_until

MEGABYTE = 1 << 20
#: The longest message of a client that has paired, but for its frame.
LONGEST = 63 * MEGABYTE
#: What may stay, in bytes.
KEPT = 16 * MEGABYTE
#: After the peer has left, in seconds.
SOON = 10


def message(type_, params):
    return f'{{"type":"{type_}","req_id":1,"params":{params}}}'.encode()


def repeated(element):
    """A list of the element that nearly fills the longest message."""
    return "[" + ",".join([element] * ((LONGEST - 1000) // (len(element) + 1))) + "]"


def names():
    return ",".join(f'{{"name":"sim/no/such/name/of/the/simulator/{number}"}}' for number in range(1_000_000))


def triggers():
    trigger = ('{"id":"%d","condition_kind":"after_start","condition":{"seconds":%d},'
               '"action_kind":"speak","action":{"text":"%s","times":1}}')
    return ",".join(trigger % (number, number, "to be said " * 36) for number in range(100_000))


LONG_MESSAGES = {
    "junk in the parameters": lambda: message("sim_info", repeated('{"a":[1,2.5,"x"],"b":null}')),
    "a script": lambda: message("load_script", f'{{"triggers":[{triggers()}]}}'),
    "a million names": lambda: message("dataref_subscribe_values", f'{{"datarefs":[{names()}]}}'),
    "nested arrays": lambda: message("sim_info", repeated("[" * 50 + "]" * 50)),
    "one long name": lambda: message(
        "dataref_subscribe_values", '{"datarefs":[{"name":"' + "x" * (LONGEST - 1000) + '"}]}'),
    "an unknown type": lambda: message("x" * (LONGEST - 1000), "{}"),
    "no JSON": lambda: b"[" * LONGEST,
}


@pytest.fixture
def used(companion, fake):
    """A companion that has what it needs for its daily work."""
    fake.add("sim/a", 1)
    companion.client().subscribe("sim/a")
    return companion


@pytest.mark.parametrize("kind", LONG_MESSAGES)
def test_what_a_long_message_takes_goes_back(used, kind):
    before = memory(used)
    raw = used.raw()
    raw.send_text(LONG_MESSAGES[kind]())
    assert json.loads(raw.receive_text())["type"] in ("sim_info", "load_script", "error")
    if kind == "a script":  # it stays in force until there is another one
        raw.send_text(message("load_script", '{"triggers":[]}'))
        raw.receive_text()
    raw.close()
    wait_until(lambda: memory(used) < before + KEPT, f"{before + KEPT} bytes", SOON)


STRANGERS = 300
#: What all strangers together may take, in bytes.
STRANGERS_TAKE = 24 * MEGABYTE


def half_a_pair(size, frames_of):
    """What a stranger sends that takes as much memory as it may, and is never whole."""
    payload = b'{"type":"pair","params":{"password":"' + b"x" * size
    pieces = [payload[at:at + frames_of] for at in range(0, len(payload), frames_of)]
    return b"".join(frames.encode(frames.CONTINUATION if at else frames.TEXT, piece, final=False)
                    for at, piece in enumerate(pieces))


@pytest.mark.parametrize("frames_of", [200, 64_000], ids=["in small frames", "in one frame"])
def test_what_strangers_take_is_bounded_and_goes_back(used, frames_of):
    before = memory(used)
    most = 0
    for _ in range(3):
        strangers = []
        for _ in range(STRANGERS):
            stranger = used.raw(paired=False)
            stranger.socket.sendall(half_a_pair(63_900, frames_of))
            strangers.append(stranger)
        wait_until(lambda: used.client(), "a client among them")
        most = max(most, memory(used))
        for stranger in strangers:
            stranger.close()
    assert most - before < STRANGERS_TAKE, f"{(most - before) / MEGABYTE:.1f} MiB"
    wait_until(lambda: memory(used) < before + 4 * MEGABYTE, f"{before + 4 * MEGABYTE} bytes", SOON)


@pytest.mark.parametrize("end", [b"", b"\r\n"], ids=["unfinished", "refused"])
def test_heads_of_many_short_lines_take_little(used, end):
    before = memory(used)
    head = b"GET / HTTP/1.1\r\n" + b"a:\r\n" * 4050 + end
    peers = []
    for _ in range(STRANGERS):
        peer = socket.create_connection(("127.0.0.1", used.port), timeout=60)
        with contextlib.suppress(OSError):
            peer.sendall(head)
        peers.append(peer)
    assert used.client()
    assert memory(used) - before < STRANGERS_TAKE
    for peer in peers:
        peer.close()


def test_guessers_who_wait_take_little(programs):
    companion = programs.companion(settings={"password": "secret", "startAtLogin": False})
    first = companion.client(paired=False)
    for _ in range(5):
        first.data("pair", {"password": "guess"})
    before = memory(companion)
    long = json.dumps({"type": "pair", "params": {"password": "x" * 65_000}}).encode()
    peers = [companion.raw(paired=False) for _ in range(STRANGERS)]
    for peer in peers:
        with contextlib.suppress(OSError):
            peer.socket.sendall(b"".join(frames.encode(frames.TEXT, long) for _ in range(20)))
    time.sleep(1)
    assert memory(companion) - before < STRANGERS_TAKE


def test_pairing_again_and_again_leaves_nothing_behind(used):
    raw = used.raw()
    pair = frames.encode(frames.TEXT, b'{"type":"pair"}') * 1000

    def pair_often(thousands):
        for _ in range(thousands):
            raw.socket.sendall(pair)
            for _ in range(1000):
                raw.receive_text()

    pair_often(5)
    before = memory(used)
    pair_often(40)
    assert memory(used) - before < 2 * MEGABYTE, "128 bytes each would be 5 MB"


def test_a_refused_message_leaves_nothing_behind(used):
    before = memory(used)
    raw = used.raw(paired=False)
    raw.send_text(message("sim_info", repeated("[]")[:MEGABYTE - 1000]))
    assert raw.receive_text() is None
    raw.close()
    time.sleep(1)
    assert memory(used) < before + KEPT
