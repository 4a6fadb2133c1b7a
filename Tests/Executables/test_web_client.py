"""The client in web/client, on a socket of Node's, against the companion and the stand-in."""

import json
import subprocess
import tempfile
from pathlib import Path

import pytest
from harness import reserved_port
from lesson import trigger

WEB = Path(__file__).resolve().parents[1] / "Web"
LATITUDE = "sim/flightmodel/position/latitude"


@pytest.fixture(scope="module")
def bundle():
    with tempfile.TemporaryDirectory(prefix="tarnly-test-") as folder:
        file = Path(folder) / "driver.js"
        subprocess.run(["esbuild", WEB / "driver.ts", "--bundle", "--platform=node", "--log-level=warning",
                        "--external:ws", f"--outfile={file}"], check=True)
        yield file


class Client:
    def __init__(self, programs, bundle, port, *password):
        command = ["node", str(bundle), f"ws://127.0.0.1:{port}/", *password]
        self.program = programs.start_command("web client", command, subprocess.PIPE, NODE_PATH="/usr/share/nodejs")
        self.seen = 0
        programs.close_at_end(self)

    def close(self):
        self.program.process.stdin.close()
        self.program.wait()

    def order(self, **order):
        self.program.write(json.dumps(order) + "\n")

    def next(self, key):
        """The next thing told of this kind, and what comes between is passed over."""
        while True:
            line = json.loads(self.program.wait_for_nth_line(self.seen))
            self.seen += 1
            if key in line:
                return line

    def ask(self, key="answer", **order):
        self.order(**order)
        return self.next(key)[key]


def test_a_lesson_goes_on_over_a_lost_companion(programs, bundle):
    _, sim_port = programs.simulator()
    with reserved_port() as port:
        companion = programs.companion("--port", port, sim_port=sim_port)
        client = Client(programs, bundle, port)
        assert client.next("link")["link"] == "paired"
        assert client.ask(request="sim_info")["sim"] == "xplane"
        assert LATITUDE in client.ask(subscribe=[LATITUDE])
        assert LATITUDE in client.next("values")["values"]
        script = {"triggers": [trigger("begun", "after_start", seconds=0)]}
        assert client.ask(request="load_script", params=script) == {"unresolved_fixes": []}
        client.ask(request="recording_start")
        recorded = client.ask("samples", catchUp=True)
        while len(recorded) < 3:
            recorded = client.ask("samples", catchUp=True)
        assert client.ask("fired", catchUp=True)[0]["trigger_id"] == "begun"

        companion.program.end()
        assert client.next("link")["link"] == "looking"
        programs.companion("--port", port, sim_port=sim_port)
        assert client.next("link")["link"] == "paired"
        assert LATITUDE in client.next("values")["values"]
        assert client.ask("isAnew", catchUp=True) is True


def test_samples_are_caught_up_with_each_once(programs, bundle):
    _, sim_port = programs.simulator()
    companion = programs.companion(sim_port=sim_port)
    client, other = Client(programs, bundle, companion.port), companion.client()
    assert client.next("link")["link"] == "paired"
    client.ask(request="recording_start")
    while len(client.ask("samples", catchUp=True)) < 5:
        pass
    client.ask(request="recording_stop")
    assert client.ask("samples", catchUp=True) == other.data("catch_up")["samples"]


def test_a_refusal_is_told_in_the_companion_s_words(programs, bundle):
    companion = programs.companion()
    client = Client(programs, bundle, companion.port)
    assert client.next("link")["link"] == "paired"
    assert client.ask("failed", request="list_flights") == "situationsDirectoryNotConfigured"
    assert client.ask("failed", request="load_flight", params={"path": "/gone/a.sit"}) == 'flightNotFound("/gone/a.sit")'
    assert client.ask("failed", request="load_script", params=None).startswith("missingParams(")


def test_it_pairs_with_the_right_password_after_a_wrong_one(programs, bundle):
    companion = programs.companion(settings={"password": "right", "startAtLogin": False})
    client = Client(programs, bundle, companion.port, "wrong")
    assert client.next("link")["link"] == "refused"
    assert client.ask("link", pair="right") == "looking"
    assert client.next("link")["link"] == "paired"
    assert client.ask(request="sim_info")["sim"] == "xplane"
