"""The page that the companion serves to browsers: a lesson flown on it, from pairing to the download."""

import asyncio
import json

import pytest
from browser import Browser, in_page
from harness import reserved_port
from lesson import trigger

PASSWORD = "right one"


@pytest.fixture(scope="module")
def browser():
    started = Browser()
    yield started
    started.close()


class Rig:
    """A companion with a password, on a port that stays, beside a flight; and its page on a phone."""

    def __init__(self, programs, port, *options):
        self.programs, self.port, self.options = programs, port, options
        self.simulator, self.sim_port = programs.simulator("--start", "downwind")
        situations = programs.new_folder()
        (situations / "Pattern 1.sit").write_text("saved")
        self.options += ("--situations", situations)
        self.start()

    def start(self):
        self.companion = self.programs.companion("--port", self.port, *self.options, sim_port=self.sim_port,
                                                 settings={"password": PASSWORD, "startAtLogin": False})


async def open_page(page, port, width=390, height=844):
    await page.show(width, height, touch=True)
    page._loaded.clear()
    await page.call("Page.navigate", url=f"http://127.0.0.1:{port}/")
    await asyncio.wait_for(page._loaded.wait(), 60)


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


async def choose_file(page, selector, path):
    document = await page.call("DOM.getDocument")
    node = await page.call("DOM.querySelector", nodeId=document["root"]["nodeId"], selector=selector)
    await page.call("DOM.setFileInputFiles", nodeId=node["nodeId"], files=[str(path)])


async def pair(page, password):
    await type_into(page, "#password", password)
    await press(page, "Pair")


def script_file(programs, *triggers):
    file = programs.new_folder() / "lesson.json"
    file.write_text(json.dumps({"triggers": list(triggers)}))
    return file


def test_a_lesson_is_flown_on_the_page(programs, browser):
    downloads = programs.new_folder()
    script = script_file(programs, trigger("begun", "after_start", seconds=0, action={"text": "Your aircraft."}),
                         trigger("later", "after_start", seconds=4, action={"text": "Turn base."}),
                         trigger("never", "after_start", seconds=9999))

    async def fly(page):
        await page.call("Browser.setDownloadBehavior", behavior="allow", downloadPath=str(downloads))
        await open_page(page, rig.port)
        await shows(page, "#state", "Password needed")
        await pair(page, "wrong one")
        await shows(page, "#words", "That is not the companion's password.")
        await pair(page, PASSWORD)
        await shows(page, "#state", "Flying")
        await page.wait_for("/^\\d+$/.test(document.querySelector('[data-reading=altitude] span').textContent)")
        assert "Pattern 1" in await text(page, "#situations")

        await choose_file(page, "#script-file", script)
        await shows(page, "#script", "Loaded: 3 triggers.")
        await press(page, "Record")
        await shows(page, "#cards", "Your aircraft.")
        rig.companion.program.end()
        await shows(page, "#state", "Looking for the companion")
        rig.start()
        await shows(page, "#state", "Flying")
        await shows(page, "#recording", "Nothing recorded yet.")

        await press(page, "Record")
        await choose_file(page, "#script-file", script)
        await shows(page, "#cards", "Turn base.")
        await press(page, "Stop")
        await press(page, "Download the recording")
        await press(page, "Look at the flight")
        await page.wait_for("document.querySelector('#flight div').shadowRoot?.querySelector('.track')")
        assert not page.complaints, page.complaints
        assert all(url.startswith((f"http://127.0.0.1:{rig.port}/", "blob:")) for url in page.requests), page.requests
        return await page.ask("document.documentElement.scrollWidth")

    with reserved_port() as port:
        rig = Rig(programs, port)
        assert in_page(browser, fly) <= 390
    [recording] = downloads.iterdir()
    shown = programs.run("tarnly-track", "show", "--json", recording)
    assert shown.status == 0, shown
    assert [fired["trigger_id"] for fired in json.loads(shown.output)["triggers"]] == ["begun", "later"]
