"""tarnly-track with the log of a lesson that the stand-in for the simulator has flown."""

import csv
import io
import json
import os
import pty
import re
import xml.etree.ElementTree as xml

import pytest
from harness import PATIENCE, executable, wait_until
from lesson import load, start, stop, trigger
from xml_order import GPX, KML, misplaced


class Flown:
    """A recording, and what is written in it."""

    def __init__(self, programs):
        _, port = programs.simulator("--start", "cruise")
        companion = programs.companion(sim_port=port)
        client = companion.client()
        load(client, trigger("two-seconds & <on>", "after_start", seconds=2))
        recorder = start(client)
        recorder.wait_for_fired("two-seconds & <on>")
        recorder.wait_for_samples(4)
        stop(client)
        (self.file,) = programs.folder.glob("*/Recordings/session-*.jsonl")
        self.folder = self.file.parent
        lines = [json.loads(line) for line in self.file.read_text().splitlines()]
        self.samples = [line["sample"] for line in lines if line["kind"] == "sample"]
        (self.fired,) = [line["fired"] for line in lines if line["kind"] == "fired"]
        self.programs = programs

    def done(self, *arguments):
        ended = self.programs.run("tarnly-track", *arguments)
        assert ended.status == 0 and ended.errors == "", ended
        return ended.output

    def export(self, format_, *arguments):
        return self.done("export", self.file, "--format", format_, *arguments)


@pytest.fixture(scope="module")
def flown(shared_programs):
    return Flown(shared_programs)


def test_list_and_show_tell_what_was_flown(flown):
    (listed,) = [json.loads(line) for line in flown.done("list", "--json", flown.folder).splitlines()]
    assert listed["samples"] == len(flown.samples) and listed["fired"] == 1 and listed["gaps"] == 0
    assert listed["length_s"] == flown.samples[-1]["elapsed_s"]
    assert listed["highest_indicated_ft"] == max(sample["alt_ft"] for sample in flown.samples)
    # A light twin in cruise makes between 30 and 150 m/s.
    assert 30 < listed["distance_m"] / (listed["length_s"] - flown.samples[0]["elapsed_s"]) < 150
    shown = json.loads(flown.done("show", "--json", flown.file))
    assert shown["recording"] == listed
    (fired,) = shown["triggers"]
    assert fired["trigger_id"] == flown.fired["trigger_id"] and fired["elapsed_s"] == flown.fired["elapsed_s"]
    assert flown.file.name in flown.done("list", flown.folder)
    assert "two-seconds & <on>" in flown.done("show", flown.file)


def test_the_companions_own_folder_is_the_usual_one(flown):
    folder = flown.programs.new_folder()
    (folder / "Tarnly").mkdir()
    (folder / "Tarnly" / "Recordings").symlink_to(flown.folder)
    ended = flown.programs.run("tarnly-track", "list", XDG_DATA_HOME=str(folder))
    assert flown.file.name in ended.output, ended


def test_gpx(flown):
    root = xml.fromstring(flown.export("gpx", "--aircraft", "C172"))
    assert misplaced(root, GPX) == []
    assert root.tag == f"{GPX}gpx" and root.get("version") == "1.1" and root.get("creator")
    points = root.findall(f"{GPX}trk/{GPX}trkseg/{GPX}trkpt")
    assert len(points) == len(flown.samples)
    for point, sample in zip(points, flown.samples):
        assert float(point.get("lat")) == pytest.approx(sample["lat"], abs=1e-9)
        assert float(point.get("lon")) == pytest.approx(sample["lon"], abs=1e-9)
        assert float(point.findtext(f"{GPX}ele")) == pytest.approx(sample["alt_ft"] * 0.3048, abs=0.006)
        assert re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z", point.findtext(f"{GPX}time"))
    assert root.findtext(f"{GPX}wpt/{GPX}name") == flown.fired["trigger_id"]


def test_kml(flown):
    root = xml.fromstring(flown.export("kml"))
    assert misplaced(root, KML) == []
    lines = {line.findtext(f"{KML}altitudeMode"): line.findtext(f"{KML}coordinates").split()
             for line in root.iter(f"{KML}LineString")}
    assert set(lines) == {"relativeToGround", "absolute"}
    for mode, key in (("relativeToGround", "agl_ft"), ("absolute", "alt_ft")):
        heights = [float(place.split(",")[2]) for place in lines[mode]]
        assert heights == pytest.approx([sample[key] * 0.3048 for sample in flown.samples], abs=0.006)
    assert flown.fired["trigger_id"] in [name.text for name in root.iter(f"{KML}name")]


def test_csv(flown):
    records = list(csv.DictReader(io.StringIO(flown.export("csv"), newline="")))
    assert len(records) == len(flown.samples)
    for record, sample in zip(records, flown.samples):
        assert None not in record and None not in record.values(), "each record has as many fields as the header"
        assert float(record["lat_deg"]) == sample["lat"] and float(record["agl_ft"]) == sample["agl_ft"]
        throttles = [float(value) for key, value in record.items() if key.startswith("throttle_ratio_")]
        assert throttles == sample["throttle_ratio"] != []
    assert [record["fired"] for record in records if record["fired"]] == [flown.fired["trigger_id"]]


def test_geojson(flown):
    track, fired = json.loads(flown.export("geojson"))["features"]
    (line,) = track["geometry"]["coordinates"]
    assert line == [[sample["lon"], sample["lat"]] for sample in flown.samples]
    assert track["properties"]["agl_ft"] == [[sample["agl_ft"] for sample in flown.samples]]
    assert [len(times) for times in track["properties"]["times"]] == [len(line)]
    assert fired["properties"]["trigger_id"] == flown.fired["trigger_id"]


@pytest.mark.parametrize("namespace, text, wrong", [
    (GPX, "<gpx><metadata><time/><name/></metadata></gpx>", ["metadata/name"]),
    (GPX, "<gpx><trk><trkseg><trkpt><time/><ele/></trkpt></trkseg></trk></gpx>", ["trkpt/ele"]),
    (GPX, "<gpx><trk/><wpt/></gpx>", ["gpx/wpt"]),
    (GPX, "<gpx><wpt><speed/></wpt></gpx>", ["wpt/speed"]),
    (GPX, "<gpx><wpt><ele/><ele/></wpt></gpx>", ["wpt/ele"]),
    (KML, "<kml><Document><Placemark><Point/><name/></Placemark></Document></kml>", ["Placemark/name"]),
    (KML, "<kml><Document><Placemark><LineString><coordinates/><extrude/></LineString></Placemark></Document></kml>",
     ["LineString/extrude"]),
])
def test_the_check_of_the_order_finds_what_is_misplaced(namespace, text, wrong):
    assert misplaced(xml.fromstring(text.replace(">", f' xmlns="{namespace[1:-1]}">', 1)), namespace) == wrong


def test_a_terminal_sees_how_far_it_is(flown):
    terminal, stderr = pty.openpty()
    pid = os.posix_spawn(executable("tarnly-track"), ["tarnly-track", "show", str(flown.file)],
                         flown.programs.environment(),
                         file_actions=[(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0),
                                       (os.POSIX_SPAWN_DUP2, stderr, 2)])
    os.close(stderr)
    seen = b""

    def ends_clean():
        nonlocal seen
        try:
            seen += os.read(terminal, 4096)
        except OSError:  # the program has gone
            return True
        return False

    wait_until(ends_clean, "the end of what the terminal sees", PATIENCE)
    os.close(terminal)
    assert os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]) == 0
    assert f"reading {flown.file.name} 100 %".encode() in seen and seen.endswith(b"\r\x1b[K")
