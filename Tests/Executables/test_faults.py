"""Whatever the simulator does, and in whatever order the three are started: values are pushed again by themselves."""

import itertools
import time

import pytest
from faults import ADD_ON, AWKWARD, FAULTS, LATITUDE, Rig, side_by_side

COMPANION, SIMULATOR, CLIENT = "companion", "simulator", "client"


def start(rig, who, fault):
    if who == COMPANION:
        rig.start_companion()
    elif who == CLIENT:
        rig.start_learner()
    else:
        rig.stand_in.start(*fault.options)
        if not fault.options:
            fault.begin(rig.stand_in)


@pytest.mark.parametrize("last", [COMPANION, SIMULATOR, CLIENT])
def test_no_start_order_matters(programs, last):
    def scenario(fault, order):
        rig = Rig(programs)
        for who in order:
            start(rig, who, fault)
            time.sleep(0.2)
        time.sleep(fault.lasts)
        fault.end(rig.stand_in)
        rig.learner.wait_for_movement(time.monotonic(), f"{fault} with {order}")

    six = itertools.permutations([COMPANION, SIMULATOR, CLIENT])
    side_by_side(scenario, [(fault, order) for order in six if order[-1] == last for fault in FAULTS])


def test_pushes_go_on_by_themselves(programs):
    def scenario(fault):
        rig = Rig(programs)
        rig.stand_in.start()
        rig.start_companion()
        rig.start_learner()
        rig.learner.wait_for_movement(0, f"{fault}, before it")
        fault.begin(rig.stand_in)
        time.sleep(fault.lasts)
        fault.end(rig.stand_in)
        # The client asks for nothing any more.
        rig.learner.wait_for_movement(time.monotonic(), f"{fault}, after it")

    side_by_side(scenario, [(fault,) for fault in FAULTS])


def test_a_name_that_is_not_utf8_is_known_by_its_repaired_form(programs):
    rig = Rig(programs)
    rig.stand_in.start("--awkward-catalogue")
    rig.start_companion()
    assert set(rig.companion.client().subscribe(LATITUDE, ADD_ON, AWKWARD)) == {LATITUDE, ADD_ON, AWKWARD}
