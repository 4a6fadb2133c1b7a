"""What the tests of recordings and scripts share: an aircraft that stands where it is put, and scripts."""

import itertools
import os
import socket
import time

from client import PATIENCE

LATITUDE = "sim/flightmodel/position/latitude"
LONGITUDE = "sim/flightmodel/position/longitude"
ALTITUDE = "sim/flightmodel/misc/h_ind"
HEIGHT = "sim/flightmodel/position/y_agl"
GEAR_HANDLE = "sim/cockpit2/controls/gear_handle_down"

# What a sample is made of. Altitude in feet, height in metres.
SAMPLE_VALUES = {
    LATITUDE: 47.4581,
    LONGITUDE: 8.5481,
    ALTITUDE: 1416.5,
    HEIGHT: 100,
    GEAR_HANDLE: 1,
    "sim/flightmodel2/gear/deploy_ratio": [1, 1, 1],
    "sim/cockpit2/engine/actuators/throttle_ratio_all": [0.5, 0.75],
    "sim/cockpit2/engine/actuators/mixture_ratio_all": [1, 1],
    "sim/cockpit2/engine/actuators/prop_ratio_all": [1, 1],
    "sim/cockpit2/controls/flap_ratio": 0.5,
    "sim/flightmodel/position/phi": -0.25,
    "sim/flightmodel/position/theta": 2.5,
    "sim/cockpit2/autopilot/servos_on": 0,
}

# The sample of those values, without its time.
SAMPLE = {
    "lat": 47.4581, "lon": 8.5481, "alt_ft": 1416.5, "agl_ft": 328.084, "gear_down": True,
    "throttle_ratio": [0.5, 0.75], "mixture_ratio": [1, 1], "prop_ratio": [1, 1], "flap_ratio": 0.5,
    "gear_ratio": 1, "bank_deg": -0.25, "pitch_deg": 2.5, "autopilot_on": False,
}

FEET_PER_METRE = 3.28084


def add_sample_datarefs(fake):
    for name, value in SAMPLE_VALUES.items():
        fake.add(name, value)


def loopback_address():
    """A loopback address of this process's own, so that a fixed port there meets no other program."""
    number = os.getpid()
    return f"127.{64 + (number >> 16 & 63)}.{number >> 8 & 255}.{1 + number % 254}"


def cut_off(client):
    """Ends a client's connection without a close frame, as a network does."""
    client._socket.transport.get_extra_info("socket").shutdown(socket.SHUT_RDWR)


def trigger(id_, kind, action_kind="speak", action=None, **condition):
    return {"id": id_, "condition_kind": kind, "condition": condition, "action_kind": action_kind,
            "action": {} if action is None else action}


class Recorder:
    """A client's copy of the recording, kept up to date by asking for what is new."""

    def __init__(self, client):
        self.client = client
        self.samples = []
        self.fired = []

    @property
    def since(self):
        return self.samples[-1]["elapsed_s"] if self.samples else None

    def fired_ids(self):
        return ids(self.fired)

    def catch_up(self):
        """Asks for what lies after the last sample."""
        params = {} if self.since is None else {"since_elapsed_s": self.since}
        new = self.client.data("catch_up", params)
        assert set(new) == {"samples", "fired"}
        self.samples += new["samples"]
        self.fired += new["fired"]

    def wait_for(self, condition, what):
        deadline = time.monotonic() + PATIENCE
        while not condition():
            assert time.monotonic() < deadline, f"{what} has not come; fired {self.fired_ids()}"
            time.sleep(0.05)
            self.catch_up()

    def wait_for_samples(self, count):
        """Waits for so many more samples."""
        wanted = len(self.samples) + count
        self.wait_for(lambda: len(self.samples) >= wanted, f"{count} more samples")

    def wait_for_sample(self, key, value):
        """Waits for a new sample with the value."""
        start = len(self.samples)

        def is_there():
            return any(sample.get(key) == value for sample in itertools.islice(self.samples, start, None))

        self.wait_for(is_there, f"a sample with {key} {value}")

    def wait_for_fired(self, *wanted):
        """Waits for triggers, and tells in which order all have fired."""
        self.wait_for(lambda: set(wanted) <= set(self.fired_ids()), f"{wanted}")
        return self.fired_ids()


def load(client, *triggers):
    """Loads a script; the fixes that the companion does not know."""
    data = client.data("load_script", {"triggers": list(triggers)})
    assert set(data) == {"unresolved_fixes"}
    return data["unresolved_fixes"]


def start(client):
    assert client.data("recording_start") == {"ok": True}
    return Recorder(client)


def stop(client):
    assert client.data("recording_stop") == {"ok": True}


def start_lesson(client, *triggers):
    assert load(client, *triggers) == []
    recorder = start(client)
    recorder.wait_for_samples(1)
    return recorder


def move_through(recorder, flight, dataref, key, *values):
    """Gives the dataref one value after the other, so that each is in a sample; as (value, sample value)."""
    for value, seen in values:
        flight.set(dataref, value)
        recorder.wait_for_sample(key, seen)


def ids(fired):
    return [event["trigger_id"] for event in fired]


def times_of(recorder):
    return {event["trigger_id"]: event["elapsed_s"] for event in recorder.fired}


def sample_at(recorder, elapsed):
    return next(sample for sample in recorder.samples if sample["elapsed_s"] == elapsed)


def assert_whole(recorder, everything):
    """That nothing is missing from what a client gathered, and nothing is there twice."""
    assert recorder.samples == everything["samples"][:len(recorder.samples)]
    assert recorder.fired == everything["fired"][:len(recorder.fired)]
    times = [sample["elapsed_s"] for sample in everything["samples"]]
    assert all(earlier < later for earlier, later in zip(times, times[1:]))
