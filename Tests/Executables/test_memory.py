"""The memory of the companion: what long messages take goes back to the system."""

import json
import time

import pytest
from harness import wait_until

MEGABYTE = 1 << 20
#: The longest message of a client that has paired, but for its frame.
LONGEST = 63 * MEGABYTE
#: What may stay, in bytes.
KEPT = 16 * MEGABYTE
#: After the peer has left, in seconds.
SOON = 10


def memory(companion):
    with open(f"/proc/{companion.program.pid}/status") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS:")) * 1024


def message(type_, params):
    return f'{{"type":"{type_}","req_id":1,"params":{params}}}'.encode()


def repeated(element):
    """A list of the element that nearly fills the longest message."""
    return "[" + ",".join([element] * ((LONGEST - 1000) // (len(element) + 1))) + "]"


def names():
    return ",".join(f'{{"name":"sim/no/such/name/of/the/simulator/{number}"}}' for number in range(1_000_000))


def triggers():
    trigger = ('{"id":"%d","condition_kind":"after_start","condition":{"seconds":%d},'
               '"action_kind":"speak","action":{"text":"something to be said","times":1}}')
    return ",".join(trigger % (number, number) for number in range(400_000))


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


def test_a_refused_message_leaves_nothing_behind(used):
    before = memory(used)
    raw = used.raw(paired=False)
    raw.send_text(message("sim_info", repeated("[]")[:MEGABYTE - 1000]))
    assert raw.receive_text() is None
    raw.close()
    time.sleep(1)
    assert memory(used) < before + KEPT
