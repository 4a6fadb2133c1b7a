"""Recordings on a disk that is full, comes back, or loses its folder: what is said of it, and that nothing is lost."""

import json
import resource
import shutil
import time

import pytest
from hanging_disk import HangingDisk
from harness import Companion, wait_until
from lesson import Recorder, add_sample_datarefs, trigger


@pytest.fixture
def data(programs):
    return programs.new_folder()


@pytest.fixture
def companion(programs, fake, data):
    add_sample_datarefs(fake)
    program = programs.start("tarnlyd", "--port", 0, "--sim-port", fake.port, "--data-dir", data, "--no-advertise")
    return Companion(program, programs)


def start(companion):
    client = companion.client()
    client.data("load_script", {"triggers": [trigger("now", "after_start", seconds=0),
                                             trigger("later", "after_start", seconds=2)]})
    client.data("recording_start")
    return Recorder(client)


def logs(data):
    return sorted((data / "Recordings").glob("*.jsonl"))


def status_of(programs, data):
    return json.loads(programs.run("tarnlyd", "--status", "--data-dir", data).output)


def problem_of(programs, data):
    return status_of(programs, data)["recording"].get("problem")


class Room:
    """How much a companion's files may hold, as on a disk that is full."""

    def __init__(self, companion):
        self._pid = companion.program.pid
        self._usual = resource.prlimit(self._pid, resource.RLIMIT_FSIZE)

    def end_at(self, size):
        resource.prlimit(self._pid, resource.RLIMIT_FSIZE, (size, self._usual[1]))

    def come_back(self):
        resource.prlimit(self._pid, resource.RLIMIT_FSIZE, self._usual)


def assert_whole(log, everything):
    records = [json.loads(line) for line in log.read_text().splitlines()]
    for kind, key in (("sample", "samples"), ("fired", "fired")):
        assert [record[kind] for record in records if record["kind"] == kind] == everything[key]


def fill(companion, data, recorder):
    """Leaves room for half a line; the log that is cut short there."""
    recorder.wait_for_samples(5)
    room = Room(companion)
    [log] = logs(data)
    room.end_at(log.stat().st_size + 100)
    return room, log


def test_a_full_disk_is_said_at_once_and_costs_nothing(programs, companion, data):
    recorder = start(companion)
    room, log = fill(companion, data, recorder)
    problem = wait_until(lambda: problem_of(programs, data), "a problem")
    assert problem.startswith(f"The log {log.name} is not being written: there is no room in {data}/Recordings ")
    said = programs.run("tarnly-client", "status", "--data-dir", data).output
    assert any(line.startswith("Recording for ") and line.endswith(problem) for line in said.splitlines())
    assert companion.program.errors().splitlines() == [f"Tarnly: {problem}"]
    assert not log.read_bytes().endswith(b"\n")
    recorder.wait_for_samples(3)
    room.come_back()
    wait_until(lambda: problem_of(programs, data) is None, "a log that is well")
    recorder.wait_for_samples(1)
    recorder.client.data("recording_stop")
    assert_whole(log, recorder.client.data("catch_up"))
    assert companion.program.errors().splitlines()[1:] == [
        f"Tarnly: The log {log.name} is being written again, and lacks nothing."]


def test_a_log_is_completed_after_its_recording_has_ended(programs, companion, data):
    recorder = start(companion)
    room, log = fill(companion, data, recorder)
    wait_until(lambda: problem_of(programs, data), "a problem")
    asked = time.monotonic()
    recorder.client.data("recording_stop")
    assert time.monotonic() - asked < 9, "nobody waits for a full disk"
    everything = recorder.client.data("catch_up")
    status = status_of(programs, data)
    assert "recording" not in status
    assert [f"The log {log.name} is not being written" in warning for warning in status["warnings"]] == [True]
    room.come_back()
    wait_until(lambda: "warnings" not in status_of(programs, data), "a log that is whole")
    assert_whole(log, everything)


def test_an_end_on_a_full_disk_is_no_hang_and_said(companion, data):
    recorder = start(companion)
    _, log = fill(companion, data, recorder)
    recorder.wait_for_samples(2)
    assert companion.program.end() == 0
    assert companion.program.errors().splitlines()[-1] == (
        f"Tarnly: The log {log.name} stays as it is: it lacks what was recorded last.")


def test_a_folder_that_is_removed_is_said_at_once_and_made_by_the_next_recording(programs, companion, data):
    recorder = start(companion)
    recorder.wait_for_samples(1)
    shutil.rmtree(data / "Recordings")
    problem = wait_until(lambda: problem_of(programs, data), "a problem")
    assert f"there is no folder {data}/Recordings. Make it again, as the next recording does" in problem
    recorder.wait_for_samples(3)
    assert problem_of(programs, data) == problem and not (data / "Recordings").exists()
    recorder.client.data("recording_stop")
    everything = recorder.client.data("catch_up")
    start(companion).wait_for_samples(1)
    assert problem_of(programs, data) is None
    wait_until(lambda: len(logs(data)) == 2, "both logs")
    wait_until(lambda: "warnings" not in status_of(programs, data), "the log of the first recording")
    assert_whole(logs(data)[0], everything)


def test_a_folder_that_is_removed_is_said_though_no_sample_comes(programs, data):
    companion = Companion(programs.start("tarnlyd", "--port", 0, "--sim-port", 1, "--data-dir", data, "--no-advertise"),
                          programs)
    companion.client().data("recording_start")
    wait_until(lambda: logs(data), "a log")
    shutil.rmtree(data / "Recordings")
    problem = wait_until(lambda: problem_of(programs, data), "a problem")
    assert f"there is no folder {data}/Recordings" in problem
    wait_until(lambda: problem in companion.program.errors(), "the problem on standard error")


def test_a_disk_that_hangs_is_said_and_costs_nothing(programs, fake, data, tmp_path):
    add_sample_datarefs(fake)
    disk = HangingDisk(tmp_path)
    companion = Companion(programs.start("tarnlyd", "--port", 0, "--sim-port", fake.port, "--data-dir", data,
                                         "--no-advertise", **disk.environment), programs)
    recorder = start(companion)
    recorder.wait_for_samples(1)
    disk.hang("write")
    recorder.catch_up()
    problem = wait_until(lambda: problem_of(programs, data), "a problem")
    [log] = logs(data)
    assert problem.startswith(f"The log {log.name} is not being written: the disk does not answer. ")
    recorder.wait_for_samples(2)
    assert companion.program.errors().splitlines() == [f"Tarnly: {problem}"]
    disk.come_back()
    wait_until(lambda: problem_of(programs, data) is None, "a disk that answers")
    wait_until(lambda: companion.program.errors().splitlines()[1:] == [
        f"Tarnly: The log {log.name} is being written again, and lacks nothing."], "the end of the problem")
    recorder.client.data("recording_stop")
    assert_whole(log, recorder.client.data("catch_up"))


def test_a_log_that_is_removed_is_made_anew(programs, companion, data):
    recorder = start(companion)
    recorder.wait_for_samples(3)
    [log] = logs(data)
    log.unlink()
    wait_until(lambda: logs(data) == [log], "the log")
    recorder.client.data("recording_stop")
    assert_whole(log, recorder.client.data("catch_up"))


def test_without_a_folder_the_answer_is_ok_and_the_status_says_why(programs, companion, data):
    (data / "Recordings").rmdir()
    (data / "Recordings").write_text("not a folder")
    recorder = start(companion)
    assert f"there is no folder {data}/Recordings" in problem_of(programs, data)
    assert status_of(programs, data)["recording"]["file"] == ""
    recorder.wait_for_samples(2)
    (data / "Recordings").unlink()
    (data / "Recordings").mkdir()
    wait_until(lambda: problem_of(programs, data) is None, "a log")
    recorder.client.data("recording_stop")
    assert_whole(logs(data)[0], recorder.client.data("catch_up"))
