"""The companion takes the simulator's own navigation data where nobody names a database."""

import json
from pathlib import Path

import pytest
from harness import Companion, reserved_port, wait_until
from lesson import LATITUDE, LONGITUDE, add_sample_datarefs, load, start_lesson, trigger
from nav_database import write_nav_database

HEADER = "I\n1200 Version - data cycle {}, build 20250115, metadata X. Invented.\n\n"


def write_simulator(folder, cycle="2501", latitude=46.9):
    data = folder / "Resources" / "default data"
    data.mkdir(parents=True, exist_ok=True)
    (data / "earth_fix.dat").write_text(
        HEADER.format(cycle) + f" {latitude} 7.5 RIDGE ENRT LS 2105431 RIDGE\r\n 10.0 10.0 RIDGE ZZTA ED\r\n99\r\n")
    (data / "earth_nav.dat").write_text(
        HEADER.format(cycle) + " 2  52.3  9.1  250  357  50  0.0  TAN  ENRT ED TANDORF NDB\n99\n")
    return folder


@pytest.fixture
def simulator_folder(programs):
    """Noted by its installer in the home folder of the programs, behind one that has gone."""
    folder = write_simulator(programs.new_folder() / "X-Plane 12")
    note = programs.folder / ".x-plane" / "x-plane_install_12.txt"
    note.parent.mkdir()
    note.write_text(f"{folder}/\n/nowhere/X-Plane 12/\n")
    return folder


def companion_of(programs, folder):
    """One whose data folder is known beforehand, and whose simulator is not there."""
    with reserved_port() as port:
        return Companion(programs.start("tarnlyd", "--data-dir", folder, "--sim-port", port, "--port", 0,
                                        "--no-advertise"), programs)


def data_folder_of(companion):
    arguments = companion.program.process.args
    return Path(arguments[arguments.index("--data-dir") + 1])


def status_of(programs, companion):
    ended = programs.run("tarnlyd", "--status", "--data-dir", data_folder_of(companion))
    assert ended.status == 0, ended
    return json.loads(ended.output)


def sources_with(programs, companion, key, value):
    """What the companion draws upon, once it is so."""

    def sources():
        present = status_of(programs, companion)["sources"]
        return present if present.get(key) == value else None

    return wait_until(sources, lambda: f"{key} {value}: {status_of(programs, companion)}")


def test_a_script_finds_the_simulators_fixes_and_fires_there(programs, fake, simulator_folder):
    add_sample_datarefs(fake)
    fake.set(LATITUDE, 46)
    fake.set(LONGITUDE, 7.5)
    companion = programs.companion(sim_port=fake.port)
    sources = sources_with(programs, companion, "nav_db_cycle", "2501")
    assert sources["nav_db"] == str(data_folder_of(companion) / "navigation.db")
    assert "nav_db_in_the_making" not in sources
    recorder = start_lesson(companion.client(), trigger("there", "reaches_fix", fix="ridge", within_nm=2))
    recorder.wait_for_samples(2)
    assert recorder.fired == []
    fake.set(LATITUDE, 46.9)
    assert recorder.wait_for_fired("there") == ["there"]


def test_a_script_that_comes_at_once_waits_for_the_fixes(programs, simulator_folder):
    client = programs.companion().client()
    unresolved = load(client, trigger("there", "reaches_fix", fix="RIDGE", within_nm=2))
    assert unresolved == []


def test_it_is_made_once_per_issue(programs, simulator_folder):
    folder = programs.new_folder()
    made = folder / "navigation.db"

    def one_run(cycle):
        companion = companion_of(programs, folder)
        sources_with(programs, companion, "nav_db_cycle", cycle)
        assert companion.program.end() == 0
        return made.stat().st_ino

    first = one_run("2501")
    assert one_run("2501") == first
    write_simulator(simulator_folder, "2502")
    assert one_run("2502") != first


def test_new_data_are_taken_when_the_simulator_comes_again(programs, fake, simulator_folder):
    add_sample_datarefs(fake)
    companion = programs.companion(sim_port=fake.port)
    sources_with(programs, companion, "nav_db_cycle", "2501")
    write_simulator(simulator_folder, "2502")
    fake.hang_up()
    sources_with(programs, companion, "nav_db_cycle", "2502")


def test_a_database_that_is_named_comes_first(programs, simulator_folder):
    named = write_nav_database(programs.new_folder() / "nav.db", fixes=[("KLOTEN", 48, 8)])
    companion = programs.companion("--nav-db", named)
    client = companion.client()
    assert status_of(programs, companion)["sources"]["nav_db"] == str(named)
    assert load(client, trigger("there", "reaches_fix", fix="RIDGE", within_nm=2)) == ["RIDGE"]
    assert not (data_folder_of(companion) / "navigation.db").exists()


def test_data_that_cannot_be_used_are_a_warning(programs, simulator_folder):
    fixes = simulator_folder / "Resources" / "default data" / "earth_fix.dat"
    fixes.write_text("I\n600 Version\n\n1 2 A\n")
    companion = programs.companion()

    def warnings():
        return [text for text in status_of(programs, companion)["warnings"] if "earth_fix.dat" in text]

    warning, = wait_until(warnings, "a warning")
    assert "has the format 600" in warning and "start Tarnly anew" in warning
    assert load(companion.client(), trigger("there", "reaches_fix", fix="RIDGE", within_nm=2)) == ["RIDGE"]


def test_the_tool_and_the_check_of_scripts_know_the_companions(programs, simulator_folder):
    companion = companion_of(programs, programs.folder / "data" / "Tarnly")
    sources_with(programs, companion, "nav_db_cycle", "2501")
    found = programs.run("tarnly-navdb", "find", "ridge", "--json")
    assert [json.loads(line)["area"] for line in found.output.splitlines()] == ["ENRT", "ZZTA"]
    missing = programs.run("tarnly-navdb", "find", "RIDGY")
    assert (missing.status, missing.errors) == (1, 'tarnly-navdb: "RIDGY" is not there; did you mean RIDGE?\n')
    script = programs.folder / "script.json"
    script.write_text(json.dumps([trigger("there", "reaches_fix", fix="RIDGY", within_nm=2)]))
    checked = programs.run("tarnly-client", "script", "--check", script)
    assert checked.status == 1 and '"RIDGY"' in checked.output, checked
    doctor = programs.run("tarnly-client", "doctor", "--data-dir", data_folder_of(companion))
    assert "navigation.db, cycle 2501, shows no fault." in doctor.output, doctor


def test_the_tool_builds_what_a_companion_can_be_given(programs, simulator_folder):
    database = programs.folder / "nav.db"
    built = programs.run("tarnly-navdb", "build", simulator_folder, "-o", database)
    assert built.status == 0, built
    assert built.output == (f"{database}: 2 fixes, 1 navaids, 0 airports, cycle 2501, build 20250115, "
                            f"from {simulator_folder}\n")
    companion = programs.companion("--nav-db", database)
    sources_with(programs, companion, "nav_db_cycle", "2501")
