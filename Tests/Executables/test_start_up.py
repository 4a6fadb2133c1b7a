"""Starting, refusing to start, and ending."""

import json
import re
import signal
import socket
import time
from pathlib import Path

import pytest
from dnssd import PrivateDnssd
from fake_simulator import DATAREFS
from harness import reserved_port, wait_until

OPTIONS = ["--sim-host", "--sim-port", "--port", "--name", "--data-dir", "--nav-db", "--situations",
           "--status-file", "--no-advertise", "--status", "--help", "--version"]
REFUSED = {"accepted": False, "reason": "incorrect password"}


def test_the_status_line_names_the_port_and_the_pairing(programs):
    companion = programs.companion()
    assert companion.status_line == f"Listening on port {companion.port}, not advertised, pairing open."
    assert companion.port != 0
    assert programs.companion(settings={"password": "x", "startAtLogin": True}).status_line.endswith(
        ", not advertised, pairing password required.")


def test_the_status_line_claims_no_service_when_no_daemon_is_there(programs):
    companion = programs.companion("--name", "Röhn rig", advertise=True)
    ending = "not advertised: no DNS-SD daemon, pairing open."
    assert companion.status_line == f"Listening on port {companion.port}, {ending}"
    assert companion.client().data("sim_info")["sim"] == "xplane"


def test_the_name_is_the_computers_unless_one_is_given(programs):
    with PrivateDnssd() as dnssd:
        companion = programs.companion(advertise=True, DBUS_SYSTEM_BUS_ADDRESS=dnssd.address)
        companion.program.wait_for_line(f', advertising as "{re.escape(socket.gethostname())}", ')


def test_it_prints_the_status_line_and_nothing_else(programs):
    companion = programs.companion()
    companion.client().data("sim_info")
    companion.program.end()
    assert companion.program.output() == [companion.status_line]
    assert companion.program.errors() == ""


def test_settings_that_cannot_be_read_are_said_everywhere_and_kept(programs):
    companion = programs.companion(settings="{garbled")
    folder = settings_folder(companion)
    assert companion.status_line.endswith(", pairing open.")
    [line] = companion.program.errors().splitlines()
    warning = line.removeprefix("Tarnly: ")
    assert warning.startswith("The settings could not be read, and no password is asked for: ")
    status = json.loads(programs.run("tarnlyd", "--status", "--data-dir", folder).output)
    assert status["warnings"] == [warning]
    assert warning in programs.run("tarnly-client", "status", "--data-dir", folder).output.splitlines()
    assert (folder / "settings.json").read_text() == "{garbled"


def test_a_byte_order_mark_before_the_settings_is_no_fault(programs):
    companion = programs.companion(settings=b'\xef\xbb\xbf{"password":"x","startAtLogin":false}')
    assert companion.status_line.endswith(", pairing password required.")
    status = json.loads(programs.run("tarnlyd", "--status", "--data-dir", settings_folder(companion)).output)
    assert "warnings" not in status and companion.program.errors() == ""


def settings_folder(companion):
    arguments = companion.program.process.args
    return Path(arguments[arguments.index("--data-dir") + 1])


def test_a_port_may_be_chosen(programs):
    with reserved_port() as port:
        companion = programs.companion("--port", port)
        assert companion.port == port
        assert companion.client().data("sim_info")["sim"] == "xplane"


@pytest.mark.parametrize("name, arguments", [
    ("tarnlyd", ["--no-advertise"]),
    ("tarnly-sim", ["--udp-port", "0"]),
])
def test_a_port_in_use_is_a_failure_to_start(programs, name, arguments):
    with socket.create_server(("127.0.0.1", 0)) as occupant:
        port = occupant.getsockname()[1]
        more = ["--data-dir", programs.new_folder()] if name == "tarnlyd" else []
        ended = programs.run(name, "--port", port, *arguments, *more)
    assert ended.status == 1, ended
    assert ended.output == ""
    assert len(ended.error_lines) == 1 and re.match(r"Failed to start: .*\S", ended.error_lines[0]), ended


WRONG_USAGE = {
    "tarnlyd": [["--no-such-option"], ["stray"], ["--port"], ["--port", "x"], ["--port", "-1"],
                ["--port", "65536"], ["--port", ""], ["--port", "80.5"], ["--sim-port", "65536"],
                ["--sim-port", "x"], ["--data-dir"], ["--name"], ["--no-advertise=maybe"]],
    "tarnly-sim": [["--no-such-option"], ["stray"], ["--port", "x"], ["--port", "65536"],
                   ["--udp-port", "-1"], ["--datarefs", "many"]],
    "tarnly-client": [["--no-such-option"], [], ["no-such-command"], ["get"], ["set"], ["set", "sim/a"],
                      ["set", "sim/a=fast"], ["set", "sim/a=nan"], ["set", "sim/a=inf"], ["move", "1"],
                      ["move", "north", "east"], ["attitude", "1", "2", "3"], ["run"], ["send"],
                      ["info", "--port", "x"], ["info", "stray"]],
}


@pytest.mark.parametrize(
    "name, arguments", [(name, one) for name, many in WRONG_USAGE.items() for one in many], ids=repr)
def test_wrong_usage_is_one_line_on_standard_error_and_status_2(programs, name, arguments):
    ended = programs.run(name, *arguments)
    assert ended.status == 2, ended
    assert ended.output == ""
    assert len(ended.error_lines) == 1 and ended.error_lines[0].strip(), ended


@pytest.mark.parametrize("name", ["tarnlyd", "tarnly-sim", "tarnly-client"])
def test_version_and_help(programs, name):
    version = programs.run(name, "--version")
    assert version.status == 0 and re.search(r"\b0\.1\b", version.output), version
    assert len(version.output.splitlines()) == 1 and version.errors == ""
    help_ = programs.run(name, "--help")
    assert help_.status == 0 and "--version" in help_.output and help_.errors == "", help_


def test_help_lists_every_option(programs):
    text = programs.run("tarnlyd", "--help").output
    assert [option for option in OPTIONS if option not in text] == []


@pytest.mark.parametrize("settings, password", [
    ('{"password":"abc","startAtLogin":false}', "abc"),
    ('{"startAtLogin":true,"password":"a\\u0062c","theme":{"dark":true}}', "abc"),
    (' {\n "password" : "pä/ss" ,\n "startAtLogin" : false }\n', "pä/ss"),
])
def test_the_password_comes_from_the_settings_file(programs, settings, password):
    companion = programs.companion(settings=settings)
    assert companion.status_line.endswith(", pairing password required.")
    client = companion.client(paired=False)
    assert client.data("pair") == REFUSED
    assert client.data("pair", {"password": password + "x"}) == REFUSED
    assert client.pair(password)["accepted"] is True


@pytest.mark.parametrize("settings", [
    None,
    "",
    "not JSON",
    "[]",
    '{"password":"abc"}',
    '{"password":"abc","startAtLogin":"yes"}',
    '{"password":"abc","startAtLogin":1}',
    '{"password":"abc","startAtLogin":null}',
    '{"password":7,"startAtLogin":false}',
    '{"password":"abc","startAtLogin":false',
    '{"password":"abc","startAtLogin":false} x',
    '{"password":"","startAtLogin":false}',
    '{"password":null,"startAtLogin":false}',
    '{"startAtLogin":false}',
    b'{"password":"\xff","startAtLogin":false}',
], ids=repr)
def test_without_a_readable_password_pairing_is_open(programs, settings):
    companion = programs.companion(settings=settings)
    assert companion.status_line.endswith(", pairing open.")
    assert companion.client().data("sim_info")["sim"] == "xplane"


def test_a_broken_settings_file_is_left_as_it_is(programs):
    folder = programs.new_folder()
    file = folder / "settings.json"
    file.write_text("not JSON")
    program = programs.start("tarnlyd", "--no-advertise", "--data-dir", folder)
    program.wait_for_line("pairing open")
    program.end()
    assert file.read_text() == "not JSON"


def test_a_data_folder_that_is_not_there_is_no_obstacle(programs):
    program = programs.start("tarnlyd", "--no-advertise", "--data-dir", programs.folder / "not" / "there")
    assert program.wait_for_line("pairing open")


def ends_promptly(program, number):
    started = time.monotonic()
    assert program.end(number) == 0
    # Far more than the second that it may take, far less than any wait that it must not sit out.
    assert time.monotonic() - started < 10


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
@pytest.mark.parametrize("advertise", [False, True], ids=["not advertised", "advertised"])
def test_a_signal_ends_it(programs, number, advertise):
    ends_promptly(programs.companion(advertise=advertise).program, number)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_signal_ends_it_with_clients_connected(companion, fake, number):
    fake.add("sim/a", 1)
    clients = [companion.client() for _ in range(5)] + [companion.client(paired=False)]
    for client in clients[:5]:
        client.subscribe("sim/a")
    clients[0].push()
    ends_promptly(companion.program, number)
    assert clients[5].ends_without_reply()


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_signal_ends_it_while_the_catalogue_is_awaited(companion, fake, number):
    client = companion.client()
    with fake.holding(DATAREFS):
        client.post("run_command", {"name": "sim/go"})
        fake.wait_for(lambda: DATAREFS in fake.lines(), "the request for the catalogue")
        ends_promptly(companion.program, number)


def test_a_signal_ends_it_while_a_move_settles(companion, fake):
    for leaf in ("latitude", "longitude", "elevation", "y_agl"):
        fake.add(f"sim/flightmodel/position/{leaf}", 1)
    client = companion.client()
    client.post("move_to_preserving_agl", {"lat": 1, "lon": 2})
    fake.wait_for(lambda: len(fake.writes()) == 3, "the first three writes")
    ends_promptly(companion.program, signal.SIGTERM)
    assert len(fake.writes()) == 3


def test_a_signal_ends_it_while_a_command_is_awaited(companion, fake):
    fake.commands = ["sim/go"]
    client = companion.client()
    activation = f"POST /api/v2/command/{fake.command_id('sim/go')}/activate"
    with fake.holding(activation):
        client.post("run_command", {"name": "sim/go"})
        fake.wait_for(lambda: activation in fake.lines(), "the activation")
        ends_promptly(companion.program, signal.SIGTERM)


def test_a_signal_ends_it_while_a_client_reads_nothing(companion):
    raw = companion.raw(receive_buffer=4096)
    raw.send_text('{"type":"' + "x" * (8 << 20) + '"}')
    assert companion.client().data("sim_info")["sim"] == "xplane"
    ends_promptly(companion.program, signal.SIGTERM)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_signal_ends_the_stand_in_simulator(programs, number):
    program, _ = programs.simulator()
    ends_promptly(program, number)


def test_the_companion_may_start_before_the_simulator(programs):
    with reserved_port() as port:
        client = programs.companion(sim_port=port).client()
        latitude = "sim/flightmodel/position/latitude"
        assert client.subscribe_error(latitude)
        assert client.error("run_command", {"name": "sim/lights/landing_lights_toggle"})
        programs.simulator(port=port)
        assert latitude in client.subscribe(latitude)
        assert wait_until(lambda: latitude in client.push(), "a push")


def test_the_host_of_the_simulator_may_be_named(programs, fake):
    fake.add("sim/a", 4)
    companion = programs.companion("--sim-host", "localhost", sim_port=fake.port)
    assert companion.client().subscribe("sim/a") == {"sim/a": 4}
