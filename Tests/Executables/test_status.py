"""How a companion stands, told to other programs: the status file, --status, and tarnly-client status."""

import json
import os
import re
import signal
import stat
import threading
import time
from datetime import datetime
from pathlib import Path

import pytest
from fake_simulator import DATAREFS
from harness import wait_until

CURE = ("; start tarnly or tarnlyd, or name another folder by --data-dir; why tarnlyd does not stay is told by "
        "journalctl --user -u tarnlyd")


def folder_of(companion):
    arguments = companion.program.process.args
    return Path(arguments[arguments.index("--data-dir") + 1])


def status_of(programs, companion):
    ended = programs.run("tarnlyd", "--status", "--data-dir", folder_of(companion))
    assert ended.status == 0 and ended.errors == "", ended
    assert len(ended.output.splitlines()) == 1
    return json.loads(ended.output)


class StatusFile:
    def __init__(self, path):
        self.path = path

    def text(self):
        """Absent while there is none."""
        try:
            return self.path.read_text()
        except FileNotFoundError:
            return None

    def wait_for(self, condition, what):
        """The first status that `condition` holds for."""
        def look():
            text = self.text()
            return text and condition(status := json.loads(text)) and status

        return wait_until(look, lambda: f"{what}; there is {self.text()}")


@pytest.fixture
def status_file(programs):
    return StatusFile(programs.new_folder() / "status.json")


@pytest.fixture
def told(programs, fake, status_file):
    """A companion of the fake simulator that keeps a status file."""
    return programs.companion("--status-file", status_file.path, sim_port=fake.port)


def test_the_status_file_has_every_key(told, status_file):
    status = status_file.wait_for(lambda status: "port" in status, "a port")
    assert status["version"] == "0.1"
    assert status["running"] is True
    assert status["words"] == told.status_line
    assert status["port"] == told.port
    assert all(re.fullmatch(rf"ws://\S+:{told.port}", address) for address in status["addresses"])
    assert status["published"] == {"state": "off"}
    assert status["stage"].keys() >= {"name", "words", "advice"}
    assert status["stage"]["words"].startswith("Simulator: ")
    assert status["pairing"] == "open"
    assert status["sources"].keys() == {"sim_host", "sim_port"}
    assert status["clients"] == {"paired": 0, "connected": 0}
    assert "recording" not in status and "visitors" not in status
    assert status["data_folder"] == str(folder_of(told))


def test_the_status_file_is_one_line_for_its_owner(told, status_file):
    status_file.wait_for(lambda status: "port" in status, "a port")
    text = status_file.text()
    assert text.endswith("}\n") and text.count("\n") == 1
    assert stat.S_IMODE(status_file.path.stat().st_mode) == 0o600


def test_the_status_file_follows_clients_and_a_recording(told, status_file):
    told.client(paired=False)
    client = told.client()
    both = {"paired": 1, "connected": 2}
    clients = status_file.wait_for(lambda status: both.items() <= status["clients"].items(), "two clients")["clients"]
    listed, = clients["list"]
    assert listed["address"] == "127.0.0.1"
    assert abs(datetime.fromisoformat(listed["since"].replace("Z", "+00:00")).timestamp() - time.time()) < 120
    client.data("recording_start")
    recording = status_file.wait_for(lambda status: status.get("recording", {}).get("file"),
                                     "a recording with its file")["recording"]
    assert re.fullmatch(r".*/Recordings/session-\d{4}-\d\d-\d\dT\d{6}Z\.jsonl", recording["file"])
    assert os.path.exists(recording["file"])
    status_file.wait_for(lambda status: status["recording"]["running_for_s"] > recording["running_for_s"],
                         "a longer recording")
    client.data("recording_stop")
    status_file.wait_for(lambda status: "recording" not in status, "the end of the recording")
    client.close()
    status_file.wait_for(lambda status: status["clients"]["paired"] == 0, "no client")


def test_a_recording_tells_its_samples(told, status_file, fake):
    for leaf in ("latitude", "longitude", "elevation", "y_agl"):
        fake.add(f"sim/flightmodel/position/{leaf}", 1)
    told.client().data("recording_start")
    status = status_file.wait_for(lambda status: status.get("recording", {}).get("samples", 0) > 1, "samples")
    assert status["recording"]["last_sample_age_s"] >= 0


def test_a_reader_never_sees_half_a_file(told, status_file):
    status_file.wait_for(lambda status: "port" in status, "a port")
    told.client().data("recording_start")  # changes every second from now on
    seen, wrong, is_over = set(), [], threading.Event()

    def read():
        while not is_over.is_set():
            text = status_file.text()
            try:
                assert text.endswith("}\n")
                seen.add(json.loads(text).get("recording", {}).get("running_for_s"))
            except (AssertionError, AttributeError, ValueError):
                wrong.append(text)

    reader = threading.Thread(target=read)
    reader.start()
    try:
        wait_until(lambda: wrong or len(seen) > 3, "changes")
    finally:
        is_over.set()
        reader.join()
    assert wrong == []


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_at_the_end_the_status_file_says_so(told, status_file, number):
    status_file.wait_for(lambda status: status["running"], "a companion")
    assert told.program.end(number) == 0
    last = json.loads(status_file.text())
    assert last["running"] is False and last["words"] == "Tarnly has ended."
    assert not last.keys() & {"port", "published", "stage", "recording"}
    assert [entry.name for entry in status_file.path.parent.iterdir()] == [status_file.path.name]


def test_a_failed_start_stands_in_the_status_file(programs, told, status_file):
    other = StatusFile(programs.new_folder() / "status.json")
    ended = programs.run("tarnlyd", "--port", told.port, "--no-advertise", "--data-dir", programs.new_folder(),
                         "--status-file", other.path)
    assert ended.status == 1
    last = json.loads(other.text())
    assert last["running"] is False and last["words"] == ended.error_lines[-1]


def test_a_status_file_that_cannot_be_written_is_told_and_costs_nothing(programs, fake):
    blocked = programs.new_folder() / "file"
    blocked.write_text("")
    path = blocked / "status.json"
    companion = programs.companion("--status-file", path, sim_port=fake.port)
    wait_until(companion.program.errors, "a complaint")
    lines = companion.program.errors().splitlines()
    assert len(lines) == 1 and lines[0].startswith(f"Tarnly: the status file {path} cannot be written: ")
    assert lines[0].endswith("; name one by --status-file in a folder that you may write to")
    assert companion.client().data("sim_info")["sim"] == "xplane"


def test_who_asks_gets_the_same_object(programs, told, status_file):
    told.client()
    expected = status_file.wait_for(lambda status: status["clients"]["paired"] == 1, "a client")
    asked = status_of(programs, told)
    del expected["stage"], asked["stage"]  # which goes its own way
    assert asked == expected


def test_it_is_told_while_the_simulator_does_not_answer(programs, told, fake):
    client = told.client()
    with fake.holding(DATAREFS):
        client.post("dataref_subscribe_values", {"datarefs": [{"name": "sim/a"}]})
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
        assert status_of(programs, told)["clients"]["paired"] == 1


@pytest.mark.parametrize("name", ["tarnlyd", "tarnly"])
def test_where_none_runs_status_says_what_to_do(programs, name):
    folder = programs.new_folder()
    ended = programs.run(name, "--status", "--data-dir", folder)
    assert (ended.status, ended.output) == (1, "")
    assert ended.error_lines == [f"{name}: no companion runs on the data folder {folder}{CURE}"]


def test_one_that_hangs_is_not_waited_for_for_ever(programs, told):
    told.program.process.send_signal(signal.SIGSTOP)
    try:
        ended = programs.run("tarnlyd", "--status", "--data-dir", folder_of(told))
    finally:
        told.program.process.send_signal(signal.SIGCONT)
    assert ended.status == 1
    assert ended.error_lines == [f"tarnlyd: the companion on the data folder {folder_of(told)} does not answer; "
                                 "end it, and start it again"]


def test_a_second_companion_on_the_same_folder_is_refused(programs, fake):
    first = programs.companion("--status-file", programs.folder / "status.json", sim_port=fake.port)
    folder = folder_of(first)
    second = programs.run("tarnlyd", "--sim-port", fake.port, "--no-advertise", "--data-dir", folder,
                          "--status-file", programs.folder / "status.json")
    assert (second.status, second.output) == (1, "")
    assert second.error_lines == [
        f"Failed to start: the data folder {folder} is in use by process {first.program.pid}; end that companion, or "
        "give this one a folder of its own by --data-dir"]
    assert status_of(programs, first)["port"] == first.port
    assert json.loads((programs.folder / "status.json").read_text())["running"] is True


def test_what_a_killed_companion_left_behind_is_replaced(programs, fake):
    killed = programs.companion(sim_port=fake.port)
    killed.program.expected_status = -signal.SIGKILL
    assert killed.program.end(signal.SIGKILL) == -signal.SIGKILL
    folder = folder_of(killed)
    assert (folder / "status.socket").is_socket()
    assert programs.run("tarnlyd", "--status", "--data-dir", folder).status == 1
    again = programs.start("tarnlyd", "--sim-port", fake.port, "--no-advertise", "--data-dir", folder)
    port = int(again.wait_for_line(r"^Listening on port (\d+)").group(1))
    ended = programs.run("tarnlyd", "--status", "--data-dir", folder)
    assert json.loads(ended.output)["port"] == port
    assert again.errors() == ""


def test_the_client_says_it_in_the_same_words(programs, told):
    told.client().data("recording_start")
    ended = programs.run("tarnly-client", "status", "--data-dir", folder_of(told))
    assert ended.status == 0 and ended.errors == "", ended
    lines = ended.output.splitlines()
    status = status_of(programs, told)
    assert lines[0] == told.status_line
    assert lines[1] == "Not published by DNS-SD."
    assert lines[3].startswith("Simulator: ") and lines[3].endswith(".")
    assert lines[4] == "1 client is paired."
    assert re.fullmatch(r"Recording for \d+:\d\d(, no samples yet)?\.", lines[5])
    assert lines[6] == f"Data folder: {folder_of(told)}"
    as_json = programs.run("tarnly-client", "--json", "status", "--data-dir", folder_of(told))
    assert json.loads(as_json.output).keys() == status.keys()


def test_the_client_says_what_to_do_where_none_runs(programs):
    folder = programs.new_folder()
    ended = programs.run("tarnly-client", "status", "--data-dir", folder)
    assert ended.status == 1
    assert ended.error_lines == [f"tarnly-client: no companion runs on the data folder {folder}{CURE}"]


def test_without_a_folder_it_is_the_usual_one(programs, fake):
    program = programs.start("tarnlyd", "--sim-port", fake.port, "--no-advertise")
    port = int(program.wait_for_line(r"^Listening on port (\d+)").group(1))
    for name, arguments in (("tarnlyd", ["--status"]), ("tarnly-client", ["--json", "status"])):
        assert json.loads(programs.run(name, *arguments).output)["port"] == port


def test_the_published_name_is_told(programs, fake):
    # No daemon is there: that is told, with what helps.
    companion = programs.companion(sim_port=fake.port, advertise=True)
    published = wait_until(lambda: (status := status_of(programs, companion)["published"])["state"] != "publishing"
                           and status, "the reason")
    assert published["state"] == "not_published"
    assert published["reason"].startswith("the DNS-SD daemon (Avahi) cannot be reached: ")
    assert published["reason"].endswith("; install or start avahi-daemon")
