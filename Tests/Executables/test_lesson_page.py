"""The page that the companion serves to browsers: a lesson flown on it, from pairing to the download."""

import asyncio
import json

import pytest
from browser import Browser, in_page
from firefox import Firefox
from harness import reserved_port, wait_until
from lesson import trigger
from lesson_page import (
    PASSWORD, Rig, has_values, load_situation, open_page, pair, press, script_file, shows)


@pytest.fixture(scope="module", params=[Browser, Firefox], ids=["chromium", "firefox"])
def browser(request):
    started = request.param()
    yield started
    started.close()


def whole(folder):
    """The one file there, as soon as a browser has written all of it: until then it has another one beside it, or none."""
    files = list(folder.iterdir())
    return files[0] if len(files) == 1 and files[0].suffix == ".jsonl" and files[0].stat().st_size > 0 else None


def test_a_lesson_is_flown_on_the_page(programs, browser, command_port):
    downloads = programs.new_folder()
    script = script_file(programs, trigger("begun", "after_start", seconds=0, action={"text": "Your aircraft."}),
                         trigger("later", "after_start", seconds=4, action={"text": "Turn base."}),
                         trigger("never", "after_start", seconds=9999))

    async def fly(page):
        await page.download_to(downloads)
        await open_page(page, rig.port)
        await shows(page, "#state", "Password needed")
        await pair(page, "wrong one")
        await shows(page, "#words", "That is not the companion's password.")
        await pair(page, PASSWORD)
        await shows(page, "#state", "Flying")
        await has_values(page)
        await load_situation(page, rig, command_port)

        await page.choose_file("#script-file", script)
        await shows(page, "#script", "Loaded: 3 triggers.")
        await press(page, "Record")
        await shows(page, "#cards", "Your aircraft.")
        rig.companion.program.end()
        await shows(page, "#state", "Looking for the companion")
        rig.start()
        await shows(page, "#state", "Flying")
        await shows(page, "#recording", "Nothing recorded yet.")

        await press(page, "Record") # with the script, of which the companion knows nothing any more
        await shows(page, "#cards", "Turn base.")
        await press(page, "Stop")
        await press(page, "Download the recording")
        await asyncio.to_thread(wait_until, lambda: whole(downloads), "the download")
        await press(page, "Look at the flight")
        await page.wait_for("document.querySelector('#flight div').shadowRoot?.querySelector('.track')")
        assert not page.complaints, page.complaints
        assert all(url.startswith((f"http://127.0.0.1:{rig.port}/", "blob:")) for url in page.requests), page.requests
        return await page.ask("document.documentElement.scrollWidth")

    async def fly_there(page):
        async with rig.at(command_port.host):
            return await fly(page)

    with reserved_port() as port:
        rig = Rig(programs, port, "--sim-host", command_port.host)
        assert in_page(browser, fly_there) <= 390
    shown = programs.run("tarnly-track", "show", "--json", whole(downloads))
    assert shown.status == 0, shown
    assert [fired["trigger_id"] for fired in json.loads(shown.output)["triggers"]] == ["begun", "later"]
