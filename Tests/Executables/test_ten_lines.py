"""The ten-line clients of docs/clients.md do what they say."""

import re
import subprocess
from pathlib import Path

import pytest

CLIENTS = (Path(__file__).resolve().parents[2] / "docs" / "clients.md").read_text()
ADDRESS = "ws://192.0.2.7:28086/"
BROWSER = 'import { WebSocket } from "ws";\n'  # Node's own comes with release 22


def program(language, port):
    [code] = re.findall(rf"```{language}\n(.*?)```", CLIENTS, re.DOTALL)
    assert code.count(ADDRESS) == 1
    return code.replace(ADDRESS, f"ws://127.0.0.1:{port}/")


@pytest.mark.parametrize("language", ["typescript", "python", "swift", "kotlin"])
def test_each_has_ten_lines(language):
    assert len(program(language, 1).splitlines()) == 10


def run(programs, language, port):
    folder = programs.new_folder()
    if language == "python":
        (folder / "client.py").write_text(program("python", port))
        return programs.start_command("client.py", ["/usr/bin/python3", "-u", str(folder / "client.py")])
    (folder / "client.ts").write_text(BROWSER + program("typescript", port))
    subprocess.run(["esbuild", folder / "client.ts", "--bundle", "--platform=node", "--external:ws",
                    f"--outfile={folder}/client.js", "--log-level=warning"], check=True)
    return programs.start_command("client.ts", ["node", str(folder / "client.js")], NODE_PATH="/usr/share/nodejs")


@pytest.mark.parametrize("language", ["typescript", "python"])
def test_it_prints_the_altitude_over_and_over(programs, language):
    _, sim_port = programs.simulator()
    companion = programs.companion(sim_port=sim_port)
    client = run(programs, language, companion.port)
    client.expected_status = -15
    client.wait_for_line("h_ind")
    for number in range(3):
        line = client.wait_for_nth_line(number)
        assert re.search(r"'sim/flightmodel/misc/h_ind': \d+", line), line


@pytest.mark.parametrize("language", ["typescript", "python"])
def test_it_says_that_the_password_is_another(programs, language):
    companion = programs.companion(settings={"password": "secret", "startAtLogin": False})
    client = run(programs, language, companion.port)
    client.expected_status = client.wait()
    assert client.expected_status == 1
    assert "password" in client.errors()
