"""How a frame's JSON is read: request ids, duplicate keys, and what makes a frame malformed."""

import pytest

MALFORMED = {"type": "error", "data": {"message": "malformed message"}}


@pytest.fixture(scope="module")
def client(shared_programs):
    return shared_programs.companion().client()


def answer(client, frame):
    client.send(frame)
    return client.receive()


@pytest.mark.parametrize("written, echoed", [
    ("7", 7), ("7.0", 7), ("1e2", 100), ("1E+2", 100), ("70e-1", 7), ("0", 0), ("-0", 0), ("0.0", 0),
    ("-1", -1), ("-5.0", -5), ("9007199254740993", 9007199254740993),
    ("9223372036854775807", 2**63 - 1), ("-9223372036854775808", -(2**63)),
    ("9223372036854774784.0", 9223372036854774784), ("-9.223372036854775808e18", -(2**63)),
])
def test_an_integral_request_id_is_echoed_exactly(client, written, echoed):
    reply = answer(client, f'{{"type":"sim_info","req_id":{written}}}')
    assert reply["type"] == "sim_info"
    assert isinstance(reply["req_id"], int) and reply["req_id"] == echoed


@pytest.mark.parametrize("frame", ['{"type":"sim_info"}', '{"type":"sim_info","req_id":null}',
                                   '{"type":"sim_info","Req_id":4}'])
def test_without_a_request_id_the_reply_has_none(client, frame):
    assert answer(client, frame) == {"type": "sim_info", "data": {"sim": "xplane", "version": "unknown"}}


def test_an_error_carries_the_request_id_too(client):
    assert answer(client, '{"req_id":-3,"type":"load_flight"}') == {
        "type": "error", "req_id": -3, "data": {"message": 'missingParams("load_flight requires a path")'}}


@pytest.mark.parametrize("written", [
    "7.5", '"7"', "true", "false", "[7]", "{}", "9223372036854775808", "1e19", "-9223372036854775809",
    "9223372036854775808.0", "1e400", "-1e400", "1e-1"])
def test_any_other_request_id_makes_the_frame_malformed(client, written):
    assert answer(client, f'{{"type":"sim_info","req_id":{written}}}') == MALFORMED


def test_of_duplicate_keys_the_last_counts(client):
    assert answer(client, '{"type":"nope","req_id":1,"type":"sim_info","req_id":2}')["req_id"] == 2
    assert answer(client, '{"type":"sim_info","type":"nope","req_id":1}')["data"] == {
        "message": "unknown message type: nope"}
    assert "req_id" not in answer(client, '{"type":"sim_info","req_id":1,"req_id":null}')
    assert answer(client, '{"type":"sim_info","req_id":1,"req_id":"x"}') == MALFORMED
    assert answer(client, '{"type":"sim_info","req_id":"x","req_id":1}')["req_id"] == 1


@pytest.mark.parametrize("frame", [
    "",
    " ",
    "not JSON",
    "null",
    "7",
    '"sim_info"',
    "[]",
    '[{"type":"sim_info"}]',
    "{}",
    '{"type":null}',
    '{"type":7}',
    '{"Type":"sim_info"}',
    '{"type":"sim_info"',
    '{"type":"sim_info",}',
    "{'type':'sim_info'}",
    '{"type":"sim_info"} x',
    '{"type":"sim_info"}{"type":"sim_info"}',
    '{"type":"sim_info"}\0',
    '\ufeff{"type":"sim_info"}',
    '{"type":"sim_info"/* why */}',
    '{"type":"sim\ninfo"}',
    r'{"type":"\ud800"}',
    r'{"type":"sim_info","x":"\udc00"}',
    r'{"type":"sim_info","x":"\ud800\u0041"}',
    '{"type":"sim_info","x":1e400}',
    '{"type":"sim_info","x":-1e309}',
    '{"type":"sim_info","x":NaN}',
    '{"type":"sim_info","x":Infinity}',
    '{"type":"sim_info","x":01}',
    '{"type":"sim_info","x":+1}',
    '{"type":"sim_info","x":.5}',
    '{"type":"sim_info","x":5.}',
])
def test_what_is_not_one_json_object_with_a_type_is_malformed(client, frame):
    assert answer(client, frame) == MALFORMED


@pytest.mark.parametrize("frame", [
    ' \r\n\t{ "type" : "sim_info" } \n',
    '{"unknown":[1,{"a":null}],"type":"sim_info","params":17}',
    '{"type":"sim_\\u0069nfo"}',
    '{"type":"sim_info","x":"\\ud83d\\ude00"}',
    '{"type":"sim_info","x":1e308}',
    '{"type":"sim_info","x":1e-400}',
    '{"type":"sim_info","x":123456789012345678901234567890}',
])
def test_everything_else_that_is_json_is_fine(client, frame):
    assert answer(client, frame)["type"] == "sim_info"


def nested(levels):
    """A sim_info whose JSON nests that deep, its own object included."""
    return '{"type":"sim_info","x":' + "[" * (levels - 1) + "]" * (levels - 1) + "}"


def test_nesting_of_64_levels_is_fine_and_of_65_malformed(client):
    assert answer(client, nested(64))["type"] == "sim_info"
    assert answer(client, nested(65)) == MALFORMED
    assert answer(client, nested(100_000)) == MALFORMED


def test_a_malformed_frame_costs_the_client_nothing_but_that(client):
    assert answer(client, "{") == MALFORMED
    assert answer(client, '{"type":"sim_info","req_id":1}')["req_id"] == 1
