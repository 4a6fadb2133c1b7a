"""The display goes in the middle of a lesson: the companion goes on without windows until that is over."""

import json
import shutil
import signal
import subprocess
import time

import pytest
from client import Client
from harness import executable, wait_until
from lesson import Recorder, add_sample_datarefs

# Samples are taken each half second; one that is missing leaves a gap of a whole one.
WITHOUT_GAP = 0.9
LONGER_THAN_UNUSED = 7
GOES_ON = "the companion goes on without windows"


def start_x11(programs, _runtime):
    server = programs.start("/usr/bin/Xvfb", "-displayfd", 1, "-nolisten", "tcp", "-ac")
    number = server.wait_for_line(r"^(\d+)$").group(1)
    return server, {"DISPLAY": f":{number}", "QT_QPA_PLATFORM": "xcb"}


def start_wayland(programs, runtime):
    program = shutil.which("weston")
    if program is None:
        pytest.skip("weston is not installed (scripts/setup --developer)")
    server = programs.start(program, "--backend=headless-backend.so", "--socket=display", "--no-config",
                            "--idle-time=0", XDG_RUNTIME_DIR=str(runtime))
    wait_until((runtime / "display").exists, "the compositor")
    return server, {"WAYLAND_DISPLAY": "display", "QT_QPA_PLATFORM": "wayland"}


class Login:
    """A display, and a tarnly on it whose panel is open, as there is no tray."""

    def __init__(self, programs, start_display, sim_port):
        self._programs = programs
        runtime = programs.new_folder()
        runtime.chmod(0o700)
        self.server, environment = start_display(programs, runtime)
        self.data = programs.new_folder()
        self.program = programs.start(
            "tarnly", "--no-advertise", "--sim-port", sim_port, "--data-dir", self.data,
            XDG_RUNTIME_DIR=str(runtime), DBUS_SESSION_BUS_ADDRESS=f"unix:path={self.data}/no-bus", **environment)
        self.port = wait_until(lambda: self._told().get("port"), "the port")

    def _told(self):
        asked = subprocess.run([executable("tarnly"), "--status", "--data-dir", self.data], text=True,
                               capture_output=True, timeout=60, check=False)
        return json.loads(asked.stdout or "{}")

    def client(self):
        client = self._programs.close_at_end(Client(self.port))
        client.pair(None)
        return client

    def lose_display(self):
        self.server.expected_status = -signal.SIGKILL
        self.program.expected_status = 1  # Qt's, which ends it
        self.server.end(signal.SIGKILL)

    def wait_for_error(self, text):
        wait_until(lambda: text in self.program.errors(), f"{text!r} on standard error")


@pytest.fixture(params=[start_x11, start_wayland], ids=["X11", "Wayland"])
def login(request, programs, fake):
    add_sample_datarefs(fake)
    return Login(programs, request.param, fake.port)


def test_a_recording_and_its_client_lose_nothing(login):
    client = login.client()
    client.data("recording_start")
    recorder = Recorder(client)
    recorder.wait_for_samples(2)
    login.lose_display()
    login.wait_for_error(GOES_ON)
    recorder.wait_for_samples(6)
    times = [sample["elapsed_s"] for sample in recorder.samples]
    assert max(later - earlier for earlier, later in zip(times, times[1:])) < WITHOUT_GAP, times

    # Who comes back finds the lesson, however late, as it is recorded.
    client.close()
    time.sleep(LONGER_THAN_UNUSED)
    other = login.client()
    assert [sample["elapsed_s"] for sample in other.data("catch_up")["samples"]][:len(times)] == times
    other.data("recording_stop")
    log, = (login.data / "Recordings").iterdir()
    recorded = [json.loads(line) for line in log.read_text().splitlines()]
    assert [line["sample"]["elapsed_s"] for line in recorded if "sample" in line][:len(times)] == times
    other.close()
    assert login.program.wait() == 1
    assert "the display has gone, and the companion has ended" in login.program.errors()


def test_a_signal_ends_it_without_a_display_too(login):
    login.client()
    login.lose_display()
    login.wait_for_error(GOES_ON)
    started = time.monotonic()
    assert login.program.end() == 1
    assert time.monotonic() - started < 5


def test_without_a_lesson_it_ends_with_the_display(login):
    login.lose_display()
    assert login.program.wait() == 1
    assert GOES_ON not in login.program.errors()


def test_the_end_of_its_terminal_is_not_its_own(login):
    client = login.client()
    login.program.process.send_signal(signal.SIGHUP)
    assert client.data("sim_info")["sim"] == "xplane"
    client.close()
