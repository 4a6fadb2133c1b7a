"""What the simulator sees of the companion, request for request."""

import math
import threading

import pytest
from fake_simulator import COMMANDS, DATAREFS, Response

POSITION = "sim/flightmodel/position"
THROTTLE = "sim/cockpit2/engine/actuators/throttle_ratio_all"
UPGRADE = "GET /api/v2"
# What the companion asks by itself, at moments of its own.
ASIDE = ("GET /api/capabilities", "GET /api/v2/datarefs/count")
ATTITUDE_NAMES = [f"{POSITION}/{leaf}" for leaf in
                  ("theta", "phi", "local_vx", "local_vy", "local_vz", "P", "Q", "R")] + [THROTTLE]


def test_one_link_serves_all_clients(companion, fake):
    fake.add("sim/a", 1)
    client = companion.client()
    client.subscribe("sim/a")
    client.set({"name": "sim/a", "value": 2})
    companion.client().subscribe("sim/a")
    assert [line for line in fake.lines() if line not in ASIDE] == [DATAREFS, COMMANDS, UPGRADE]


def test_rest_requests_say_that_they_speak_json(companion, fake):
    fake.commands = ["sim/go"]
    companion.client().data("run_command", {"name": "sim/go"})
    activation = f"POST /api/v2/command/{fake.command_id('sim/go')}/activate"
    assert [line for line in fake.lines() if line not in (UPGRADE, *ASIDE)] == [DATAREFS, COMMANDS, activation]
    for request in fake.requests:
        if request.line != UPGRADE:
            assert request.headers["accept"] == "application/json"
            assert request.headers["content-type"] == "application/json"
            assert request.headers["host"] == f"127.0.0.1:{fake.port}"


def test_each_request_has_three_keys_and_is_counted_from_one(companion, fake):
    for name in ("sim/a", "sim/b", "sim/list"):
        fake.add(name, [1, 2] if name == "sim/list" else 1)
    first, second = companion.client(), companion.client()
    first.subscribe("sim/a")
    second.set({"name": "sim/b", "value": 5}, {"name": "sim/list", "value": 6, "index": 1})
    first.subscribe("sim/a", "sim/b", "sim/list[1]")
    fake.wait_for(lambda: len(fake.messages) == 4, "four requests")
    requests = [message.json for message in fake.messages]
    assert [set(request) for request in requests] == [{"type", "req_id", "params"}] * 4
    assert [request["req_id"] for request in requests] == [1, 2, 3, 4]
    numbers = {name: fake.dataref_id(name) for name in fake.datarefs}
    assert [(request["type"], request["params"]) for request in requests] == [
        ("dataref_subscribe_values", {"datarefs": [{"id": numbers["sim/a"]}]}),
        ("dataref_set_values", {"datarefs": [{"id": numbers["sim/b"], "value": 5}]}),
        ("dataref_set_values", {"datarefs": [{"id": numbers["sim/list"], "value": 6, "index": 1}]}),
        ("dataref_subscribe_values", {"datarefs": [{"id": numbers["sim/b"]}, {"id": numbers["sim/list"]}]}),
    ]


@pytest.mark.parametrize("index", [0, 3, -1, 2**63 - 1, -(2**63)])
def test_an_index_is_sent_as_given(companion, fake, index):
    fake.add("sim/a", [1])
    companion.client().set({"name": "sim/a", "value": 1, "index": index})
    fake.wait_for(fake.writes, "a write")
    assert fake.writes() == [[{"id": fake.dataref_id("sim/a"), "value": 1, "index": index}]]


def test_without_an_index_none_is_sent(companion, fake):
    fake.add("sim/a", [1])
    client = companion.client()
    client.send('{"type":"dataref_set_values","params":{"datarefs":[{"name":"sim/a","value":1},'
                '{"name":"sim/a","value":2,"index":null},{"name":"sim/a","value":3,"index":2.0}]}}')
    assert client.reply() == {"type": "dataref_set_values", "data": {"ok": True}}
    fake.wait_for(lambda: len(fake.writes()) == 3, "three writes")
    number = fake.dataref_id("sim/a")
    assert fake.writes() == [[{"id": number, "value": 1}], [{"id": number, "value": 2}],
                             [{"id": number, "value": 3, "index": 2}]]


@pytest.mark.parametrize("value", [
    0.1 + 0.2, 1 / 3, -1e-300, 1.7976931348623157e308, 5e-324, 123456789.123456789, 1e22, 2**53 + 2, -0.5,
    47.123456789012345])
def test_doubles_arrive_exactly(companion, fake, value):
    fake.add("sim/a", 1)
    companion.client().set({"name": "sim/a", "value": value})
    fake.wait_for(fake.writes, "a write")
    assert fake.writes()[0][0]["value"] == value


def test_a_write_leaves_the_cache_alone_and_an_update_changes_it(companion, fake):
    fake.add("sim/a", 1)
    client = companion.client()
    client.subscribe("sim/a")
    client.set({"name": "sim/a", "value": 2})
    assert client.subscribe("sim/a") == {"sim/a": 1}
    fake.set("sim/a", 3.25)
    while client.push() != {"sim/a": 3.25}:
        pass
    assert client.subscribe("sim/a") == {"sim/a": 3.25}


def velocity(pitch, ias, elevation, heading):
    height = min(elevation, 15000)
    factor = 1 if elevation <= 0 else 1 + height * -2.25577e-5
    speed = ias * 0.514444 / math.sqrt(factor ** 4.25588)
    theta, psi = math.radians(pitch), math.radians(heading)
    return [speed * math.cos(theta) * math.sin(psi), speed * math.sin(theta),
            -speed * math.cos(theta) * math.cos(psi)]


@pytest.mark.parametrize("elevation, heading", [
    (0, 0), (-12.5, 90), (3048.3, 217.3), (15000, 10), (20000, 10)])
def test_an_attitude_is_written_in_order(companion, fake, elevation, heading):
    for name in ATTITUDE_NAMES:
        fake.add(name, 0)
    fake.add(f"{POSITION}/elevation", elevation)
    fake.add(f"{POSITION}/psi", heading)
    pitch, bank, ias, throttle = 7.3, -21.7, 133.1, 0.615
    wanted = {"pitch_deg": pitch, "bank_deg": bank, "ias_kts": ias, "throttle": throttle}
    assert companion.client().data("apply_attitude", wanted) == {"ok": True}
    fake.wait_for(lambda: len(fake.writes()) == 9, "nine writes")
    assert [name for name, _ in fake.written()] == ATTITUDE_NAMES
    values = [value for _, value in fake.written()]
    assert values[:2] == [pitch, bank] and values[5:] == [0, 0, 0, throttle]
    assert values[2:5] == pytest.approx(velocity(pitch, ias, elevation, heading), rel=1e-12, abs=1e-9)
    assert all(len(entries) == 1 and "index" not in entries[0] for entries in fake.writes())


def test_a_move_writes_twice_with_two_seconds_between_and_corrects_the_height(companion, fake):
    names = [f"{POSITION}/{leaf}" for leaf in ("latitude", "longitude", "elevation")]
    for name in names:
        fake.add(name, 0)
    elevation, height = 1234.5678, 321.0987654
    fake.add(f"{POSITION}/elevation", elevation)
    fake.add(f"{POSITION}/y_agl", height)
    # The ground over there is 100.3 m higher.
    fake.on_write = lambda name, _: name == names[2] and fake.set(f"{POSITION}/y_agl", height - 100.3)
    latitude, longitude = -33.912345678901234, 18.601234567890123
    place = {"lat": latitude, "lon": longitude}
    assert companion.client().data("move_to_preserving_agl", place) == {"ok": True}
    fake.wait_for(lambda: len(fake.writes()) == 6, "six writes")
    assert fake.written() == list(zip(names * 2, [latitude, longitude, elevation, latitude, longitude,
                                                  elevation + (height - (height - 100.3))]))
    times = [message.arrived for message in fake.messages if message.json["type"] == "dataref_set_values"]
    assert times[3] - times[2] > 1.5
    assert all("index" not in entries[0] and len(entries) == 1 for entries in fake.writes())


def test_a_move_reads_height_before_elevation(companion, fake):
    fake.add(f"{POSITION}/elevation", 1)
    fake.add(f"{POSITION}/y_agl", 1)
    message = companion.client().error("move_to_preserving_agl", {"lat": 1, "lon": 2})
    assert message == f'unknownDataref("{POSITION}/latitude")'
    assert [m.json["params"]["datarefs"][0]["id"] for m in fake.messages] == [
        fake.dataref_id(f"{POSITION}/y_agl"), fake.dataref_id(f"{POSITION}/elevation")]


def bodies(fake):
    return [request.body for request in fake.requests if request.method == "POST"]


def activate(companion, fake, *responses):
    fake.commands = ["sim/go"]
    fake.responses[f"POST /api/v2/command/{fake.command_id('sim/go')}/activate"] = list(responses)
    return companion.client().request("run_command", {"name": "sim/go"})["data"]


INSISTS = Response(400, b'{"error_code":"duration_missing","error_message":"duration"}')


@pytest.mark.parametrize("status", [200, 204, 299])
def test_an_activation_has_no_body(companion, fake, status):
    assert activate(companion, fake, Response(status)) == {"ok": True}
    assert bodies(fake) == [b""]


def test_an_activation_without_the_duration_that_is_asked_for_is_repeated_with_one(companion, fake):
    assert activate(companion, fake, INSISTS, Response(200, b"null")) == {"ok": True}
    assert bodies(fake) == [b"", b'{"duration":0}']


def test_an_activation_is_repeated_once_only(companion, fake):
    data = activate(companion, fake, INSISTS, INSISTS, Response(200))
    assert data == {"message": 'commandFailed("sim/go")'}
    assert bodies(fake) == [b"", b'{"duration":0}']


@pytest.mark.parametrize("status", [300, 403, 404, 500, 503])
def test_an_activation_that_is_refused_otherwise_fails_at_once(companion, fake, status):
    assert activate(companion, fake, Response(status, b"no")) == {"message": 'commandFailed("sim/go")'}
    assert bodies(fake) == [b""]


def test_two_first_calls_share_one_connection_attempt(companion, fake):
    fake.add("sim/a", 1)
    with fake.holding(DATAREFS):
        clients = [companion.client() for _ in range(3)]
        for client in clients[:2]:
            client.post("dataref_subscribe_values", {"datarefs": [{"name": "sim/a"}]})
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
        for _ in range(3):
            clients[2].data("sim_info")
    assert [client.reply()["data"] for client in clients[:2]] == [{"sim/a": 1}] * 2
    assert sorted(line for line in fake.lines() if line not in ASIDE) == sorted([DATAREFS, COMMANDS, UPGRADE])
    assert fake.handshakes == 1


def test_many_first_calls_at_once_share_one_attempt_and_its_failure(companion, fake):
    fake.add("sim/a", 1)
    fake.responses[DATAREFS] = [Response(200, b"{}")]
    with fake.holding(DATAREFS):
        clients = [companion.client() for _ in range(4)]
        for client in clients[:3]:
            client.post("dataref_subscribe_values", {"datarefs": [{"name": "sim/a"}]})
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
        for _ in range(3):
            clients[3].data("sim_info")
    messages = {client.reply()["data"]["message"] for client in clients[:3]}
    assert len(messages) == 1 and messages.pop()
    assert clients[3].subscribe("sim/a") == {"sim/a": 1}


def test_writes_from_many_clients_keep_one_count(companion, fake):
    fake.add("sim/a", 1)
    clients = [companion.client() for _ in range(5)]
    threads = [threading.Thread(target=lambda c=c: [c.set({"name": "sim/a", "value": 1}) for _ in range(20)])
               for c in clients]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    fake.wait_for(lambda: len(fake.messages) == 100, "100 writes")
    assert [message.json["req_id"] for message in fake.messages] == list(range(1, 101))
