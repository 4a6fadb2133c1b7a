"""A client that goes without a word, as a tablet does that leaves the Wi-Fi."""

import json
import time

import pytest
from harness import wait_until
from two_hosts import NotPermitted, TwoHosts


@pytest.fixture
def hosts():
    try:
        with TwoHosts() as hosts:
            yield hosts
    except NotPermitted as reason:
        pytest.skip(f"no network namespaces here: {reason}")


def test_a_client_that_vanished_is_noticed_within_a_minute(programs, hosts):
    simulator = programs.start("tarnly-sim", "--port", 8086, "--udp-port", 0, prefix=hosts.near.prefix)
    simulator.wait_for_line("8086")
    status_file = programs.new_folder() / "status.json"
    companion = programs.companion("--status-file", status_file, sim_port=8086, prefix=hosts.near.prefix)
    client = programs.start("tarnly-client", "--host", hosts.ADDRESSES[0], "--port", companion.port, "watch",
                            "sim/flightmodel/position/latitude", prefix=hosts.far.prefix)

    def wait_for_clients(count):
        expected = {"paired": count, "connected": count}
        wait_until(lambda: json.loads(status_file.read_text())["clients"] == expected, f"{count} clients", 120)

    client.wait_for_line("latitude")
    wait_for_clients(1)
    hosts.lose_far()
    lost = time.monotonic()
    wait_for_clients(0)
    assert time.monotonic() - lost < 60
    client.expected_status = client.end()  # it may have noticed for itself
