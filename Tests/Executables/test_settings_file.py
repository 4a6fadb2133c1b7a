"""What tarnlyd goes by: options, else its settings file, else what it finds, else what is usual."""

import json
import re
import socket

import pytest
from dnssd import PrivateDnssd
from harness import Companion, reserved_port, wait_until

HIDDEN = {"startAtLogin": False, "advertise": False}


def started(programs, settings, *options, **environment):
    """A tarnlyd with these settings and nothing else but these options, and its data folder."""
    folder = programs.new_folder()
    (folder / "settings.json").write_text(json.dumps(settings))
    program = programs.start("tarnlyd", "--data-dir", folder, *options, **environment)
    return Companion(program, programs), folder


def warnings(programs, folder):
    status = json.loads(programs.run("tarnlyd", "--status", "--data-dir", folder).output)
    return status.get("warnings", [])


def names_of_flights(client):
    return [flight["name"] for flight in client.data("list_flights")["flights"]]


def test_the_settings_hold_where_no_option_does(programs, fake):
    fake.add("sim/a", 4)
    situations = programs.new_folder()
    (situations / "Pattern.sit").touch()
    with reserved_port() as port:
        settings = HIDDEN | {"port": port, "sim_host": "localhost", "sim_port": fake.port,
                             "situations_folder": str(situations), "password": "x"}
        companion, folder = started(programs, settings)
        assert companion.status_line == f"Listening on port {port}, not advertised, pairing password required."
        client = companion.client(password="x")
        assert client.subscribe("sim/a") == {"sim/a": 4}
        assert names_of_flights(client) == ["Pattern"]
        assert warnings(programs, folder) == []
        assert companion.program.errors() == ""


def test_an_option_wins_for_that_run(programs, fake):
    fake.add("sim/a", 4)
    with reserved_port() as port, reserved_port() as other, reserved_port() as nobody:
        settings = HIDDEN | {"port": port, "sim_port": nobody}
        companion, folder = started(programs, settings, "--port", other, "--sim-port", fake.port)
        assert companion.port == other
        assert companion.client().subscribe("sim/a") == {"sim/a": 4}
        assert json.loads((folder / "settings.json").read_text()) == settings


def test_the_name_of_the_settings_is_published_and_an_options_before_it(programs):
    with PrivateDnssd() as dnssd:
        bus = {"DBUS_SYSTEM_BUS_ADDRESS": dnssd.address}
        settings = {"startAtLogin": False, "port": 0, "name": "Left rig"}
        companion, _ = started(programs, settings, **bus)
        companion.program.wait_for_line(', advertising as "Left rig", ')
        other, _ = started(programs, settings, "--name", "Right rig", **bus)
        other.program.wait_for_line(', advertising as "Right rig", ')
        hidden, _ = started(programs, settings | {"advertise": False}, **bus)
        assert ", not advertised, " in hidden.status_line
        settings = {"startAtLogin": False, "port": 0, "name": "Third rig", "advertise": False}
        shown, _ = started(programs, settings, "--advertise", **bus)
        shown.program.wait_for_line(', advertising as "Third rig", ')


def test_a_setting_that_cannot_be_costs_no_other(programs):
    settings = HIDDEN | {"port": 0, "sim_port": "8086", "name": "", "password": "x"}
    companion, folder = started(programs, settings)
    assert companion.status_line.endswith(", pairing password required.")
    told = warnings(programs, folder)
    assert [re.match(r'The setting "(\w+)" in ', text).group(1) for text in told] == ["name", "sim_port"]
    assert companion.program.errors().splitlines() == [f"Tarnly: {text}" for text in told]
    assert json.loads((folder / "settings.json").read_text()) == settings


@pytest.fixture
def home(programs):
    """A person whose simulator's installer has noted its folders."""
    home = programs.new_folder()
    (home / ".x-plane").mkdir()
    return home


def install(home, name):
    situations = home / name / "Output" / "situations"
    situations.mkdir(parents=True)
    (situations / f"On {name}.sit").touch()
    with open(home / ".x-plane" / "x-plane_install_12.txt", "a", encoding="utf-8") as note:
        note.write(f"{home / name}/\n")


def test_the_situations_of_the_simulator_are_found(programs, home):
    install(home, "X-Plane 12")
    install(home, "X-Plane 12 beta")
    with open(home / ".x-plane" / "x-plane_install_12.txt", "a", encoding="utf-8") as note:
        note.write("/nowhere/X-Plane 12\n\n")
    companion, folder = started(programs, HIDDEN | {"port": 0}, HOME=home)
    client = companion.client()
    wait_until(lambda: "flights" in client.request("list_flights")["data"], "the folder")
    assert names_of_flights(client) == ["On X-Plane 12"]
    assert warnings(programs, folder) == []


def test_what_the_settings_name_goes_before_what_is_found(programs, home):
    install(home, "X-Plane 12")
    own = programs.new_folder()
    (own / "Own.sit").touch()
    companion, _ = started(programs, HIDDEN | {"port": 0, "situations_folder": str(own)}, HOME=home)
    assert names_of_flights(companion.client()) == ["Own"]


def test_files_of_the_settings_that_are_missing_are_warnings(programs):
    missing = programs.new_folder() / "missing"
    settings = HIDDEN | {"port": 0, "situations_folder": str(missing), "navigation_database": str(missing)}
    companion, folder = started(programs, settings)
    told = wait_until(lambda: len(warnings(programs, folder)) == 2 and warnings(programs, folder), "two warnings")
    assert any(text.startswith("The navigation database of the settings cannot be used") for text in told)
    assert any(text.startswith(f"The folder of saved situations, {missing}, is not there") for text in told)
    assert names_of_flights(companion.client()) == []
    missing.mkdir()
    (missing / "Later.sit").touch()
    assert names_of_flights(companion.client()) == ["Later"]


def test_a_port_of_the_settings_that_is_taken_is_a_failure_to_start(programs):
    folder = programs.new_folder()
    with socket.create_server(("127.0.0.1", 0)) as occupant:
        (folder / "settings.json").write_text(json.dumps(HIDDEN | {"port": occupant.getsockname()[1]}))
        ended = programs.run("tarnlyd", "--data-dir", folder)
    assert ended.status == 1 and ended.error_lines[-1].startswith("Failed to start: "), ended
