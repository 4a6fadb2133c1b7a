"""What recordings leave on the disk, also when the companion is killed in the middle of one."""

import contextlib
import json
import os
import random
import re
import signal
import stat
import subprocess
import time
from datetime import datetime, timedelta, timezone

import pytest
from hanging_disk import HangingDisk
from harness import Companion, is_instrumented, wait_until
from lesson import SAMPLE, Recorder, add_sample_datarefs, trigger

FILE_NAME = re.compile(r"session-(\d{4}-\d\d-\d\dT\d{6})Z\.jsonl")
SAMPLE_KEYS = ["elapsed_s", "lat", "lon", "alt_ft", "agl_ft", "gear_down", "throttle_ratio", "mixture_ratio",
               "prop_ratio", "flap_ratio", "gear_ratio", "bank_deg", "pitch_deg", "autopilot_on"]
FIRED_KEYS = ["trigger_id", "elapsed_s", "action_kind"]


@pytest.fixture
def flight(fake):
    add_sample_datarefs(fake)
    return fake


@pytest.fixture
def data(programs):
    """The data folder of the companion."""
    return programs.new_folder()


@pytest.fixture
def companion(programs, flight, data):
    return start_companion(programs, flight, data)


def start_companion(programs, flight, folder, **environment):
    program = programs.start("tarnlyd", "--port", 0, "--sim-port", flight.port, "--data-dir", folder,
                             "--no-advertise", **environment)
    return Companion(program, programs)


def logs(folder):
    return sorted((folder / "Recordings").iterdir())


def begun_logs(folder):
    """The logs once there is one: behind a slow disk a recording begins before its file."""
    wait_until(lambda: logs(folder), "a log")
    return logs(folder)


def start(client, *triggers):
    client.data("load_script", {"triggers": list(triggers)})
    client.data("recording_start")
    return Recorder(client)


def read_log(path):
    """The records of a whole log."""
    text = path.read_bytes().decode()
    assert text == "" or text.endswith("\n")
    return [json.loads(line) for line in text.splitlines()]


def whole_records(path):
    """The records of a log that is being written."""
    return [json.loads(line) for line in path.read_bytes().split(b"\n")[:-1]]


def of_kind(kind, records):
    return [record[kind] for record in records if record["kind"] == kind]


def assert_log_holds(path, everything):
    records = read_log(path)
    assert {"samples": of_kind("sample", records), "fired": of_kind("fired", records)} == everything


@contextlib.contextmanager
def file_mode_mask(mask):
    before = os.umask(mask)
    try:
        yield
    finally:
        os.umask(before)


# The log


def test_the_log_says_what_catch_up_says(companion, data):
    client = companion.client()
    recorder = start(client, trigger("a/b", "after_start", "say/it", seconds=0),
                     trigger("later", "after_start", seconds=0.8))
    recorder.wait_for_fired("later")
    recorder.wait_for_samples(1)
    client.data("recording_stop")
    [log] = begun_logs(data)
    assert_log_holds(log, client.data("catch_up"))


def test_lines_are_compact_and_their_keys_in_order(companion, data):
    recorder = start(companion.client(), trigger("a/b", "after_start", "ü/✈", seconds=0))
    recorder.wait_for_samples(2)
    recorder.client.data("recording_stop")
    [log] = begun_logs(data)
    lines = log.read_text(encoding="utf-8").splitlines()
    elapsed = [json.loads(line)["sample"]["elapsed_s"] for line in (lines[0], lines[2])]
    sample = ('{"kind":"sample","sample":{"elapsed_s":%s,"lat":47.4581,"lon":8.5481,"alt_ft":1416.5,'
              '"agl_ft":328.084,"gear_down":true,"throttle_ratio":[0.5,0.75],"mixture_ratio":[1,1],'
              '"prop_ratio":[1,1],"flap_ratio":0.5,"gear_ratio":1,"bank_deg":-0.25,"pitch_deg":2.5,'
              '"autopilot_on":false}}')
    fired = r'{"kind":"fired","fired":{"trigger_id":"a\/b","elapsed_s":%s,"action_kind":"ü\/✈"}}'
    assert lines[:3] == [sample % elapsed[0], fired % elapsed[0], sample % elapsed[1]]


def test_a_trigger_stands_after_its_sample_and_before_the_next(companion, data):
    count = 50
    recorder = start(companion.client(), *(
        trigger(f"{number:02}", "after_start", seconds=number // 10 * 0.5) for number in range(count)))
    recorder.wait_for(lambda: len(recorder.fired) == count, "all triggers")
    recorder.client.data("recording_stop")
    latest = None
    for record in read_log(begun_logs(data)[0]):
        kind = record["kind"]
        assert list(record) == ["kind", kind]
        assert list(record[kind]) == (SAMPLE_KEYS if kind == "sample" else FIRED_KEYS)
        if kind == "sample":
            assert latest is None or record[kind]["elapsed_s"] > latest
            latest = record[kind]["elapsed_s"]
        else:
            assert record[kind]["elapsed_s"] == latest


def test_what_is_missing_has_no_key(programs, fake, data):
    fake.add("sim/flightmodel/misc/h_ind", 1200)
    recorder = start(start_companion(programs, fake, data).client())
    recorder.wait_for_samples(1)
    recorder.client.data("recording_stop")
    record = read_log(begun_logs(data)[0])[0]
    assert record == {"kind": "sample", "sample": {
        "elapsed_s": recorder.samples[0]["elapsed_s"], "alt_ft": 1200}}


def test_what_a_client_can_see_is_on_the_disk_a_moment_later(companion, data):
    recorder = start(companion.client(), *(trigger(f"{n}", "after_start", seconds=n / 4) for n in range(8)))
    [log] = begun_logs(data)

    def is_written():
        records = whole_records(log)
        return (of_kind("sample", records)[:len(recorder.samples)] == recorder.samples
                and of_kind("fired", records)[:len(recorder.fired)] == recorder.fired)

    for _ in range(5):
        recorder.wait_for_samples(1)
        wait_until(is_written, "what the client has seen")


def test_after_the_stop_the_log_grows_no_more(companion, data):
    client = companion.client()
    recorder = start(client, trigger("now", "after_start", seconds=0))
    recorder.wait_for_samples(1)
    client.data("recording_stop")
    [log] = begun_logs(data)
    before = log.read_bytes()
    assert client.is_quiet(1.2)
    assert log.read_bytes() == before
    client.data("recording_stop")
    assert logs(data) == [log]


# The file


@pytest.mark.parametrize("zone", ["UTC", "Pacific/Kiritimati"])
def test_a_log_is_named_after_its_start_in_utc(programs, flight, data, zone):
    client = start_companion(programs, flight, data, TZ=zone).client()
    before = datetime.now(timezone.utc)
    client.data("recording_start")
    after = datetime.now(timezone.utc)
    [log] = begun_logs(data)
    named = datetime.strptime(FILE_NAME.fullmatch(log.name).group(1), "%Y-%m-%dT%H%M%S")
    assert before - timedelta(seconds=1) < named.replace(tzinfo=timezone.utc) <= after


@pytest.mark.parametrize("mask", [0, 0o022, 0o077])
def test_only_the_owner_can_read_recordings(programs, flight, data, mask):
    with file_mode_mask(mask):
        companion = start_companion(programs, flight, data)
    companion.client().data("recording_start")
    assert stat.S_IMODE((data / "Recordings").stat().st_mode) == 0o700
    assert [stat.S_IMODE(log.stat().st_mode) for log in begun_logs(data)] == [0o600]


def test_folders_on_the_way_are_made_and_private(programs, flight, data):
    with file_mode_mask(0):
        companion = start_companion(programs, flight, data / "new" / "deep")
    companion.client().data("recording_start")
    for folder in (data / "new", data / "new" / "deep", data / "new" / "deep" / "Recordings"):
        assert stat.S_IMODE(folder.stat().st_mode) == 0o700
    assert len(begun_logs(data / "new" / "deep")) == 1


def test_a_recording_of_a_later_second_leaves_the_earlier_log_alone(companion, data):
    client = companion.client()
    recorder = start(client)
    recorder.wait_for_samples(1)
    client.data("recording_stop")
    [first], finished = begun_logs(data), client.data("catch_up")
    second = int(time.time())
    while int(time.time()) == second:
        time.sleep(0.02)
    recorder = start(client)
    recorder.wait_for_samples(1)
    client.data("recording_stop")
    earlier, later = logs(data)
    assert earlier == first
    assert_log_holds(earlier, finished)
    assert_log_holds(later, client.data("catch_up"))


def test_a_recording_started_again_within_the_second_leaves_the_earlier_log_alone(companion, data):
    client = companion.client()
    held = []
    for _ in range(3):
        recorder = start(client, trigger("now", "after_start", seconds=0))
        recorder.wait_for_samples(1)
        client.data("recording_stop")
        held.append(client.data("catch_up"))
    assert len(logs(data)) == 3
    for log, everything in zip(sorted(logs(data), key=lambda log: log.stat().st_mtime_ns), held):
        assert_log_holds(log, everything)


def test_an_empty_log_of_the_second_is_used_again(companion, data):
    client = companion.client()
    start(client)
    for _ in range(20):
        client.data("recording_start")
    recorder = Recorder(client)
    recorder.wait_for_samples(2)
    client.data("recording_stop")
    # Twenty starts take less than a second, so that they share names, but a second may end among them, and a sample
    # come.
    assert len(logs(data)) < 20
    assert_log_holds(max(logs(data), key=lambda log: log.stat().st_size), client.data("catch_up"))


def start_goes_on_in_memory(companion):
    client = companion.client()
    recorder = start(client, trigger("now", "after_start", seconds=0))
    recorder.wait_for_samples(2)
    assert recorder.fired_ids() == ["now"]
    client.data("recording_stop")
    everything = client.data("catch_up")
    assert len(everything["samples"]) >= 2 and everything["fired"] == recorder.fired
    assert {k: v for k, v in everything["samples"][0].items() if k != "elapsed_s"} == SAMPLE


def test_with_a_file_in_place_of_the_folder_recordings_are_in_memory_only(programs, flight, data):
    (data / "Recordings").write_text("not a folder")
    start_goes_on_in_memory(start_companion(programs, flight, data))
    assert (data / "Recordings").read_text() == "not a folder"


def test_when_the_folder_has_gone_the_next_recording_makes_it_again(companion, data):
    client = companion.client()
    (data / "Recordings").rmdir()
    start(client).wait_for_samples(1)
    client.data("recording_stop")
    [log] = logs(data)
    assert stat.S_IMODE((data / "Recordings").stat().st_mode) == 0o700
    assert_log_holds(log, client.data("catch_up"))


def test_names_that_are_taken_by_folders_are_passed_over(companion, data):
    now = datetime.now(timezone.utc)
    taken = [data / "Recordings" / (now + timedelta(seconds=n)).strftime("session-%Y-%m-%dT%H%M%SZ.jsonl")
             for n in range(-1, 300)]
    for folder in taken:
        folder.mkdir()
    client = companion.client()
    start(client).wait_for_samples(1)
    client.data("recording_stop")
    assert all(folder.is_dir() for folder in taken)
    [log] = [log for log in logs(data) if log.is_file()]
    assert_log_holds(log, client.data("catch_up"))


# A slow disk


SLOW_WRITE = """
#include <dlfcn.h>
#include <unistd.h>
#include <cstdio>
#include <cstring>

extern "C" ssize_t write(int file, const void* bytes, size_t size) {
    char link[64];
    char path[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = readlink(link, path, sizeof path);
    if (length > 6 && std::memcmp(path + length - 6, ".jsonl", 6) == 0) usleep(3000000);
    static const auto next = reinterpret_cast<ssize_t (*)(int, const void*, size_t)>(dlsym(RTLD_NEXT, "write"));
    return next(file, bytes, size);
}
"""


@pytest.fixture
def slow_disk(tmp_path):
    """A library on which each write to a log takes three seconds."""
    if is_instrumented():
        pytest.skip("a sanitizer has to be loaded first")
    source, library = tmp_path / "slow.cpp", tmp_path / "slow.so"
    source.write_text(SLOW_WRITE)
    subprocess.run(["c++", "-D_GNU_SOURCE", "-shared", "-fPIC", "-o", library, source, "-ldl"], check=True)
    return library


def test_nobody_waits_for_a_slow_disk_but_who_ends_the_recording(programs, flight, data, slow_disk):
    companion = start_companion(programs, flight, data, LD_PRELOAD=slow_disk)
    client, other = companion.client(), companion.client()
    recorder = start(client, trigger("now", "after_start", seconds=0))
    longest = 0
    begin = time.monotonic()
    while time.monotonic() < begin + 7:  # more than two writes
        asked = time.monotonic()
        other.data("sim_info")
        longest = max(longest, time.monotonic() - asked)
    recorder.catch_up()
    assert len(recorder.samples) >= 8
    assert longest < 2.5, f"an answer took {longest:.2f} s"
    client.data("recording_stop")
    assert_log_holds(logs(data)[0], client.data("catch_up"))


def test_the_end_of_the_program_waits_for_a_slow_disk(programs, flight, data, slow_disk):
    companion = start_companion(programs, flight, data, LD_PRELOAD=slow_disk)
    recorder = start(companion.client())
    recorder.wait_for_samples(3)
    assert companion.program.end() == 0
    records = read_log(begun_logs(data)[0])
    assert of_kind("sample", records)[:len(recorder.samples)] == recorder.samples


# The companion's end


def records_of_a_torn_log(path):
    """All records; only the last line may lack something."""
    lines = path.read_bytes().split(b"\n")
    records = [json.loads(line) for line in lines[:-1]]
    with contextlib.suppress(ValueError):
        records.append(json.loads(lines[-1]))
    return records


def kill(folder, program, recorder):
    """Ends the companion in the middle of a recording; its log has all that was told by then, but the last beat."""
    program.expected_status = -signal.SIGKILL
    assert program.end(signal.SIGKILL) == -signal.SIGKILL
    [log] = begun_logs(folder)
    records = records_of_a_torn_log(log)
    samples, fired = of_kind("sample", records), of_kind("fired", records)
    assert len(records) == len(samples) + len(fired)
    assert len(samples) >= len(recorder.samples) - 1
    common = min(len(samples), len(recorder.samples))
    assert samples[:common] == recorder.samples[:common]
    begun = samples[-1]["elapsed_s"] if samples else 0
    assert [event for event in recorder.fired if event["elapsed_s"] < begun and event not in fired] == []


@pytest.mark.parametrize("number", range(int(os.environ.get("TARNLY_KILL_ROUNDS", 10))))
def test_a_kill_costs_the_last_beat_at_most(programs, flight, number):
    """Ten companions a round, each killed while it writes: many triggers fire on every sample. With a hundred rounds
    (`TARNLY_KILL_ROUNDS`) these are a thousand kills."""
    side_by_side = 2 if is_instrumented() else 10
    chance = random.Random(number)
    script = [trigger(f"{n}", "after_start", "x" * 200, seconds=n % 3 * 0.5) for n in range(300)]
    folders = [programs.new_folder() for _ in range(side_by_side)]
    started = [programs.start("tarnlyd", "--port", 0, "--sim-port", flight.port, "--data-dir", folder, "--no-advertise")
               for folder in folders]
    recorders = [start(Companion(program, programs).client(), *script) for program in started]
    for folder, program, recorder in zip(folders, started, recorders):
        recorder.wait_for(lambda: recorder.samples, "a sample")
        for _ in range(chance.randrange(3)):
            recorder.catch_up()
        kill(folder, program, recorder)


def test_a_kill_while_the_disk_is_made_to_keep_lines_costs_no_more(programs, flight, data, tmp_path):
    disk = HangingDisk(tmp_path)
    companion = start_companion(programs, flight, data, **disk.environment)
    recorder = start(companion.client())
    recorder.wait_for_samples(1)
    disk.hang("flush")
    recorder.catch_up()
    recorder.wait_for_samples(4)
    kill(data, companion.program, recorder)


def test_a_signal_to_end_leaves_a_whole_log(companion, data):
    recorder = start(companion.client(), *(
        trigger(f"{n}", "after_start", seconds=n / 50) for n in range(100)))
    recorder.wait_for_samples(3)
    assert companion.program.end() == 0
    records = read_log(begun_logs(data)[0])
    assert of_kind("sample", records)[:len(recorder.samples)] == recorder.samples
    assert of_kind("fired", records)[:len(recorder.fired)] == recorder.fired


def test_a_companion_that_was_killed_begins_with_nothing_and_keeps_the_old_log(programs, flight, data):
    first = start_companion(programs, flight, data)
    recorder = start(first.client(), trigger("now", "after_start", seconds=0))
    recorder.wait_for_samples(1)
    first.program.expected_status = -signal.SIGKILL
    first.program.end(signal.SIGKILL)
    [log] = begun_logs(data)
    before = log.read_bytes()
    client = start_companion(programs, flight, data).client()
    assert client.data("catch_up") == {"samples": [], "fired": []}
    assert logs(data) == [log] and log.read_bytes() == before
