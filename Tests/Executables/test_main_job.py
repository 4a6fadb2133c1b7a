"""The whole job against the stand-in simulator, as a training application does it."""

import math

import pytest
from client import arrivals
from harness import wait_until

POSITION = "sim/flightmodel/position"
LATITUDE, LONGITUDE = f"{POSITION}/latitude", f"{POSITION}/longitude"
ELEVATION, HEIGHT = f"{POSITION}/elevation", f"{POSITION}/y_agl"
GEAR_HANDLE = "sim/cockpit2/controls/gear_handle_down"
THROTTLE = "sim/cockpit2/engine/actuators/throttle_ratio"
METRES_PER_DEGREE = 111_000


@pytest.fixture
def rig(programs):
    _, port = programs.simulator("--start", "cruise")
    return programs.companion(sim_port=port)


def test_a_client_pairs_and_learns_which_simulator_it_is(rig):
    client = rig.client(paired=False)
    assert len(client.pair()["session_token"]) == 32
    wait_until(lambda: client.data("sim_info") == {"sim": "xplane", "version": "12.4.0"}, "the simulator's version")


def test_subscribing_gives_the_present_values(rig):
    values = rig.client().subscribe(LATITUDE, ELEVATION, f"{THROTTLE}[0]")
    assert set(values) == {LATITUDE, ELEVATION, f"{THROTTLE}[0]"}
    assert -90 <= values[LATITUDE] <= 90
    assert 0 <= values[f"{THROTTLE}[0]"] <= 1


def test_pushes_come_about_twice_a_second_with_all_names_and_no_request_id(rig):
    client = rig.client()
    client.subscribe(LATITUDE, LONGITUDE)
    client.subscribe(HEIGHT)
    pushes = [client.push() for _ in range(2)]
    assert all(set(push) == {LATITUDE, LONGITUDE, HEIGHT} for push in pushes)
    times = arrivals(client, 7)
    period = (times[-1] - times[0]) / 6
    assert 0.4 < period < 2


def test_the_pushed_values_follow_the_flight(rig):
    client = rig.client()
    first = client.subscribe(LATITUDE, LONGITUDE)
    wait_until(lambda: client.push() != first, "a push with another position")


def test_a_set_changes_the_value(rig):
    client = rig.client()
    handle = client.subscribe(GEAR_HANDLE)[GEAR_HANDLE]
    wanted = 0 if handle > 0.5 else 1
    assert client.set({"name": GEAR_HANDLE, "value": wanted}) == {"ok": True}
    wait_until(lambda: client.push()[GEAR_HANDLE] == wanted, "a push with the gear handle moved")


def test_a_set_with_an_index_changes_that_element_only(rig):
    client = rig.client()
    first, second = f"{THROTTLE}[0]", f"{THROTTLE}[1]"
    client.subscribe(first, second)
    client.set({"name": THROTTLE, "value": 0.25}, {"name": THROTTLE, "value": 0.75, "index": 1})
    wait_until(lambda: client.push() == {first: 0.25, second: 0.75}, "a push with both throttles", 30)


def test_a_command_acts(rig):
    client = rig.client()
    handle = client.subscribe(GEAR_HANDLE)[GEAR_HANDLE]
    assert client.data("run_command", {"name": "sim/flight_controls/landing_gear_toggle"}) == {"ok": True}
    wait_until(lambda: (client.push()[GEAR_HANDLE] > 0.5) != (handle > 0.5), "a push with the gear moved")


def test_moving_keeps_the_height_above_ground(rig):
    client = rig.client()
    before = client.subscribe(LATITUDE, LONGITUDE, HEIGHT, ELEVATION)
    there = {"lat": before[LATITUDE] + 0.5, "lon": before[LONGITUDE] - 0.5}
    assert client.data("move_to_preserving_agl", there) == {"ok": True}

    def arrived():
        push = client.push()
        near = math.hypot(push[LATITUDE] - there["lat"], push[LONGITUDE] - there["lon"]) < 0.05
        return push if near else None

    after = wait_until(arrived, "a push from the new place")
    assert after[HEIGHT] == pytest.approx(before[HEIGHT], abs=150)
    # The ground lies elsewhere there, or the height would have been kept by doing nothing.
    ground = {moment: values[ELEVATION] - values[HEIGHT] for moment, values in
              (("before", before), ("after", after))}
    assert abs(ground["after"] - ground["before"]) > 1


def test_an_attitude_is_taken_over(rig):
    client = rig.client()
    names = [f"{POSITION}/theta", f"{POSITION}/phi", f"{THROTTLE}[0]"]
    client.subscribe(*names)
    wanted = {"pitch_deg": 7.5, "bank_deg": -20, "ias_kts": 140, "throttle": 0.625}
    assert client.data("apply_attitude", wanted) == {"ok": True}

    def taken_over():
        push = client.push()
        return abs(push[names[1]] + 20) < 15 and abs(push[names[0]] - 7.5) < 7 and push[names[2]] == 0.625

    wait_until(taken_over, "a push near the attitude")


def test_an_unknown_name_and_command_are_refused_by_name(rig):
    client = rig.client()
    assert client.subscribe_error("sim/no/such") == 'unknownDataref("sim/no/such")'
    assert client.error("run_command", {"name": "sim/no/such"}) == 'unknownCommand("sim/no/such")'
