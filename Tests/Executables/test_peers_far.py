"""Peers of other computers: how many there may be from one address."""

import json
import subprocess
import sys
from pathlib import Path

import pytest
from two_hosts import NotPermitted, TwoHosts

NETWORK = "fd00:77::"


@pytest.fixture
def hosts():
    try:
        with TwoHosts() as hosts:
            hosts.near.ip(f"address add {NETWORK}1/64 dev cable nodad")
            hosts.far.ip(f"address add {NETWORK}2/64 dev cable nodad")
            hosts.far.ip(f"address add {NETWORK}3/64 dev cable nodad")
            hosts.far.ip("address add 10.77.0.3/24 dev cable")
            yield hosts
    except NotPermitted as reason:
        pytest.skip(f"no network namespaces here: {reason}")


@pytest.fixture
def peers(programs, hosts):
    """Starts peers on one of the computers, and returns what became of them; they stay until the end."""
    companion = programs.companion(prefix=hosts.near.prefix)
    started = []

    def start(kind, count, *sources, host=hosts.ADDRESSES[0], on=hosts.far):
        script = Path(__file__).parent / "far_peers.py"
        command = [*on.prefix, sys.executable, "-B", script, host, companion.port, kind, count, *sources]
        process = subprocess.Popen(list(map(str, command)), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        started.append(process)
        return json.loads(process.stdout.readline())

    yield start
    for process in started:
        process.communicate("", timeout=60)


def test_an_address_has_room_for_16_strangers(peers):
    told = peers("strangers", 20)
    assert told["open"] == 16 and not told["first_is_open"] and told["last_is_open"]
    assert peers("strangers", 3, "10.77.0.3")["open"] == 3
    assert peers("clients", 1)["statuses"] == [101]


def test_an_ipv6_network_is_one_address(peers):
    told = peers("strangers", 20, f"{NETWORK}2", f"{NETWORK}3", host=f"{NETWORK}1")
    assert told["open"] == 16


def test_an_address_has_room_for_64_clients(peers, hosts):
    told = peers("clients", 66)
    assert told["statuses"] == [101] * 64 + [503] * 2
    assert peers("clients", 2, "10.77.0.3")["statuses"] == [101] * 2
    assert peers("clients", 70, host="127.0.0.1", on=hosts.near)["statuses"] == [101] * 70
