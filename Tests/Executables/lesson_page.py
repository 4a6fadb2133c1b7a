"""What the tests of the lesson page share: a companion with a flight, and hands for the page."""

import contextlib
import gzip
import http.client
import json
import re
import subprocess

from command_port import datagram_for
from cut_network import CutNetwork
from harness import SIMULATOR_LINE

PASSWORD = "right one"
#: What is saved there; its name tells the stand-in where that is.
SITUATION = "Runway 14"


class Rig:
    """A companion with a password, on a port that stays, beside a flight; and its page on a phone."""

    def __init__(self, programs, port, *options):
        self.programs, self.port, self.options = programs, port, options
        self.sim_port = 0
        self.start_simulator()
        situations = programs.new_folder()
        (situations / f"{SITUATION}.sit").write_text("saved")
        self.options += ("--situations", situations)
        self.start()

    def start_simulator(self, *options):
        self.simulator, self.sim_port = self.programs.simulator("--start", "downwind", "--control", "stdin", *options,
                                                                port=self.sim_port, stdin=subprocess.PIPE)
        self.order_port = int(self.simulator.wait_for_line(SIMULATOR_LINE).group(2))

    def order(self, text):
        """Of the simulator."""
        self.simulator.write(f"{text}\n")

    def start(self):
        self.companion = self.programs.companion("--port", self.port, *self.options, sim_port=self.sim_port,
                                                 settings={"password": PASSWORD, "startAtLogin": False})

    @contextlib.asynccontextmanager
    async def at(self, host):
        """The flight is to be reached at this host as well, as long as the block takes."""
        network = CutNetwork(self.sim_port, host, self.sim_port)
        await network.start()
        try:
            yield
        finally:
            await network.close()


async def open_page(page, port, width=390, height=844):
    await page.show(width, height, touch=True)
    await page.go(f"http://127.0.0.1:{port}/")


def text(page, selector):
    return page.ask(f"document.querySelector({json.dumps(selector)}).textContent")


async def shows(page, selector, part):
    await page.wait_for(f"document.querySelector({json.dumps(selector)})?.textContent.includes({json.dumps(part)})")


async def press(page, label, within="body"):
    """The button that says this."""
    found = await page.ask(
        f"[...document.querySelectorAll({json.dumps(within + ' button')})]"
        f".filter(one => one.textContent === {json.dumps(label)}).map(one => one.click()).length")
    assert found == 1, f"{found} buttons say {label}"


async def type_into(page, selector, value):
    await page.ask(f"{{ const field = document.querySelector({json.dumps(selector)}); field.value = {json.dumps(value)} }}")


async def flying(page, port, **size):
    """The page, paired, with its dials at work."""
    await open_page(page, port, **size)
    await page.wait_for("document.querySelector('header')?.dataset.state === 'refused'")
    await pair(page)
    await is_flying(page)


async def is_flying(page):
    await page.wait_for("document.querySelector('header').dataset.state === 'flight'")
    await has_values(page)


def has_values(page):
    return page.wait_for(r"/^\d+$/.test(document.querySelector('[data-reading=altitude] dd').textContent)")


async def pair(page, password=PASSWORD):
    await type_into(page, "#password", password)
    await page.ask("document.querySelector('#pairing').requestSubmit()")


async def load_situation(page, rig, command_port):
    """Presses its button, and says yes; the stand-in, which has another port, gets what the companion orders."""
    await press_load(page, "Yes")
    await shows(page, "#outcome", f"Done: {SITUATION}")
    order = command_port.datagram()
    assert order == datagram_for(f"Output/situations/{SITUATION}.sit") and command_port.is_quiet()
    command_port.hand_on(order, rig.order_port)
    await page.wait_for("document.querySelector('[data-reading=height] dd').textContent === '0'")


async def press_load(page, answer):
    await shows(page, "#situations li", SITUATION)
    await page.ask("document.querySelector('#situations li button').click()")
    await page.wait_for("document.querySelector('dialog').open")
    assert f"Load “{SITUATION}”?" in await text(page, "dialog p")
    await press(page, answer, "dialog")


def script_file(programs, *triggers):
    file = programs.new_folder() / "lesson.json"
    file.write_text(json.dumps({"triggers": list(triggers)}))
    return file


def served_files(port):
    """The page's files as they travel: the bytes of each by its path."""
    found, wanted = {}, ["/", "/failures.json", "/licences.txt"]
    while wanted:
        path = wanted.pop()
        if path in found:
            continue
        connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
        connection.request("GET", path, headers={"Accept-Encoding": "gzip"})
        response = connection.getresponse()
        body = response.read()
        connection.close()
        assert response.status == 200 and response.headers["Content-Encoding"] == "gzip", (path, response.status)
        found[path] = len(body)
        wanted += re.findall(r'(?:src|href)"?[=:] ?"([^"]+)"', gzip.decompress(body).decode()) if is_text_of_paths(path) else []
    return found


def is_text_of_paths(path):
    return path == "/" or path.endswith(".webmanifest")
