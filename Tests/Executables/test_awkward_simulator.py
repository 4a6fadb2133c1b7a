"""The companion beside a stand-in simulator with the real one's awkward habits."""

import json
import urllib.request

import pytest
from harness import wait_until

LATITUDE = "sim/flightmodel/position/latitude"
HEIGHT = "sim/flightmodel/position/y_agl"
GEAR_HANDLE = "sim/cockpit2/controls/gear_handle_down"
TAIL_NUMBER = "sim/aircraft/view/acf_tailnum"
GEAR_UP = "sim/flight_controls/landing_gear_up"


class Rig:
    def __init__(self, programs, *quirks):
        _, self._sim_port = programs.simulator("--start", "cruise", *quirks)
        self.client = programs.companion(sim_port=self._sim_port).client()

    def read(self, name):
        """The values, or what the reply has in their place."""
        return self.client.request("dataref_subscribe_values", {"datarefs": [{"name": name}]})["data"]

    def tell(self, **order):
        """Gives the simulator an order over its control address."""
        address = f"http://127.0.0.1:{self._sim_port}/control"
        with urllib.request.urlopen(address, json.dumps(order).encode(), timeout=60) as response:
            assert response.status == 200


@pytest.mark.parametrize("quirks", [
    (), ("--no-duration",), ("--null-entries",), ("--slow", "300"), ("--result-per-dataref",),
    ("--datarefs", "120000", "--commands", "5000")], ids=lambda quirks: " ".join(quirks) or "none")
def test_these_habits_make_no_difference(programs, quirks):
    client = Rig(programs, *quirks).client
    names = {"datarefs": [{"name": LATITUDE}, {"name": HEIGHT}]}
    # A slow computer needs longer for a long catalogue than a request waits.
    wait_until(lambda: set(client.request("dataref_subscribe_values", names)["data"]) == {LATITUDE, HEIGHT}, "values")
    client.set({"name": GEAR_HANDLE, "value": 1})
    wait_until(lambda: client.subscribe(GEAR_HANDLE) == {GEAR_HANDLE: 1}, "the gear handle down")
    assert client.data("run_command", {"name": GEAR_UP}) == {"ok": True}
    wait_until(lambda: client.subscribe(GEAR_HANDLE) == {GEAR_HANDLE: 0}, "the gear handle up")


def test_at_the_main_menu_nobody_can_know_a_name(programs):
    rig = Rig(programs, "--main-menu")
    assert rig.client.subscribe_error(LATITUDE) == \
        f'timeout("{LATITUDE}: the simulator is at its main menu: load a flight")'
    rig.tell(quirk="main-menu", on=False)
    wait_until(lambda: LATITUDE in rig.read(LATITUDE), "the flight")


def test_disabled_traffic_is_an_error_until_it_is_enabled(programs):
    rig = Rig(programs, "--traffic-disabled")
    assert rig.client.subscribe_error(LATITUDE)
    assert rig.client.error("run_command", {"name": GEAR_UP})
    rig.tell(quirk="traffic-disabled", on=False)
    wait_until(lambda: LATITUDE in rig.read(LATITUDE), "a value")


def test_an_infinite_value_times_out_and_freezes_no_other(programs):
    client = Rig(programs, "--non-finite").client
    first = client.subscribe(LATITUDE)
    assert client.subscribe_error(HEIGHT) == f'timeout("{HEIGHT}")'
    wait_until(lambda: client.subscribe(LATITUDE) != first, "another latitude")


def test_a_text_is_no_number(programs):
    client = Rig(programs).client
    assert client.subscribe_error(TAIL_NUMBER) == f'timeout("{TAIL_NUMBER}")'


def test_values_that_do_not_come_are_a_timeout_until_it_ends(programs):
    rig = Rig(programs, "--values-stop")
    assert rig.client.subscribe_error(LATITUDE) == f'timeout("{LATITUDE}")'
    rig.tell(quirk="values-stop", on=False)
    wait_until(lambda: rig.client.request("dataref_subscribe_values", {"datarefs": [{"name": LATITUDE}]})["type"]
               != "error", "a value")


@pytest.mark.parametrize("order", ["drop", "restart"])
def test_after_the_simulator_hung_up_all_goes_on(programs, order):
    rig = Rig(programs)
    rig.client.subscribe(LATITUDE)
    rig.tell(quirk=order, on=True)
    first = rig.client.subscribe(LATITUDE)
    wait_until(lambda: rig.client.push() != first, "another latitude")
    rig.client.set({"name": GEAR_HANDLE, "value": 1})
    wait_until(lambda: rig.client.subscribe(GEAR_HANDLE)[GEAR_HANDLE] == 1, "the gear handle down")
