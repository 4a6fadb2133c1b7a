"""A publisher, seen from outside, while its daemon and bus come and go."""

import os
import pathlib
import signal
import subprocess
import sys
import threading
import time

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "Support"))

from dnssd import PrivateDnssd  # noqa: E402

PUBLISH = str(pathlib.Path(os.environ["TARNLY_BIN"]) / "tarnly_dnssd_publish")
SERVICE_TYPE = "_tarnlyrestart._tcp"
# More than anything here takes, on however busy a machine.
PATIENCE = 90
# A call to a daemon that hangs fails after 25 s.
BUS_CALL_TIMEOUT = 25


class Publisher:
    def __init__(self, dnssd, *, port=4711, txt=(), mode="publish"):
        command = [PUBLISH, mode, "rig", SERVICE_TYPE, str(port), *(text for pair in txt for text in pair)]
        self._process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, env=dnssd.environment)
        self._lines = []
        self._changed = threading.Condition()
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self._process.stdout:
            with self._changed:
                self._lines.append(line.strip())
                self._changed.notify_all()

    def wait_for(self, *lines):
        """Waits until these, and no others, are the lines since the last call."""
        expected = list(lines)
        with self._changed:
            self._changed.wait_for(lambda: len(self._lines) >= len(expected), PATIENCE)
            assert self._lines == expected
            self._lines.clear()

    def wait_for_last(self, beginning, ending=""):
        """Waits until the last line begins and ends so, whatever came before."""
        def has_come():
            return any(line.startswith(beginning) and line.endswith(ending) for line in self._lines[-1:])

        with self._changed:
            assert self._changed.wait_for(has_come, PATIENCE), self._lines

    def end(self):
        self._process.stdin.close()
        status = self._process.wait(PATIENCE)
        assert status == 0


def found(dnssd):
    """The lines of a browse: name, address and port of each service."""
    result = subprocess.run([PUBLISH, "browse", SERVICE_TYPE], env=dnssd.environment, capture_output=True,
                            text=True, timeout=PATIENCE, check=True)
    return result.stdout.splitlines()


@pytest.fixture
def dnssd():
    with PrivateDnssd() as private:
        yield private


@pytest.fixture
def nothing_yet():
    private = PrivateDnssd()
    yield private
    private.close()


def test_a_daemon_that_starts_later_is_waited_for(nothing_yet):
    nothing_yet.start_bus()
    publisher = Publisher(nothing_yet)
    time.sleep(0.5)
    nothing_yet.start_daemon()
    publisher.wait_for("published: rig")
    assert found(nothing_yet) == ["rig\t127.0.0.1\t4711"]
    publisher.end()


def test_a_bus_that_starts_later_is_waited_for(nothing_yet):
    publisher = Publisher(nothing_yet)
    time.sleep(0.5)
    nothing_yet.start_bus()
    nothing_yet.start_daemon()
    publisher.wait_for("published: rig")
    publisher.end()


def test_after_a_restart_of_the_daemon_the_service_stands_again(dnssd):
    publisher = Publisher(dnssd)
    publisher.wait_for("published: rig")
    dnssd.stop_daemon()
    publisher.wait_for("published:")
    dnssd.start_daemon()
    publisher.wait_for("published: rig")
    assert found(dnssd) == ["rig\t127.0.0.1\t4711"]
    publisher.end()


def test_after_a_crash_of_the_daemon_the_service_stands_again(dnssd):
    publisher = Publisher(dnssd)
    publisher.wait_for("published: rig")
    dnssd.signal_daemon(signal.SIGKILL)
    dnssd.restart_daemon()
    publisher.wait_for("published:", "published: rig")
    publisher.end()


def test_after_a_restart_of_the_bus_the_service_stands_again(dnssd):
    publisher = Publisher(dnssd)
    publisher.wait_for("published: rig")
    dnssd.restart()
    publisher.wait_for("published:", "published: rig")
    assert found(dnssd) == ["rig\t127.0.0.1\t4711"]
    publisher.end()


def test_a_name_taken_elsewhere_on_the_network_gives_way(dnssd):
    with PrivateDnssd(neighbour=dnssd) as neighbour:
        here = Publisher(dnssd, port=1)
        here.wait_for("published: rig")
        there = Publisher(neighbour, port=2)
        there.wait_for("published: rig (2)")
        there.end()
        here.end()


def test_it_tells_why_the_service_does_not_stand(nothing_yet):
    publisher = Publisher(nothing_yet, mode="states")
    cure = "; install or start avahi-daemon"
    unreachable = "not published: the DNS-SD daemon (Avahi) cannot be reached: "
    publisher.wait_for_last(unreachable, cure)
    nothing_yet.start_bus()
    publisher.wait_for_last(f"{unreachable}Daemon not running{cure}")
    nothing_yet.start_daemon()
    publisher.wait_for_last("published: rig")
    nothing_yet.stop_daemon()
    publisher.wait_for_last(f"{unreachable}Daemon not running{cure}")
    publisher.end()


def test_without_a_daemon_the_publisher_ends_promptly(nothing_yet):
    publisher = Publisher(nothing_yet)
    time.sleep(0.2)
    started = time.monotonic()
    publisher.end()
    assert time.monotonic() - started < 10


def test_a_daemon_that_hangs_keeps_nobody_from_ending(dnssd):
    publisher = Publisher(dnssd)
    publisher.wait_for("published: rig")
    dnssd.signal_daemon(signal.SIGSTOP)
    started = time.monotonic()
    publisher.end()
    assert time.monotonic() - started < BUS_CALL_TIMEOUT / 2


def test_browsing_without_a_daemon_says_so(nothing_yet):
    nothing_yet.start_bus()
    result = subprocess.run([PUBLISH, "browse", SERVICE_TYPE], env=nothing_yet.environment, capture_output=True,
                            text=True, timeout=PATIENCE, check=False)
    assert result.returncode == 1
    assert result.stderr == "the DNS-SD daemon (Avahi) cannot be reached: Daemon not running\n"


QUERY = """
import socket, sys
instance, wanted = sys.argv[1], bytes.fromhex(sys.argv[2])
labels = [instance, *"SERVICE_TYPE".split("."), "local"]
name = b"".join(bytes([len(label)]) + label.encode() for label in labels) + bytes(1)
question = bytes.fromhex("000100000001000000000000") + name + bytes.fromhex("00100001")
with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as asking:
    asking.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton("127.0.0.1"))
    asking.settimeout(5)
    for _ in range(6):
        asking.sendto(question, ("224.0.0.251", 5353))
        try:
            answer = asking.recv(9000)
        except TimeoutError:
            continue
        print(answer.hex())
        sys.exit(0 if wanted in answer else 1)
sys.exit("no answer")
""".replace("SERVICE_TYPE", SERVICE_TYPE)


def test_the_entries_go_out_in_the_order_given(dnssd):
    txt = [("sim", "xplane"), ("ver", "0.1"), ("pairing", "open")]
    publisher = Publisher(dnssd, txt=txt)
    publisher.wait_for("published: rig")
    texts = ["=".join(pair).encode() for pair in txt]
    record = b"".join(bytes([len(text)]) + text for text in texts)
    resource_data = len(record).to_bytes(2, "big") + record
    command = dnssd.in_network(sys.executable, "-c", QUERY, "rig", resource_data.hex())
    answer = subprocess.run(command, capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert answer.returncode == 0, answer.stdout + answer.stderr
    publisher.end()
