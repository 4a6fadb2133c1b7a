"""WebSocket framing, right and wrong, by hand."""

import json

import pytest
from fake_simulator import DATAREFS
from websocket_frames import BINARY, CLOSE, CONTINUATION, PING, PONG, TEXT

SUBSCRIBE = '{"type":"dataref_subscribe_values","req_id":1,"params":{"datarefs":[{"name":"sim/x"}]}}'
SIM_INFO = b'{"type":"sim_info","req_id":1}'
MEGABYTE = 1 << 20


@pytest.fixture(scope="module")
def lonely(shared_programs):
    """A companion without a simulator."""
    return shared_programs.companion()


def reply(raw):
    text = raw.receive_text()
    assert text is not None, "the companion has ended the connection"
    return json.loads(text)


@pytest.mark.parametrize("pieces", [
    [SIM_INFO[:9], SIM_INFO[9:]],
    [b"", SIM_INFO],
    [SIM_INFO, b""],
    [SIM_INFO[i:i + 1] for i in range(len(SIM_INFO))],
], ids=["two", "empty first", "empty last", "byte by byte"])
def test_fragments_are_joined(lonely, pieces):
    raw = lonely.raw()
    raw.send_fragments(*pieces)
    assert reply(raw)["req_id"] == 1


def test_a_character_may_be_split_between_fragments(lonely):
    raw = lonely.raw()
    text = '{"type":"ü✈","req_id":1}'.encode()
    raw.send_fragments(text[:10], text[10:12], text[12:])
    assert reply(raw)["data"]["message"] == "unknown message type: ü✈"


def test_pings_between_fragments_are_answered_before_the_message_is_whole(lonely):
    raw = lonely.raw()
    raw.send_frame(TEXT, SIM_INFO[:9], final=False)
    for payload in (b"", b"first", bytes(125)):
        raw.send_frame(PING, payload)
        pong = raw.receive_frame()
        assert (pong.opcode, pong.payload) == (PONG, payload)
    raw.send_frame(CONTINUATION, SIM_INFO[9:])
    assert reply(raw)["req_id"] == 1


def test_pings_are_answered_while_a_request_waits(companion, fake):
    fake.add("sim/x", 1)
    with fake.holding(DATAREFS):
        raw = companion.raw()
        raw.send_text(SUBSCRIBE)
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
        for payload in (b"one", b"two"):
            raw.send_frame(PING, payload)
            pong = raw.receive_frame()
            assert (pong.opcode, pong.payload) == (PONG, payload)
    assert reply(raw)["data"] == {"sim/x": 1}


def test_unpaired_clients_get_their_pings_answered_too(lonely):
    raw = lonely.raw(paired=False)
    raw.send_frame(PING, b"there?")
    assert raw.receive_frame().payload == b"there?"
    raw.send_frame(PONG, b"unasked")
    raw.send_text('{"type":"pair"}')
    assert reply(raw)["data"]["accepted"] is True


@pytest.mark.parametrize("bad", [
    b"\xff", b"\xfe\xff", b"\x80", b"\xc3", b"\xc0\xaf", b"\xe2\x82", b"\xe2\x28\xa1", b"\xed\xa0\x80",
    b"\xf0\x9f\x98", b"\xf4\x90\x80\x80",
], ids=repr)
def test_malformed_utf8_becomes_the_replacement_character(lonely, bad):
    raw = lonely.raw()
    raw.send_text(b'{"type":"a' + bad + b'b","req_id":1}')
    shown = b"a" + bad + b"b"
    assert reply(raw) == {"type": "error", "req_id": 1,
                          "data": {"message": "unknown message type: " + shown.decode(errors="replace")}}
    raw.send_text(SIM_INFO)
    assert reply(raw)["type"] == "sim_info"


def test_malformed_utf8_outside_a_string_is_just_malformed(lonely):
    raw = lonely.raw()
    raw.send_fragments(b"\xff", b"\xfe" + SIM_INFO)
    assert reply(raw) == {"type": "error", "data": {"message": "malformed message"}}


def test_malformed_utf8_from_an_unpaired_client_ends_its_connection(lonely):
    raw = lonely.raw(paired=False)
    raw.send_text(b"\xff\xfe")
    assert [f for f in raw.frames_to_the_end() if f.opcode in (TEXT, BINARY)] == []


@pytest.mark.parametrize("fragments", [1, 24], ids=["one frame", "24 fragments"])
def test_a_text_of_24_megabytes_is_answered(lonely, fragments):
    raw = lonely.raw()
    text = b'{"type":"sim_info","req_id":1,"pad":"' + b"x" * (24 * MEGABYTE) + b'"}'
    size = -(-len(text) // fragments)
    raw.send_fragments(*(text[i:i + size] for i in range(0, len(text), size)))
    assert reply(raw) == {"type": "sim_info", "req_id": 1, "data": {"sim": "xplane", "version": "unknown"}}


def test_a_long_reply_arrives_whole(lonely):
    raw = lonely.raw()
    name = "x" * (4 * MEGABYTE) + "✈"
    raw.send_text(json.dumps({"type": name, "req_id": 1}))
    assert reply(raw)["data"]["message"] == f"unknown message type: {name}"


@pytest.mark.parametrize("paired", [True, False], ids=["paired", "unpaired"])
def test_binary_frames_are_dropped_without_an_answer(lonely, paired):
    raw = lonely.raw(paired=paired)
    raw.send_frame(BINARY, b'{"type":"sim_info","req_id":9}')
    raw.send_frame(BINARY, b"")
    raw.send_frame(BINARY, bytes(range(256)) * 200, final=False)
    raw.send_frame(CONTINUATION, b"and more")
    raw.send_text('{"type":"pair","req_id":2}')
    first = reply(raw)
    assert (first["type"], first["req_id"]) == ("pair", 2)


def test_a_close_frame_is_answered_and_the_connection_ends(lonely):
    raw = lonely.raw()
    raw.send_frame(CLOSE, b"\x03\xe8")
    assert [frame.opcode for frame in raw.frames_to_the_end()] == [CLOSE]


def test_a_close_frame_while_a_request_waits_lets_it_be_answered_first(companion, fake):
    fake.add("sim/x", 1)
    with fake.holding(DATAREFS):
        raw, other = companion.raw(), companion.client()
        raw.send_text(SUBSCRIBE)
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
        raw.send_frame(CLOSE, b"\x03\xe8")
    assert [frame.opcode for frame in raw.frames_to_the_end()] == [TEXT, CLOSE]
    assert other.subscribe("sim/x") == {"sim/x": 1}


@pytest.mark.parametrize("abuse", [
    lambda raw: raw.send_frame(TEXT, SIM_INFO, masked=False),
    lambda raw: raw.send_frame(3, b"reserved"),
    lambda raw: raw.send_frame(CONTINUATION, b"of nothing"),
    lambda raw: raw.send_frame(PING, bytes(126)),
    lambda raw: raw.send_frame(PING, b"in pieces", final=False),
], ids=["unmasked", "reserved opcode", "continuation of nothing", "long ping", "ping in pieces"])
def test_a_peer_that_breaks_the_framing_loses_its_connection_and_nobody_else(lonely, abuse):
    raw, other = lonely.raw(), lonely.client()
    abuse(raw)
    assert [f for f in raw.frames_to_the_end() if f.opcode == TEXT] == []
    assert other.data("sim_info")["sim"] == "xplane"


def test_a_peer_that_vanishes_in_the_middle_of_a_frame_harms_nobody(lonely):
    raw, other = lonely.raw(), lonely.client()
    raw.socket.sendall(b"\x81\xfe\xff\xff\0\0\0\0half")
    raw.close()
    assert other.data("sim_info")["sim"] == "xplane"
