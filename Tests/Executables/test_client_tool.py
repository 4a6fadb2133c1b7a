"""tarnly-client against a companion and the stand-in simulator."""

import json
import signal

import pytest
from harness import reserved_port, wait_until

LATITUDE = "sim/flightmodel/position/latitude"
LONGITUDE = "sim/flightmodel/position/longitude"
HEIGHT = "sim/flightmodel/position/y_agl"
PITCH = "sim/flightmodel/position/theta"
GEAR_HANDLE = "sim/cockpit2/controls/gear_handle_down"
THROTTLE = "sim/cockpit2/engine/actuators/throttle_ratio"


class Rig:
    """A companion of the stand-in simulator, and the tool pointed at it."""

    def __init__(self, programs):
        self._programs = programs
        _, sim_port = programs.simulator("--start", "cruise")
        self.companion = programs.companion(sim_port=sim_port)

    def tool(self, *arguments):
        return self._programs.run("tarnly-client", *self.address, *arguments)

    @property
    def address(self):
        return ["--host", "127.0.0.1", "--port", self.companion.port]

    def lines(self, *arguments):
        """What a successful run with --json prints, decoded line by line."""
        ended = self.tool("--json", *arguments)
        assert ended.status == 0 and ended.errors == "", ended
        return [json.loads(line) for line in ended.output.splitlines()]

    def values(self, *names):
        (line,) = self.lines("get", *names)
        return line


@pytest.fixture
def rig(programs):
    return Rig(programs)


def test_info(rig):
    wait_until(lambda: rig.lines("info") == [{"sim": "xplane", "version": "12.4.0"}], "the simulator's version")
    plain = rig.tool("info")
    assert plain.status == 0 and "xplane" in plain.output


def test_get_prints_all_names(rig):
    assert set(rig.values(LATITUDE, HEIGHT, f"{THROTTLE}[0]")) == {LATITUDE, HEIGHT, f"{THROTTLE}[0]"}
    plain = rig.tool("get", LATITUDE, HEIGHT)
    assert plain.status == 0
    assert [name for name in (LATITUDE, HEIGHT) if name not in plain.output] == []


def test_watch_prints_as_many_pushes_as_asked_for(rig):
    lines = rig.lines("watch", "--count", "3", LATITUDE, HEIGHT)
    assert len(lines) == 3
    assert all({LATITUDE, HEIGHT} <= set(line) for line in lines)


def test_watch_goes_on_until_it_is_interrupted(rig, programs):
    program = programs.start("tarnly-client", *rig.address, "--json", "watch", LATITUDE)
    wait_until(lambda: len(program.output()) >= 3, "three pushes")
    assert program.end(signal.SIGINT) == 0
    assert all(LATITUDE in json.loads(line) for line in program.output())


def test_set_writes_values_and_elements(rig):
    assert rig.tool("set", f"{THROTTLE}=0.25", f"{THROTTLE}[1]=0.75", f"{GEAR_HANDLE}=0").status == 0
    wanted = {f"{THROTTLE}[0]": 0.25, f"{THROTTLE}[1]": 0.75, GEAR_HANDLE: 0}
    wait_until(lambda: rig.values(*wanted) == wanted, "the written values")


def test_run_activates_a_command(rig):
    before = rig.values(GEAR_HANDLE)[GEAR_HANDLE]
    assert rig.tool("run", "sim/flight_controls/landing_gear_toggle").status == 0
    wait_until(lambda: rig.values(GEAR_HANDLE)[GEAR_HANDLE] != before, "the gear handle moved")


def test_move_takes_negative_degrees(rig):
    assert rig.tool("move", "-33.9", "18.6").status == 0
    place = rig.values(LATITUDE, LONGITUDE)
    assert place == {LATITUDE: pytest.approx(-33.9, abs=0.1), LONGITUDE: pytest.approx(18.6, abs=0.1)}


def test_attitude_takes_negative_degrees(rig):
    assert rig.tool("attitude", "-5", "-20", "120", "0.5").status == 0
    wait_until(lambda: rig.values(f"{THROTTLE}[0]") == {f"{THROTTLE}[0]": 0.5}, "the throttle")


def test_send_sends_any_request_and_prints_the_answer(rig):
    (line,) = rig.lines("send", '{"type":"sim_info","req_id":77}')
    assert line["data"].pop("version") in ("12.4.0", "unknown")  # it may not have been asked yet
    assert line == {"type": "sim_info", "req_id": 77, "data": {"sim": "xplane"}}


def test_a_refusal_is_told_in_the_companions_words(rig):
    for arguments, message in [
            (("get", "sim/no/such"), 'unknownDataref("sim/no/such")'),
            (("set", "sim/no/such=1"), 'unknownDataref("sim/no/such")'),
            (("watch", "sim/no/such"), 'unknownDataref("sim/no/such")'),
            (("run", "sim/no/such"), 'unknownCommand("sim/no/such")')]:
        ended = rig.tool(*arguments)
        assert ended.status == 1 and ended.output == "", ended
        assert message in ended.errors


def test_options_may_stand_behind_the_subcommand(rig, programs):
    ended = programs.run("tarnly-client", "info", "--json", *rig.address)
    assert ended.status == 0 and json.loads(ended.output)["sim"] == "xplane", ended


def test_the_password_comes_from_a_file(programs):
    companion = programs.companion(settings={"password": "Grünspecht", "startAtLogin": False})
    file = programs.folder / "password"

    def info(*more):
        return programs.run("tarnly-client", "--host", "127.0.0.1", "--port", companion.port, "info", *more)

    right, composed = "Grünspecht", "Gru\u0308nspecht"
    for text, status in [(right, 0), (f"{right}\n", 0), (f"{composed}\nmore\n", 0), ("wrong\n", 1)]:
        file.write_text(text)
        ended = info("--password-file", file)
        assert ended.status == status, (text, ended)
    assert "incorrect password" in ended.errors
    without = info()
    assert without.status == 1 and without.output == "" and without.errors.strip(), without
    missing = info("--password-file", programs.folder / "nowhere")
    assert missing.status in (1, 2) and "nowhere" in missing.errors, missing


def test_nobody_there_is_said_in_one_line(programs):
    with reserved_port() as port:
        ended = programs.run("tarnly-client", "--host", "127.0.0.1", "--port", port, "info")
    assert ended.status == 1 and ended.output == "" and len(ended.error_lines) == 1, ended


def test_a_companion_that_ends_ends_the_watch(rig, programs):
    program = programs.start("tarnly-client", *rig.address, "watch", LATITUDE)
    program.expected_status = 1
    wait_until(lambda: program.output(), "a push")
    rig.companion.program.end()
    assert program.wait() == 1
    assert program.errors().strip()
