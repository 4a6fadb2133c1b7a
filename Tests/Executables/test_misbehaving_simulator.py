"""A simulator that breaks its word: what the client hears, and that the companion gets over it."""

import json

import pytest
from fake_simulator import COMMANDS, DATAREFS, FIRST_DATAREF_ID, FakeSimulator, Response
from harness import reserved_port, wait_until
from websocket_frames import BINARY, CONTINUATION, PING, TEXT, encode


def catalogue(*entries):
    return Response(200, json.dumps({"data": entries}).encode())


def entry(number, name, **more):
    return {"id": number, "name": name, **more}


@pytest.mark.parametrize("line", [DATAREFS, COMMANDS])
@pytest.mark.parametrize("response", [
    Response(200, b"{}"),
    Response(200, b'{"data":null}'),
    Response(200, b'{"data":{"id":1}}'),
    Response(200, b'{"Data":[]}'),
    Response(200, b""),
    Response(200, b"[]"),
    Response(200, b'{"data":['),
    Response(403, b'{"error_code":"incoming_traffic_disabled","error_message":"no"}'),
    Response(404, b"<html><body>Not found</body></html>", "text/html"),
    Response(500, b""),
], ids=lambda response: f"{response.status} {response.body[:40]}" if isinstance(response, Response) else None)
def test_a_catalogue_that_is_none_fails_the_request_and_is_fetched_again(companion, fake, line, response):
    fake.add("sim/a", 1)
    fake.responses[line] = response
    client = companion.client()
    assert client.subscribe_error("sim/a")
    assert fake.messages == [] and fake.handshakes == 0
    del fake.responses[line]
    wait_until(lambda: subscribes(client, "sim/a"), "an attempt that has met the good answer")
    assert client.subscribe("sim/a") == {"sim/a": 1}


def subscribes(client, name):
    return client.request("dataref_subscribe_values", {"datarefs": [{"name": name}]})["type"] != "error"


@pytest.mark.parametrize("odd", [
    {"id": 7}, {"name": "sim/b"}, {"id": "7", "name": "sim/b"}, {"id": 7.5, "name": "sim/b"},
    {"id": 9223372036854775808, "name": "sim/b"}, {"id": 7, "name": None}, None, "sim/b", []], ids=repr)
def test_entries_that_are_none_are_passed_over(companion, fake, odd):
    fake.add("sim/a", 1)
    fake.responses[DATAREFS] = catalogue(entry(FIRST_DATAREF_ID, "sim/a"), odd)
    client = companion.client()
    assert client.subscribe("sim/a") == {"sim/a": 1}
    assert client.subscribe_error("sim/b") == 'unknownDataref("sim/b")'


def test_frames_that_come_in_one_packet_with_the_handshake_are_read(companion, fake):
    fake.add("sim/early")
    fake.add("sim/later", 2)
    update = json.dumps({"type": "dataref_update_values", "data": {str(FIRST_DATAREF_ID): 5}})
    fake.greeting = encode(TEXT, update.encode(), masked=False)
    client = companion.client()
    assert client.subscribe("sim/early", "sim/later") == {"sim/early": 5, "sim/later": 2}


def test_the_status_of_a_catalogue_is_not_looked_at(companion, fake):
    fake.add("sim/a", 1)
    good = catalogue(entry(FIRST_DATAREF_ID, "sim/a"))
    fake.responses[DATAREFS] = Response(500, good.body, "text/html")
    assert companion.client().subscribe("sim/a") == {"sim/a": 1}


def test_entries_that_are_no_objects_are_skipped(companion, fake):
    fake.add("sim/a", 1)
    fine = entry(FIRST_DATAREF_ID, "sim/a", value_type="float")
    fake.responses[DATAREFS] = catalogue(None, fine, None, 7, "x", [])
    fake.responses[COMMANDS] = catalogue(None, entry(800, "sim/go", description="Goes"), None)
    client = companion.client()
    assert client.subscribe("sim/a") == {"sim/a": 1}
    assert client.data("run_command", {"name": "sim/go"}) == {"ok": True}


def test_of_duplicate_names_the_last_counts(companion, fake):
    fake.add("sim/old", 1)
    fake.add("sim/new", 2)
    numbers = [fake.dataref_id(name) for name in ("sim/old", "sim/new")]
    fake.responses[DATAREFS] = catalogue(*(entry(number, "sim/a") for number in numbers))
    assert companion.client().subscribe("sim/a") == {"sim/a": 2}


@pytest.mark.parametrize("number", [0, -5, 2**63 - 1, -(2**63)])
def test_ids_are_64_bit_integers(companion, fake, number):
    fake.responses[DATAREFS] = catalogue(entry(number, "sim/a"))
    client = companion.client()
    client.post("dataref_subscribe_values", {"datarefs": [{"name": "sim/a"}]})
    fake.wait_for(lambda: fake.messages, "the subscription")
    assert fake.messages[0].json["params"] == {"datarefs": [{"id": number}]}
    fake.send_update({number: "4.5"})
    assert client.reply()["data"] == {"sim/a": 4.5}


def test_a_catalogue_of_120000_entries_loads(companion, fake):
    padding = "a description of about the usual length that the companion has no use for, said at some length"
    entries = [entry(10_000 + i, f"sim/padding/number_{i}", description=padding) for i in range(120_000)]
    fake.add("sim/last", 1)
    entries.append(entry(FIRST_DATAREF_ID, "sim/last"))
    fake.responses[DATAREFS] = catalogue(*entries)
    fake.responses[COMMANDS] = fake.responses[DATAREFS]
    assert len(fake.responses[DATAREFS].body) > 15_000_000
    waiting, other = companion.client(), companion.client()
    waiting.post("dataref_subscribe_values", {"datarefs": [{"name": "sim/last"}]})
    assert other.data("sim_info")["sim"] == "xplane"
    # A slow computer needs longer for it than a request waits.
    first = waiting.reply()
    assert first["data"] in ({"sim/last": 1}, {"message": 'timeout("sim/last")'})
    read = {"datarefs": [{"name": "sim/last"}]}
    wait_until(lambda: waiting.request("dataref_subscribe_values", read)["data"] == {"sim/last": 1}, "the catalogue")


def test_a_silent_dataref_times_out_by_name_and_is_asked_for_again(companion, fake):
    fake.add("sim/silent")
    client = companion.client()
    for _ in range(2):
        assert client.subscribe_error("sim/silent") == 'timeout("sim/silent")'
    assert len({m.text for m in fake.messages if m.json["req_id"] == 1}) == 1
    assert all(m.json["params"] == {"datarefs": [{"id": FIRST_DATAREF_ID}]} for m in fake.messages)


def test_a_late_value_is_used(companion, fake):
    fake.add("sim/late")
    client = companion.client()
    client.subscribe_error("sim/late")
    fake.set("sim/late", 9)
    assert client.push() == {"sim/late": 9}


@pytest.mark.parametrize("odd", [
    "1e+9999", "-1e+9999", "null", '"YWJj"', "{}", '{"a":1}', "[1,null]", '["YWJj"]', "[1,[2]]",
    "[1,1e+9999]"])
def test_a_value_that_is_no_number_skips_that_entry_only(companion, fake, odd):
    for name in ("sim/before", "sim/odd", "sim/after"):
        fake.add(name, 1)
    client = companion.client()
    client.subscribe("sim/before", "sim/odd", "sim/after")
    numbers = [fake.dataref_id(name) for name in fake.datarefs]
    fake.send_update(dict(zip(numbers, ["2", odd, "3"])))
    expected = {"sim/before": 2, "sim/odd": 1, "sim/after": 3}
    wait_until(lambda: client.push() == expected, "a push of the others")


@pytest.mark.parametrize("text", [
    "", "not JSON", "null", "7", "[]", '{"type":"dataref_update_values"}', '{"data":{"%d":5}}',
    '{"type":"dataref_update_values","data":null}', '{"type":"dataref_update_values","data":[5]}',
    '{"type":7,"data":{"%d":5}}', '{"type":"result","data":{"%d":5}}', '{"type":"other","data":{"%d":5}}',
    '{"type":"dataref_update_values","data":{"%d":5}',
    '{"type":"dataref_update_values","data":{"x":5," %d":5}}',
    '{"type":"dataref_update_values","data":{"%d.0":5,"0x1":5,"":5,"99999999999999999999":5}}',
    '{"type":"result","req_id":1,"success":false,"error_code":"x","error_message":"y"}',
])
def test_messages_that_are_no_updates_change_nothing(companion, fake, text):
    fake.add("sim/a", 1)
    fake.add("sim/marker", 1)
    client = companion.client()
    client.subscribe("sim/a", "sim/marker")
    fake.send(text.replace("%d", str(fake.dataref_id("sim/a"))))
    fake.set("sim/marker", 2)
    wait_until(lambda: client.push() == {"sim/a": 1, "sim/marker": 2}, "a push with the marker")


def test_true_and_false_count_as_numbers(companion, fake):
    fake.add("sim/a", True)
    fake.add("sim/b", False)
    fake.add("sim/list", [True, 2, False])
    names = ("sim/a", "sim/b", "sim/list[0]", "sim/list[2]")
    assert companion.client().subscribe(*names) == dict(zip(names, [1, 0, 1, 0]))


def test_binary_messages_pings_and_fragments_of_the_simulator_are_taken_as_they_should(companion, fake):
    fake.add("sim/a", 1)
    client = companion.client()
    client.subscribe("sim/a")
    update = f'{{"type":"dataref_update_values","data":{{"{FIRST_DATAREF_ID}":%d}}}}'
    fake.send_frame(BINARY, (update % 9).encode())
    half = (update % 2).encode()
    fake.send_frame(TEXT, half[:20], final=False)
    fake.send_frame(PING, b"there?")
    fake.send_frame(CONTINUATION, half[20:])
    wait_until(lambda: client.push() == {"sim/a": 2}, "a push of the fragmented update")


def test_a_huge_update_is_read_whole(companion, fake):
    fake.add("sim/a", 1)
    client = companion.client()
    client.subscribe("sim/a")
    texts = {number: "[" + ",".join(["0.123456789"] * 50) + "]" for number in range(40_000)}
    fake.send_update({**texts, FIRST_DATAREF_ID: "2"})
    wait_until(lambda: client.push() == {"sim/a": 2}, "a push after the huge update")


def test_after_the_simulator_hung_up_all_goes_on_over_a_new_link(companion, fake):
    fake.add("sim/a", 1)
    fake.add("sim/b", 1)
    client = companion.client()
    client.subscribe("sim/a")
    fake.hang_up()
    fake.wait_for(lambda: fake.handshakes == 2, "a new link")
    fake.set("sim/a", 5)
    wait_until(lambda: client.push() == {"sim/a": 5}, "a push of what is new")
    client.set({"name": "sim/a", "value": 2})
    assert client.subscribe("sim/b") == {"sim/b": 1}


def test_a_simulator_that_hangs_up_on_http_is_an_error_and_no_more(companion, fake):
    fake.add("sim/a", 1)

    def hang_up(_):
        raise OSError("hang up")

    fake.responses[DATAREFS] = hang_up
    client = companion.client()
    assert client.subscribe_error("sim/a")
    del fake.responses[DATAREFS]
    wait_until(lambda: subscribes(client, "sim/a"), "an attempt that has met the good answer")
    assert client.subscribe("sim/a") == {"sim/a": 1}


def test_no_simulator_at_all_is_an_error_and_no_more(programs):
    with reserved_port() as port:
        client = programs.companion(sim_port=port).client()
        for _ in range(2):
            assert client.subscribe_error("sim/a")
            assert client.error("run_command", {"name": "sim/go"})
        assert client.data("sim_info") == {"sim": "xplane", "version": "unknown"}


INDEXED = [
    ("sim/list[0]", 10), ("sim/list[2]", 12), ("sim/list[+1]", 11), ("sim/list[01]", 11),
    ("sim/list[-0]", 10), ("sim/one[x]", 5), ("sim/one[]", 6),
]
REFUSED = [
    ("sim/list[3]", 'timeout("sim/list")'),
    ("sim/list[-1]", 'timeout("sim/list")'),
    ("sim/list", 'timeout("sim/list")'),
    ("sim/list[9223372036854775807]", 'timeout("sim/list")'),
    ("sim/scalar[0]", 'timeout("sim/scalar")'),
    ("sim/empty[0]", 'timeout("sim/empty")'),
    ("sim/no[1]", 'unknownDataref("sim/no")'),
    ("sim/whole[1]", 'unknownDataref("sim/whole")'),
    ("[1]", 'unknownDataref("")'),
] + [(f"sim/list{index}", f'unknownDataref("sim/list{index}")') for index in (
    "[9223372036854775808]", "[]", "[1][0]", "[ 1]", "[1.0]", "[+-1]", "[0x1]", "[+]", "[1", "]", "[1]x")]


@pytest.fixture(scope="module")
def reader(shared_programs):
    """A client whose simulator has arrays, scalars and names with brackets."""
    simulator = FakeSimulator()
    values = {"sim/list": [10, 11, 12], "sim/scalar": 1, "sim/empty": [], "sim/one[x]": 5, "sim/one[]": 6,
              "sim/whole[1]": 7}
    for name, value in values.items():
        simulator.add(name, value)
    yield shared_programs.companion(sim_port=simulator.port)
    simulator.close()


@pytest.mark.parametrize("name, value", INDEXED)
def test_indexed_names_read_one_element(reader, name, value):
    assert reader.client().subscribe(name) == {name: value}


@pytest.mark.parametrize("name, message", REFUSED)
def test_names_that_lead_nowhere_are_refused_by_name(reader, name, message):
    assert reader.client().subscribe_error(name) == message


def test_names_are_written_as_they_stand(companion, fake):
    fake.add("sim/list", [1, 2])
    fake.add("sim/one[1]", 1)
    client = companion.client()
    refused = client.error("dataref_set_values", {"datarefs": [{"name": "sim/list[1]", "value": 5}]})
    assert refused == 'unknownDataref("sim/list[1]")'
    assert client.set({"name": "sim/one[1]", "value": 5}) == {"ok": True}
