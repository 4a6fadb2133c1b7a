"""Strangers, guessers and web pages: who may connect, how long, how many, and whom they hold up."""

import contextlib
import json
import socket
import time
from pathlib import Path

import pytest
import websocket_frames as frames
from harness import wait_until

KEY = "dGhlIHNhbXBsZSBub25jZQ=="
PASSWORD = {"password": "secret"}


def status_of(companion, *headers, host=None):
    """The status of the answer to an upgrade with these headers; nothing else is read."""
    lines = ["GET / HTTP/1.1", "Upgrade: websocket", "Connection: Upgrade", "Sec-WebSocket-Version: 13",
             f"Sec-WebSocket-Key: {KEY}", *headers]
    if host is not None:
        lines.append(f"Host: {host}")
    with socket.create_connection(("127.0.0.1", companion.port), timeout=60) as peer:
        peer.sendall("".join(f"{line}\r\n" for line in [*lines, ""]).encode())
        with peer.makefile("rb") as answer:
            return int(answer.readline().split()[1])


@pytest.fixture
def strangers(programs):
    """Connections that say nothing at all."""
    with contextlib.ExitStack() as stack:
        yield lambda companion, count: [
            stack.enter_context(socket.create_connection(("127.0.0.1", companion.port), timeout=60))
            for _ in range(count)]


def has_ended(peer, patience=0.0):
    peer.settimeout(patience or 1e-6)
    try:
        return peer.recv(1) == b""
    except ConnectionResetError:
        return True
    except (TimeoutError, BlockingIOError):
        return False


def test_idle_strangers_keep_nobody_out_and_are_gone_after_half_a_minute(programs, strangers):
    companion = programs.companion()
    begin = time.monotonic()
    # Half of them shake hands and stay.
    halfway = [companion.raw(paired=False) for _ in range(100)]
    silent = strangers(companion, 150)
    good = companion.client()
    assert has_ended(silent[-1]) is False
    silent += strangers(companion, 40)
    # The oldest had to go, one for one.
    wait_until(lambda: has_ended(halfway[0].socket), "the end of the oldest stranger")
    assert has_ended(silent[-1]) is False
    assert companion.client().data("sim_info")["sim"] == "xplane"
    last = companion.raw(paired=False)
    shaken = time.monotonic()
    assert has_ended(last.socket, patience=60)
    assert 25 < time.monotonic() - shaken < 45
    assert time.monotonic() - begin < 120
    assert good.data("sim_info")["sim"] == "xplane"


def test_the_last_descriptors_are_nobodys(programs, strangers):
    companion = programs.companion(descriptors=128)
    assert "128 file descriptors" in companion.program.errors()
    silent = strangers(companion, 200)
    client = companion.client()
    client.data("recording_start")
    folder = companion_recordings(companion)
    assert len(list(folder.glob("session-*.jsonl"))) == 1
    assert has_ended(silent[0], patience=60)
    client.data("recording_stop")


def companion_recordings(companion):
    arguments = companion.program.process.args
    folder = arguments[arguments.index("--data-dir") + 1]
    return Path(folder) / "Recordings"


def test_there_is_room_for_so_many_clients(programs):
    companion = programs.companion("--max-clients", 2)
    first, second = companion.client(), companion.client()
    assert status_of(companion, host="localhost") == 503
    first.close()
    wait_until(lambda: status_of(companion, host="localhost") == 101, "room for another one")
    second.close()
    stranger = wait_until(lambda: open_raw(companion), "room for a stranger")
    others = [companion.client(), companion.client()]
    assert has_ended(stranger.socket, patience=60)
    assert others[0].data("sim_info")["sim"] == "xplane"


def open_raw(companion):
    try:
        return companion.raw(paired=False)
    except AssertionError:
        return None


def test_a_strangers_message_is_short(programs):
    companion = programs.companion(settings={"password": "secret", "startAtLogin": False})
    longest = 64 * 1024

    def request(size):
        text = json.dumps({"type": "pair", "params": {"password": ""}})
        return text[:-3] + "x" * (size - len(text)) + text[-3:]

    peer = companion.raw(paired=False)
    peer.send_text(request(longest))
    assert json.loads(peer.receive_text())["data"]["accepted"] is False
    for opcode in (frames.TEXT, frames.BINARY):
        peer = companion.raw(paired=False)
        with contextlib.suppress(OSError):
            peer.send_frame(opcode, request(longest + 1).encode())
        assert peer.receive_text() is None


def test_what_follows_an_accepted_pair_may_be_long(programs):
    companion = programs.companion(settings={"password": "secret", "startAtLogin": False})
    long = json.dumps({"type": "sim_info", "req_id": 1, "params": "x" * 1_000_000})
    peer = companion.raw(paired=False)
    peer.socket.sendall(frames.encode(frames.TEXT, json.dumps({"type": "pair", "params": PASSWORD}).encode())
                        + frames.encode(frames.TEXT, long.encode()))
    assert json.loads(peer.receive_text())["data"]["accepted"] is True
    assert json.loads(peer.receive_text())["type"] == "sim_info"


def test_it_may_be_long_too_when_the_answer_is_late(programs):
    companion = programs.companion(settings={"password": "secret", "startAtLogin": False})
    guesser = companion.client(paired=False)
    for _ in range(5):
        assert guesser.data("pair", {"password": "guess"})["accepted"] is False
    long = json.dumps({"type": "sim_info", "req_id": 1, "params": "x" * 1_000_000})
    for password in ({"password": "guess"}, PASSWORD):
        peer = companion.raw(paired=False)
        peer.send_text(json.dumps({"type": "pair", "params": password}))
        with contextlib.suppress(OSError):
            peer.send_text(long)
        accepted = json.loads(peer.receive_text())["data"]["accepted"]
        assert accepted is (password == PASSWORD)
        follow = peer.receive_text()
        assert (follow is not None) is accepted


def test_guessing_is_slow_and_holds_nobody_up(programs):
    companion = programs.companion(settings={"password": "secret", "startAtLogin": False})
    good = companion.client("secret")
    guesser = companion.client(paired=False)

    def guess(client=guesser, password="guess"):
        begin = time.monotonic()
        accepted = client.data("pair", {"password": password})["accepted"]
        return accepted, time.monotonic() - begin

    for _ in range(5):
        accepted, seconds = guess()
        assert accepted is False and seconds < 0.9
    accepted, seconds = guess()
    assert accepted is False and 1 <= seconds < 1.9
    request = guesser.post("pair", {"password": "guess"})
    begin = time.monotonic()
    for _ in range(20):
        good.data("sim_info")
    assert time.monotonic() - begin < 1.5
    reply = guesser.reply()
    assert reply["req_id"] == request and time.monotonic() - begin >= 1.5
    # A right one waits as well, and then all is forgotten.
    accepted, seconds = guess(companion.client(paired=False), "secret")
    assert accepted is True and seconds >= 3.9
    accepted, seconds = guess()
    assert accepted is False and seconds < 0.9


def test_guesses_wait_in_one_line_and_not_many(programs):
    companion = programs.companion(settings={"password": "secret", "startAtLogin": False})
    first = companion.client(paired=False)
    for _ in range(5):
        first.data("pair", {"password": "guess"})
    waiting = [companion.raw(paired=False) for _ in range(16)]
    for peer in waiting:
        peer.send_text('{"type":"pair"}')
    # The last of them stands in the line when a ping behind it has been answered.
    waiting[-1].send_frame(frames.PING, b"?")
    assert waiting[-1].receive_frame().opcode == frames.PONG
    too_many = companion.raw(paired=False)
    too_many.send_text(json.dumps({"type": "pair", "params": PASSWORD}))
    assert too_many.receive_text() is None
    begin = time.monotonic()
    for peer in waiting[:3]:
        assert json.loads(peer.receive_text())["data"]["accepted"] is False
    assert 6 <= time.monotonic() - begin < 20


PAGES = [
    ({}, "localhost:{port}", 101),
    ({"Origin": "http://localhost:{port}"}, "localhost:{port}", 101),
    ({"Origin": "https://127.0.0.1:{port}"}, "127.0.0.1:{port}", 101),
    ({"Origin": "http://rig.local:{port}"}, "RIG.local:{port}", 101),
    ({"Origin": "https://example.com"}, "127.0.0.1:{port}", 101),
    ({"Origin": "http://example.com"}, "127.0.0.1:{port}", 403),
    ({"Origin": "https://example.org"}, "127.0.0.1:{port}", 403),
    ({"Origin": "null"}, "127.0.0.1:{port}", 403),
    ({"Origin": "http://localhost:{port}"}, "127.0.0.1:{port}", 403),
    ({"Origin": "http://localhost"}, "localhost:{port}", 403),
    ({}, "example.com:{port}", 403),
    ({"Origin": "http://example.com:{port}"}, "example.com:{port}", 403),
    ({"Host": "localhost"}, "localhost:{port}", 403),
    ({}, None, 403),
]


@pytest.fixture(scope="module")
def open_companion(shared_programs):
    return shared_programs.companion("--allow-origin", "https://example.com/", "--allow-origin=http://a.example:81")


@pytest.mark.parametrize(("headers", "host", "expected"), PAGES)
def test_only_pages_from_here_may_connect(open_companion, headers, host, expected):
    port = open_companion.port
    lines = [f"{name}: {value.format(port=port)}" for name, value in headers.items()]
    assert status_of(open_companion, *lines, host=host and host.format(port=port)) == expected


def test_the_name_of_this_computer_will_do(open_companion):
    assert status_of(open_companion, host=socket.gethostname()) == 101


def test_plain_requests_must_name_this_computer_too(open_companion):
    for host, expected in (("localhost", b" 200 "), ("rebound.example", b" 403 ")):
        with socket.create_connection(("127.0.0.1", open_companion.port), timeout=60) as peer:
            peer.sendall(f"GET / HTTP/1.1\r\nHost: {host}\r\n\r\n".encode())
            assert expected in peer.makefile("rb").readline()


@pytest.mark.parametrize("value", ["example.com", "https://", "https://example.com/page", "null", ""])
def test_an_origin_that_is_none_is_wrong_usage(programs, value):
    ended = programs.run("tarnlyd", f"--allow-origin={value}")
    assert ended.status == 2
    assert "--allow-origin" in ended.errors and len(ended.error_lines) == 1


@pytest.mark.parametrize("value", ["0", "-1", "65536", "many"])
def test_a_number_of_clients_that_is_none_is_wrong_usage(programs, value):
    ended = programs.run("tarnlyd", f"--max-clients={value}")
    assert ended.status == 2
    assert "--max-clients" in ended.errors


def test_names_have_their_limits_and_the_connection_stays(companion, fake):
    client = companion.client()
    assert client.subscribe_error("x" * 1025) == 'limitExceeded("a name may have 1024 bytes at most")'
    assert client.error("run_command", {"name": "x" * 1025}).startswith("limitExceeded(")
    names = [f"name/{number}" for number in range(10_001)]
    assert client.subscribe_error(*names) == (
        'limitExceeded("a connection may subscribe to 10000 datarefs at most")')
    assert client.is_quiet(1.2), "nothing of it has taken effect"
    assert client.data("sim_info")["sim"] == "xplane"


def test_all_clients_together_have_a_limit_of_names(companion, fake):
    clients = [companion.client() for _ in range(6)]
    for client in clients[:5]:
        client.subscribe_error(*(f"name/{number}" for number in range(10_000)))  # nobody knows them
    refused = clients[5].subscribe_error("one/more")
    assert refused == 'limitExceeded("all connections together may subscribe to 50000 datarefs at most")'
    clients[0].close()
    wait_until(lambda: not clients[5].subscribe_error("one/more").startswith("limitExceeded"), "room for a name")
