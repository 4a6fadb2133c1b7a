"""The turns of the network thread: nobody holds it up. Only of builds that watch it, as debug builds do."""

import json
import re
import time

import pytest

MEGABYTE = 1 << 20
#: Of builds that are not optimized, in milliseconds of the processor. What should not be there took hundreds.
LONG = 20


@pytest.fixture
def turns(tmp_path):
    return tmp_path / "turns"


@pytest.fixture
def watched(programs, fake, turns):
    fake.add("sim/a", 1)
    companion = programs.companion(sim_port=fake.port, TARNLY_LOOP_WATCH=str(turns))
    if not turns.exists():
        pytest.skip("this build does not watch its turns")
    return companion


def long_turns(turns, about):
    lines = [re.fullmatch(r"[\d.]+ ms, ([\d.]+) on the processor: (.*)", line)
             for line in turns.read_text().splitlines()]
    return [line.group(0) for line in lines if line.group(2) == about and float(line.group(1)) > LONG]


def subscribe(companion, text):
    raw = companion.raw()
    raw.send_text('{"type":"dataref_subscribe_values","params":{"datarefs":[' + text + "]}}")
    return json.loads(raw.receive_text())


def test_a_name_that_is_too_long_holds_up_no_push(watched, turns):
    reply = subscribe(watched, '{"name":"' + "x" * (60 * MEGABYTE) + '"}')
    assert reply["data"]["message"].startswith("limitExceeded(")
    time.sleep(2)
    assert long_turns(turns, "a push") == []
    assert long_turns(turns, "a client's long message") == []


def test_many_names_hold_up_no_push(watched, fake, turns):
    fake.add("sim/list", [1] * 500)
    names = ",".join(f'{{"name":"sim/list[{number % 500:0{number // 500 + 3}}]"}}' for number in range(10_000))
    assert len(subscribe(watched, names)["data"]) == 10_000
    time.sleep(2)
    for about in ("a push", "a client's long message", "values that have been read"):
        assert long_turns(turns, about) == []
