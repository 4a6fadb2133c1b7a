"""What a refusal says that has a cure, and what it does not say."""

import pytest
from fake_simulator import Response
from faults import LATITUDE, Rig
from harness import wait_until

LIGHTS = "sim/lights/landing_lights_on"
READ, WRITE, RUN = "dataref_subscribe_values", "dataref_set_values", "run_command"
PARAMS = {
    READ: {"datarefs": [{"name": LATITUDE}]},
    WRITE: {"datarefs": [{"name": LATITUDE, "value": 47}]},
    RUN: {"name": LIGHTS},
}

# How the stand-in is started, how each error begins, and what it goes on to say.
NOBODY_ENTERS = [
    (("--traffic-disabled",), ["Incoming traffic is disabled", "the simulator refuses connections: allow incoming traffic"]),
    (("--traffic-disabled-plain",), ["allow incoming traffic"]),
    (("--too-old",), ["the simulator is too old: X-Plane 12.1.4 or later"]),
    (("--handshake-refused",), ["allow incoming traffic"]),
]


@pytest.fixture
def rig(programs):
    rig = Rig(programs)
    rig.start_companion()
    return rig


@pytest.mark.parametrize("kind", PARAMS)
def test_when_it_is_not_there_it_is_to_be_started(rig, kind):
    text = rig.companion.client().error(kind, PARAMS[kind])
    assert text.startswith(f'connectionFailed("127.0.0.1:{rig.stand_in.port}: Connection refused'), text
    assert text.endswith('the simulator is not running: start X-Plane 12.1.4 or later")'), text


@pytest.mark.parametrize("options, said", NOBODY_ENTERS, ids=lambda value: value[0])
def test_when_it_lets_nobody_in_it_says_so_itself(rig, options, said):
    rig.stand_in.start(*options)
    client = rig.companion.client()

    def refusals():
        texts = [client.error(kind, params) for kind, params in PARAMS.items()]
        has_looked = all(text.startswith("connectionFailed") and "Connection refused" not in text for text in texts)
        return has_looked and texts

    for text in wait_until(refusals, "the companion to have looked again"):
        assert text.startswith('connectionFailed("') and text.endswith('")'), text
        assert f"127.0.0.1:{rig.stand_in.port}" in text
        assert all(part in text for part in said), text


def test_at_the_main_menu_a_flight_is_to_be_loaded(rig):
    rig.stand_in.start("--main-menu")
    client = rig.companion.client()

    def menu():
        text = client.error(READ, PARAMS[READ])
        return "load a flight" in text and text

    text = wait_until(menu, "the companion to have seen the menu")
    assert text.startswith(f'timeout("{LATITUDE}: ') and "load a flight" in text, text
    text = client.error(WRITE, PARAMS[WRITE])
    assert text.startswith(f'timeout("{LATITUDE}: ') and "load a flight" in text, text
    assert client.data(RUN, PARAMS[RUN]) == {"ok": True}
    rig.stand_in.order("load")
    wait_until(lambda: client.request(READ, PARAMS[READ])["type"] == READ, "values")


def test_a_name_that_is_unknown_stands_alone(rig):
    rig.stand_in.start()
    client = rig.companion.client()
    wait_until(lambda: client.request(READ, PARAMS[READ])["type"] == READ, "values")
    assert client.subscribe_error("sim/none") == 'unknownDataref("sim/none")'
    assert client.error(WRITE, {"datarefs": [{"name": "sim/none", "value": 1}]}) == 'unknownDataref("sim/none")'
    assert client.error(RUN, {"name": "sim/none"}) == 'unknownCommand("sim/none")'


def test_a_command_that_fails_stands_alone(programs, fake):
    fake.commands = ["sim/go"]
    fake.add("sim/a", 1)
    activation = f"POST /api/v2/command/{fake.command_id('sim/go')}/activate"
    fake.responses[activation] = Response(400, b'{"error_code":"invalid_body","error_message":"no"}')
    client = programs.companion(sim_port=fake.port).client()
    assert client.error(RUN, {"name": "sim/go"}) == 'commandFailed("sim/go")'


@pytest.mark.parametrize("quirk", ["values_stop", "silent"])
def test_a_value_that_does_not_come_stands_alone(rig, quirk):
    rig.stand_in.start()
    client = rig.companion.client()
    wait_until(lambda: client.request(READ, PARAMS[READ])["type"] == READ, "values")
    rig.stand_in.order(f"{quirk} on")
    assert client.subscribe_error("sim/flightmodel/position/psi") == 'timeout("sim/flightmodel/position/psi")'
