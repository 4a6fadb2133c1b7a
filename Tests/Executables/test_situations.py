"""Saved flights, listed and loaded; and the navigation database's way in."""

import contextlib
import json
import os
import re
import sqlite3
import subprocess
import time
from types import SimpleNamespace

import pytest
from command_port import datagram_for
from harness import is_instrumented, wait_until
from lesson import loopback_address, trigger
from nav_database import write_nav_database

SECONDS_FROM_1970_TO_2001 = 978307200


@pytest.fixture
def situations(programs):
    folder = programs.new_folder() / "situations"
    folder.mkdir()
    return folder


@pytest.fixture
def client(programs, situations):
    return programs.companion("--situations", situations).client()


def listed(client):
    data = client.data("list_flights")
    assert set(data) == {"flights"}
    assert all(set(flight) == {"name", "path", "modified_at"} for flight in data["flights"])
    return data["flights"]


def names(client):
    return sorted(flight["name"] for flight in listed(client))


# Listing


def test_what_ends_in_sit_is_listed_and_nothing_else(client, situations):
    for name in ("a.sit", "b.txt", "c.SIT", "d.Sit", "e.sit.bak", "f.sitx", "g", "sit", ".sit", "hsit",
                 "i.sit ", "Pattern 1.sit", "two.dots.sit", ".hidden.sit", "über ✈ \"x\".sit"):
        (situations / name).touch()
    folder = situations / "archive.sit"
    folder.mkdir()
    (folder / "inside.sit").touch()
    (situations / "dangling.sit").symlink_to(situations / "nowhere")
    expected = {"a", "Pattern 1", "two.dots", ".hidden", 'über ✈ "x"', "archive", "dangling"}
    flights = listed(client)
    assert {flight["name"]: flight["path"] for flight in flights} == {
        name: f"{situations}/{name}.sit" for name in expected}
    assert len(flights) == len(expected)


def test_a_name_that_is_not_utf_8_is_left_out_with_one_warning(programs, situations):
    (situations / os.fsdecode(b"caf\xe9.sit")).touch()
    (situations / "café.sit").touch()
    companion = programs.companion("--situations", situations)
    client = companion.client()
    assert names(client) == names(client) == ["café"]
    assert companion.program.errors() == (f"Tarnly: Saved flights in {situations} whose names are not UTF-8 are left out "
                                          "(1); give them other names.\n")


@pytest.mark.parametrize("seconds, fraction", [
    (1_763_255_378, 0.123456789), (1_763_255_378, 0), (SECONDS_FROM_1970_TO_2001, 0.25), (946_684_800, 0.5),
    (0, 0), (4_102_444_800, 0.75), (10_000_000_000, 0), (-2_000_000_000, 0.5)])
def test_dates_count_from_2001_and_have_fractions(client, situations, seconds, fraction):
    file = situations / "a.sit"
    file.touch()
    nanoseconds = seconds * 10**9 + round(fraction * 10**9)
    os.utime(file, ns=(0, nanoseconds))
    # Where the file system is coarser than nanoseconds it says so itself.
    kept = file.stat().st_mtime_ns - SECONDS_FROM_1970_TO_2001 * 10**9
    [flight] = listed(client)
    assert flight["modified_at"] == pytest.approx(kept / 10**9, abs=1e-6)
    assert abs(kept - (nanoseconds - SECONDS_FROM_1970_TO_2001 * 10**9)) < 10**9


def test_a_folder_is_listed_as_it_is_now(client, situations):
    assert names(client) == []
    (situations / "a.sit").touch()
    (situations / "b.sit").touch()
    assert names(client) == ["a", "b"]
    (situations / "a.sit").unlink()
    assert names(client) == ["b"]


def test_a_folder_that_has_gone_has_no_flights_until_it_is_there(programs):
    folder = programs.new_folder() / "situations"
    folder.mkdir()
    client = programs.companion("--situations", folder).client()
    folder.rmdir()
    assert listed(client) == []
    folder.mkdir()
    (folder / "a.sit").touch()
    assert names(client) == ["a"]


def refusal(programs, *arguments):
    ended = programs.run("tarnlyd", "--no-advertise", "--data-dir", programs.new_folder(), *arguments)
    assert (ended.status, ended.output) == (2, ""), ended
    return ended.errors


def test_a_folder_that_is_not_there_is_refused(programs):
    folder = programs.new_folder() / "later"
    assert refusal(programs, "--situations", folder) == (
        f"tarnlyd: --situations: {folder} does not exist; name the folder in which the simulator saves its "
        "situations\n")


def test_a_relative_folder_gives_absolute_paths(programs, situations):
    (situations / "a.sit").touch()
    client = programs.companion("--situations", os.path.relpath(situations)).client()
    [flight] = listed(client)
    assert os.path.isabs(flight["path"]) and os.path.samefile(flight["path"], situations / "a.sit")
    assert client.data("load_flight", {"path": flight["path"]}) == {"ok": True}


def test_without_a_folder_listing_is_refused(programs):
    assert programs.companion().client().error("list_flights") == "situationsDirectoryNotConfigured"


def test_a_folder_that_becomes_a_file_is_an_error_and_no_more(programs):
    folder = programs.new_folder() / "situations"
    folder.mkdir()
    client = programs.companion("--situations", folder).client()
    folder.rmdir()
    folder.touch()
    assert "Not a directory" in client.error("list_flights")
    assert client.data("sim_info")["sim"] == "xplane"


def test_a_file_is_no_folder(programs):
    file = programs.new_folder() / "file"
    file.touch()
    assert refusal(programs, "--situations", file).startswith(f"tarnlyd: --situations: {file} is no folder; name ")


def test_a_long_listing_is_whole(client, situations):
    for number in range(2000):
        (situations / f"flight {number:04}.sit").touch()
    assert names(client) == [f"flight {number:04}" for number in range(2000)]


# Loading


@pytest.fixture
def loader(programs, situations, command_port):
    return programs.companion("--situations", situations, "--sim-host", command_port.host).client()


LONG = "x" * 200
SPLIT = "a" + "é" * 100  # the cut at 150 bytes goes through a letter

NAMES = [
    ("Pattern 1.sit", "Pattern 1"), ("two.dots.sit", "two.dots"), ("notes.txt", "notes"), ("plain", "plain"),
    (".sit", ".sit"), ("über ✈.sit", "über ✈"), (LONG + ".sit", LONG), (SPLIT + ".sit", SPLIT),
    ("y" * 127 + ".sit", "y" * 127), ("y" * 128 + ".sit", "y" * 128), ("y" * 129 + ".sit", "y" * 129),
]


@pytest.mark.parametrize("file, name", NAMES, ids=[file[:20] for file, _ in NAMES])
def test_a_flight_is_loaded_by_a_datagram_of_161_bytes(loader, situations, command_port, file, name):
    (situations / file).touch()
    assert loader.data("load_flight", {"path": str(situations / file)}) == {"ok": True}
    datagram = command_port.datagram()
    assert len(datagram) == 161
    assert datagram == datagram_for(f"Output/situations/{name}.sit")
    assert command_port.is_quiet()


def test_the_datagram_byte_by_byte(loader, situations, command_port):
    (situations / "A.sit").touch()
    loader.data("load_flight", {"path": str(situations / "A.sit")})
    assert command_port.datagram() == (
        b"\x53\x49\x4d\x4f\x00" b"\x01\x00\x00\x00" b"Output/situations/A.sit" + bytes(127) + b"\x00\x00")


def test_every_listed_flight_can_be_loaded(loader, situations, command_port):
    (situations / "a.sit").touch()
    (situations / "folder.sit").mkdir()
    for flight in listed(loader):
        assert loader.data("load_flight", {"path": flight["path"]}) == {"ok": True}
        assert command_port.datagram() == datagram_for(f"Output/situations/{flight['name']}.sit")


def test_only_the_name_of_a_path_is_sent_wherever_the_file_lies(loader, programs, command_port):
    elsewhere = programs.new_folder() / "deep" / "er.sit"
    elsewhere.mkdir(parents=True)
    (elsewhere / "X.sit").touch()
    for path in (f"{elsewhere}/X.sit", f"{elsewhere}/../er.sit/X.sit", f"{elsewhere}//X.sit"):
        loader.data("load_flight", {"path": path})
        assert command_port.datagram() == datagram_for("Output/situations/X.sit")
    loader.data("load_flight", {"path": f"{elsewhere}/"})
    assert command_port.datagram() == datagram_for("Output/situations/er.sit")


@pytest.mark.parametrize("path, shown", [
    ("/no/such/Pattern 1.sit", "/no/such/Pattern 1.sit"), ("", ""), ('/no/"such".sit', r'/no/\"such\".sit'),
    ("/no\n.sit", r"/no\n.sit"), ("/dev/null/x.sit", "/dev/null/x.sit"), ("/dev\0/x.sit", r"/dev\0/x.sit"),
    ("/" + "x" * 5000, "/" + "x" * 5000)], ids=lambda text: repr(text[:24]))
def test_a_flight_that_is_not_there_is_named_and_nothing_is_sent(loader, command_port, path, shown):
    assert loader.error("load_flight", {"path": path}) == f'flightNotFound("{shown}")'
    assert command_port.is_quiet()


def test_loading_needs_neither_a_folder_nor_a_simulator(programs, command_port):
    file = programs.new_folder() / "a.sit"
    file.touch()
    client = programs.companion("--sim-host", command_port.host).client()
    assert client.data("load_flight", {"path": str(file)}) == {"ok": True}
    assert command_port.datagram() == datagram_for("Output/situations/a.sit")


def test_nobody_at_the_command_port_is_no_error(programs):
    file = programs.new_folder() / "a.sit"
    file.touch()
    client = programs.companion("--sim-host", loopback_address()).client()
    for _ in range(3):
        assert client.data("load_flight", {"path": str(file)}) == {"ok": True}


# A mount that hangs

HANGING_CALLS = """
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <cstring>

static void wait_for_mount(const char* path) {
    while (std::strstr(path, "/hung") != nullptr && syscall(SYS_access, HANGS_WHILE, F_OK) == 0) usleep(20000);
}

#define HANGING(name, parameters, ...)                                                                     \\
    extern "C" int name parameters {                                                                       \\
        static const auto next = reinterpret_cast<int (*) parameters>(dlsym(RTLD_NEXT, #name));             \\
        wait_for_mount(path);                                                                              \\
        return next(path, __VA_ARGS__);                                                                    \\
    }

HANGING(stat, (const char* path, struct stat* status), status)
HANGING(lstat, (const char* path, struct stat* status), status)
HANGING(stat64, (const char* path, struct stat64* status), status)
HANGING(lstat64, (const char* path, struct stat64* status), status)
HANGING(access, (const char* path, int mode), mode)
HANGING(open, (const char* path, int flags, ...), flags, 0600)
HANGING(open64, (const char* path, int flags, ...), flags, 0600)
"""


@pytest.fixture
def mount(programs):
    """A folder on a mount that hangs as long as `hangs` is there, and the library that makes it so."""
    if is_instrumented():
        pytest.skip("a sanitizer has to be loaded first")
    folder = programs.new_folder()
    source, library, hangs = folder / "hang.cpp", folder / "hang.so", folder / "hangs"
    source.write_text(HANGING_CALLS.replace("HANGS_WHILE", f'"{hangs}"'))
    subprocess.run(["c++", "-D_GNU_SOURCE", "-shared", "-fPIC", "-o", library, source, "-ldl"], check=True)
    hangs.touch()
    situations = folder / "hung"
    situations.mkdir()
    (situations / "a.sit").touch()
    return SimpleNamespace(library=library, hangs=hangs, situations=situations)


def test_a_mount_that_hangs_holds_up_nobody_but_who_asks_for_it(programs, situations, mount, command_port):
    (situations / "b.sit").touch()
    companion = programs.companion("--situations", mount.situations, "--sim-host", command_port.host,
                                   LD_PRELOAD=mount.library)
    asking, again, other = companion.client(), companion.client(), companion.client()
    begin = time.monotonic()
    asking.post("list_flights")
    for _ in range(5):
        again.post("list_flights")
    assert other.data("sim_info")["sim"] == "xplane"
    assert other.data("load_flight", {"path": str(situations / "b.sit")}) == {"ok": True}
    waited = time.monotonic() - begin
    assert asking.reply()["data"] == {"message": 'timeout("situations")'}
    assert waited < 5 <= time.monotonic() - begin
    threads = len(os.listdir(f"/proc/{companion.program.pid}/task"))
    assert again.reply()["data"] == {"message": 'timeout("situations")'}
    assert asking.error("load_flight", {"path": str(mount.situations / "a.sit")}) == 'timeout("situations")'
    assert len(os.listdir(f"/proc/{companion.program.pid}/task")) <= threads + 1
    mount.hangs.unlink()
    assert names(other) == ["a"]
    assert asking.data("load_flight", {"path": str(mount.situations / "a.sit")}) == {"ok": True}


def assert_ends_soon(companion):
    begin = time.monotonic()
    assert companion.program.end() == 0
    assert time.monotonic() - begin < 4, "it waits for the mount"


def test_a_mount_that_hangs_does_not_keep_the_program_from_ending(programs, mount):
    companion = programs.companion("--situations", mount.situations, LD_PRELOAD=mount.library)
    client = companion.client()
    client.post("list_flights")
    assert companion.client().data("sim_info")["sim"] == "xplane"
    assert_ends_soon(companion)


def test_a_status_file_on_a_mount_that_hangs_costs_nothing_but_itself(programs, mount):
    companion = programs.companion("--status-file", mount.situations / "status.json", LD_PRELOAD=mount.library)
    client = companion.client()
    assert client.data("recording_start") == {"ok": True}
    assert_ends_soon(companion)


@pytest.fixture
def nav_db(mount):
    return write_nav_database(mount.situations / "nav.db", fixes=[("RIDGE", 47.9, 8.5)])


RIDGE = {"triggers": [trigger("ridge", "reaches_fix", fix="ridge", within_nm=1)]}


def test_a_database_on_a_mount_that_hangs_holds_up_no_start_and_serves_when_it_can(programs, mount, nav_db):
    companion = programs.companion("--nav-db", nav_db, LD_PRELOAD=mount.library)
    client = companion.client()
    assert client.data("load_script", RIDGE) == {"unresolved_fixes": ["RIDGE"]}
    [warning] = companion.program.errors().splitlines()
    assert f"{nav_db} has not opened within 2000 milliseconds" in warning
    mount.hangs.unlink()
    wait_until(lambda: client.data("load_script", RIDGE) == {"unresolved_fixes": []}, "the database")


def test_a_database_whose_mount_hangs_later_delays_its_script_and_no_end(programs, mount, nav_db):
    mount.hangs.unlink()
    companion = programs.companion("--nav-db", nav_db, LD_PRELOAD=mount.library)
    loading, other = companion.client(), companion.client()
    assert loading.data("load_script", RIDGE) == {"unresolved_fixes": []}
    mount.hangs.touch()
    loading.post("load_script", RIDGE)
    assert other.data("sim_info")["sim"] == "xplane"
    assert loading.reply()["data"] == {"unresolved_fixes": ["RIDGE"]}
    [warning] = companion.program.errors().splitlines()
    assert "took more than 2 seconds" in warning
    assert_ends_soon(companion)


# The navigation database


def test_a_database_that_is_not_there_is_refused(programs):
    path = programs.new_folder() / "nav.db"
    assert refusal(programs, "--nav-db", path) == (
        f"tarnlyd: --nav-db: {path} does not exist; name an SQLite file with the table enroute_fixes (fix_id, lat, "
        "lon), navaids (nav_id, lat, lon) or both\n")
    assert not path.exists()


def test_the_path_of_a_database_is_shown_printable(programs):
    folder = programs.new_folder()
    assert refusal(programs, "--nav-db", folder / "a\nb").startswith(
        f"tarnlyd: --nav-db: {folder}/a?b does not exist; ")


def test_a_folder_is_no_database(programs):
    folder = programs.new_folder()
    assert refusal(programs, "--nav-db", folder).startswith(f"tarnlyd: --nav-db: {folder} is a folder; ")


def unresolved(programs, path, *fixes):
    client = programs.companion("--nav-db", path).client()
    script = [trigger(fix, "reaches_fix", fix=fix, within_nm=1) for fix in fixes]
    return client.data("load_script", {"triggers": script})["unresolved_fixes"]


@pytest.mark.parametrize("content, problem", [
    (b"", "has none of the tables of a navigation database"),
    (b"this is no database at all, but long enough to be looked at" * 50, "is no SQLite database"),
], ids=["empty", "text"])
def test_a_file_of_something_else_is_no_database(programs, content, problem):
    path = programs.new_folder() / "nav.db"
    path.write_bytes(content)
    assert refusal(programs, "--nav-db", path).startswith(f"tarnlyd: --nav-db: {path} {problem}; name ")
    assert path.read_bytes() == content


def test_a_database_may_have_one_table_only(programs):
    path = write_nav_database(programs.new_folder() / "nav.db", navaids=[("TRA", 47.7, 8.4)])
    with sqlite3.connect(path) as database:
        database.execute("DROP TABLE enroute_fixes")
    database.close()
    assert unresolved(programs, path, "tra", "kloten") == ["KLOTEN"]


def test_a_database_is_never_written(programs):
    path = write_nav_database(programs.new_folder() / "nav.db", fixes=[("KLOTEN", 47.45, 8.55)])
    before = path.read_bytes()
    assert unresolved(programs, path, "kloten") == []
    assert path.read_bytes() == before and [p.name for p in path.parent.iterdir()] == ["nav.db"]


def write_endless_database(path):
    """A database whose search for a fix never comes to its end."""
    with contextlib.closing(sqlite3.connect(path)) as database, database:
        database.execute("CREATE VIEW enroute_fixes AS WITH RECURSIVE row(n) AS "
                         "(SELECT 1 UNION ALL SELECT n + 1 FROM row) "
                         "SELECT 'NONE' || n AS fix_id, 1.0 AS lat, 2.0 AS lon FROM row")
    return path


@pytest.fixture
def endless(programs):
    path = write_endless_database(programs.new_folder() / "nav.db")
    return programs.companion("--nav-db", path)


SLOW_SCRIPT = {"triggers": [trigger(fix, "reaches_fix", fix=fix, within_nm=1) for fix in ("one", "two", "three")]}


def test_a_search_without_end_costs_its_script_the_rest_and_others_nothing(endless):
    loading, other = endless.client(), endless.client()
    loading.post("load_script", SLOW_SCRIPT)
    assert other.data("sim_info")["sim"] == "xplane"
    assert loading.reply()["data"] == {"unresolved_fixes": ["ONE", "TWO", "THREE"]}
    assert loading.data("load_script", SLOW_SCRIPT) == {"unresolved_fixes": ["ONE", "TWO", "THREE"]}
    [warning] = endless.program.errors().splitlines()
    assert re.fullmatch(r"Tarnly: The navigation database .*/nav\.db took more than 2 seconds .*", warning)


def test_a_search_for_a_client_that_has_gone_is_given_up(endless):
    gone = [endless.raw() for _ in range(24)]
    for client in gone:
        client.send_text(json.dumps({"type": "load_script", "params": SLOW_SCRIPT}))
    for client in gone:
        client.close()
    begin = time.monotonic()
    endless.client().data("load_script", {"triggers": []})
    assert time.monotonic() - begin < 5, "24 scripts, 8 at a time, would have taken 6 s"
    assert endless.program.errors() == ""


def test_a_search_does_not_keep_the_program_from_ending(endless):
    for _ in range(24):
        endless.client().post("load_script", SLOW_SCRIPT)
    begin = time.monotonic()
    assert endless.program.end() == 0
    assert time.monotonic() - begin < 5, "24 scripts, 8 at a time, would have taken 6 s"
