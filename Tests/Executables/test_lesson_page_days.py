"""The lesson page for long, on many devices, and on devices that sleep: what it costs, and what it still has."""

import asyncio
import contextlib
import json
import os

import pytest
import websockets
from browser import Browser
from client import is_push
from lesson import LATITUDE
from lesson_page import open_page, press, served_files, shows
from tab import in_page

PAGES = 10
CLIENTS = 100
BEAT = 0.5
#: Of two samples, in seconds; where a beat was left out it is 1.
LONGEST_STEP = 0.8
#: Of the page's files as they travel; what is fetched before the first sight; in bytes.
ALL_FILES = 150 * 1024
FIRST_SIGHT = 40 * 1024


@pytest.fixture
def companion(programs):
    _, sim_port = programs.simulator("--start", "cruise")
    return programs.companion(sim_port=sim_port)


def steps(samples):
    """Seconds from each sample to the next."""
    times = [sample["elapsed_s"] for sample in samples]
    return [later - earlier for earlier, later in zip(times, times[1:])]


def lateness(samples):
    late = sorted(1000 * (step - BEAT) for step in steps(samples))
    return f"{len(late)} beats late by {late[len(late) // 2]:.1f} ms, p99 {late[len(late) * 99 // 100]:.1f}, {late[-1]:.1f} at most"


def samples_of(companion):
    return companion.client().data("catch_up", {})["samples"]


SAMPLES_SHOWN = "parseInt(document.querySelector('#recorded').textContent)"


def test_the_page_is_small(companion):
    sizes = served_files(companion.port)
    assert len(sizes) >= 8
    assert sum(sizes.values()) < ALL_FILES, sizes
    later = ("/flight", "/licences", "/icon-")
    first = {path: size for path, size in sizes.items() if not path.startswith(later)}
    assert sum(first.values()) < FIRST_SIGHT, first


def test_values_that_change_shift_nothing(companion, browser):
    async def watch(page):
        await open_page(page, companion.port)
        await shows(page, "#state", "Flying")
        await press(page, "Record")
        await page.wait_for(f"{SAMPLES_SHOWN} > 2")
        await page.ask("""window.shifts = []; new PerformanceObserver(list => {
            for (const { value, sources } of list.getEntries()) {
                shifts.push([value, ...sources.map(({ node }) => node?.outerHTML?.slice(0, 200))]);
            } }).observe({ type: "layout-shift" }); 0""")
        before = await page.ask(SAMPLES_SHOWN)
        await page.wait_for(f"{SAMPLES_SHOWN} > {before + 20}")
        shifts = await page.ask("shifts")
        # That it would be seen.
        await page.ask("document.querySelector('#instruments').style.marginTop = '5rem'; 0")
        await page.wait_for("shifts.length > 0")
        return shifts

    assert in_page(browser, watch) == []


def test_a_tab_that_was_frozen_has_every_second_afterwards(companion, browser):
    async def sleep(page):
        await open_page(page, companion.port)
        await shows(page, "#state", "Flying")
        await press(page, "Record")
        await page.wait_for(f"{SAMPLES_SHOWN} > 2")
        await page.call("Page.setWebLifecycleState", state="frozen")
        frozen = len(samples_of(companion))
        while len(samples_of(companion)) < frozen + 20:
            await asyncio.sleep(0.5)
        asleep = await page.ask(SAMPLES_SHOWN)
        await page.call("Page.setWebLifecycleState", state="active")
        await page.wait_for(f"{SAMPLES_SHOWN} >= {frozen + 20}")
        await shows(page, "#state", "Flying")
        await press(page, "Stop")
        shown = len(samples_of(companion))
        await page.wait_for(f"{SAMPLES_SHOWN} == {shown}")
        return asleep, frozen

    asleep, frozen = in_page(browser, sleep)
    assert asleep <= frozen, "it was not asleep"
    assert max(steps(samples_of(companion))) < LONGEST_STEP


async def listen(port, counts, number):
    """A native client with a subscription; counts its pushes."""
    async with websockets.connect(f"ws://127.0.0.1:{port}/", ping_interval=None) as connection:
        await connection.send(json.dumps({"type": "pair", "req_id": 1}))
        params = {"datarefs": [{"name": LATITUDE}]}
        await connection.send(json.dumps({"type": "dataref_subscribe_values", "req_id": 2, "params": params}))
        async for text in connection:
            counts[number] += is_push(json.loads(text))


def test_ten_pages_and_a_hundred_clients_lose_no_beat(companion, browser):
    seconds, counts = 15, [0] * CLIENTS

    async def stay(page):
        await open_page(page, companion.port)
        await shows(page, "#state", "Flying")
        await page.wait_for(f"{SAMPLES_SHOWN} > 0")
        before = await page.ask(SAMPLES_SHOWN)
        await page.wait_for(f"{SAMPLES_SHOWN} > {before} + {seconds / BEAT}")
        assert not page.complaints, page.complaints

    async def run():
        crowd = [asyncio.ensure_future(listen(companion.port, counts, number)) for number in range(CLIENTS)]
        await asyncio.sleep(seconds)
        alone = len(samples_of(companion))
        async with contextlib.AsyncExitStack() as stack:
            async def tab():
                connection = await stack.enter_async_context(
                    websockets.connect(browser.address, max_size=None, compression=None, ping_interval=None))
                page = browser.tab(connection)
                await page.attach()
                return page

            pages = [await tab() for _ in range(PAGES)]
            before = list(counts)
            await asyncio.gather(*map(stay, pages))
            heard = [now - then for now, then in zip(counts, before)]
            for page in pages:
                await page.leave()
        for client in crowd:
            assert not client.done(), client
            client.cancel()
        return alone, heard

    companion.client().data("recording_start")
    alone, heard = asyncio.run(run())
    samples = samples_of(companion)
    print(f"{CLIENTS} clients: {lateness(samples[:alone])}; and {PAGES} pages: {lateness(samples[alone:])}; "
          f"pushes {min(heard)} to {max(heard)}; load average {os.getloadavg()[0]:.1f}")
    assert len(samples) - alone > seconds / BEAT
    assert max(steps(samples)) < LONGEST_STEP
    assert min(heard) >= 0.9 * seconds / BEAT, heard
    assert max(heard) - min(heard) <= 3, heard
