"""Being found: what stands in DNS-SD, with a real daemon that sees nothing but the loopback interface."""

import json
import re
import signal
import subprocess
import time
from dataclasses import dataclass

import pytest
from dnssd import PrivateDnssd
from harness import wait_until

OPEN = ["pairing=open", "sim=xplane", "ver=0.1"]
NO_DAEMON = "not advertised: no DNS-SD daemon"
# Seconds after the daemon is there; it asks the network for one whether the name is free.
BACK_WITHIN = 5
REQUIRED = ["pairing=required", "sim=xplane", "ver=0.1"]


@dataclass(frozen=True)
class Service:
    name: str
    port: int
    txt: tuple


@pytest.fixture
def daemon():
    with PrivateDnssd() as running:
        yield running


def services(dnssd):
    """What an observer that is none of ours finds now."""
    browse = subprocess.run(["avahi-browse", "-rptk", "_tarnly._tcp"], env=dnssd.environment, text=True,
                            capture_output=True, timeout=60, check=False)
    found = set()
    for line in browse.stdout.splitlines():
        if line.startswith("="):
            _, _, _, name, _, _, _, _, port, txt = line.split(";", 9)
            found.add(Service(unescaped(name), int(port), tuple(sorted(re.findall(r'"([^"]*)"', txt)))))
    return found


def unescaped(name):
    data = re.sub(rb"\\(\d{3})", lambda match: bytes([int(match.group(1))]), name.encode())
    return re.sub(rb"\\(.)", rb"\1", data).decode()


def wait_for_services(dnssd, *expected):
    wait_until(lambda: services(dnssd) == set(expected), f"that all there is is {expected}")


def advertised(programs, dnssd, name, **options):
    options["DBUS_SYSTEM_BUS_ADDRESS"] = dnssd.address
    return programs.companion("--name", name, advertise=True, **options)


def wait_for_line(companion, advertising):
    companion.program.wait_for_line(f"^Listening on port {companion.port}, {re.escape(advertising)}, pairing open\\.$")


def told(programs, companion):
    """What the companion itself tells."""
    arguments = companion.program.process.args
    folder = arguments[arguments.index("--data-dir") + 1]
    return json.loads(programs.run("tarnlyd", "--status", "--data-dir", folder).output)


def tool(programs, dnssd, *arguments):
    return programs.run("tarnly-client", *arguments, DBUS_SYSTEM_BUS_ADDRESS=dnssd.address)


def test_the_service_stands_with_its_port_and_exactly_three_keys(programs, daemon):
    companion = advertised(programs, daemon, "rig42")
    wait_for_line(companion, 'advertising as "rig42"')
    wait_for_services(daemon, Service("rig42", companion.port, tuple(OPEN)))


def test_a_password_shows_in_the_record(programs, daemon):
    companion = advertised(programs, daemon, "rig42", settings={"password": "x", "startAtLogin": False})
    wait_for_services(daemon, Service("rig42", companion.port, tuple(REQUIRED)))


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_the_service_is_withdrawn_at_the_end(programs, daemon, number):
    companion = advertised(programs, daemon, "rig42")
    wait_for_services(daemon, Service("rig42", companion.port, tuple(OPEN)))
    assert companion.program.end(number) == 0
    wait_for_services(daemon)


def test_a_name_that_is_taken_gets_the_next_free_form(programs, daemon):
    first = advertised(programs, daemon, "rig42")
    wait_for_services(daemon, Service("rig42", first.port, tuple(OPEN)))
    second = advertised(programs, daemon, "rig42")
    wait_for_line(second, 'advertising as "rig42 (2)"')
    both = [Service("rig42", first.port, tuple(OPEN)), Service("rig42 (2)", second.port, tuple(OPEN))]
    wait_for_services(daemon, *both)
    assert told(programs, second)["published"] == {"state": "published", "name": "rig42 (2)"}
    third = advertised(programs, daemon, "rig42")
    wait_for_services(daemon, *both, Service("rig42 (3)", third.port, tuple(OPEN)))


@pytest.mark.parametrize("name", ["Röhn ✈ rig", "with.dot and \\ slash", 'the "best"', "two  spaces"])
def test_any_name_may_be_published(programs, daemon, name):
    companion = advertised(programs, daemon, name)
    wait_for_services(daemon, Service(name, companion.port, tuple(OPEN)))


@pytest.mark.parametrize("name, published", [
    ("x" * 80, "x" * 63),
    ("x" * 62 + "ü", "x" * 62),
    ("✈" * 30, "✈" * 21),
], ids=["ASCII", "cut before ü", "planes"])
def test_a_long_name_is_cut_between_two_characters(programs, daemon, name, published):
    companion = advertised(programs, daemon, name)
    wait_for_line(companion, f'advertising as "{published}"')
    wait_for_services(daemon, Service(published, companion.port, tuple(OPEN)))


def test_without_advertising_nothing_is_published(programs, daemon):
    programs.companion("--name", "hidden", DBUS_SYSTEM_BUS_ADDRESS=daemon.address)
    seen = advertised(programs, daemon, "seen")
    wait_for_services(daemon, Service("seen", seen.port, tuple(OPEN)))


@pytest.mark.parametrize("is_bus_there", [True, False], ids=["the daemon", "even the bus"])
def test_the_daemon_may_come_later(programs, is_bus_there):
    dnssd = PrivateDnssd()
    try:
        if is_bus_there:
            dnssd.start_bus()
        companion = advertised(programs, dnssd, "rig42")
        assert companion.status_line == f"Listening on port {companion.port}, {NO_DAEMON}, pairing open."
        assert companion.client().data("sim_info")["sim"] == "xplane"
        if not is_bus_there:
            dnssd.start_bus()
        dnssd.start_daemon()
        ready = time.monotonic()
        wait_for_line(companion, 'advertising as "rig42"')
        assert time.monotonic() - ready < BACK_WITHIN
        wait_for_services(dnssd, Service("rig42", companion.port, tuple(OPEN)))
    finally:
        dnssd.close()


def test_a_daemon_that_goes_is_told_on_a_new_line_and_in_the_status(programs, daemon):
    companion = advertised(programs, daemon, "rig42")
    wait_for_line(companion, 'advertising as "rig42"')
    last = companion.program.output()[-1]
    daemon.stop_daemon()
    wait_for_line(companion, NO_DAEMON)
    assert told(programs, companion)["words"] == companion.program.output()[-1]
    daemon.start_daemon()
    wait_until(lambda: companion.program.output()[-1] == last, "the line that was last before")
    assert told(programs, companion)["words"] == companion.program.output()[-1]


def test_clients_are_served_before_a_daemon_that_hangs_has_answered(programs, daemon):
    daemon.signal_daemon(signal.SIGSTOP)
    companion = advertised(programs, daemon, "rig42")
    assert companion.status_line == f"Listening on port {companion.port}, not advertised yet, pairing open."
    assert companion.client().data("sim_info")["sim"] == "xplane"
    daemon.signal_daemon(signal.SIGCONT)
    wait_for_line(companion, 'advertising as "rig42"')


@pytest.mark.parametrize("what", ["restart_daemon", "restart"], ids=["the daemon", "the bus too"])
def test_after_a_restart_of_the_daemon_the_service_stands_again(programs, daemon, what):
    companion = advertised(programs, daemon, "rig42")
    wait_for_services(daemon, Service("rig42", companion.port, tuple(OPEN)))
    getattr(daemon, what)()
    wait_for_services(daemon, Service("rig42", companion.port, tuple(OPEN)))
    assert companion.client().data("sim_info")["sim"] == "xplane"


def test_a_daemon_that_hangs_stops_neither_clients_nor_the_end(programs, daemon):
    companion = advertised(programs, daemon, "rig42")
    wait_for_services(daemon, Service("rig42", companion.port, tuple(OPEN)))
    daemon.signal_daemon(signal.SIGSTOP)
    try:
        assert companion.client().data("sim_info")["sim"] == "xplane"
        assert companion.program.end(patience=10) == 0
    finally:
        daemon.signal_daemon(signal.SIGCONT)


def test_our_own_client_finds_it_by_itself(programs, daemon):
    companion = advertised(programs, daemon, "rig42")
    wait_for_services(daemon, Service("rig42", companion.port, tuple(OPEN)))
    found = tool(programs, daemon, "--json", "discover")
    assert found.status == 0, found
    lines = [json.loads(line) for line in found.output.splitlines()]
    assert [(line["name"], line["port"]) for line in lines] == [("rig42", companion.port)]
    info = tool(programs, daemon, "--json", "info")
    assert info.status == 0 and json.loads(info.output)["sim"] == "xplane", info


def test_with_several_our_own_client_asks_which(programs, daemon):
    ports = {}
    for name in ("left", "right"):
        ports[name] = advertised(programs, daemon, name).port
    wait_for_services(daemon, *(Service(name, port, tuple(OPEN)) for name, port in ports.items()))
    undecided = tool(programs, daemon, "info")
    assert undecided.status == 1 and undecided.output == "", undecided
    assert all(word in undecided.errors for word in ("left", "right", "--instance"))
    chosen = tool(programs, daemon, "--instance", "right", "info")
    assert chosen.status == 0 and "xplane" in chosen.output, chosen
    nobody = tool(programs, daemon, "--instance", "middle", "--timeout", "3", "info")
    assert nobody.status == 1 and "middle" in nobody.errors, nobody


def test_where_there_is_none_our_own_client_says_so(programs, daemon):
    alone = tool(programs, daemon, "--timeout", "3", "info")
    assert alone.status == 1 and alone.output == "" and alone.errors.strip(), alone
