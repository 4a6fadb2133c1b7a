"""The lesson page while something is away: the network, the simulator, the companion; and what it reads aloud."""

import asyncio
import signal

import pytest
from browser import Browser, in_page
from cut_network import CutNetwork
from firefox import Firefox
from harness import reserved_port
from lesson import Recorder, trigger
from lesson_page import PASSWORD, Rig, flying, has_values, press, script_file, shows, text

#: After so many seconds without the companion the page takes what has fired for missed.
MISSED = 10

# A browser with a voice and a screen, both of which remember what was asked of them.
DEVICE = """
window.said = []; window.locks = []; window.silenced = 0;
const speech = {getVoices: () => [{lang: "en"}], addEventListener() {}, cancel: () => { ++silenced; },
                speak: one => said.push([one.text, one.lang])};
Object.defineProperty(window, "speechSynthesis", {value: speech});
const give = async () => {
    const lock = {released: false, async release() { lock.released = true; }};
    locks.push(lock);
    return lock;
};
Object.defineProperty(navigator, "wakeLock", {value: {request: give}});
"""


@pytest.fixture(scope="module", params=[Browser, Firefox], ids=["chromium", "firefox"])
def browser(request):
    started = request.param()
    yield started
    started.close()


@pytest.fixture(scope="module")
def chromium():
    started = Browser()
    yield started
    started.close()


def cards(page):
    return page.ask("[...document.querySelectorAll('.card')].map(one => one.lastChild.textContent)")


async def grows(page):
    """The recording, from now on."""
    count = int((await text(page, "#recorded")).split()[0])
    await page.wait_for(f"parseInt(document.querySelector('#recorded').textContent) > {count + 2}")


def test_texts_are_read_once_and_what_was_missed_is_shown(programs, browser):
    script = script_file(programs, trigger("begun", "after_start", seconds=0, action={"text": "Your aircraft."}),
                         trigger("base", "after_start", seconds=1, action={"text": "Turn base.", "language": "en-GB"}),
                         trigger("page", "after_start", seconds=1, action={"text": "Page two."}, action_kind="show"),
                         trigger("final", "crosses_agl", feet=100, climbing=False, action={"text": "Final."}),
                         trigger("away", "crosses_agl", feet=100, climbing=True, action={"text": "Go around."}))
    spoken = [["Texts are read aloud.", "en"], ["Your aircraft.", "en"], ["Turn base.", "en-GB"]]

    def misses_the_final(other):
        """As long as the page would miss it, by what another client sees."""
        other.catch_up()
        rig.order("load Runway")
        other.wait_for_fired("final")
        missed = max(other.since, other.fired[-1]["elapsed_s"]) + MISSED
        other.wait_for(lambda: other.since > missed + 1, "the end of the absence")

    async def fly(page):
        network = CutNetwork(rig.companion.port)
        await network.start()
        await page.begin_with(DEVICE)
        await flying(page, network.port)
        await page.choose_file("#script-file", script)
        await page.ask("document.querySelector('#speak').click()")
        await press(page, "Record")
        await page.wait_for("document.querySelectorAll('.card').length === 3")
        assert await page.ask("said") == spoken
        assert await page.ask("locks.map(one => one.released)") == [False]
        await shows(page, "#recording", "The screen stays on while it records.")

        network.cut()
        await shows(page, "#state", "Looking for the companion")
        assert await text(page, "[data-reading=altitude] dd") == "–"
        other = Recorder(rig.companion.client(PASSWORD))
        await asyncio.to_thread(misses_the_final, other)
        network.mend()
        await page.ask("dispatchEvent(new Event('online'))")
        await shows(page, "#cards", "Final.")
        assert await page.ask("document.querySelector('.card.missed').lastChild.textContent") == "Final."
        await shows(page, "#state", "Flying")
        rig.order("load Downwind")
        await shows(page, "#cards", "Go around.")
        assert (await cards(page))[:2] == ["Go around.", "Final."] and len(await cards(page)) == 5
        assert await page.ask("said") == [*spoken, ["Go around.", "en"]]

        await page.ask("document.querySelector('#speak').click()")
        assert await page.ask("silenced") == 1
        await press(page, "Stop")
        await page.wait_for("locks.every(one => one.released)")
        assert await page.ask("locks.length") == 1
        other.catch_up()
        await page.wait_for(f"parseInt(document.querySelector('#recorded').textContent) === {len(other.samples)}")
        await network.close()

    with reserved_port() as port:
        rig = Rig(programs, port)
        in_page(browser, fly)


def test_voices_that_come_untold_are_found_and_what_is_not_read_is_told(programs, chromium):
    async def look(page):
        await page.begin_with(DEVICE + """
            window.voices = []; speech.getVoices = () => voices; speech.speak = one => { window.last = one; };""")
        await flying(page, port)
        assert await page.ask("document.querySelector('#speak').disabled")
        await page.ask("voices.push({lang: 'en'}); dispatchEvent(new Event('focus'))")
        assert not await page.ask("document.querySelector('#speak').disabled")
        assert await text(page, "#voice") == ""

        await page.ask("document.querySelector('#speak').click(); last.onerror({error: 'network'})")
        await page.ask("dispatchEvent(new Event('focus'))")
        assert "has not read a text (network)" in await text(page, "#voice")
        assert await page.ask("document.querySelector('#speak').checked")
        await page.ask("last.onerror({error: 'not-allowed'})")
        assert "switch it on again" in await text(page, "#voice")
        assert not await page.ask("document.querySelector('#speak').checked")

    with reserved_port() as port:
        Rig(programs, port)
        in_page(chromium, look)


def test_a_browser_without_a_voice_says_so(programs, browser):
    async def look(page):
        await page.begin_with("Object.defineProperty(window, 'speechSynthesis', {value: undefined})")
        await flying(page, port)
        assert await page.ask("document.querySelector('#speak').disabled")
        await shows(page, "#voice", "This browser has no voice here")

    with reserved_port() as port:
        Rig(programs, port)
        in_page(browser, look)


def test_the_simulator_comes_and_goes_within_a_recording(programs, browser):
    async def fly(page):
        await flying(page, port)
        await press(page, "Record")
        await shows(page, "#recorded", "samples")
        rig.simulator.end()
        await shows(page, "#state", "Simulator away")
        await shows(page, "#words", "start X-Plane")
        assert await text(page, "[data-reading=altitude] dd") == "–"
        assert await page.ask("document.querySelector('#pause').disabled")
        assert await text(page, "#position") == "No position now."
        assert await page.ask("document.querySelector('#track .aircraft').checkVisibility({ visibilityProperty: true })") is False
        await press(page, "Where it is now")
        await shows(page, "#place [role=status]", "No position now.")
        assert await page.ask("document.querySelector('#place-latitude').value") == ""
        rig.start_simulator("--main-menu")
        await shows(page, "#state", "Main menu: load a flight")
        rig.order("load")
        await shows(page, "#state", "Flying")
        await shows(page, "#words", "The simulator is back.")
        await has_values(page)
        assert "of latitude" in await text(page, "#position")
        await grows(page)
        await press(page, "Stop")
        await shows(page, "#outcome", "Done: Stop")
        assert not await page.ask("document.querySelector('#pause').disabled")

    with reserved_port() as port:
        rig = Rig(programs, port)
        in_page(browser, fly)


@pytest.mark.parametrize("quirk, cure", [("traffic-disabled", "allow incoming traffic"),
                                         ("too-old", "too old: X-Plane 12.1.4")])
def test_a_simulator_that_lets_nobody_in_is_told_with_its_cure(programs, chromium, quirk, cure):
    async def look(page):
        await flying(page, port)
        rig.order(f"{quirk} on")
        rig.order("drop")
        await shows(page, "#state", "Simulator away")
        await shows(page, "#words", cure)
        rig.order(f"{quirk} off")
        await shows(page, "#state", "Flying")
        await has_values(page)

    with reserved_port() as port:
        rig = Rig(programs, port)
        in_page(chromium, look)


def test_a_companion_that_hangs_leaves_no_old_values_on_the_dials(programs, chromium):
    async def fly(page):
        await flying(page, port)
        await press(page, "Record")
        await shows(page, "#recorded", "samples")
        rig.companion.program.process.send_signal(signal.SIGSTOP)
        await shows(page, "#state", "No values come")
        assert await text(page, "[data-reading=altitude] dd") == "–"
        rig.companion.program.process.send_signal(signal.SIGCONT)
        await shows(page, "#state", "Flying")
        await has_values(page)
        await grows(page)
        assert await text(page, "#record") == "Stop"

    with reserved_port() as port:
        rig = Rig(programs, port)
        in_page(chromium, fly)


PLOT = "document.querySelector('#flight > div').shadowRoot?.querySelector('.track')"


def test_a_flight_is_looked_at_without_the_companion(programs, chromium):
    async def fly(page):
        await flying(page, port)
        await press(page, "Record")
        await page.wait_for("Number(document.querySelector('#recorded').textContent.split(' ')[0]) > 3")
        await press(page, "Stop")
        rig.companion.program.end()
        await shows(page, "#state", "Looking for the companion")
        await press(page, "Look at the flight")
        await page.wait_for(f"{PLOT} != null")
        assert await page.ask(f"getComputedStyle({PLOT}).display") != "inline", "it has its style"
        await press(page, "Back to the lesson")
        assert await page.ask("document.querySelector('#flight > div').shadowRoot") is None

    with reserved_port() as port:
        rig = Rig(programs, port)
        in_page(chromium, fly)


@pytest.mark.parametrize("lost", ["script", "style"])
def test_a_plot_that_cannot_be_loaded_is_told(programs, chromium, lost):
    async def fly(page):
        await page.call("Network.setBlockedURLs", urls=["*/flight-*." + {"script": "js", "style": "css"}[lost]])
        await flying(page, port)
        await press(page, "Record")
        await shows(page, "#recorded", "samples")
        await press(page, "Look at the flight")
        await shows(page, "#outcome", "Not done: Look at the flight – It could not be loaded.")
        assert await page.ask("document.querySelector('#flight').hidden && document.querySelector('#instruments').checkVisibility()")
        await page.call("Network.setBlockedURLs", urls=[])
        if lost == "style":
            await press(page, "Look at the flight")
            await page.wait_for(f"{PLOT} != null")

    with reserved_port() as port:
        Rig(programs, port)
        in_page(chromium, fly)
