"""Who waits for whom: one connection's requests in order, different connections never for each other."""

from client import is_push
from fake_simulator import DATAREFS


def test_pipelined_requests_are_answered_in_order(programs):
    client = programs.companion().client()
    for number in range(500):
        client.send({"type": "sim_info" if number % 3 else "nope", "req_id": number})
    assert [client.receive()["req_id"] for _ in range(500)] == list(range(500))


def test_a_waiting_request_holds_back_its_own_connection_only(companion, fake):
    fake.add("sim/x", 1)
    with fake.holding(DATAREFS):
        waiting, other = companion.client(), companion.client()
        posted = [waiting.post("dataref_subscribe_values", {"datarefs": [{"name": "sim/x"}]}),
                  waiting.post("sim_info")]
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
        for _ in range(5):
            assert other.data("sim_info")["sim"] == "xplane"
        assert waiting.is_quiet(0.2)
    assert [waiting.reply()["req_id"] for _ in range(2)] == posted


def test_a_read_that_waits_its_second_holds_nobody_else(companion, fake):
    fake.add("sim/live", 1)
    fake.add("sim/silent")
    silent, live = companion.client(), companion.client()
    live.subscribe("sim/live")
    for _ in range(3):
        silent.post("dataref_subscribe_values", {"datarefs": [{"name": "sim/silent"}]})
    # Three reads of a second each: the other client's pushes come meanwhile.
    live.pushes.clear()
    while len(live.pushes) < 3:
        live.pushes.append(live.push())
    assert [silent.reply()["data"]["message"] for _ in range(3)] == ['timeout("sim/silent")'] * 3


def test_a_name_that_fails_costs_its_session_the_pushes_and_nobody_else(companion, fake):
    fake.add("sim/good", 1)
    fake.add("sim/silent")
    failing, healthy = companion.client(), companion.client()
    failing.subscribe("sim/good")
    assert failing.push() == {"sim/good": 1}
    assert failing.subscribe_error("sim/silent", "sim/good") == 'timeout("sim/silent")'
    healthy.subscribe("sim/good")
    for _ in range(6):
        assert healthy.push() == {"sim/good": 1}
    assert failing.is_quiet(0.1)
    assert failing.data("sim_info")["sim"] == "xplane"
    # The name has stayed subscribed: once it has a value the pushes are back, and carry it.
    fake.set("sim/silent", 2)
    assert failing.push() == {"sim/good": 1, "sim/silent": 2}


def test_an_unknown_name_stays_subscribed_and_costs_the_pushes(companion, fake):
    fake.add("sim/good", 1)
    failing, healthy = companion.client(), companion.client()
    assert failing.subscribe_error("sim/good", "sim/unknown") == 'unknownDataref("sim/unknown")'
    healthy.subscribe("sim/good")
    for _ in range(3):
        healthy.push()
    assert failing.is_quiet(0.1)


def test_names_before_and_after_a_failing_one_are_subscribed_too(companion, fake):
    for name in ("sim/a", "sim/b"):
        fake.add(name, 1)
    fake.add("sim/silent")
    client = companion.client()
    assert client.subscribe_error("sim/a", "sim/silent", "sim/b") == 'timeout("sim/silent")'
    fake.set("sim/silent", 3)
    assert client.push() == {"sim/a": 1, "sim/b": 1, "sim/silent": 3}


def test_a_name_given_twice_appears_once(companion, fake):
    fake.add("sim/a", 1.5)
    client = companion.client()
    client.send({"type": "dataref_subscribe_values", "req_id": 1,
                 "params": {"datarefs": [{"name": "sim/a"}, {"name": "sim/a"}]}})
    assert client.reply()["data"] == {"sim/a": 1.5}
    assert client.push() == {"sim/a": 1.5}


def test_subscriptions_end_with_their_connection(companion, fake):
    fake.add("sim/a", 1)
    gone = companion.client()
    gone.subscribe("sim/a")
    gone.push()
    gone.close()
    newcomer, watcher = companion.client(), companion.client()
    watcher.subscribe("sim/a")
    for _ in range(3):
        watcher.push()
    assert newcomer.is_quiet(0.1)


def test_each_session_gets_its_own_names(companion, fake):
    for name in ("sim/a", "sim/b"):
        fake.add(name, 1 if name == "sim/a" else 2)
    first, second = companion.client(), companion.client()
    first.subscribe("sim/a")
    second.subscribe("sim/b", "sim/a")
    assert first.push() == {"sim/a": 1}
    assert second.push() == {"sim/b": 2, "sim/a": 1}


def test_the_first_failing_write_stops_the_rest(companion, fake):
    fake.add("sim/a", 0)
    client = companion.client()
    entries = [{"name": name, "value": 1} for name in ("sim/a", "sim/unknown", "sim/a")]
    assert client.error("dataref_set_values", {"datarefs": entries}) == 'unknownDataref("sim/unknown")'
    client.set({"name": "sim/a", "value": 4})
    fake.wait_for(lambda: len(fake.writes()) == 2, "two writes")
    assert fake.written() == [("sim/a", 1), ("sim/a", 4)]


def test_pushes_and_replies_are_told_apart_by_the_request_id(companion, fake):
    fake.add("sim/a", 1)
    client = companion.client()
    client.subscribe("sim/a")
    push = client.receive()
    assert is_push(push) and set(push) == {"type", "data"}
    assert push["data"] == {"sim/a": 1}
