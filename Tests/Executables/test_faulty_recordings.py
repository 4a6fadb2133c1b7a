"""A recording across each of the simulator's bad days: it has no sample from the dark, and goes on soon after."""

import json
import time

from faults import FAULTS, Fault, Rig, side_by_side
from harness import wait_until
from lesson import Recorder

# A recording beside the others, whose gaps come from this machine alone.
CALM = Fault("nothing", lambda stand_in: None, lasts=17, is_dark=False)
# Seconds between two samples when all is well.
BEAT = 0.5
# How soon values flow again.
BACK_WITHIN = 3.0


def log_of(rig):
    [log] = (rig.folder / "Recordings").iterdir()
    records = [json.loads(line) for line in log.read_text().splitlines()]
    return [record["sample"] for record in records if record["kind"] == "sample"]


def zero_of_the_clock(client, recorder):
    """When the recording's time was 0, a little late: no sample can be seen before it was taken."""
    earliest = float("inf")
    for _ in range(40):
        count = len(recorder.samples)
        recorder.catch_up()
        now = time.monotonic()
        earliest = min([earliest, *(now - sample["elapsed_s"] for sample in recorder.samples[count:])])
        time.sleep(0.05)
    return earliest


def live_through(rig, fault):
    """Records across the fault; its begin and end in the recording's time, and the samples of the log."""
    rig.stand_in.start()
    rig.start_companion()
    client = rig.companion.client()
    client.data("recording_start")
    recorder = Recorder(client)
    recorder.wait_for_samples(2)
    zero = zero_of_the_clock(client, recorder)
    begin = time.monotonic()
    fault.begin(rig.stand_in)
    begun = time.monotonic()
    time.sleep(max(0.0, begin + fault.lasts - begun))
    fault.end(rig.stand_in)
    end = time.monotonic()

    def goes_on():
        recorder.catch_up()
        return sum(sample["elapsed_s"] > end - zero for sample in recorder.samples) >= 4

    wait_until(goes_on, f"{fault}: a recording that goes on")
    client.data("recording_stop")
    recorder.catch_up()
    samples = log_of(rig)
    assert samples == recorder.samples
    return begin - zero, begun - zero, end - zero, samples


def gaps_of(samples):
    times = [sample["elapsed_s"] for sample in samples]
    return [later - earlier for earlier, later in zip(times, times[1:])]


def test_no_sample_comes_from_the_dark_and_no_gap_outlasts_it(programs):
    outcomes = {}

    def scenario(fault):
        outcomes[fault.name] = live_through(Rig(programs), fault)

    side_by_side(scenario, [(fault,) for fault in [CALM, *FAULTS]])
    noise = max(gaps_of(outcomes["nothing"][3])) - BEAT
    for fault in FAULTS:
        begin, begun, end, samples = outcomes[fault.name]
        told = f"{fault}, from {begin:.2f} to {end:.2f}: {[round(sample['elapsed_s'], 2) for sample in samples]}"
        if fault.is_dark:
            dark = [sample for sample in samples if begun + 0.6 < sample["elapsed_s"] < end - 1]
            assert not dark, told
        assert max(gaps_of(samples)) <= end - begin + BACK_WITHIN + noise, told
