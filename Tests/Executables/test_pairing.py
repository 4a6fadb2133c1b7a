"""What unpaired clients may do: pair, and nothing else."""

import base64
import json

import pytest

REFUSED = {"accepted": False, "reason": "incorrect password"}


@pytest.fixture(scope="module")
def open_companion(shared_programs):
    return shared_programs.companion()


@pytest.fixture(scope="module")
def locked_companion(shared_programs):
    return shared_programs.companion(settings={"password": "Grünspecht", "startAtLogin": False})


@pytest.mark.parametrize("frame", [
    '{"type":"sim_info","req_id":1}',
    '{"type":"sim_info"}',
    '{"type":"no_such_type","req_id":1}',
    '{"type":"PAIR","req_id":1}',
    '{"type":"","req_id":1}',
    '{"type":7,"req_id":1}',
    '{"req_id":1}',
    '{"type":"pair","req_id":7.5}',
    "this is not JSON",
    '["pair"]',
    '"pair"',
    "null",
    "{",
    "",
])
def test_a_first_frame_that_is_no_pair_ends_the_connection_without_a_reply(open_companion, frame):
    client = open_companion.client(paired=False)
    client.send(frame)
    assert client.ends_without_reply()


def test_only_the_guilty_connection_ends(open_companion):
    paired, unpaired = open_companion.client(), open_companion.client(paired=False)
    unpaired.send('{"type":"sim_info"}')
    assert unpaired.ends_without_reply()
    assert paired.data("sim_info")["sim"] == "xplane"


def test_every_pairing_gives_another_token_of_24_random_bytes(open_companion):
    client = open_companion.client(paired=False)
    tokens = [client.pair()["session_token"] for _ in range(3)]
    tokens.append(open_companion.client(paired=False).pair()["session_token"])
    assert len(set(tokens)) == 4
    assert all(len(token) == 32 and len(base64.b64decode(token, validate=True)) == 24 for token in tokens)


ODD_PARAMS = ["", *(f',"params":{params}' for params in (
    "null", "5", '"Grünspecht"', "[]", "{}", '{"password":null}', '{"password":7}',
    '{"Password":"Grünspecht"}'))]


@pytest.mark.parametrize("params", ODD_PARAMS)
def test_open_pairing_asks_for_no_params(open_companion, params):
    client = open_companion.client(paired=False)
    client.send(f'{{"type":"pair","req_id":4{params}}}')
    reply = client.receive()
    assert reply["data"].pop("session_token")
    assert reply == {"type": "pair", "req_id": 4, "data": {"accepted": True}}


@pytest.mark.parametrize("params", ODD_PARAMS)
def test_odd_params_are_a_pair_without_a_password(locked_companion, params):
    client = locked_companion.client(paired=False)
    client.send(f'{{"type":"pair","req_id":4{params}}}')
    assert client.receive() == {"type": "pair", "req_id": 4, "data": REFUSED}


@pytest.mark.parametrize("password", [
    "", "grünspecht", "GRÜNSPECHT", "Grünspecht ", "Grunspecht", "Gr", "Grünspecht\0"])
def test_a_wrong_password_is_refused_and_may_be_tried_again(locked_companion, password):
    client = locked_companion.client(paired=False)
    assert client.data("pair", {"password": password}) == REFUSED
    assert client.pair("Grünspecht")["accepted"] is True
    assert client.data("sim_info")["sim"] == "xplane"


def test_a_refused_client_is_still_unpaired(locked_companion):
    client = locked_companion.client(paired=False)
    assert client.data("pair", {"password": "guess"}) == REFUSED
    client.send('{"type":"sim_info","req_id":2}')
    assert client.ends_without_reply()


@pytest.mark.parametrize("stored, supplied", [
    ("caf\u00e9", "cafe\u0301"),
    ("cafe\u0301", "caf\u00e9"),
    ("\u1e9b\u0323", "\u017f\u0323\u0307"),
    ("\u212b", "\u00c5"),
    ("\ud55c", "\u1112\u1161\u11ab"),
])
def test_canonically_equivalent_passwords_are_the_same(programs, stored, supplied):
    companion = programs.companion(settings={"password": stored, "startAtLogin": False})
    assert companion.client(password=supplied).data("sim_info")["sim"] == "xplane"


@pytest.mark.parametrize("stored, supplied", [
    ("\ufb01n", "fin"),
    ("caf\u00e9", "cafe"),
    ("stra\u00dfe", "strasse"),
])
def test_passwords_that_only_look_alike_differ(programs, stored, supplied):
    companion = programs.companion(settings={"password": stored, "startAtLogin": False})
    assert companion.client(paired=False).data("pair", {"password": supplied}) == REFUSED


def test_a_refused_attempt_leaves_a_paired_session_paired(locked_companion):
    client = locked_companion.client(password="Grünspecht")
    assert client.data("pair", {"password": "wrong"}) == REFUSED
    assert client.data("sim_info")["sim"] == "xplane"
    client.send("not JSON")
    assert client.receive() == {"type": "error", "data": {"message": "malformed message"}}


def test_a_paired_session_may_pair_again(locked_companion):
    client = locked_companion.client(password="Grünspecht")
    assert client.pair("Grünspecht")["accepted"] is True
    assert client.data("sim_info")["sim"] == "xplane"


def test_unpaired_sessions_get_no_pushes(programs, fake):
    fake.add("sim/x", 1)
    companion = programs.companion(sim_port=fake.port)
    paired, unpaired = companion.client(), companion.client(paired=False)
    paired.subscribe("sim/x")
    for _ in range(3):
        paired.push()
    assert unpaired.is_quiet(0.1)
    assert unpaired.pair()["accepted"] is True


def test_no_reply_gives_the_password_away(locked_companion):
    client = locked_companion.client(paired=False)
    client.send('{"type":"pair","params":{"password":"x"}}')
    reply = client.receive()
    assert reply == {"type": "pair", "data": REFUSED}
    assert "specht" not in json.dumps(reply)
