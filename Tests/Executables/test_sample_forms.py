"""The forms in which simulators tell what a sample is made of."""

import pytest
from lesson import start

FLAPS = "sim/cockpit2/controls/flap_handle_request_ratio"
LEVERS = ["throttle_ratio", "mixture_ratio", "prop_ratio"]


@pytest.mark.parametrize("options, engines", [
    ((), 1), (("--lever-lists",), 2), (("--no-flap-ratio",), 1), (("--lever-lists", "--no-flap-ratio"), 2)],
    ids=lambda value: " ".join(value) if isinstance(value, tuple) else None)
def test_levers_are_lists_and_the_flaps_are_there(programs, options, engines):
    _, port = programs.simulator("--start", "cruise", *options)
    client = programs.companion(sim_port=port).client()
    for lever in LEVERS:
        client.set({"name": f"sim/cockpit2/engine/actuators/{lever}_all", "value": 0.25})
    client.set({"name": FLAPS, "value": 0.5})
    recorder = start(client)

    def is_there():
        last = recorder.samples[-1] if recorder.samples else {}
        return all(last.get(lever) == [0.25] * engines for lever in LEVERS) and last.get("flap_ratio") == 0.5

    recorder.wait_for(is_there, "a sample with all levers")
