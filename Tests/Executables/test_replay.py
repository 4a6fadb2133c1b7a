"""A lesson from its beginning to its end: flown by the stand-in, listed, exported, drawn, graded, and flown again."""

import json
import math
import signal
import socket
import urllib.request
import xml.etree.ElementTree as xml

import pytest
from harness import PATIENCE, SIMULATOR_LINE, Companion, wait_until
from lesson import ALTITUDE, GEAR_HANDLE, ids, load, start, stop, trigger
from nav_database import write_nav_database
from recordings import write
from xml_order import GPX

SPEED = 4
METRES_PER_DEGREE = 111_195
# On the extended runway of the stand-in, before the end of its climb.
FIX = (47.10 + 3100 * math.cos(math.radians(70)) / METRES_PER_DEGREE,
       9.20 + 3100 * math.sin(math.radians(70)) / METRES_PER_DEGREE / math.cos(math.radians(47.1)))


def get(port, path):
    with urllib.request.urlopen(f"http://127.0.0.1:{port}/api/v2/datarefs{path}", timeout=PATIENCE) as response:
        return json.loads(response.read())["data"]


def entry_of(port, name):
    (entry,) = get(port, f"?filter[name]={name}")
    return entry


def value_of(port, name):
    return get(port, f"/{entry_of(port, name)['id']}/value")


def samples_of(file):
    lines = [json.loads(line) for line in file.read_text().splitlines()]
    return [line["sample"] for line in lines if line["kind"] == "sample"]


def script(ground_ft):
    """In the order in which a climb fires it; further apart than a companion's samples are at `SPEED`."""
    return [trigger("low", "crosses_altitude", feet=ground_ft + 250, climbing=True),
            trigger("middle", "crosses_altitude", feet=ground_ft + 500, climbing=True),
            trigger("fix", "reaches_fix", fix="CLIMB", within_nm=0.3),
            trigger("high", "crosses_altitude", feet=ground_ft + 900, climbing=True),
            trigger("last", "after_trigger", after_trigger_id="high", seconds=0)]


class Flight:
    """A recording of the climb that `companion` sees, from a standstill to the last trigger and beyond."""

    def __init__(self, companion, ground_ft):
        client = companion.client()
        self.ground_ft = ground_ft
        assert load(client, *script(ground_ft)) == []
        recorder = start(client)
        recorder.wait_for_samples(2)
        client.data("run_command", {"name": "sim/operation/pause_off"})
        recorder.wait_for_fired("last")
        self.client, self.recorder = client, recorder

    def stop(self, folder):
        stop(self.client)
        self.recorder.catch_up()
        self.fired = ids(self.recorder.fired)
        (self.file,) = folder.glob("Recordings/session-*.jsonl")
        self.samples = samples_of(self.file)
        assert self.samples == self.recorder.samples
        return self


def companion_of(programs, port):
    """A companion that knows the fix, and its folder."""
    database = write_nav_database(programs.new_folder() / "nav.db", fixes=[("CLIMB", *FIX)])
    folder = programs.new_folder()
    program = programs.start("tarnlyd", "--sim-port", port, "--port", 0, "--no-advertise", "--nav-db", database,
                             "--data-dir", folder)
    return Companion(program, programs), folder


@pytest.fixture(scope="module")
def flown(shared_programs):
    """The lesson: four times as fast as in life, so that it does not last."""
    _, port = shared_programs.simulator("--start", "climb", "--speed", 4)
    companion, folder = companion_of(shared_programs, port)
    client = companion.client()
    for command in ("pause_on", "reset_flight"):
        client.data("run_command", {"name": f"sim/operation/{command}"})
    flight = Flight(companion, value_of(port, ALTITUDE))
    flight.recorder.wait_for_samples(4)
    return flight.stop(folder)


@pytest.fixture(scope="module")
def track(shared_programs):
    """Runs tarnly-track to its end, which is a good one."""

    def run(*arguments):
        ended = shared_programs.run("tarnly-track", *arguments)
        assert ended.status == 0 and ended.errors == "", ended
        return ended.output

    return run


def replayed(programs, file, *arguments):
    """A tarnly-track that replays, and its port."""
    program = programs.start("tarnly-track", "replay", file, "--port", 0, "--udp-port", 0, *arguments)
    return program, int(program.wait_for_line(SIMULATOR_LINE).group(1))


def place_on(samples, lat, lon):
    """How far the nearest point of the track is, in metres, and its moment."""
    across = METRES_PER_DEGREE * math.cos(math.radians(lat))
    nearest = (math.inf, None)
    for here, there in zip(samples, samples[1:]):
        x, y = (here["lon"] - lon) * across, (here["lat"] - lat) * METRES_PER_DEGREE
        dx = (there["lon"] - here["lon"]) * across
        dy = (there["lat"] - here["lat"]) * METRES_PER_DEGREE
        length = dx * dx + dy * dy
        part = min(1, max(0, -(x * dx + y * dy) / length)) if length else 0
        moment = here["elapsed_s"] + part * (there["elapsed_s"] - here["elapsed_s"])
        nearest = min(nearest, (math.hypot(x + part * dx, y + part * dy), moment))
    return nearest


def value_at(samples, key, moment):
    later = next(number for number, sample in enumerate(samples) if sample["elapsed_s"] >= moment - 1e-9)
    if later == 0:
        return samples[0][key]
    before, after = samples[later - 1], samples[later]
    part = (moment - before["elapsed_s"]) / (after["elapsed_s"] - before["elapsed_s"])
    return before[key] + part * (after[key] - before[key])


def test_the_lesson_is_listed_shown_exported_and_drawn(flown, track):
    assert flown.fired == ["low", "middle", "fix", "high", "last"]
    (listed, *_) = [json.loads(line) for line in track("list", "--json", flown.file.parent).splitlines()
                    if json.loads(line)["fired"]]
    assert listed["samples"] == len(flown.samples) and listed["fired"] == 5
    shown = json.loads(track("show", "--json", flown.file))
    assert [fired["trigger_id"] for fired in shown["triggers"]] == flown.fired
    gpx = xml.fromstring(track("export", flown.file, "--format", "gpx"))
    assert [name.text for name in gpx.iterfind(f"{GPX}wpt/{GPX}name")] == flown.fired
    assert len(gpx.findall(f"{GPX}trk/{GPX}trkseg/{GPX}trkpt")) == len(flown.samples)
    page = track("plot", flown.file)
    assert all(name in page for name in flown.fired)


def test_the_lesson_is_graded(flown, shared_programs):
    tolerances = shared_programs.new_folder() / "tolerances.json"
    tolerances.write_text(json.dumps([
        {"id": "wings level", "kind": "bank_not_exceeded", "from": "low", "to": "high", "bank_deg": 30},
        {"id": "climb", "kind": "time_between", "from": "low", "to": "high", "at_least_s": 5},
        {"id": "stays low", "kind": "altitude_held", "feet": flown.ground_ft, "within_ft": 500}]))
    ended = shared_programs.run("tarnly-track", "grade", "--json", flown.file, tolerances)
    grades = json.loads(ended.output)["grades"]
    assert [(grade["id"], grade["verdict"]) for grade in grades] == [
        ("wings level", "met"), ("climb", "met"), ("stays low", "not_met")]
    assert ended.status == 3 and ended.errors == "", ended


def test_a_replay_is_the_same_flight_for_a_companion(flown, programs):
    program, port = replayed(programs, flown.file, "--speed", SPEED, "--paused")
    assert program.wait_for_line("It is paused until a client runs sim/operation/pause_off")
    companion, folder = companion_of(programs, port)
    again = Flight(companion, flown.ground_ft)
    program.wait_for_line("The recording has ended: its last values stay")
    again.recorder.wait_for_samples(3)
    again.stop(folder)

    assert again.fired == flown.fired
    places = [place_on(flown.samples, sample["lat"], sample["lon"]) for sample in again.samples]
    assert max(distance for distance, _ in places) < 1
    # Where the aircraft moves, so that places tell moments.
    end = flown.samples[-1]["elapsed_s"]
    begin = max(sample["elapsed_s"] for sample in flown.samples if sample["lat"] == flown.samples[0]["lat"])
    moving = [(sample, moment) for sample, (_, moment) in zip(again.samples, places) if begin < moment < end]
    assert len(moving) >= 2
    for sample, moment in moving:
        for key, near in (("alt_ft", 1), ("agl_ft", 1), ("pitch_deg", 0.1), ("bank_deg", 0.1), ("gear_ratio", 0.01)):
            assert sample[key] == pytest.approx(value_at(flown.samples, key, moment), abs=near), (key, moment)
    moments = [moment for _, moment in moving]
    assert moments == sorted(moments)
    (first, from_), (last, to) = moving[0], moving[-1]
    passed = last["elapsed_s"] - first["elapsed_s"]
    # Values are up to 0.1 s old, and a busy machine makes up for a second at most.
    assert 0.4 * SPEED * passed - SPEED < to - from_ < SPEED * (passed + 2.5)
    assert without_time(again.samples[-1]) == pytest.approx(without_time(flown.samples[-1]), abs=1e-3)


def without_time(sample):
    """With one number a lever: the stand-in's companion has one of one."""
    return {key: value[0] if isinstance(value, list) else value for key, value in sample.items()
            if key != "elapsed_s"}


def test_clients_cannot_fly_a_recording(programs):
    program, port = replayed(programs, write(programs.folder / "short.jsonl", 20), "--paused")
    client = programs.companion(sim_port=port).client()
    elevation = "sim/flightmodel/position/elevation"
    assert client.subscribe(GEAR_HANDLE)[GEAR_HANDLE] == 1
    assert client.subscribe_error(elevation) == f'unknownDataref("{elevation}")'
    client.set({"name": GEAR_HANDLE, "value": 0})
    client.data("run_command", {"name": "sim/flight_controls/landing_gear_up"})
    udp = int(program.wait_for_line(SIMULATOR_LINE).group(2))
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
        sender.sendto(b"SIMO\0" + (1).to_bytes(4, "little") + b"final.sit".ljust(152, b"\0"), ("127.0.0.1", udp))
    wait_until(lambda: "Situation ignored: final.sit" in program.errors(), "word of the situation")
    assert entry_of(port, GEAR_HANDLE)["is_writable"] is False and value_of(port, GEAR_HANDLE) == 1


def test_a_replay_that_repeats_begins_again_where_it_began(programs):
    file = write(programs.folder / "short.jsonl", 20)
    program, port = replayed(programs, file, "--speed", 60, "--from", 12, "--repeat")
    client = programs.companion(sim_port=port).client()
    time = "sim/time/total_flight_time_sec"
    client.subscribe(time)
    times = [client.push()[time]]
    while not any(later < earlier for earlier, later in zip(times, times[1:])):
        times.append(client.push()[time])
    assert min(times) >= 12 and max(times) <= 20
    assert not any("ended" in line for line in program.output())


def test_signals_end_it_well(programs):
    file = write(programs.folder / "short.jsonl", 5)
    for each in (signal.SIGINT, signal.SIGTERM):
        program, _ = replayed(programs, file)
        program.process.send_signal(each)
        assert program.wait() == 0


def test_what_cannot_be_replayed(programs):
    file = write(programs.folder / "short.jsonl", 5)
    empty = programs.folder / "empty.jsonl"
    empty.write_text("")

    def refusal(*arguments):
        ended = programs.run("tarnly-track", "replay", *arguments)
        (line,) = ended.error_lines
        return ended.status, line.removeprefix("tarnly-track: ")

    assert refusal(programs.folder / "none.jsonl") == (
        1, f"{programs.folder}/none.jsonl cannot be read: No such file or directory")
    assert refusal(empty) == (1, "empty.jsonl has no samples: there is nothing to replay")
    for speed in ("0.5", "61", "nan"):
        assert refusal(file, "--speed", speed) == (2, "--speed takes a number from 1 to 60")
    assert refusal(file, "--from", "-1") == (2, "--from takes seconds of the recording, from 0 on")
    assert refusal(file, "--from", "5.1") == (2, "--from is behind the end of short.jsonl, at 5 seconds")
    _, port = replayed(programs, file)
    status, line = refusal(file, "--port", port, "--udp-port", 0)
    assert (status, line) == (1, f"the replay cannot listen on port {port}: Address already in use; end the simulator "
                                 "that has it, or choose others by --port and --udp-port")
