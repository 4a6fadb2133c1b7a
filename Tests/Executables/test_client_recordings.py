"""tarnly-client with flights, scripts and recordings, against a companion."""

import json
import signal
import subprocess
from pathlib import Path

import pytest
from dnssd import PrivateDnssd
from harness import PATIENCE, executable, wait_until
from lesson import (ALTITUDE, FEET_PER_METRE, GEAR_HANDLE, HEIGHT, LATITUDE, LONGITUDE, add_sample_datarefs,
                    trigger)
from nav_database import write_nav_database

LESSON = Path(__file__).resolve().parents[2] / "docs" / "lesson.json"


class Rig:
    """A companion of a simulator whose aircraft is where the test puts it, and the tool pointed at it."""

    def __init__(self, programs, fake, *arguments):
        self.programs = programs
        self.fake = fake
        add_sample_datarefs(fake)
        self.companion = programs.companion(*arguments, sim_port=fake.port)
        self.address = ["--host", "127.0.0.1", "--port", self.companion.port]

    def tool(self, *arguments):
        return self.programs.run("tarnly-client", *self.address, *arguments)

    def done(self, *arguments):
        """What a successful run prints."""
        ended = self.tool(*arguments)
        assert ended.status == 0 and ended.errors == "", ended
        return ended.output

    def lines(self, *arguments):
        return decoded(self.done("--json", *arguments).splitlines())

    def load(self, *triggers):
        file = self.programs.new_folder() / "script.json"
        file.write_text(json.dumps(list(triggers)))
        assert self.done("script", file) == "ok\n"

    def watch(self, *arguments, **environment):
        return self.programs.start("tarnly-client", *self.address, "--json", "watch", "--recording",
                                   *arguments, **environment)

    def log(self):
        """The lines of the only recording's log."""
        (file,) = self.programs.folder.glob("*/Recordings/session-*.jsonl")
        return decoded(file.read_text().splitlines())


def decoded(lines):
    return [json.loads(line) for line in lines]


def elapsed(line):
    return line[line["kind"]]["elapsed_s"]


def fired_ids(lines):
    return [line["fired"]["trigger_id"] for line in lines if line["kind"] == "fired"]


def wait_for_lines(program, count):
    """Waits until it has printed so many lines more."""
    wanted = len(program.output()) + count
    wait_until(lambda: len(program.output()) >= wanted, f"{count} more lines")


def lines_of(program):
    return decoded(program.output())


@pytest.fixture
def rig(programs, fake):
    return Rig(programs, fake)


# Saved flights


@pytest.fixture
def situations(tmp_path):
    folder = tmp_path / "situations"
    folder.mkdir()
    for name in ("Pattern 1", "Long final"):
        (folder / f"{name}.sit").touch()
    return folder


def test_flights_are_listed_and_loaded_by_name_or_path(programs, fake, situations):
    rig = Rig(programs, fake, "--situations", situations)
    flights = rig.lines("flights")
    assert {flight["name"]: flight["path"] for flight in flights} == {
        name: f"{situations}/{name}.sit" for name in ("Pattern 1", "Long final")}
    plain = rig.done("flights")
    assert all(flight["name"] in plain and flight["path"] in plain for flight in flights)
    assert rig.done("load", "Long final") == "ok\n"
    assert rig.done("load", situations / "Pattern 1.sit") == "ok\n"
    for wrong, complaint in [("long final", 'no flight is named "long final"'),
                             (f"{situations}/Gone.sit", f'flightNotFound("{situations}/Gone.sit")')]:
        ended = rig.tool("load", wrong)
        assert ended.status == 1 and complaint in ended.errors, ended


def test_without_a_folder_of_flights_the_companion_says_so(rig):
    for arguments in (["flights"], ["load", "Pattern 1"]):
        ended = rig.tool(*arguments)
        assert (ended.status, ended.errors) == (1, "tarnly-client: situationsDirectoryNotConfigured\n")


# Scripts


def test_unknown_fixes_are_a_warning(rig, tmp_path):
    file = tmp_path / "script.json"
    file.write_text(json.dumps({"triggers": [trigger("a", "reaches_fix", fix="xyzzy", within_nm=1)]}))
    ended = rig.tool("script", file)
    assert ended.status == 0 and ended.output == "ok\n"
    assert "warning" in ended.errors and "XYZZY" in ended.errors
    assert rig.lines("script", file) == [{"unresolved_fixes": ["XYZZY"]}]


def test_a_script_may_come_from_the_standard_input(rig):
    command = [executable("tarnly-client"), *map(str, rig.address), "script", "-"]
    ended = subprocess.run(command, input=json.dumps([trigger("piped", "after_start", seconds=0)]), text=True,
                           capture_output=True, timeout=PATIENCE, check=True)
    assert (ended.stdout, ended.stderr) == ("ok\n", "")
    rig.done("record", "start")
    wait_until(lambda: fired_ids(rig.lines("catch-up")) == ["piped"], "that the trigger fired")


@pytest.mark.parametrize("text, status, complaint", [
    ('[\n{"id":"a",}]', 2, "script.json:2:11: no valid JSON"),
    ('{"trigger":[]}', 2, 'unknown field "trigger"; did you mean "triggers"?'),
    ('[{"id":"a","condition_kind":"after_start"}]', 2, 'script.json:1:2: "action" is missing'),
    (json.dumps([trigger("a", "after_landing")]), 1, 'unknownConditionKind("after_landing")'),
], ids=["no JSON", "no list", "no trigger", "unknown kind"])
def test_a_wrong_script_leaves_the_one_before_in_place(rig, tmp_path, text, status, complaint):
    rig.load(trigger("kept", "after_start", seconds=0))
    file = tmp_path / "script.json"
    file.write_text(text)
    ended = rig.tool("script", file)
    assert ended.status == status and ended.output == "" and complaint in ended.errors, ended
    rig.done("record", "start")
    wait_until(lambda: fired_ids(rig.lines("catch-up")) == ["kept"], "that the old script is in force")


# Recordings


def test_what_is_caught_up_on_is_what_stands_in_the_log(rig):
    rig.load(trigger("a", "after_start", seconds=0), trigger("b", "after_trigger", after_trigger_id="a", seconds=1))
    assert rig.done("record", "start") == "ok\n"
    wait_until(lambda: fired_ids(rig.lines("catch-up")) == ["a", "b"], "both triggers")
    assert rig.done("record", "stop") == "ok\n"
    lines = rig.lines("catch-up")
    assert lines == rig.log()
    since = elapsed(lines[0])
    assert rig.lines("catch-up", "--since", since) == [line for line in lines if elapsed(line) > since]
    plain = rig.done("catch-up").splitlines()
    assert len(plain) == len(lines)
    assert "fired b  (speak)" in plain[lines.index(next(
        line for line in lines if fired_ids([line]) == ["b"]))]


def test_a_watch_prints_what_the_log_has(rig):
    rig.load(*(trigger(f"{tenths}", "after_start", seconds=tenths / 10) for tenths in range(0, 40, 2)))
    watch = rig.watch()
    rig.done("record", "start")
    wait_until(lambda: len(fired_ids(lines_of(watch))) == 20, "the triggers")
    rig.done("record", "stop")
    wait_until(lambda: len(lines_of(watch)) == len(rig.log()), "the last samples")
    assert watch.end(signal.SIGINT) == 0
    assert lines_of(watch) == rig.log()


def test_people_see_the_triggers_only(rig):
    rig.load(trigger("one", "after_start", seconds=0), trigger("two", "after_start", seconds=0, action_kind="show"))
    rig.done("record", "start")
    first, second = rig.done("watch", "--recording", "--count", "2").splitlines()
    assert first.endswith("fired one  (speak)") and second.endswith("fired two  (show)")
    assert rig.done("watch", "--recording", "--seconds", "0.1").splitlines() == [first, second]


def test_a_watch_notices_that_a_recording_begins_anew(rig):
    rig.load(trigger("a", "after_start", seconds=1))
    rig.done("record", "start")
    watch = rig.watch()
    wait_until(lambda: fired_ids(lines_of(watch)) == ["a"], "the trigger")
    rig.done("record", "start")
    rig.done("record", "stop")
    seen = len(watch.output())
    rig.load(trigger("b", "after_start", seconds=0))
    rig.done("record", "start")
    wait_until(lambda: "b" in fired_ids(lines_of(watch)), "the other trigger")
    wait_for_lines(watch, 2)
    rig.done("record", "stop")
    everything = rig.lines("catch-up")
    wait_until(lambda: lines_of(watch)[-len(everything):] == everything, "all of the new recording")
    assert len(watch.output()) > seen
    assert "the recording has begun anew" in watch.errors()
    assert watch.end() == 0


def advertised(programs, dnssd, name, **options):
    return programs.companion("--name", name, advertise=True, DBUS_SYSTEM_BUS_ADDRESS=dnssd.address,
                              **options)


def test_a_watch_survives_a_lost_connection(programs, fake):
    """A companion that stands still for longer than the tool waits for an answer."""
    rig = Rig(programs, fake)
    rig.load(*(trigger(f"{tenths}", "after_start", seconds=tenths / 10) for tenths in range(0, 80, 2)))
    rig.done("record", "start")
    watch = rig.watch("--timeout", "1")
    wait_for_lines(watch, 4)
    for _ in range(2):
        rig.companion.program.process.send_signal(signal.SIGSTOP)
        losses = watch.errors().count("trying again")
        wait_until(lambda: watch.errors().count("trying again") > losses, "the loss")
        rig.companion.program.process.send_signal(signal.SIGCONT)
        wait_for_lines(watch, 4)
    wait_until(lambda: len(fired_ids(lines_of(watch))) == 40, "the triggers")
    rig.done("record", "stop")
    wait_until(lambda: len(watch.output()) == len(rig.log()), "the last samples")
    assert watch.end() == 0
    assert lines_of(watch) == rig.log()


def test_a_watch_finds_a_companion_that_was_started_again(programs, fake):
    add_sample_datarefs(fake)
    with PrivateDnssd() as dnssd:
        first = advertised(programs, dnssd, "rig42", sim_port=fake.port)
        first.client().data("recording_start")
        watch = programs.start("tarnly-client", "--json", "watch", "--recording",
                               DBUS_SYSTEM_BUS_ADDRESS=dnssd.address)
        wait_for_lines(watch, 2)
        assert first.program.end() == 0
        wait_until(lambda: "trying again" in watch.errors(), "the loss")
        second = advertised(programs, dnssd, "rig42", sim_port=fake.port)
        assert second.port != first.port
        client = second.client()
        client.data("recording_start")
        wait_until(lambda: "the companion is back" in watch.errors(), "that it is found again")
        wait_for_lines(watch, 2)
        client.data("recording_stop")
        samples = client.data("catch_up")["samples"]
        wait_until(lambda: [line["sample"] for line in lines_of(watch)][-len(samples):] == samples,
                   "all of the new recording")
        assert watch.end() == 0


def test_a_companion_that_was_never_there_is_an_error(programs):
    port = programs._nobody_there()
    ended = programs.run("tarnly-client", "--host", "127.0.0.1", "--port", port, "watch", "--recording")
    assert ended.status == 1 and ended.output == "" and len(ended.error_lines) == 1, ended


# The example script


def test_the_example_script_fires_in_order(programs, fake):
    script = json.loads(LESSON.read_text())
    assert {each["condition_kind"] for each in script["triggers"]} == {
        "reaches_fix", "crosses_agl", "crosses_altitude", "after_gear_down", "after_start", "after_trigger"}
    database = write_nav_database(programs.new_folder() / "nav.db", fixes=[("RIDGE", 47.16, 9.21)])
    rig = Rig(programs, fake, "--nav-db", database)
    for dataref, value in [(LATITUDE, 47), (LONGITUDE, 9.21), (ALTITUDE, 3600), (HEIGHT, 700), (GEAR_HANDLE, 0)]:
        fake.set(dataref, value)
    assert rig.done("script", LESSON) == "ok\n"
    rig.done("record", "start")
    watch = rig.watch("--count", len(script["triggers"]))
    seen = []

    def expect(*ids):
        seen.extend(ids)
        wait_until(lambda: fired_ids(lines_of(watch)) == seen, f"{seen}")

    expect("welcome", "briefing")
    for dataref, value, ids in [
            (LATITUDE, 47.15, ["overhead-ridge"]),
            (ALTITUDE, 2990, ["through-3000"]),
            (GEAR_HANDLE, 1, ["gear-check"]),
            (HEIGHT, 500 / FEET_PER_METRE - 1, ["final-500", "final-500-score"]),
            (HEIGHT, 1000 / FEET_PER_METRE + 1, ["climbing-out"])]:
        fake.set(dataref, value)
        expect(*ids)
    assert watch.wait() == 0
    assert [each["id"] for each in script["triggers"]] == seen

    # On the ground afterwards the same script fires at the same times over the log.
    rig.done("record", "stop")
    (log,) = programs.folder.glob("*/Recordings/session-*.jsonl")
    tried = programs.run("tarnly-client", "--json", "script", "--try", LESSON, log, "--nav-db", database)
    (trial,) = decoded(tried.output.splitlines())
    in_the_air = [(line["fired"]["trigger_id"], line["fired"]["elapsed_s"]) for line in rig.log()
                  if line["kind"] == "fired"]
    assert [(each["trigger_id"], each["elapsed_s"]) for each in trial["fired"]] == in_the_air
    assert (tried.status, tried.errors, trial["missed"]) == (0, "", [])
    without = programs.run("tarnly-client", "script", "--try", LESSON, log)
    assert "  the fix RIDGE was not found" in without.output
