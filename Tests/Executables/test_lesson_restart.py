"""A lesson across a restart of the simulator: each trigger fires once, when it is due, and none falsely."""

import json
import subprocess

from faults import LATITUDE, Rig
from lesson import GEAR_HANDLE, Recorder, assert_whole, ids, load, trigger
from nav_database import write_nav_database

ELEVATION = "sim/flightmodel/position/elevation"
ALTITUDE = "sim/flightmodel/misc/h_ind"
METRES_PER_FOOT = 0.3048
THERE = 48.0


class Flight:
    """An aircraft that stands in the air where it is put, since the simulator is paused, and two clients that follow."""

    def __init__(self, programs):
        database = write_nav_database(programs.new_folder() / "nav.db", fixes=[("THERE", THERE, 8.5)])
        self.rig = Rig(programs, "--control", "stdin")
        self.stand_in = self.rig.stand_in
        self.stand_in.start(stdin=subprocess.PIPE)
        self.stand_in.run_command("sim/operation/pause_on")
        self.low = self._altitude_after("load Short final.sit")
        self.high = self._altitude_after("load")
        self.rig.start_companion("--nav-db", database)
        self.client, self.other = self.rig.companion.client(), self.rig.companion.client()

    def _altitude_after(self, order):
        self.stand_in.order(order)
        return self.stand_in.value(ALTITUDE)

    def start(self, *triggers):
        assert load(self.client, *triggers) == []
        self.client.data("recording_start")
        self.recorders = [Recorder(self.client), Recorder(self.other)]
        self.wait_for(lambda sample: near(sample, self.high), "the first sample")

    def wait_for(self, is_there, what):
        """Waits until the last sample is like that, for both clients."""
        for recorder in self.recorders:
            recorder.wait_for(lambda r=recorder: r.samples and is_there(r.samples[-1]), what)

    def climb_or_descend_to(self, feet):
        self.client.set({"name": ELEVATION, "value": feet * METRES_PER_FOOT})
        self.wait_for(lambda sample: near(sample, feet), f"a sample at {feet} ft")

    def put(self, name, value, key, seen):
        self.client.set({"name": name, "value": value})
        self.wait_for(lambda sample: sample.get(key) == seen, f"a sample with {key} {seen}")


def near(sample, feet):
    return abs(sample["alt_ft"] - feet) < 2


def first(samples, is_due):
    """The time of the first sample that it is due at."""
    return next(sample["elapsed_s"] for sample in samples if is_due(sample))


def crossing(samples, feet, climbing):
    """When consecutive samples lie on two sides of the altitude, in the time of the second one."""
    sign = 1 if climbing else -1
    return first(samples[1:], lambda sample: sign * (samples[samples.index(sample) - 1]["alt_ft"] - feet) < 0
                 <= sign * (sample["alt_ft"] - feet))


def test_each_trigger_fires_once_when_it_is_due_and_none_falsely(programs):
    flight = Flight(programs)
    low, high = flight.low, flight.high
    middle = (low + high) / 2
    assert high - low > 500
    flight.start(
        trigger("begun", "after_start", seconds=0),
        trigger("above", "crosses_altitude", feet=high + 500, climbing=True),
        trigger("after above", "after_trigger", after_trigger_id="above", seconds=1),
        trigger("gear", "after_gear_down", seconds=5),
        trigger("in the dark", "after_start", seconds=9),
        trigger("through the middle", "crosses_altitude", feet=middle, climbing=False),
        trigger("up again", "crosses_altitude", feet=middle, climbing=True),
        trigger("there", "reaches_fix", fix="THERE", within_nm=5),
        trigger("never up there", "crosses_altitude", feet=high + 5000, climbing=True),
        trigger("never that low", "crosses_altitude", feet=low - 400, climbing=False))
    flight.climb_or_descend_to(high + 1000)
    flight.recorders[0].wait_for_fired("begun", "above", "after above")
    flight.recorders[0].wait_for(lambda: flight.recorders[0].since > 6, "six seconds")
    flight.put(GEAR_HANDLE, 1, "gear_down", True)
    # Behind the restart the aircraft stands elsewhere, with its gear down as before.
    flight.stand_in.write("restart away 6000\nload Short final.sit\n")
    flight.stand_in.wait_for_line("Done: load Short final.sit")
    flight.wait_for(lambda sample: near(sample, low), "a sample after the restart")
    for recorder in flight.recorders:
        recorder.wait_for_fired("gear", "in the dark")
    flight.climb_or_descend_to(high)
    flight.climb_or_descend_to(middle - 200)
    flight.climb_or_descend_to(high + 1000)
    flight.client.set({"name": "sim/flightmodel/position/longitude", "value": 8.5}, {"name": LATITUDE, "value": THERE})
    for recorder in flight.recorders:
        recorder.wait_for_fired("there")
        recorder.wait_for_samples(3)
    flight.client.data("recording_stop")

    everything = flight.client.data("catch_up")
    samples, fired = everything["samples"], everything["fired"]
    for recorder in flight.recorders:
        assert_whole(recorder, everything)
    assert sorted(ids(fired)) == sorted(set(ids(fired))), "each fires once"
    times = [sample["elapsed_s"] for sample in samples]
    back = next((at for at in range(1, len(times)) if times[at] - times[at - 1] > 5), None)
    assert back, f"nothing is recorded while it is away: {times}"
    before, after = samples[:back], samples[back:]
    fired_at = {event["trigger_id"]: event["elapsed_s"] for event in fired}
    above = crossing(before, high + 500, climbing=True)
    gear = after[0]["elapsed_s"] + 5
    assert not before[0]["gear_down"] and before[-1]["gear_down"] and all(sample["gear_down"] for sample in after)
    assert fired_at == {
        "begun": samples[0]["elapsed_s"],
        "above": above,
        "after above": first(samples, lambda sample: sample["elapsed_s"] >= above + 1),
        "gear": first(samples, lambda sample: sample["elapsed_s"] >= gear),
        "in the dark": first(samples, lambda sample: sample["elapsed_s"] >= 9),
        "up again": crossing(after, middle, climbing=True),
        "through the middle": crossing(after, middle, climbing=False),
        "there": first(after, lambda sample: abs(sample["lat"] - THERE) < 1e-3),
    }
    [log] = (flight.rig.folder / "Recordings").iterdir()
    records = [json.loads(line) for line in log.read_text().splitlines()]
    assert [record["fired"] for record in records if record["kind"] == "fired"] == fired
