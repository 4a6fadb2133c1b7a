"""tarnly-client lesson: a lesson from its files to its receipt, on a pipe and on a terminal."""

import contextlib
import json
import os
import pty
import re
import signal
import subprocess
import termios
import time
from pathlib import Path

import pytest
from harness import PATIENCE, executable, wait_until
from lesson import HEIGHT, LATITUDE, add_sample_datarefs, trigger

REPOSITORY = Path(__file__).resolve().parents[2]
EXAMPLE = REPOSITORY / "docs" / "lesson-pattern"


class Rig:
    """A companion with a saved flight, and the tool pointed at it."""

    def __init__(self, programs, sim_port):
        self.programs = programs
        self.folder = programs.new_folder()
        for name in ("Pattern 1", "Long final"):
            (self.folder / f"{name}.sit").touch()
        self.sim_port = sim_port
        self.companion = programs.companion("--situations", self.folder, sim_port=sim_port)

    @property
    def arguments(self):
        return ["--host", "127.0.0.1", "--port", self.companion.port]

    def lesson(self, *triggers, **more):
        file = self.folder / "circuit.json"
        file.write_text(json.dumps({"script": list(triggers), **more}))
        return file

    def logs(self):
        return sorted(self.programs.folder.glob("*/Recordings/session-*.jsonl"))

    def start(self, *arguments, **options):
        return self.programs.start("tarnly-client", *self.arguments, "lesson", *arguments, **options)


@pytest.fixture
def rig(programs, fake):
    add_sample_datarefs(fake)
    return Rig(programs, fake.port)


WELCOME = trigger("welcome", "after_start", seconds=0)
LOW = trigger("low", "crosses_agl", feet=100, climbing=False)
NEVER = trigger("high", "crosses_agl", feet=9000, climbing=True)


def wait_for_fired(program, trigger_id):
    program.wait_for_line(rf"fired {trigger_id}\b")


# Before it flies


def test_the_example_has_no_faults(programs):
    ended = programs.run("tarnly-client", "lesson", "--check", EXAMPLE)
    assert (ended.status, ended.output, ended.errors) == (0, "ok\n", "")


def test_faults_are_told_and_nothing_is_sent(rig):
    file = rig.folder / "circuit.json"
    file.write_text('{"script": [],\n "situaton": "Pattern 1"}')
    complaint = f'{file}:2:2: unknown field "situaton"; did you mean "situation"?'
    checked = rig.programs.run("tarnly-client", "lesson", "--check", file)
    assert (checked.status, checked.output, checked.errors) == (2, f"{complaint}\n", "")
    ended = rig.programs.run("tarnly-client", *rig.arguments, "lesson", file)
    assert ended.status == 2 and ended.output == ""
    assert ended.error_lines[0] == f"tarnly-client: {complaint}"
    assert "is not flown before this is mended" in ended.error_lines[1]
    # Where nobody listens it is the same, so nobody was asked.
    nobody = rig.programs.run("tarnly-client", "--host", "127.0.0.1", "--port", 1, "lesson", file)
    assert (nobody.status, nobody.errors) == (2, ended.errors)
    assert rig.logs() == []


def test_a_file_that_is_there_is_not_written_over(rig):
    file = rig.lesson(WELCOME)
    ended = rig.programs.run("tarnly-client", *rig.arguments, "lesson", file, "--save", file)
    assert ended.status == 2 and "is there already; name a new file" in ended.errors, ended
    assert json.loads(file.read_text())["script"]


def test_a_situation_that_is_not_there_is_named_with_those_that_are(rig):
    ended = rig.programs.run("tarnly-client", *rig.arguments, "lesson",
                             rig.lesson(WELCOME, situation="Pattern 2"))
    assert ended.status == 1
    assert 'there is no situation named "Pattern 2"; there are Long final, Pattern 1' in ended.errors
    assert rig.logs() == []


# The flight


def test_an_aircraft_that_flies_on_was_not_loaded(rig, fake):
    program = rig.start(rig.lesson(WELCOME, situation="Pattern 1"), "--wait", "3")
    program.expected_status = 1
    latitude = 47.4581
    while program.process.poll() is None:
        latitude += 0.00005
        fake.set(LATITUDE, latitude)
        time.sleep(0.1)
    assert program.wait() == 1
    assert '"Pattern 1" is not loaded after 3 s: the aircraft flies on' in program.errors()
    assert rig.logs() == []


def test_a_lesson_from_its_situation_to_its_receipt(rig, fake):
    saved = rig.folder / "saved.jsonl"
    file = rig.lesson(WELCOME, LOW, NEVER, situation="Pattern 1", name="Circuit", briefing="Fly low.\nThen stop.",
                      ends={"trigger": "low"},
                      tolerances=[{"id": "bank", "name": "Bank", "kind": "bank_not_exceeded", "bank_deg": 30}])
    program = rig.start(file, "--save", saved)
    program.wait_for_line('loading "Pattern 1"')
    fake.set(LATITUDE, 47.6)
    program.wait_for_line("^recording$")
    wait_for_fired(program, "welcome")
    fake.set(HEIGHT, 20)
    assert program.wait() == 0
    assert program.errors() == ""
    output = program.output()
    assert output[:3] == ["Circuit", "  Fly low.", "  Then stop."]
    receipt = output[output.index("Circuit: the trigger low fired"):]
    text = "\n".join(receipt)
    assert re.search(r"fired +welcome +at 0:00\n +low +at 0:0", text), text
    assert "met         Bank: " in text and "not fired  high" in text, text
    assert "never above 328 ft AGL (at 0:00)" in text, text
    (log,) = rig.logs()
    assert saved.read_bytes() == log.read_bytes()
    shown = json.loads(rig.programs.run("tarnly-track", "show", "--json", log).output)["recording"]
    assert f"samples    {shown['samples']} over " in text, text
    status = rig.programs.run("tarnly-client", "status", "--data-dir", log.parent.parent).output
    assert "Data folder" in status and "Recording for" not in status, status


def data_folder_of(programs):
    (lock,) = programs.folder.glob("*/companion.lock")
    return lock.parent


def test_a_flown_situation_has_the_receipt_that_tarnly_track_shows(programs):
    stand_in, port = programs.simulator("--speed", "8", "--start", "downwind", "--control", "stdin",
                                        stdin=subprocess.PIPE)
    rig = Rig(programs, port)
    file = rig.lesson(WELCOME, trigger("final-500", "crosses_agl", feet=500, climbing=False),
                      trigger("away", "crosses_agl", feet=9000, climbing=True),
                      situation="Long final", ends={"trigger": "final-500", "seconds": 100})
    program = rig.start(file, "--data-dir", data_folder_of(programs))
    program.wait_for_line('^loading "Long final"$')
    # The companion's order went to the usual port, at which this stand-in does not listen.
    stand_in.write("load Long final\n")
    assert program.wait() == 0, program.errors()
    text = "\n".join(program.output())
    assert "circuit: the trigger final-500 fired" in text, text
    (log,) = rig.logs()
    assert f"file       {log}\n" in text, text
    shown = json.loads(programs.run("tarnly-track", "show", "--json", log).output)
    recording = shown["recording"]
    assert f"samples    {recording['samples']} over 0:{int(recording['length_s']):02}\n" in text, text
    assert (recording["gaps"], recording["frozen"]) == (0, 0) and text.count("none") == 2, text
    assert [fired["trigger_id"] for fired in shown["triggers"]] == ["welcome", "final-500"]
    assert re.search(r"fired +welcome +at 0:00\n +final-500 +at 0:\d\d\n", text), text
    assert re.search(r"not fired  away +never above \d+ ft AGL", text), text


def test_programs_get_each_line_and_the_receipt_last(rig):
    program = rig.start("--json", rig.lesson(WELCOME, name="Circuit", briefing="Unseen"),
                        "--data-dir", data_folder_of(rig.programs))
    wait_until(lambda: len(program.output()) > 3, "some lines")
    assert program.end(signal.SIGTERM) == 0
    *lines, receipt = [json.loads(line) for line in program.output()]
    (log,) = rig.logs()
    recorded = [json.loads(line) for line in log.read_text().splitlines()]
    assert lines == recorded[:len(lines)]
    assert (receipt["kind"], receipt["lesson"], receipt["end"]) == ("receipt", "Circuit", "it was interrupted")
    assert receipt["parts"][0]["file"] == str(log) and receipt["missed"] == []
    assert receipt["parts"][0]["samples"] == sum(line["kind"] == "sample" for line in recorded)


def test_its_time_ends_it_and_so_does_a_signal(rig):
    timed = rig.start(rig.lesson(WELCOME, ends={"seconds": 1.5}))
    assert timed.wait() == 0 and "circuit: its time was over" in timed.output()
    program = rig.start(rig.lesson(WELCOME))
    wait_for_fired(program, "welcome")
    assert program.end(signal.SIGINT) == 0
    assert "circuit: it was interrupted" in program.output()


def test_a_lost_connection_ends_nothing_and_costs_nothing(rig):
    """A companion that stands still for longer than the tool waits for an answer."""
    saved = rig.folder / "saved.jsonl"
    program = rig.start(rig.lesson(WELCOME, NEVER), "--timeout", "1", "--save", saved)
    wait_for_fired(program, "welcome")
    rig.companion.program.process.send_signal(signal.SIGSTOP)
    wait_until(lambda: "trying again" in program.errors(), "the loss")
    rig.companion.program.process.send_signal(signal.SIGCONT)
    wait_until(lambda: "the companion is back" in program.errors(), "the return")
    assert program.end(signal.SIGINT) == 0
    (log,) = rig.logs()
    assert saved.read_bytes() == log.read_bytes()
    # Nobody has said where that companion has its data.
    assert "file       on the companion's computer, in the folder Recordings of its data folder" in "\n".join(
        program.output())


def test_a_restarted_companion_is_told_and_what_was_flown_is_kept(programs, fake):
    add_sample_datarefs(fake)
    rig = Rig(programs, fake.port)
    port = rig.companion.port
    program = rig.start(rig.lesson(WELCOME))
    wait_for_fired(program, "welcome")
    time.sleep(1.5)
    assert rig.companion.program.end() == 0
    wait_until(lambda: "trying again" in program.errors(), "that the loss is told")
    rig.companion = programs.companion("--port", port, sim_port=fake.port)
    wait_until(lambda: "the companion was restarted, or another client" in program.errors(), "the warning")
    assert program.end(signal.SIGINT) == 0
    text = "\n".join(program.output())
    assert re.search(r"samples    [1-9]\d* over .*\n", text) and re.search(r"fired +welcome +at 0:00", text), text


def test_another_client_that_starts_the_recording_is_told(rig):
    program = rig.start(rig.lesson(WELCOME, NEVER))
    wait_for_fired(program, "welcome")
    other = rig.companion.client()
    time.sleep(1.5)
    assert other.data("recording_start") == {"ok": True}
    wait_until(lambda: "another client has started the recording anew" in program.errors(), "the warning")
    wait_until(lambda: other.data("catch_up")["samples"], "samples of the new one")
    time.sleep(1.5)
    assert program.end(signal.SIGINT) == 0
    text = "\n".join(program.output())
    assert "recording 1 of 2" in text and "recording 2 of 2" in text, text
    assert "the recording goes on, as this lesson has not started it" in program.errors()
    before = len(other.data("catch_up")["samples"])
    wait_until(lambda: len(other.data("catch_up")["samples"]) > before, "that it goes on")


# The terminal


class Terminal:
    """The tool on a terminal of its own."""

    def __init__(self, rig, *arguments):
        self.controller, self.inner = pty.openpty()
        self.before = termios.tcgetattr(self.inner)
        command = [executable("tarnly-client"), *map(str, rig.arguments), "lesson", *map(str, arguments)]
        self.shown = b""
        self.pid = pty_spawn(command, self.inner, rig.programs.environment())
        os.set_blocking(self.controller, False)

    def text(self):
        with contextlib.suppress(BlockingIOError, OSError):
            while part := os.read(self.controller, 65536):
                self.shown += part
        return self.shown.decode(errors="replace")

    def press(self, key):
        os.write(self.controller, key)

    def mode(self):
        return termios.tcgetattr(self.inner)

    def status(self):
        """The exit status, once it has ended."""
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            self.text()
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            if pid:
                self.pid = None
                return os.waitstatus_to_exitcode(status)
            time.sleep(0.05)
        raise AssertionError(f"it has not ended: {self.text()}")

    def close(self):
        if self.pid:
            os.kill(self.pid, signal.SIGKILL)
            os.waitpid(self.pid, 0)
        os.close(self.controller)
        os.close(self.inner)


def pty_spawn(command, terminal, environment):
    """A process whose controlling terminal it is."""
    pid = os.fork()
    if pid == 0:
        try:
            os.login_tty(terminal) if hasattr(os, "login_tty") else login_tty(terminal)
            os.execve(command[0], command, environment)
        finally:
            os._exit(127)
    return pid


def login_tty(terminal):
    import fcntl
    os.setsid()
    fcntl.ioctl(terminal, termios.TIOCSCTTY, 0)
    for number in (0, 1, 2):
        os.dup2(terminal, number)


@pytest.fixture
def on_terminal(rig):
    return lambda *arguments: rig.programs.close_at_end(Terminal(rig, *arguments))


def redrawings(terminal):
    return len(re.findall("\x1b\\[\\d+A", terminal.text()))


@pytest.mark.parametrize("key", [b"q", b"\n", b"\r"])
def test_a_table_is_redrawn_until_a_key(rig, on_terminal, key):
    terminal = on_terminal(rig.lesson(WELCOME, NEVER, name="Circuit"))
    wait_until(lambda: redrawings(terminal) > 3 and "0:00    welcome" in terminal.text(), "the table")
    assert "328 ft AGL" in terminal.text() and "through 9000 ft AGL, climbing" in terminal.text()
    assert not terminal.mode()[3] & (termios.ICANON | termios.ECHO)
    terminal.press(b"x")
    drawn = redrawings(terminal)
    wait_until(lambda: redrawings(terminal) > drawn + 2, "that another key ends nothing")
    terminal.press(key)
    assert terminal.status() == 0
    assert "Circuit: a key was pressed" in terminal.text()
    assert terminal.mode() == terminal.before


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT])
def test_the_terminal_is_as_it_was_after_a_signal(rig, on_terminal, number):
    terminal = on_terminal(rig.lesson(WELCOME, NEVER))
    wait_until(lambda: redrawings(terminal) > 1, "the table")
    os.kill(terminal.pid, number)
    assert terminal.status() == 0
    assert "circuit: it was interrupted" in terminal.text()
    assert terminal.mode() == terminal.before


def test_a_recording_that_somebody_has_stopped_shows(rig, on_terminal):
    terminal = on_terminal(rig.lesson(WELCOME, NEVER))
    wait_until(lambda: "0:00    welcome" in terminal.text(), "the first sample")
    assert "no sample for" not in terminal.text()
    rig.companion.client().data("recording_stop")
    wait_until(lambda: "connected, no sample for 0:06" in terminal.text(), "that it is told")
    terminal.press(b"q")
    assert terminal.status() == 0


def test_ctrl_c_on_the_terminal_ends_it_with_a_receipt(rig, on_terminal):
    terminal = on_terminal(rig.lesson(WELCOME, NEVER))
    wait_until(lambda: redrawings(terminal) > 1, "the table")
    terminal.press(b"\x03")
    assert terminal.status() == 0
    assert "circuit: it was interrupted" in terminal.text()
    assert terminal.mode() == terminal.before
